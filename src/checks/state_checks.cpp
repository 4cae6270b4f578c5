#include "checks/check.h"
#include "checks/check_fixture.h"
#include "model/error.h"
#include "model/scan.h"
#include "platform/files.h"

namespace zembrastel {
namespace {

std::string failureOf(const std::function<void()>& attempt) {
    try {
        attempt();
        return "";
    } catch (const SyncError& error) {
        return error.what();
    }
}

void unconfirmedDownload() {
    constexpr const char* refusal =
        "Choose the initial download files and folders before starting. Open Edit profile, choose the contents, and "
        "save your selection.";
    CheckFixture place;
    auto& profile = place.profile;
    auto& program = place.open();
    profile.needsDownload = true;
    requireEqual("the answer to saving", failureOf([&] { program.save(profile, std::nullopt); }), refusal);
    require(program.profiles().empty(), "the profile was saved all the same");
    profile.initialDownloadSelection = DownloadSelection{.rules = {{"docs", false}}};
    const auto validate = [&] { (void)profile.validated(); };
    requireEqual("the answer to a selection of nothing", failureOf(validate), refusal);
    profile.needsDownload = false;
    requireEqual("the answer without a download", failureOf(validate), "");
}

void noPasswordInFile() {
    constexpr const char* password = "kept-out-of-files";
    CheckFixture place;
    place.open().save(place.profile, password);
    place.close();
    requireEqual("the stored password", place.passwords[place.profile.id], password);
    const auto file = readFile(place.folder() / "state/profiles.json").value_or("");
    require(file.find(place.profile.name) != std::string::npos, "the profile was not saved");
    require(file.find(password) == std::string::npos, "profiles.json holds the password");
}

void offlineBaseline() {
    CheckFixture place;
    place.write("index.html", "made without a server");
    const auto recorded = scan(place.profile);
    place.open().save(place.profile, std::nullopt, recorded);
    const auto& restored = place.open().baseline(place.profile.id);
    require(restored == recorded, "after a restart the baseline has " + std::to_string(restored.size()) + " files");
}

} // namespace

Checks stateChecks() {
    return {
        {"download with no confirmed selection cannot be saved", unconfirmedDownload},
        {"profile file contains no password", noPasswordInFile},
        {"persist offline sync baseline", offlineBaseline}};
}

} // namespace zembrastel
