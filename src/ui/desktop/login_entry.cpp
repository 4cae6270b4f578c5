#include "ui/desktop/login_entry.h"

#include "platform/files.h"
#include "platform/standard_paths.h"
#include "platform/text.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace zembrastel::ui {
namespace {

// Quotes once for the command line, then escapes backslashes again for the value of the file.
std::string asArgument(std::string_view argument) {
    std::string text = "\"";
    for (const char letter : argument) {
        if (letter == '\\') {
            text += R"(\\\\)";
            continue;
        }
        if (std::string_view("\"`$").find(letter) != std::string_view::npos) text += R"(\\)";
        if (letter == '%') text += '%'; // a single "%" would begin a field code
        text += letter;
    }
    return text + '"';
}

// The value of a key in the entry's own group; nullopt if there is none.
std::optional<std::string_view> valueIn(std::string_view entry, std::string_view key) {
    bool inGroup = false;
    while (!entry.empty()) {
        const auto end = std::min(entry.find('\n'), entry.size());
        const auto line = trimmed(entry.substr(0, end));
        entry.remove_prefix(std::min(end + 1, entry.size()));
        if (line.starts_with('[')) inGroup = line == "[Desktop Entry]";
        const auto equals = line.find('=');
        if (!inGroup || equals == std::string_view::npos || trimmed(line.substr(0, equals)) != key) continue;
        return trimmed(line.substr(equals + 1));
    }
    return std::nullopt;
}

} // namespace

LoginEntry::LoginEntry(const std::string& applicationId, std::string programName, std::vector<std::string> command)
    : path(configFolder() / "autostart" / (applicationId + ".desktop")), name(std::move(programName)),
      arguments(std::move(command)) {}

bool LoginEntry::isOn() const {
    std::optional<std::string> entry;
    try {
        entry = readFile(path);
    } catch (const std::filesystem::filesystem_error&) {
        return false; // the user's session cannot read it either
    }
    return entry && valueIn(*entry, "Exec") && valueIn(*entry, "Hidden") != "true"
           && valueIn(*entry, "X-GNOME-Autostart-enabled") != "false";
}

void LoginEntry::switchOn() const {
    std::string command;
    for (const auto& argument : arguments) command += (command.empty() ? "" : " ") + asArgument(argument);
    makePrivateFolders(path.parent_path());
    writeAtomically(
        path, "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + command + "\nIcon=" + path.stem().string()
                  + "\nTerminal=false\n");
}

void LoginEntry::switchOff() const { std::filesystem::remove(path); }

} // namespace zembrastel::ui
