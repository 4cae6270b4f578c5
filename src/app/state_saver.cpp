#include "app/state_saver.h"

#include "model/error.h"
#include "sync/retry_wait.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

constexpr int restAfterWrite = 9;
constexpr std::chrono::milliseconds shortestGathering{50};
constexpr std::chrono::seconds longestGathering{2};

} // namespace

StateSaver::StateSaver(
    MainContext& mainContext, Clock& clockToUse, StateStore place, const SavedState& saved, Failed told)
    : context(mainContext), clock(clockToUse), store(std::move(place)), state(saved), failed(std::move(told)),
      retryDelay(firstRetryDelay) {}

void StateSaver::save() {
    if (writing.valid()) writing.wait();
    writing = {}; // whatever became of it, all of it is written again
    waiting.merge(written);
    written.clear();
    const auto began = clock.steadyNow();
    try {
        store.save(state);
    } catch (...) {
        refused = true;
        retryLater();
        throw;
    }
    waiting.clear();
    refused = false;
    retryDelay = firstRetryDelay;
    rest(clock.steadyNow() - began);
}

void StateSaver::saveSoon(const Uuid& profile) {
    waiting.insert(profile);
    if (writing.valid() || scheduled) return;
    if (clock.steadyNow() >= nextWrite) {
        startWrite();
    } else {
        scheduleWrite();
    }
}

void StateSaver::flush() {
    if (waiting.empty() && !writing.valid() && !refused) return;
    try {
        save();
    } catch (const std::exception& error) {
        tellFailed(error);
    }
}

void StateSaver::forget(const Uuid& profile) {
    waiting.erase(profile);
    written.erase(profile);
}

void StateSaver::startWrite() {
    if ((waiting.empty() && !refused) || writing.valid()) return;
    written.swap(waiting);
    auto write = [this, began = clock.steadyNow(), snapshot = state, turn = ++turns] {
        // Posted however the write ends, and before it is over: a saver that goes waits for all of this.
        const auto finish = lifetime.guard([this, turn] {
            if (turn == turns) finishWrite();
        });
        try {
            store.save(snapshot);
        } catch (...) {
            context.post(finish);
            throw;
        }
        const auto took = clock.steadyNow() - began;
        context.post(finish);
        return took;
    };
    try {
        writing = std::async(std::launch::async, std::move(write));
    } catch (const std::system_error& error) {
        failedWrite(error);
    }
}

void StateSaver::finishWrite() {
    if (!writing.valid()) return; // saved once more meanwhile
    try {
        rest(writing.get());
    } catch (const std::exception& error) {
        failedWrite(error);
        return;
    }
    written.clear();
    refused = false;
    retryDelay = firstRetryDelay;
    if (!waiting.empty()) scheduleWrite();
}

void StateSaver::failedWrite(const std::exception& error) {
    waiting.merge(written);
    written.clear();
    retryLater();
    tellFailed(error);
}

// What the user wanted saved needs no telling: the exception has told it.
void StateSaver::tellFailed(const std::exception& error) const {
    if (!waiting.empty()) failed(waiting, describe(error));
}

// Tries again by itself: it may be long until something else is reported, and nobody tells when the disk is well again.
void StateSaver::retryLater() {
    if (std::exchange(retrying, true)) return;
    context.postAfter(retryDelay, lifetime.guard([this] {
        retrying = false;
        startWrite();
    }));
    retryDelay = nextRetryDelay(retryDelay);
}

void StateSaver::scheduleWrite() {
    scheduled = true;
    const auto delay = std::max(nextWrite - clock.steadyNow(), Duration::zero());
    context.postAfter(std::chrono::ceil<std::chrono::milliseconds>(delay), lifetime.guard([this] {
        scheduled = false;
        startWrite();
    }));
}

void StateSaver::rest(Duration afterWrite) {
    nextWrite =
        clock.steadyNow() + std::clamp<Duration>(afterWrite * restAfterWrite, shortestGathering, longestGathering);
}

} // namespace zembrastel
