#include "app/jobs/job.h"

#include <utility>

namespace zembrastel {

const RemoteReview* Job::review() const {
    const auto* waiting = std::get_if<AwaitingDecision>(&current);
    return waiting == nullptr ? nullptr : &waiting->review;
}

const ServerCheck* Job::firstCheck() const {
    if (const auto* waiting = std::get_if<AwaitingChoice>(&current)) return &waiting->check;
    if (const auto* comparing = std::get_if<ComparingContents>(&current)) return &comparing->check;
    return nullptr;
}

ServerCheck* Job::choice() { return const_cast<ServerCheck*>(std::as_const(*this).firstCheck()); }

const std::string* Job::failure() const {
    if (const auto* failed = std::get_if<CheckFailed>(&current)) return &failed->message;
    if (const auto* failed = std::get_if<DownloadFailed>(&current)) return &failed->message;
    return nullptr;
}

bool Job::takePassword(std::string password) {
    if (!is<ReadingPassword>()) return false;
    assignment.password = std::move(password);
    return true;
}

bool Job::check(const StartTask& start) {
    if (!isOneOf<ReadingPassword, AwaitingChoice, DownloadingReview>()) return false;
    current = Checking{start()};
    return true;
}

bool Job::failCheck(std::string message) {
    if (!isOneOf<Checking, CheckFailed>()) return false;
    current = CheckFailed{.task = *task(), .message = std::move(message)};
    return true;
}

bool Job::awaitChoice(ServerCheck check) {
    if (!isOneOf<Checking, CheckFailed>() || !check.first) return false;
    current = AwaitingChoice{std::move(check)};
    return true;
}

bool Job::compareContents(const StartTask& start, std::shared_ptr<TransferControl> control) {
    auto* waiting = std::get_if<AwaitingChoice>(&current);
    if (waiting == nullptr) return false;
    auto task = start();
    current =
        ComparingContents{.task = std::move(task), .check = std::move(waiting->check), .control = std::move(control)};
    return true;
}

void Job::addCompared(const std::string& path, bool equal) {
    if (auto* check = choice()) check->first->add(path, equal);
}

bool Job::comparesWith(const std::shared_ptr<TransferControl>& control) const {
    const auto* comparing = std::get_if<ComparingContents>(&current);
    return comparing != nullptr && comparing->control == control;
}

bool Job::endComparison() {
    auto* comparing = std::get_if<ComparingContents>(&current);
    if (comparing == nullptr) return false;
    comparing->task.request_stop();
    comparing->control->cancel();
    current = AwaitingChoice{ServerCheck(std::move(comparing->check))};
    return true;
}

bool Job::awaitDecision(RemoteReview review) {
    if (!isOneOf<Checking, CheckFailed>()) return false;
    current = AwaitingDecision{std::move(review)};
    return true;
}

bool Job::download(const StartTask& start) {
    if (!is<AwaitingDecision>()) return false;
    current = DownloadingReview{start()};
    return true;
}

bool Job::failDownload(std::string message) {
    if (!isOneOf<DownloadingReview, ComparingContents>()) return false;
    current = DownloadFailed{std::move(message)};
    return true;
}

bool Job::downloadInitially(const StartTask& start) {
    if (!is<ReadingPassword>()) return false;
    current = InitialDownload{start()};
    return true;
}

bool Job::watch(const StartTask& start) {
    if (!isOneOf<ReadingPassword, Checking, CheckFailed, AwaitingDecision, DownloadingReview>()) return false;
    current = Watching{start()};
    return true;
}

void Job::end() {
    if (auto* running = task()) running->request_stop();
    if (auto* comparing = std::get_if<ComparingContents>(&current)) comparing->control->cancel();
    assignment.control->cancel();
    current = Ended{};
}

std::stop_source* Job::task() {
    return std::visit(
        [](auto& state) -> std::stop_source* {
            if constexpr (requires { state.task; }) {
                return &state.task;
            } else {
                return nullptr;
            }
        },
        current);
}

} // namespace zembrastel
