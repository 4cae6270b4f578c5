#include "cli/progress_report.h"

#include "app/progress_text.h"
#include "cli/presentation.h"

namespace zembrastel {
namespace {

// Which file it is about; the profile's name where it is about none.
std::string subjectOf(const Profile& profile, const TransferProgress& progress) {
    return oneLine(progress.file ? progress.file->path : profile.name);
}

} // namespace

void ProgressReport::show() {
    if (!output.isLive()) return;
    std::string subject;
    std::string text;
    std::size_t others = 0;
    for (const auto& profile : model.profiles()) {
        const auto& progress = model.status(profile.id).progress;
        if (!progress) continue;
        if (text.empty()) {
            subject = subjectOf(profile, *progress);
            text = progressText(*progress);
        } else {
            ++others;
        }
    }
    if (others > 0) text += " (and " + counted(others, "other profile") + ")";
    output.live(subject, text);
}

} // namespace zembrastel
