// Writes the model's state to the disk: at once for actions of the user, after a short delay for reports of workers. In
// the second case the main context does not wait for the disk.
//
// Main context. Saving may take a tenth of the time: after a save there is a pause of nine times its duration, at least
// 50 milliseconds and at most two seconds; reports in that time are gathered into one save. A single report is saved at
// once. A thread writes a copy of the state, one save at a time; the copy shares its contents with the state itself. A
// program that is killed loses at most the reports since the start of the last completed save.
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
    // Called on the main context if the reports for these profiles could not be written, with the reason. They are
    // written with the next report, by flush(), or by a retry after at most a minute.
    using Failed = std::function<void(const std::set<Uuid>& profiles, const std::string& message)>;

    // `saved` must outlive the saver.
    StateSaver(MainContext& mainContext, Clock& clockToUse, StateStore place, const SavedState& saved, Failed report);
    StateSaver(const StateSaver&) = delete;
    StateSaver& operator=(const StateSaver&) = delete;
    // Waits for a running write.
    ~StateSaver() = default;

    // Saves before it returns. Throws what StateStore::save() throws; that is then tried again later, with what was
    // reported before.
    void save();

    // Saves the reports for a profile, now or a little later.
    void saveSoon(const Uuid& profile);

    // Saves all waiting reports before it returns.
    void flush();

    // No failure is reported for this profile any more.
    void forget(const Uuid& profile);

private:
    using Duration = std::chrono::steady_clock::duration;

    void startWrite();
    void finishWrite();
    void scheduleWrite();
    void rest(Duration afterWrite);
    void failedWrite(const std::exception& error);
    void reportFailed(const std::exception& error) const;
    void retryLater();

    MainContext& context;
    Clock& clock;
    const StateStore store;
    const SavedState& state;
    const Failed failed;
    std::set<Uuid> waiting; // profiles with reports that no write contains
    std::set<Uuid> written; // those of the running write
    bool scheduled = false;
    int turns = 0; // of writing
    std::chrono::steady_clock::time_point nextWrite{};
    std::chrono::seconds retryDelay; // after the next failure
    bool retrying = false;
    bool refused = false; // save() failed since the last write that succeeded
    Lifetime lifetime;
    std::future<Duration> writing; // last: the thread ends before what it uses
};

} // namespace zembrastel
