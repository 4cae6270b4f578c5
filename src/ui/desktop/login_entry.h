// The entry that has the desktop start a program when its user logs in (XDG autostart).
//
// The file is the truth: other programs may change it, or switch it off without removing it. Any thread. Failures are
// thrown as std::filesystem::filesystem_error, naming the file.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zembrastel::ui {

class LoginEntry {
public:
    // In the user's autostart folder. `command` is the program's path, absolute, and its arguments.
    LoginEntry(const std::string& applicationId, std::string programName, std::vector<std::string> command);

    [[nodiscard]] const std::filesystem::path& file() const { return path; }

    // Is there an entry that is not switched off? What cannot be read starts nothing.
    [[nodiscard]] bool isOn() const;

    void switchOn() const; // replaces what is there, in one step
    void switchOff() const;

private:
    std::filesystem::path path;
    std::string name;
    std::vector<std::string> arguments;
};

} // namespace zembrastel::ui
