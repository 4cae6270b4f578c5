#include "app/record_of.h"

namespace zembrastel {

ServerRecord recordOf(const SavedState& state, const Uuid& profile) {
    ServerRecord record;
    const auto files = state.baselines.find(profile);
    if (files != state.baselines.end()) record.baseline = files->second;
    if (!state.remoteDates) return record;
    const auto dates = state.remoteDates->find(profile);
    if (dates == state.remoteDates->end()) return record;
    record.knownDates = dates->second;
    record.wasCompared = true;
    return record;
}

} // namespace zembrastel
