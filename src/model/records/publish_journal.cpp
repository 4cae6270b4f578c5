#include "model/records/publish_journal.h"

#include "model/saved_state.h"
#include "platform/files.h"

#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::size_t fullAt = 512; // entries

void add(AnnouncedFiles& to, const AnnouncedFiles& from) {
    for (const auto& [path, fingerprint] : from.files) to.files.set(path, fingerprint);
    for (const auto& [path, date] : from.dates) to.dates.set(path, date);
}

} // namespace

PublishJournal::PublishJournal(std::filesystem::path stateFolder, const Uuid& profile)
    : folder(std::move(stateFolder)), id(profile), newer(read()) {}

std::filesystem::path PublishJournal::file() const { return folder / ("publishing-" + id.text() + ".json"); }

void PublishJournal::announce(const AnnouncedFiles& batch) {
    if (newer.files.size() >= fullAt) older = std::exchange(newer, {});
    add(newer, batch);
    AnnouncedFiles all = older;
    add(all, newer);
    // Uses the format of the saved state, without profiles, and so its reader and writer.
    SavedState state;
    state.baselines.emplace(id, std::move(all.files));
    state.remoteDates.emplace().emplace(id, std::move(all.dates));
    writeAtomically(file(), encode(state));
}

void PublishJournal::update(const AnnouncedFiles& batch) {
    AnnouncedFiles known;
    for (const auto& [path, fingerprint] : batch.files) {
        if (!newer.files.contains(path) && !older.files.contains(path)) continue;
        known.files.set(path, fingerprint);
        known.dates.set(path, batch.dates.at(path));
    }
    if (!known.files.empty()) announce(known);
}

AnnouncedFiles PublishJournal::read() const {
    try {
        auto json = readFile(file());
        if (!json) return {};
        auto state = decodeSavedState(*std::move(json));
        if (!state.remoteDates) return {};
        return {.files = std::move(state.baselines[id]), .dates = std::move((*state.remoteDates)[id])};
    } catch (const std::exception&) {
        return {}; // the user is asked a needless question
    }
}

void PublishJournal::remove() const noexcept {
    std::error_code ignored; // a remaining journal matches no file
    std::filesystem::remove(file(), ignored);
}

} // namespace zembrastel
