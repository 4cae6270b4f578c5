#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/folder.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"

#include <cerrno>
#include <csignal>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr const char* curlExecutable = "/usr/bin/curl";
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
constexpr const char* withoutWords = "Transfer failed.";
constexpr int curlCouldNotWrite = 23; // and does not say why

// Far more than a folder of a million items takes. A listing without an end would fill the disk, and then the memory.
constexpr std::uint64_t longestListing = std::uint64_t{128} << 20;

std::string errorText(int file, const std::filesystem::path& name) {
    try {
        return readContents(file, name);
    } catch (const std::filesystem::filesystem_error&) {
        return ""; // curl's failure is the one to report, with or without its words
    }
}

std::string replaceAll(std::string text, std::string_view what, std::string_view with) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

// The sentence for a run that failed: curl's own words, without the password should the server have repeated it.
std::string failureMessage(std::string text, const std::string& password) {
    if (!isValidUtf8(text)) return withoutWords;
    if (!password.empty()) text = replaceAll(std::move(text), password, "••••");
    const auto words = trimmed(text);
    // A curl that a signal ended has said nothing.
    return words.empty() ? withoutWords : std::string(words);
}

// Why the file takes no more, as the system says; nothing when it does.
std::optional<int> fullness(int file) {
    struct stat attributes {};
    if (::fstat(file, &attributes) != 0 || ::pwrite(file, "", 1, attributes.st_size) == 1) return std::nullopt;
    return errno;
}

// Called again and again while the child runs.
using Look = std::function<void(const ChildProcess& process)>;

void waitFor(const ChildProcess& process, const Look& look) {
    if (!look) {
        process.wait();
        return;
    }
    while (!process.wait(observationInterval)) look(process);
}

// Runs the child under the control until it ends by itself or is cancelled.
ChildProcess::Exit runUnder(
    TransferControl& control, ChildProcess& process, std::string_view configuration, const Look& look) {
    struct Registration {
        TransferControl& control;
        ~Registration() { control.clear(); }
    };
    {
        control.launch(process);
        const Registration registered{control};
        if (!process.writeInput(configuration)) process.terminate();
        process.closeInput();
        waitFor(process, look);
    }
    return process.collect();
}

} // namespace

std::string FTPTransport::run(
    std::string_view path, bool directory, const std::vector<TransferOption>& options, int localFile,
    const Position& position) const {
    control->check();
    const auto configuration = curlConfiguration(profile, password, path, directory, options);
    const PrivateFolder working;
    const Folder& folder = working.folder();
    const Descriptor output = folder.create("out", ownerOnly);
    const Descriptor errors = folder.create("err", ownerOnly);
    ChildProcess process(
        {.executable = curlExecutable,
         .arguments = {"--disable", "--config", "-"},
         .output = output.get(),
         .errors = errors.get(),
         .file = localFile,
         .mostWritten = directory ? std::optional(longestListing) : std::nullopt});
    Look look;
    if (observer != nullptr && position) {
        look = [this, &position](const ChildProcess& curl) {
            if (const auto bytes = position(curl)) observer->fileMoved(*bytes);
        };
    }
    const auto exit = runUnder(*control, process, configuration, look);
    control->check();
    if (exit.exited && exit.code == 0) return readContents(output.get(), folder.path() / "out");
    if (!exit.exited && exit.code == SIGXFSZ) throw SyncError("The server's directory listing is too long.");
    std::string words = failureMessage(errorText(errors.get(), folder.path() / "err"), password);
    if (words == withoutWords) {
        if (const auto full = fullness(errors.get())) throwFileError("write", folder.path(), *full);
    } else if (exit.code == curlCouldNotWrite) {
        const auto full = fullness(localFile >= 0 ? localFile : output.get());
        if (full) words += ": " + std::system_category().message(*full);
    }
    throw SyncError(words);
}

} // namespace zembrastel
