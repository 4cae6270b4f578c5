#include "app/jobs/job.h"

#include <utility>

namespace zembrastel {

const RemoteReview* Job::review() const {
    const auto* waiting = std::get_if<AwaitingDecision>(&current);
    return waiting == nullptr ? nullptr : &waiting->review;
}

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
    if (!isOneOf<ReadingPassword, DownloadingReview>()) return false;
    current = Checking{start()};
    return true;
}

bool Job::failCheck(std::string message) {
    if (!isOneOf<Checking, CheckFailed>()) return false;
    current = CheckFailed{.task = *task(), .message = std::move(message)};
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
    if (!is<DownloadingReview>()) return false;
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
