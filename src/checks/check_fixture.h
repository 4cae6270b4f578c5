// What a check works with: a local folder with a profile, and the program with a saved state and passwords of its own,
// which can be closed and opened again. All of it is in a temporary folder that is removed with the object.
//
// Used by one thread, on which the program works while waitUntil() runs. Its waits are short.
#pragma once

#include "app/app_model.h"
#include "app/context/main_context.h"
#include "platform/private_folder.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace zembrastel {

class CheckFixture {
public:
    // The profile is valid and not enabled, the local folder empty.
    CheckFixture();

    [[nodiscard]] const std::filesystem::path& folder() const { return temporary.path(); }
    [[nodiscard]] std::filesystem::path local(const std::string& path) const { return siteFolder / path; }

    // Creates or replaces a local file, and creates its missing folders. `ago` is the age of the file's date.
    void write(const std::string& path, const std::string& text, std::chrono::seconds ago = {}) const;
    [[nodiscard]] std::string read(const std::string& path) const;

    // The paths that a scan of the local folder finds.
    [[nodiscard]] std::vector<std::string> scanned() const;

    // Opens the program with its last saved state. Closes it first if it is open.
    AppModel& open();
    void close() { model.reset(); }
    [[nodiscard]] AppModel& program() const { return *model; }

    // Does the program's work until the condition holds. False if it does not hold within this time.
    bool waitUntil(
        const std::function<bool()>& condition, std::chrono::milliseconds atMost = std::chrono::seconds(30)) {
        return queue.runUntil(condition, atMost);
    }

    Profile profile;
    std::map<Uuid, std::string> passwords; // those the program stored

protected:
    MainQueue queue;

private:
    PrivateFolder temporary;
    std::filesystem::path siteFolder = temporary.path() / "site";
    std::unique_ptr<AppModel> model;
};

} // namespace zembrastel
