#include "cli/session/server_call.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/error.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zembrastel::cli {

namespace {

// What to look at after the commonest failures, by the beginning of curl's words for them.
constexpr std::array<std::pair<std::string_view, const char*>, 7> hints{{
    {"curl: (6) ", " Check the name of the server."},
    {"curl: (7) ", " Check the name of the server and the port."},
    {"curl: (9) ", " Check the remote folder."},
    {"curl: (35) ", " Check the transport and the port."},
    {"curl: (60) ", " Check the name of the server; its certificate must be one that this machine trusts."},
    {"curl: (64) ", " Check the transport: this server does not encrypt."},
    {"curl: (67) ", " Check the user name and the password."},
}};

std::string hintFor(std::string_view failure) {
    const auto known = std::ranges::find_if(hints, [&](const auto& hint) { return failure.starts_with(hint.first); });
    return known == hints.end() ? "" : known->second;
}

} // namespace

CommandError serverFailure(
    const Profile& profile, const std::string& aim, const std::string& failure, const std::string& consequence) {
    return {
        exitCodeOf(failure), "Cannot " + aim + " of " + inQuotes(profile.name) + " (" + serverName(profile)
                                 + "): " + sentence(failure) + hintFor(failure) + (consequence.empty() ? "" : " ")
                                 + consequence};
}

void callServer(
    const Profile& profile, const Surroundings& around, const std::string& aim,
    const std::function<void(const FTPTransport&)>& talk) {
    const auto control = std::make_shared<TransferControl>();
    const FTPTransport transport{
        .profile = profile,
        .password = passwordFor(profile, around),
        .control = control,
        .privateItems = privateItems(around.options)};
    const auto interruptible = around.interrupt.during([control] { control->cancel(); });
    try {
        talk(transport);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw serverFailure(profile, aim, describe(error));
    }
}

} // namespace zembrastel::cli
