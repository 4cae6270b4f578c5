// What a check works in: a local folder with a profile for it, and the program with a saved state and passwords of its
// own, which can be closed and opened again. All in a temporary folder that goes with the object.
//
// Belongs to one thread, on which the program works while waitUntil() runs. Its polls follow one another at once.
#pragma once

#include "app/app_model.h"
#include "app/context/main_queue.h"
#include "platform/private_folder.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace zembrastel {

class Workplace {
public:
    // The profile is valid and not enabled, the local folder empty.
    Workplace();

    [[nodiscard]] const std::filesystem::path& folder() const { return temporary.path(); }
    [[nodiscard]] std::filesystem::path local(const std::string& path) const { return siteFolder / path; }

    // Makes or replaces a local file, with its missing folders, as though that had been done so long ago.
    void write(const std::string& path, const std::string& text, std::chrono::seconds ago = {}) const;
    [[nodiscard]] std::string read(const std::string& path) const;

    // The paths that a scan of the local folder finds.
    [[nodiscard]] std::vector<std::string> scanned() const;

    // Opens the program with what it saved last, closing it before where it is open.
    AppModel& open();
    void close() { model.reset(); }
    [[nodiscard]] AppModel& program() const { return *model; }

    // Does the program's work until the condition holds; false when it does not within this time.
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
