#include "model/records/comparison_record.h"

#include "model/saved_state.h"
#include "platform/files.h"

#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

// The file has the format of the saved state without profiles. Each kind of result is stored under an id of its own.
const Uuid sameId = *Uuid::parse("00000000-0000-0000-0000-000000000001");
const Uuid differentId = *Uuid::parse("00000000-0000-0000-0000-000000000002");

void put(SavedState& state, const Uuid& kind, const AnnouncedFiles& results) {
    state.baselines.emplace(kind, results.files);
    state.remoteDates->emplace(kind, results.dates);
}

AnnouncedFiles take(SavedState& state, const Uuid& kind) {
    return {.files = std::move(state.baselines[kind]), .dates = std::move((*state.remoteDates)[kind])};
}

} // namespace

ComparisonRecord::ComparisonRecord(const std::filesystem::path& stateFolder, const Uuid& profile)
    : file(stateFolder / ("compared-" + profile.text() + ".json")) {}

void ComparisonRecord::write(const ComparedContents& results) const {
    SavedState state;
    state.remoteDates.emplace();
    put(state, sameId, results.same);
    put(state, differentId, results.different);
    writeAtomically(file, encode(state));
}

ComparedContents ComparisonRecord::read() const {
    try {
        auto json = readFile(file);
        if (!json) return {};
        auto state = decodeSavedState(*std::move(json));
        if (!state.remoteDates) return {};
        return {.same = take(state, sameId), .different = take(state, differentId)};
    } catch (const std::exception&) {
        return {}; // the contents are compared again
    }
}

void ComparisonRecord::remove() const noexcept {
    std::error_code ignored; // a result that stays holds only for the versions that were compared
    std::filesystem::remove(file, ignored);
}

} // namespace zembrastel
