#include "cli/session/server_call.h"

#include "app/diagnosis/failure_catalogue.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/wake_signals.h"

namespace zembrastel::cli {

ExitCode serverExitCode(const Failure& failure) {
    return failure.code == CurlCode::loginRefused ? ExitCode::refused : ExitCode::failed;
}

std::string explainedForCommand(const Failure& failure, const Profile& profile) {
    if (failure.kind == Failure::Kind::noNetwork) { // only a program that goes on tries again by itself
        return translateEngineText(explain(failure, profile).heading.text()) + " "
               + translate("Nothing is wrong with the profile. Try again when the network is back.");
    }
    return translateEngineText(explainedText(failure, profile));
}

ServerAim comparisonAim(const Profile& profile) {
    return {
        translatable("Cannot compare the local folder %4 with the server of %1 (%2): %3"),
        oneLine(profile.localFolder)};
}

CommandError downloadPending(const Profile& profile) {
    return {
        ExitCode::failed,
        translate(
            "%1 still has its initial download to do; run watch or push --download-first.", {inQuotes(profile.name)})};
}

void requireDownloaded(const Profile& profile) {
    if (profile.needsDownload) throw downloadPending(profile);
}

namespace {

// What only the command line offers.
std::string commandFor(const Failure& failure, const Profile& profile) {
    if (failure.code == CurlCode::untrustedCertificate) {
        return " " + translate("To see the certificate, and to trust its key: profile trust.");
    }
    return lacksRemoteFolder(failure, profile)
               ? " " + translate("To create it, give push or profile set --create-remote-folder.")
               : "";
}

} // namespace

CommandError serverFailure(
    const Profile& profile, const ServerAim& aim, const Failure& failure, const std::string& consequence) {
    return {
        serverExitCode(failure),
        translate(
            aim.failure, {inQuotes(profile.name), serverName(profile),
                          explainedForCommand(failure, profile) + commandFor(failure, profile)
                              + (consequence.empty() ? "" : " ") + consequence,
                          aim.folder}),
        explain(failure, profile).details};
}

void callServer(
    const Profile& profile, const CommandContext& context, const ServerAim& aim,
    const std::function<void(const FTPTransport&)>& talk, const std::optional<std::string>& known) {
    const auto password = known ? *known : passwordFor(profile, context);
    const auto privateItems = StateFolder(context.options).privateItems();
    callServerWithoutLogin(profile, context, aim, [&](const std::shared_ptr<TransferControl>& control) {
        talk({.profile = profile, .password = password, .control = control, .privateItems = privateItems});
    });
}

void callServerWithoutLogin(
    const Profile& profile, const CommandContext& context, const ServerAim& aim,
    const std::function<void(const std::shared_ptr<TransferControl>&)>& talk) {
    const auto control = std::make_shared<TransferControl>();
    const auto interruptible = context.interrupt.during([control] { control->cancel(); });
    try {
        talk(control);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        Failure failure = failureOf(error);
        if (mayBeOfNetwork(failure) && !hasNetworkFor(profile.host)) failure.kind = Failure::Kind::noNetwork;
        throw serverFailure(profile, aim, failure);
    }
}

void createRemoteFolder(
    const Profile& profile, const std::optional<std::string>& password, const CommandContext& context) {
    callServer(
        profile, context, {translatable("Cannot create the remote folder of %1 (%2): %3")},
        [](const FTPTransport& server) { server.createFolder(); }, password);
    context.output.note(translate("The remote folder %1 exists now.", {oneLine(profile.remoteFolder)}));
}

} // namespace zembrastel::cli
