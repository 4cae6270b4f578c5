#include "app/password_calls.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

namespace zembrastel {
namespace {

constexpr std::chrono::milliseconds patience{500};

struct Request {
    std::function<std::string()> work;
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

    // The next request; nothing once the object is going.
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
        if (stopping) return; // the context may have gone too
        context.post([done = std::move(request.done), result = std::move(result)] { done(result); });
    }

    void work() {
        while (auto request = next()) {
            Result result;
            try {
                result.password = request->work();
            } catch (...) {
                result.failure = std::current_exception();
            }
            handOver(std::move(*request), std::move(result));
        }
        const std::lock_guard lock(mutex);
        ended = true;
        changed.notify_all();
    }
};

PasswordCalls::PasswordCalls(MainContext& mainContext, Read readFunction, Save saveFunction)
    : readPassword(std::move(readFunction)), savePassword(std::move(saveFunction)),
      shared(std::make_shared<Shared>(mainContext)) {}

PasswordCalls::~PasswordCalls() {
    std::unique_lock lock(shared->mutex);
    shared->stopping = true;
    shared->changed.notify_all();
    if (!shared->thread.joinable()) return;
    const bool ended = shared->changed.wait_for(lock, patience, [this] { return shared->ended; });
    lock.unlock();
    ended ? shared->thread.join() : shared->thread.detach();
}

void PasswordCalls::read(const Uuid& id, std::function<void(Result)> done) {
    // The functions go along as copies: a call that was let go may outlive this object.
    request([call = readPassword, id] { return call(id); }, std::move(done));
}

void PasswordCalls::save(const Uuid& id, const std::string& password, std::function<void(Result)> done) {
    request(
        [call = savePassword, id, password] {
            call(password, id);
            return password;
        },
        std::move(done));
}

void PasswordCalls::request(std::function<std::string()> work, std::function<void(Result)> done) {
    const std::lock_guard lock(shared->mutex);
    shared->requests.push_back({.work = std::move(work), .done = std::move(done)});
    shared->changed.notify_all();
    if (!shared->thread.joinable()) shared->thread = std::thread([kept = shared] { kept->work(); });
}

} // namespace zembrastel
