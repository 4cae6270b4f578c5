#include "cli/text/status_text.h"

#include "app/diagnosis/failure_catalogue.h"
#include "app/progress_text.h"
#include "cli/terminal/output.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"

#include <unistd.h>
#include <utility>

namespace zembrastel::cli {
namespace {

std::string detailLine(const std::string& name, const std::string& value) {
    constexpr std::size_t nameWidth = 10;
    return "    " + padded(name, nameWidth) + value;
}

std::uint64_t countOf(std::int64_t number) { return static_cast<std::uint64_t>(number); }

Tone toneOf(const answer::Status& answer) {
    if (answer.status.failed()) return Tone::bad;
    return answer.running && answer.newerOnServer == 0 && !answer.choice ? Tone::good : Tone::attention;
}

// True if the detail is the failure in curl's words, which the catalogue has an explanation for.
bool isExplained(const ProfileStatus& status, const Profile* profile) {
    return status.failure && !status.unsaved && profile != nullptr;
}

// The detail with the explanation of the failure instead of curl's words.
std::string detailOf(const ProfileStatus& status, const Profile* profile) {
    if (!isExplained(status, profile)) return status.detail;
    return sentence(explainedText(*status.failure, *profile)) + (status.outlook.empty() ? "" : " " + status.outlook);
}

// curl's words, if the detail explains them.
std::string detailsOf(const ProfileStatus& status, const Profile* profile) {
    return isExplained(status, profile) ? explain(*status.failure, *profile).details : "";
}

} // namespace

void addStatusFields(JsonLine& object, const ProfileStatus& status) {
    object.text("title", status.title()).text("detail", status.detail);
    object.flag("active", status.active()).flag("failed", status.failed()).flag("filesMissing", status.filesMissing());
    object.number("uploaded", countOf(status.uploaded)).number("pending", countOf(status.pending));
    if (status.lastUpload) object.text("lastUpload", universalTime(*status.lastUpload));
}

std::vector<std::string> statusLines(const answer::Status& answer, const Profile* profile) {
    const ProfileStatus& status = answer.status;
    std::vector<std::string> lines{
        oneLine(answer.name) + "  "
        + inColour(translateEngineText(oneLine(status.title())), toneOf(answer), STDOUT_FILENO)};
    if (const auto detail = oneLine(detailOf(status, profile)); !detail.empty())
        lines.push_back(detailLine(translate("detail"), translateEngineText(detail)));
    if (const auto details = detailsOf(status, profile); !details.empty())
        lines.push_back(detailLine("", "(" + oneLine(details) + ")"));
    if (status.progress)
        lines.push_back(detailLine(translate("progress"), translateProgress(progressText(*status.progress))));
    if (status.pending > 0) lines.push_back(detailLine(translate("pending"), filesText(countOf(status.pending))));
    if (status.filesMissing())
        lines.push_back(detailLine(translate("missing"), translate("if you deleted the files: forget-files")));
    if (answer.newerOnServer > 0) {
        lines.push_back(detailLine(
            translate("review"),
            translatePlural(
                "%n file newer on the server", "%n files newer on the server", countOf(answer.newerOnServer))));
    }
    if (answer.choice)
        lines.push_back(detailLine(translate("choose"), choiceSummary(*answer.choice) + " " + translate("See adopt.")));
    if (answer.missingOnServer > 0) {
        lines.push_back(
            detailLine(translate("missing"), missingText(countOf(answer.missingOnServer)) + ": push --missing"));
    }
    std::string uploaded = translatePlural(
        "%n file since the program started", "%n files since the program started", countOf(status.uploaded));
    if (status.lastUpload) uploaded += translate(", the last at %1", {dateAndTime(*status.lastUpload)});
    lines.push_back(detailLine(translate("uploaded"), uploaded));
    return lines;
}

std::vector<std::string> Narration::status(const ProfileStatus& status, const Profile* profile) {
    const std::string failure = std::exchange(justFailed, {});
    justDetailed.clear();
    if (!status.failed()) detailsPrinted.clear();
    const std::string explained = detailOf(status, profile);
    const bool same = status.title() == title && explained == detail;
    // The printed uploads already show that fewer files are pending.
    const bool isNews = !same || status.pending > pending;
    title = status.title();
    detail = explained;
    pending = status.pending;
    if (!isNews) return {};

    // The detail contains the failure as a sentence.
    const std::string printedPart = failure.empty() ? "" : sentence(failure);
    const bool repeats = !failure.empty() && detail.starts_with(printedPart);
    if (!repeats) justDetailed = detail;
    std::string line = translateEngineText(title);
    if (const auto rest = oneLine(repeats ? detail.substr(printedPart.size()) : detail); !rest.empty())
        line += ": " + translateEngineText(rest);
    if (pending > 0) line += translate(" (%1 pending)", {std::to_string(pending)});
    return withDetails(std::move(line), detailsOf(status, profile));
}

std::vector<std::string> Narration::activity(const Activity& activity, const Profile* profile) {
    const std::string detailed = std::exchange(justDetailed, {});
    const bool isExplained = activity.failure && profile != nullptr;
    const std::string text = isExplained ? explainedText(*activity.failure, *profile) : activity.text;
    justFailed = activity.error() ? text : "";
    if (activity.error() && detailed.starts_with(text)) return {};
    return withDetails(
        (activity.error() ? translate("error:") + " " : "") + translateEngineText(oneLine(text)),
        isExplained ? explain(*activity.failure, *profile).details : "");
}

std::vector<std::string> Narration::withDetails(std::string line, const std::string& details) {
    std::vector<std::string> lines{std::move(line)};
    if (!details.empty() && details != detailsPrinted) {
        detailsPrinted = details;
        lines.push_back("  " + translate("Details: %1", {oneLine(details)}));
    }
    return lines;
}

} // namespace zembrastel::cli
