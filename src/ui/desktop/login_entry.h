// The autostart entry that starts a program at login (XDG autostart).
//
// The file is the only state: other programs may change it, or disable it without removing it. Any thread. Failures
// throw std::filesystem::filesystem_error with the file's name.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zembrastel::ui {

class LoginEntry {
public:
    // Uses the user's autostart folder. `command` holds the program's absolute path and its arguments.
    LoginEntry(const std::string& applicationId, std::string programName, std::vector<std::string> command);

    [[nodiscard]] const std::filesystem::path& file() const { return path; }

    // True if there is an enabled entry. An unreadable entry starts nothing and counts as off.
    [[nodiscard]] bool isOn() const;

    void switchOn() const; // replaces an existing entry atomically
    void switchOff() const;

private:
    std::filesystem::path path;
    std::string name;
    std::vector<std::string> arguments;
};

} // namespace zembrastel::ui
