#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/folder.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/remote_url.h"

#include <fcntl.h>

namespace zembrastel {
namespace {

constexpr const char* curlExecutable = "/usr/bin/curl";

std::vector<TransferOption> baseOptions(const FTPTransport& transport, std::string_view path, bool directory) {
    const Profile& profile = transport.profile;
    std::vector<TransferOption> options{
        {"silent"},
        {"show-error"},
        {"globoff"},
        {"connect-timeout", "15"},
        {"max-time", "600"},
        {"speed-time", "30"},
        {"speed-limit", "1"},
        {"ftp-pasv"},
        {"proxy", ""},
        {"proto", "=ftp,ftps"},
        {"user", profile.username + ":" + transport.password},
        {"url", url(profile, path, directory)},
        {"quote", "*OPTS UTF8 ON"},
    };
    if (profile.transport != TransferProtocol::ftp) options.push_back({"ssl-reqd"});
    return options;
}

std::string configurationText(const std::vector<TransferOption>& options) {
    std::string text;
    for (const auto& [key, value] : options) {
        text += key;
        if (value) text += " = " + quote(*value);
        text += '\n';
    }
    return text;
}

Descriptor createOutput(const std::filesystem::path& file) {
    Descriptor opened(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!opened) throwFileError("open", file);
    return opened;
}

std::string errorText(const std::filesystem::path& file) {
    try {
        return readFile(file).value_or("");
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
    constexpr const char* withoutWords = "Transfer failed.";
    if (!isValidUtf8(text)) return withoutWords;
    if (!password.empty()) text = replaceAll(std::move(text), password, "••••");
    const auto words = trimmed(text);
    // A curl that a signal ended has said nothing.
    return words.empty() ? withoutWords : std::string(words);
}

// Runs the child under the control until it ends by itself or is cancelled.
ChildProcess::Exit runUnder(TransferControl& control, ChildProcess& process, std::string_view configuration) {
    struct Registration {
        TransferControl& control;
        ~Registration() { control.clear(); }
    };
    {
        control.launch(process);
        const Registration registered{control};
        if (!process.writeInput(configuration)) process.terminate();
        process.closeInput();
        process.wait();
    }
    return process.collect();
}

} // namespace

std::string FTPTransport::run(
    std::string_view path, bool directory, const std::vector<TransferOption>& options,
    const Folder* workingFolder) const {
    control->check();
    if (containsLineBreak(password) || password.find('\0') != std::string::npos) {
        throw SyncError("FTP passwords cannot contain line breaks or null characters.");
    }
    const PrivateFolder folder;
    const Descriptor output = createOutput(folder.path() / "out");
    const Descriptor errors = createOutput(folder.path() / "err");
    auto all = baseOptions(*this, path, directory);
    all.insert(all.end(), options.begin(), options.end());
    ChildProcess process(
        {.executable = curlExecutable,
         .arguments = {"--disable", "--config", "-"},
         .output = output.get(),
         .errors = errors.get(),
         .workingFolder = workingFolder == nullptr ? -1 : workingFolder->descriptor()});
    const auto exit = runUnder(*control, process, configurationText(all));
    control->check();
    if (exit.exited && exit.code == 0) return readFile(folder.path() / "out").value_or("");
    throw SyncError(failureMessage(errorText(folder.path() / "err"), password));
}

} // namespace zembrastel
