#include "model/records/temporary_journal.h"

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr std::string_view prefix = ".zembrastel-";
constexpr std::string_view suffix = ".part";

bool isTemporaryName(std::string_view name) {
    return name.size() > prefix.size() + suffix.size() && name.starts_with(prefix) && name.ends_with(suffix)
           && Uuid::parse(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size()));
}

// Three lines each. None contains a line break: curl never gets such a name.
std::string text(const std::vector<TemporaryJournal::Entry>& entries) {
    std::string lines;
    for (const auto& [place, file] : entries) lines += file.name + '\n' + place + '\n' + file.folder + '\n';
    return lines;
}

void write(const std::filesystem::path& file, int flags, const std::string& lines) {
    const Descriptor opened(
        ::open(file.c_str(), flags | O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (opened) (void)!::write(opened.get(), lines.data(), lines.size());
}

} // namespace

TemporaryJournal::TemporaryJournal(std::filesystem::path stateFolder, const Uuid& profile)
    : file(std::move(stateFolder) / ("sending-" + profile.text() + ".txt")) {}

void TemporaryJournal::add(const std::vector<Entry>& entries) {
    if (entries.empty()) return;
    exists = true;
    write(file, O_APPEND, text(entries));
}

void TemporaryJournal::replace(const std::vector<Entry>& entries) {
    if (!entries.empty()) {
        exists = true;
        write(file, O_TRUNC, text(entries));
    } else if (std::exchange(exists, false)) {
        remove();
    }
}

std::vector<TemporaryJournal::Entry> TemporaryJournal::read() const {
    std::vector<Entry> entries;
    try {
        const std::string content = readFile(file).value_or("");
        const auto lines = split(content, '\n');
        for (std::size_t i = 0; i + 3 < lines.size(); i += 3) {
            // The rest is damaged.
            if (!isTemporaryName(lines[i])) break;
            entries.push_back(
                {.place = std::string(lines[i + 1]),
                 .file = {.folder = std::string(lines[i + 2]), .name = std::string(lines[i])}});
        }
    } catch (const std::filesystem::filesystem_error&) {
        // Temporary files may then stay on the server.
    }
    return entries;
}

void TemporaryJournal::remove() const noexcept {
    std::error_code ignored; // a remaining journal names files that do not exist
    std::filesystem::remove(file, ignored);
}

} // namespace zembrastel
