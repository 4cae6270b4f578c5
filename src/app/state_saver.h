// When and how the model's state reaches the disk: what the user does at once, what workers report as soon as that is
// cheap enough, and that without the main context waiting for the disk.
//
// Lives on the main context. Saving may take a tenth of the time: after a save that took one part, the next nine are
// for other things, 50 milliseconds at least and two seconds at most; what is reported meanwhile is gathered into one
// save. A report that comes alone is saved at once. A thread does it, one
// save at a time, from a copy of the state, which shares what it holds with the state itself. A program that is killed
// loses at most what was reported since the last save that was completed had begun.
#pragma once

#include "app/context/lifetime.h"
#include "app/context/main_context.h"
#include "model/state_store.h"
#include "platform/clock.h"
#include "platform/uuid.h"

#include <chrono>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <set>
#include <string>

namespace zembrastel {

class StateSaver {
public:
    // Told on the main context that what was reported for these profiles is not on the disk, and why. It stays to be
    // saved: with the next report, by flush(), or at the latest a while later, which grows to a minute.
    using Failed = std::function<void(const std::set<Uuid>& profiles, const std::string& message)>;

    // `saved` must outlive the saver.
    StateSaver(MainContext& mainContext, Clock& clockToUse, StateStore place, const SavedState& saved, Failed told);
    StateSaver(const StateSaver&) = delete;
    StateSaver& operator=(const StateSaver&) = delete;
    // Waits for the write under way.
    ~StateSaver() = default;

    // Saves before it returns. Throws what StateStore::save() throws; that is then tried again later, with what was
    // reported before.
    void save();

    // Saves what was reported for a profile, now or a little later.
    void saveSoon(const Uuid& profile);

    // Saves before it returns what waits to be saved, if anything does.
    void flush();

    // Nothing is told of this profile any more.
    void forget(const Uuid& profile);

private:
    using Duration = std::chrono::steady_clock::duration;

    void startWrite();
    void finishWrite();
    void scheduleWrite();
    void rest(Duration afterWrite);
    void failedWrite(const std::exception& error);
    void tellFailed(const std::exception& error) const;
    void retryLater();

    MainContext& context;
    Clock& clock;
    const StateStore store;
    const SavedState& state;
    const Failed failed;
    std::set<Uuid> waiting; // profiles with reports that no write has taken along
    std::set<Uuid> written; // those of the write under way
    bool scheduled = false;
    int turns = 0; // of writing
    std::chrono::steady_clock::time_point nextWrite{};
    std::chrono::seconds retryDelay; // after the next failure
    bool retrying = false;
    bool refused = false; // save() failed since the last write that succeeded
    Lifetime lifetime;
    std::future<Duration> writing; // last, so that the thread has ended before what it uses goes
};

} // namespace zembrastel
