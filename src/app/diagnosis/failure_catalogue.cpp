#include "app/diagnosis/failure_catalogue.h"

#include "platform/text.h"

#include <algorithm>
#include <optional>

namespace zembrastel {
namespace {

using Action = FailureAction;

enum class Argument { host, folder, port };

// One kind of failure. Entries with a reply come before those without.
struct Entry {
    CurlCode code;
    std::optional<FtpReply> reply; // any, if nullopt
    const char* heading;
    const char* next;
    Action first = Action::retry;
    std::vector<Argument> inHeading = {};
};

constexpr const char* checkProtocol = "Check the protocol and the port in the profile.";
constexpr const char* noFault = "Nothing is wrong with the profile. Try again in some minutes.";
constexpr const char* closed = "The server closed the connection.";
constexpr const char* noSpace = "The server has no space left for your files.";
constexpr const char* makeRoom = "Delete files there, or ask the hosting provider for more space.";
constexpr const char* mayNotWrite = "You may not write to this folder on the server.";
constexpr const char* cannotRead = "The server does not let you read this folder.";
constexpr const char* askForWriting = "Ask the hosting provider to let this user name write there.";

const std::vector<Entry>& entries() {
    using enum Argument;
    static const std::vector<Entry> all{
        {CurlCode::badUrl,
         {},
         "The server's name or the remote folder is not valid.",
         "Check both in the profile.",
         Action::editProfile},
        {CurlCode::hostNotFound,
         {},
         "The server name {0} is not known.",
         "Check the name in the profile, and whether this machine is online.",
         Action::editProfile,
         {host}},
        {CurlCode::notConnected,
         {},
         "There is no answer from {0} at port {1}.",
         "Check the server's name and the port in the profile, and whether this machine is online.",
         Action::editProfile,
         {host, port}},
        {CurlCode::noSuchFolder,
         {},
         "The folder {0} does not exist on {1}.",
         "Create it, or choose another folder in the profile.",
         Action::createFolder,
         {folder, host}},
        {CurlCode::partialFile, {}, closed, noFault},
        {CurlCode::transferRefused,
         {},
         "The server did not send what was requested.",
         "Check whether your user name may read the folder.",
         Action::retry},
        {CurlCode::commandRefused, FtpReply::notAllowed, mayNotWrite, askForWriting},
        {CurlCode::commandRefused,
         {},
         "The server refused a command.",
         "Ask the hosting provider whether files on the server may be replaced and renamed."},
        {CurlCode::uploadRefused, FtpReply::nameRefused, "The server does not accept this file name.",
         "Give the file another name, or exclude it in the profile.", Action::editProfile},
        {CurlCode::uploadRefused, FtpReply::quotaExceeded, noSpace, makeRoom},
        {CurlCode::uploadRefused, FtpReply::spaceUsedUp, noSpace, makeRoom},
        {CurlCode::uploadRefused, {}, mayNotWrite, askForWriting},
        {CurlCode::timedOut, FtpReply::hangsUp, "The server takes no further connection.",
         "Close other FTP programs that use this account, or try again in some minutes."},
        {CurlCode::timedOut,
         {},
         "{0} does not answer.",
         "Check the server's name and the port in the profile. A firewall may also block the connection.",
         Action::retry,
         {host}},
        {CurlCode::tlsFailed,
         {},
         "The server and this machine do not agree on an encryption.",
         checkProtocol,
         Action::editProfile},
        {CurlCode::sendFailed, {}, closed, noFault},
        {CurlCode::receiveFailed, {}, closed, noFault},
        {CurlCode::untrustedCertificate,
         {},
         "The certificate of {0} cannot be verified.",
         "Nothing has been sent, not even the password. Check the server's name, or trust its key.",
         Action::reviewCertificate,
         {host}},
        {CurlCode::wrongKey,
         {},
         "The key of {0} has changed.",
         "It is not the one that this profile trusts. Either your provider has replaced the key, or another server is "
         "in "
         "between. Nothing has been sent, not even the password.",
         Action::compareKeys,
         {host}},
        {CurlCode::tlsRefused,
         {},
         "The server does not encrypt.",
         "Choose another protocol in the profile, or ask the hosting provider for FTPS.",
         Action::editProfile},
        {CurlCode::loginRefused,
         {},
         "The server refused the username or the password.",
         "Check both in the profile, then test the connection there.",
         Action::editProfile},
        {CurlCode::noSpace, {}, noSpace, makeRoom},
        {CurlCode::noSuchFile, {}, "The file does not exist on the server.", "It may have been removed meanwhile."}};
    return all;
}

const Entry* find(const Failure& failure) {
    const auto found = std::ranges::find_if(entries(), [&failure](const Entry& entry) {
        return entry.code == failure.code && (!entry.reply || *entry.reply == failure.reply);
    });
    return found == entries().end() ? nullptr : &*found;
}

std::string valueOf(Argument argument, const Profile& profile) {
    switch (argument) {
    case Argument::host:
        return printable(profile.host);
    case Argument::folder:
        return printable(profile.remoteFolder);
    case Argument::port:
        return std::to_string(profile.port);
    }
    return {};
}

std::vector<Action> withUsualActions(Action first) {
    std::vector<Action> actions{first};
    if (first == Action::createFolder) actions.push_back(Action::editProfile);
    if (first != Action::retry) actions.push_back(Action::retry);
    actions.push_back(Action::pause);
    return actions;
}

} // namespace

std::string Phrase::text() const {
    std::string result;
    for (std::string_view rest = pattern; !rest.empty();) {
        const auto open = rest.find('{');
        result += rest.substr(0, open);
        if (open == std::string_view::npos) break;
        result += arguments.at(static_cast<std::size_t>(rest.at(open + 1) - '0'));
        rest.remove_prefix(open + std::string_view("{0}").size());
    }
    return result;
}

std::string Explanation::text() const {
    const std::string step = next.text();
    return heading.text() + (step.empty() ? "" : " ") + step;
}

std::string explainedText(const Failure& failure, const Profile& profile) {
    const auto explanation = explain(failure, profile);
    const bool namesFile = !failure.path.empty() && !explanation.details.empty();
    return (namesFile ? printable(failure.path) + ": " : "") + explanation.text();
}

Explanation explain(const Failure& failure, const Profile& profile) {
    if (failure.kind == Failure::Kind::noNetwork) {
        return {
            .heading = {.pattern = "There is no network connection."},
            .next = {.pattern = "Nothing is wrong with the profile. Zembrastel goes on when the network is back."},
            .actions = withUsualActions(Action::retry),
            .details = withoutGeneralAdvice(failure.message)};
    }
    if (failure.kind != Failure::Kind::transfer) {
        return {
            .heading = {.pattern = "{0}", .arguments = {sentence(failure.message)}},
            .next = {},
            .actions = withUsualActions(Action::retry),
            .details = {}};
    }
    // The message about a wrong key is the program's own.
    const std::string details = failure.code == CurlCode::wrongKey ? "" : withoutGeneralAdvice(failure.message);
    if (failure.code == CurlCode::noSuchFolder && !lacksRemoteFolder(failure, profile)) {
        const bool isOfFile = !failure.path.empty();
        return {
            .heading = {.pattern = isOfFile ? mayNotWrite : cannotRead},
            .next = {.pattern = isOfFile ? askForWriting : "Choose another folder in the profile."},
            .actions = withUsualActions(isOfFile ? Action::retry : Action::editProfile),
            .details = details};
    }
    const Entry* const entry = find(failure);
    if (entry == nullptr) {
        return {
            .heading = {.pattern = "The transfer failed."},
            .next = {.pattern = "The details have the reason."},
            .actions = withUsualActions(Action::retry),
            .details = details,
            .known = false};
    }
    Explanation explanation{
        .heading = {.pattern = entry->heading},
        .next = {.pattern = entry->next},
        .actions = withUsualActions(entry->first),
        .details = details};
    for (const auto argument : entry->inHeading) {
        explanation.heading.arguments.push_back(valueOf(argument, profile));
    }
    return explanation;
}

Explanation explainListing(const Failure& failure, const Profile& profile) {
    auto explanation = explain(failure, profile);
    const bool isRefused = failure.code == CurlCode::noSuchFolder || failure.code == CurlCode::transferRefused;
    if (isRefused) explanation.heading = {.pattern = cannotRead};
    return explanation;
}

Explanation explainCreation(const Failure& failure, const Profile& profile) {
    auto explanation = explain(failure, profile);
    if (failure.code != CurlCode::noSuchFolder) return explanation;
    explanation.heading = {
        .pattern = "The server did not create the folder {0}.", .arguments = {printable(profile.remoteFolder)}};
    explanation.next = {.pattern = "A file may already have this name, or your user name may not write there."};
    return explanation;
}

bool lacksRemoteFolder(const Failure& failure, const Profile& profile) {
    const bool isTop = profile.remoteFolder.find_first_not_of('/') == std::string::npos;
    return failure.code == CurlCode::noSuchFolder && failure.path.empty() && !isTop;
}

std::string withoutGeneralAdvice(const std::string& message) {
    const auto advice = message.find("\nMore details here: https://curl.se/");
    return std::string(trimmed(message.substr(0, advice)));
}

} // namespace zembrastel
