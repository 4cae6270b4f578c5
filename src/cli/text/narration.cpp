#include "cli/text/narration.h"

#include "cli/text/presentation.h"

#include <utility>

namespace zembrastel::cli {

std::optional<std::string> Narration::status(const ProfileStatus& status) {
    const std::string failure = std::exchange(justFailed, {});
    justDetailed.clear();
    const bool same = status.title() == title && status.detail == detail;
    // That fewer files wait than a moment ago follows from the uploads that were told.
    const bool worthTelling = !same || status.pending > pending;
    title = status.title();
    detail = status.detail;
    pending = status.pending;
    if (!worthTelling) return std::nullopt;

    // The detail makes a sentence of it.
    const std::string toldPart = failure.empty() ? "" : sentence(failure);
    const bool told = !failure.empty() && detail.starts_with(toldPart);
    if (!told) justDetailed = detail;
    std::string line = title;
    if (const auto rest = oneLine(told ? detail.substr(toldPart.size()) : detail); !rest.empty()) line += ": " + rest;
    if (pending > 0) line += " (" + std::to_string(pending) + " pending)";
    return line;
}

std::optional<std::string> Narration::activity(const Activity& activity) {
    const std::string told = std::exchange(justDetailed, {});
    justFailed = activity.error() ? activity.text : "";
    if (activity.error() && told.starts_with(activity.text)) return std::nullopt;
    return (activity.error() ? "error: " : "") + oneLine(activity.text);
}

} // namespace zembrastel::cli
