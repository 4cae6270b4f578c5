#include "cli/session/server_call.h"

#include "app/diagnosis/connection_diagnosis.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/error.h"

#include <algorithm>
#include <array>

namespace zembrastel::cli {
namespace {

// The exit codes of curl that lead to a hint or an exit code of ours.
enum class CurlCode {
    unknownHost = 6,
    notConnected = 7,
    folderRefused = 9,
    tlsFailed = 35,
    certificateRefused = 60,
    tlsNotOffered = 64,
    loginRefused = 67
};

// The model and the running program report failures as text, which begins with curl's code.
CurlCode curlCodeOf(const std::string& failure) { return static_cast<CurlCode>(curlCode(failure)); }

struct Hint {
    CurlCode code;
    const char* text;
};

// For the most common failures.
constexpr std::array hints{
    Hint{CurlCode::unknownHost, " Check the name of the server."},
    Hint{CurlCode::notConnected, " Check the name of the server and the port."},
    Hint{CurlCode::folderRefused, " Check the remote folder."},
    Hint{CurlCode::tlsFailed, " Check the transport and the port."},
    Hint{
        CurlCode::certificateRefused,
        " Check the name of the server. To see its certificate, and to trust its key: profile trust."},
    Hint{CurlCode::tlsNotOffered, " Check the transport: this server does not encrypt."},
    Hint{CurlCode::loginRefused, " Check the user name and the password."}};

std::string hintFor(const std::string& failure) {
    const auto known = std::ranges::find(hints, curlCodeOf(failure), &Hint::code);
    return known == hints.end() ? "" : known->text;
}

} // namespace

ExitCode serverExitCode(const std::string& failure) {
    return curlCodeOf(failure) == CurlCode::loginRefused ? ExitCode::refused : ExitCode::failed;
}

std::string comparisonAim(const Profile& profile) {
    return "compare the local folder " + oneLine(profile.localFolder) + " with the server";
}

CommandError downloadPending(const Profile& profile) {
    return {
        ExitCode::failed,
        inQuotes(profile.name) + " still has its initial download to do; run watch or push --download-first."};
}

void requireDownloaded(const Profile& profile) {
    if (profile.needsDownload) throw downloadPending(profile);
}

CommandError serverFailure(
    const Profile& profile, const std::string& aim, const std::string& failure, const std::string& consequence) {
    return {
        serverExitCode(failure), "Cannot " + aim + " of " + inQuotes(profile.name) + " (" + serverName(profile)
                                     + "): " + sentence(failure) + hintFor(failure) + (consequence.empty() ? "" : " ")
                                     + consequence};
}

void callServer(
    const Profile& profile, const CommandContext& context, const std::string& aim,
    const std::function<void(const FTPTransport&)>& talk) {
    const auto password = passwordFor(profile, context);
    const auto privateItems = StateFolder(context.options).privateItems();
    callServerWithoutLogin(profile, context, aim, [&](const std::shared_ptr<TransferControl>& control) {
        talk({.profile = profile, .password = password, .control = control, .privateItems = privateItems});
    });
}

void callServerWithoutLogin(
    const Profile& profile, const CommandContext& context, const std::string& aim,
    const std::function<void(const std::shared_ptr<TransferControl>&)>& talk) {
    const auto control = std::make_shared<TransferControl>();
    const auto interruptible = context.interrupt.during([control] { control->cancel(); });
    try {
        talk(control);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw serverFailure(profile, aim, describe(error));
    }
}

} // namespace zembrastel::cli
