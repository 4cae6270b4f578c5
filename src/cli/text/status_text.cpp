#include "cli/text/status_text.h"

#include "app/progress_text.h"
#include "cli/terminal/colour.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"

#include <unistd.h>

namespace zembrastel::cli {
namespace {

std::string line(std::string name, const std::string& value) {
    constexpr std::size_t nameWidth = 10;
    name.resize(nameWidth, ' ');
    return "    " + name + value;
}

std::uint64_t countOf(std::int64_t number) { return static_cast<std::uint64_t>(number); }

Tone toneOf(const answer::Status& told) {
    if (told.status.failed()) return Tone::bad;
    return told.running && told.newerOnServer == 0 ? Tone::good : Tone::attention;
}

} // namespace

void addStatus(JsonLine& object, const ProfileStatus& status) {
    object.text("title", status.title()).text("detail", status.detail);
    object.flag("active", status.active()).flag("failed", status.failed()).flag("filesMissing", status.filesMissing());
    object.number("uploaded", countOf(status.uploaded)).number("pending", countOf(status.pending));
    if (status.lastUpload) object.text("lastUpload", universalTime(*status.lastUpload));
}

std::vector<std::string> statusLines(const answer::Status& told) {
    const ProfileStatus& status = told.status;
    std::vector<std::string> lines{
        oneLine(told.name) + "  " + inColour(oneLine(status.title()), toneOf(told), STDOUT_FILENO)};
    if (!status.detail.empty()) lines.push_back(line("detail", oneLine(status.detail)));
    if (status.progress) lines.push_back(line("progress", progressText(*status.progress)));
    if (status.pending > 0) lines.push_back(line("pending", counted(countOf(status.pending), "file")));
    if (status.filesMissing()) lines.push_back(line("missing", "if you deleted the files: forget-files"));
    if (told.newerOnServer > 0) {
        lines.push_back(line("review", counted(countOf(told.newerOnServer), "file") + " newer on the server"));
    }
    if (told.missingOnServer > 0) {
        lines.push_back(line("missing", missingText(countOf(told.missingOnServer)) + ": push --missing"));
    }
    std::string uploaded = counted(countOf(status.uploaded), "file") + " since the program started";
    if (status.lastUpload) uploaded += ", the last at " + dateAndTime(*status.lastUpload);
    lines.push_back(line("uploaded", uploaded));
    return lines;
}

} // namespace zembrastel::cli
