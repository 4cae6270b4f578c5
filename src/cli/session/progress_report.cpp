#include "cli/session/progress_report.h"

#include "app/progress_text.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"

#include <cmath>

namespace zembrastel::cli {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds lineInterval = 10s;
constexpr std::chrono::seconds jsonInterval = 1s;

// The path of the current file, else the profile's name.
std::string progressSubject(const Profile& profile, const TransferProgress& progress) {
    return oneLine(progress.file ? progress.file->path : profile.name);
}

std::string shownProgress(const TransferProgress& progress) { return translateProgress(progressText(progress)); }

const char* workWord(TransferProgress::Work work) {
    switch (work) {
    case TransferProgress::Work::downloading:
        return "downloading";
    case TransferProgress::Work::comparing:
        return "comparing";
    case TransferProgress::Work::comparingContents:
        return "comparingContents";
    case TransferProgress::Work::uploading:
        break;
    }
    return "uploading";
}

void addProgressFields(JsonLine& object, const TransferProgress& progress) {
    object.text("work", workWord(progress.work));
    object.number("filesDone", progress.filesDone).number("files", progress.filesQueued);
    object.number("folders", progress.folders).number("bytesDone", progress.bytes);
    if (progress.bytesQueued) object.number("bytes", *progress.bytesQueued);
    if (progress.rate) object.number("rate", static_cast<std::uint64_t>(std::lround(*progress.rate)));
    if (!progress.file) return;
    object.text("path", progress.file->path).number("fileBytesDone", progress.file->bytes);
    if (progress.file->size) object.number("fileBytes", *progress.file->size);
}

} // namespace

void ProgressLines::show(const Profile& profile, const std::optional<TransferProgress>& progress) {
    if (output.isLive()) {
        output.live(progress ? progressSubject(profile, *progress) : "", progress ? shownProgress(*progress) : "");
    } else if (progress) {
        print(profile, *progress);
    }
}

void ProgressLines::print(const Profile& profile, const TransferProgress& progress) {
    const auto interval = output.json() ? jsonInterval : lineInterval;
    const auto now = clock.steadyNow();
    if (now - lastLine < interval) return;
    lastLine = now;
    if (output.json()) {
        auto object = JsonLine::forProfile("progress", profile);
        addProgressFields(object, progress);
        output.line(object);
    } else {
        const std::string file = progress.file ? oneLine(progress.file->path) + ": " : "";
        output.line(file + shownProgress(progress));
    }
}

void ProgressReport::show(const Uuid& id) {
    if (output.isLive()) {
        showLive();
    } else if (const auto* profile = model.profile(id); printsLines && profile != nullptr) {
        lines.show(*profile, model.status(id).progress);
    }
}

void ProgressReport::showLive() {
    std::string subject;
    std::string text;
    std::size_t others = 0;
    for (const auto& profile : model.profiles()) {
        const auto& progress = model.status(profile.id).progress;
        if (!progress) continue;
        if (text.empty()) {
            subject = progressSubject(profile, *progress);
            text = shownProgress(*progress);
        } else {
            ++others;
        }
    }
    if (others > 0) text += translatePlural(" (and %n other profile)", " (and %n other profiles)", others);
    output.live(subject, text);
}

} // namespace zembrastel::cli
