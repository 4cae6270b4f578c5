#include "app/diagnosis/support_details.h"

#include "model/password_mask.h"
#include "platform/text.h"

#include <algorithm>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <sys/utsname.h>

namespace zembrastel {
namespace {

constexpr std::size_t mostLines = 20;

std::string systemName() {
    utsname names{};
    if (::uname(&names) != 0) return "";
    return ", " + std::string(names.sysname) + " " + names.release + " " + names.machine;
}

// In UTC: whoever helps may live elsewhere.
std::string timeText(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm calendar{};
    ::gmtime_r(&seconds, &calendar);
    std::ostringstream text;
    text << std::put_time(&calendar, "%FT%TZ");
    return std::move(text).str();
}

std::string joined(const std::vector<std::string_view>& pieces) {
    std::string text;
    for (const auto piece : pieces) text += (text.empty() ? "" : ", ") + std::string(piece);
    return text.empty() ? "none" : text;
}

std::string rules(const DownloadSelection& selection) {
    std::string text;
    for (const auto& [path, selected] : selection.rules) {
        text += (text.empty() ? "" : ", ") + std::string(selected ? "" : "not ") + (path.empty() ? "/" : path);
    }
    return text.empty() ? "nothing" : text;
}

class Lines {
public:
    void add(std::string_view name, std::string_view value) {
        text.append(name).append(": ").append(oneLine(value)).append("\n");
    }
    void line(std::string_view value) { text.append(oneLine(value)).append("\n"); }

    std::string text;

private:
    static std::string oneLine(std::string_view value) { return printable(joinedLines(value)); }

    static std::string joinedLines(std::string_view value) {
        const auto lines = nonEmptyLines(value);
        return lines.size() == 1 ? std::string(lines.front()) : join(lines, ' ');
    }
};

void addSettings(Lines& lines, const Profile& profile) {
    lines.add("Profile", profile.name);
    lines.add("Server", profile.host + ", port " + std::to_string(profile.port));
    lines.add("Connection", rawValue(profile.transport));
    lines.add("User name", profile.username);
    lines.add("Remote folder", profile.remoteFolder);
    lines.add("Local folder", profile.localFolder);
    lines.add("Left out", joined(nonEmptyLines(profile.exclusions.text())));
    const auto& selection = profile.effectiveSyncSelection();
    lines.add("Synced", selection ? rules(*selection) : "everything");
    lines.add("Enabled", profile.enabled ? "yes" : "no");
    if (profile.needsDownload) lines.add("First download", "still to be done");
}

void addStatus(Lines& lines, const ProfileStatus& status) {
    lines.add("Status", status.title() + (status.detail.empty() ? "" : ": " + status.detail));
    lines.add(
        "Files since the start",
        std::to_string(status.uploaded) + " uploaded, " + std::to_string(status.pending) + " waiting");
    if (status.activity.empty()) return;
    lines.line("Last activity, the newest first, in UTC:");
    const auto count = std::min(mostLines, status.activity.size());
    for (std::size_t n = 0; n < count; ++n) {
        const Activity& each = status.activity[n];
        lines.line("  " + timeText(each.date) + (each.error() ? "  failed: " : "  ") + each.text);
    }
}

} // namespace

std::string supportDetails(const SupportFacts& facts) {
    Lines lines;
    lines.line(std::string(facts.program) + systemName());
    addSettings(lines, facts.profile);
    if (facts.failure) lines.add("The server check failed", *facts.failure);
    if (facts.status != nullptr) addStatus(lines, *facts.status);
    return withoutPassword(std::move(lines.text), facts.password);
}

} // namespace zembrastel
