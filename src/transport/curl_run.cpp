#include "model/error.h"
#include "model/password_mask.h"
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

// The sentence for a run that failed: curl's own words, without the password should the server have repeated it.
std::string failureMessage(std::string text, const std::string& password) {
    if (!isValidUtf8(text)) return withoutWords;
    text = withoutPassword(std::move(text), password);
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

// One curl that has ended, and what it left.
class Run {
public:
    Run(TransferControl& control, const std::string& configuration, std::optional<std::uint64_t> mostWritten,
        int localFile, const Look& look = {}) {
        ChildProcess process(
            {.executable = curlExecutable,
             .arguments = {"--disable", "--config", "-"},
             .output = output.get(),
             .errors = errors.get(),
             .file = localFile,
             .mostWritten = mostWritten});
        exit = runUnder(control, process, configuration, look);
        control.check();
    }

    [[nodiscard]] bool succeeded() const { return exit.exited && exit.code == 0; }
    [[nodiscard]] bool wroteTooMuch() const { return !exit.exited && exit.code == SIGXFSZ; }

    [[nodiscard]] std::string outputText() const { return readContents(output.get(), folder().path() / "out"); }
    [[nodiscard]] std::string errorsText() const { return errorText(errors.get(), folder().path() / "err"); }
    [[nodiscard]] const Folder& folder() const { return working.folder(); }

    const PrivateFolder working;
    const Descriptor output = folder().create("out", ownerOnly);
    const Descriptor errors = folder().create("err", ownerOnly);
    ChildProcess::Exit exit;
};

constexpr const char* listingTooLong = "The server's directory listing is too long.";

// What follows `beginning` in the line, without the line's end; nothing for another line.
std::optional<std::string_view> after(std::string_view beginning, std::string_view line) {
    if (!line.starts_with(beginning)) return std::nullopt;
    return trimmed(line.substr(beginning.size()));
}

// Sorts out what a talkative curl wrote: marks at the beginning of a line say whose words it has.
void readTranscript(std::string_view text, Conversation& conversation) {
    // The last lines are curl's own message.
    const auto message = text.starts_with("curl: (") ? 0 : text.find("\ncurl: (");
    if (message != std::string_view::npos) {
        conversation.failure = trimmed(text.substr(message));
        text = text.substr(0, message);
    }
    for (const auto line : split(text, '\n')) {
        if (const auto reply = after("< ", line)) conversation.replies.emplace_back(printable(*reply));
        if (after("* Connected to ", line)) conversation.connected = true;
    }
}

} // namespace

std::string FTPTransport::run(
    std::string_view path, bool directory, const std::vector<TransferOption>& options, int localFile,
    const Position& position, std::optional<std::uint64_t> mostWritten) const {
    control->check();
    const auto configuration = curlConfiguration(profile, password, path, directory, options);
    Look look;
    if (observer != nullptr && position) {
        look = [this, &position](const ChildProcess& curl) {
            if (const auto bytes = position(curl)) observer->fileMoved(*bytes);
        };
    }
    if (directory) mostWritten = longestListing;
    const Run done(*control, configuration, mostWritten, localFile, look);
    if (done.succeeded()) return done.outputText();
    if (done.wroteTooMuch()) throw SyncError(directory ? listingTooLong : "The server's file is too long.");
    std::string words = failureMessage(done.errorsText(), password);
    if (words == withoutWords) {
        if (const auto full = fullness(done.errors.get())) throwFileError("write", done.folder().path(), *full);
    } else if (done.exit.code == curlCouldNotWrite) {
        const auto full = fullness(localFile >= 0 ? localFile : done.output.get());
        if (full) words += ": " + std::system_category().message(*full);
    }
    throw SyncError(words);
}

Conversation FTPTransport::converse(
    std::string_view path, bool directory, std::vector<TransferOption> options, int localFile) const {
    control->check();
    options.push_back({"verbose"});
    const auto configuration = curlConfiguration(profile, password, path, directory, options);
    const Run done(*control, configuration, directory ? std::optional(longestListing) : std::nullopt, localFile);
    Conversation conversation{.succeeded = done.succeeded()};
    if (done.succeeded()) conversation.output = done.outputText();
    readTranscript(withoutPassword(done.errorsText(), password), conversation);
    if (done.wroteTooMuch()) conversation.failure = listingTooLong;
    if (!done.succeeded() && (conversation.failure.empty() || !isValidUtf8(conversation.failure))) {
        conversation.failure = withoutWords;
    }
    return conversation;
}

} // namespace zembrastel
