#include "app/password_calls.h"

#include "model/error.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace zembrastel {
namespace {

constexpr std::chrono::milliseconds patience{500};

struct Request {
    PasswordCalls::Call call;
    std::function<void(PasswordCalls::Result)> done;
};

} // namespace

struct PasswordCalls::Shared {
    explicit Shared(MainContext& mainContext) : context(mainContext) {}

    MainContext& context;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Request> requests;
    std::thread thread; // started with the first request
    bool stopping = false;
    bool ended = false;

    // The next request; nullopt once the object is being destroyed.
    std::optional<Request> next() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return stopping || !requests.empty(); });
        if (stopping) return std::nullopt;
        Request request = std::move(requests.front());
        requests.pop_front();
        return request;
    }

    void handOver(Request request, Result result) {
        const std::lock_guard lock(mutex);
        if (stopping) return; // the context may be destroyed too
        context.post([done = std::move(request.done), result = std::move(result)] { done(result); });
    }

    void work() {
        while (auto request = next()) {
            Result result;
            try {
                result.password = request->call();
            } catch (const std::exception& error) {
                result.failure = describe(error);
            }
            handOver(std::move(*request), std::move(result));
        }
        const std::lock_guard lock(mutex);
        ended = true;
        changed.notify_all();
    }
};

PasswordCalls::PasswordCalls(MainContext& mainContext) : shared(std::make_shared<Shared>(mainContext)) {}

PasswordCalls::~PasswordCalls() {
    std::unique_lock lock(shared->mutex);
    shared->stopping = true;
    shared->changed.notify_all();
    if (!shared->thread.joinable()) return;
    const bool ended = shared->changed.wait_for(lock, patience, [this] { return shared->ended; });
    lock.unlock();
    ended ? shared->thread.join() : shared->thread.detach();
}

void PasswordCalls::ask(Call call, std::function<void(Result)> done) {
    const std::lock_guard lock(shared->mutex);
    if (!shared->thread.joinable()) {
        try {
            shared->thread = std::thread([kept = shared] { kept->work(); });
        } catch (const std::system_error& error) {
            Result result{.password = {}, .failure = "The secret store cannot be asked now: " + describe(error)};
            shared->context.post([done = std::move(done), result = std::move(result)] { done(result); });
            return;
        }
    }
    shared->requests.push_back({.call = std::move(call), .done = std::move(done)});
    shared->changed.notify_all();
}

} // namespace zembrastel
