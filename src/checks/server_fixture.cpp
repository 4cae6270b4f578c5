#include "checks/office.h"

#include "checks/check.h"
#include "platform/files.h"

#include <stdexcept>
#include <thread>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::chrono::duration<double> precision = 1s; // of the comparison of dates
constexpr auto longestWait = 10s;                       // for a server's clock to go on by that
constexpr auto pause = 100ms;                           // between two looks at it
constexpr const char* notice = "README.txt";

} // namespace

Office::Office(const TestServer& server) {
    profile.port = server.port;
    profile.transport = TransferProtocol::ftp;
    profile.username = TestServer::username;
    profile.remoteFolder = server.remoteFolder + "/" + profile.id.text();
    colleague = {.profile = profile, .password = TestServer::password, .control = std::make_shared<TransferControl>()};
    colleague.profile.localFolder = folder() / "colleague";
    fs::create_directory(colleague.profile.localFolder);
    // The first file makes the folders, of which a check of the server expects that they are there.
    colleagueUploads(notice, "Made by zembrastel --integration-test. The folder may be removed.\n");
}

void Office::colleagueUploads(const std::string& path, const std::string& text) const {
    const auto file = fs::path(colleague.profile.localFolder) / path;
    fs::create_directories(file.parent_path());
    writeAtomically(file, text);
    colleague.upload(path, Fingerprint::read(file));
}

void Office::colleagueEdits(const std::string& path, const std::string& text) const {
    const RemoteDate before = colleague.modificationDate(path);
    const auto giveUp = std::chrono::steady_clock::now() + longestWait;
    while (std::chrono::steady_clock::now() < giveUp) {
        colleagueUploads(path, text);
        if (colleague.modificationDate(path) - before > precision) return;
        std::this_thread::sleep_for(pause);
    }
    throw std::runtime_error("uploading " + path + " again does not change its date on the server");
}

void Office::requirePhase(Phase phase) {
    const auto settled = [this] {
        const auto& now = status();
        return now.failed() || now.phase == Phase::watching || program().reviews().contains(profile.id)
               || !program().running(profile.id);
    };
    const bool inTime = waitUntil(settled);
    const auto& now = status();
    require(
        inTime && now.phase == phase && !now.unsaved,
        "the status is \"" + now.title() + "\" (" + now.detail + "), not \"" + factsOf(phase).title + '"');
}

} // namespace zembrastel
