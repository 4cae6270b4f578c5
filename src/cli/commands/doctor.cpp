#include "cli/commands.h"

#include "app/diagnosis/diagnosis.h"
#include "app/diagnosis/support_details.h"
#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/password_store.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

struct DoctorRequest {
    std::string name;
    bool write = false;
};

Finding localFolderFinding(const Profile& profile) {
    std::error_code failed;
    if (std::filesystem::is_directory(profile.localFolder, failed)) {
        return {.subject = Subject::localFolder, .text = "The local folder exists."};
    }
    return {
        .subject = Subject::localFolder,
        .outcome = Finding::Outcome::wrong,
        .text = "The local folder " + profile.localFolder + " does not exist.",
        .remedy = "Connect the disk it is on, or choose another local folder in the profile."};
}

void printFindingsAsJson(const Profile& profile, const std::vector<Finding>& findings, Output& output) {
    for (const auto& each : findings) {
        auto object = JsonLine::forProfile("finding", profile);
        object.text("subject", word(each.subject));
        object.text("outcome", word(each.outcome)).text("text", each.text).text("remedy", each.remedy);
        output.line(object);
    }
}

std::string outcomeMark(Finding::Outcome outcome) {
    switch (outcome) {
    case Finding::Outcome::fine:
        return translate("  ok      ");
    case Finding::Outcome::unknown:
        return "  ?       ";
    case Finding::Outcome::notice:
        return translate("  note    ");
    case Finding::Outcome::wrong:
        break;
    }
    return translate("  WRONG   ");
}

void printRemedies(
    const std::vector<Finding>& findings, Finding::Outcome outcome, const std::string& heading, Output& output) {
    bool first = true;
    for (const auto& each : findings) {
        if (each.outcome != outcome) continue;
        if (first) output.line("\n" + heading);
        first = false;
        output.line(
            "- " + translateEngineText(oneLine(each.text)) + "\n  " + translateEngineText(oneLine(each.remedy)));
    }
}

void printFindings(const std::vector<Finding>& findings, Output& output) {
    output.line("\n" + translate("Checks"));
    for (const auto& each : findings) output.line(outcomeMark(each.outcome) + translateEngineText(oneLine(each.text)));
    printRemedies(findings, Finding::Outcome::wrong, translate("Problems and fixes"), output);
    printRemedies(findings, Finding::Outcome::notice, translate("Notes"), output);
    if (std::ranges::count(findings, Finding::Outcome::wrong, &Finding::outcome) == 0)
        output.line("\n" + translate("No problems found."));
}

ExitCode doctorExitCode(const std::vector<Finding>& findings) {
    const auto bad = std::ranges::find(findings, Finding::Outcome::wrong, &Finding::outcome);
    if (bad == findings.end()) return ExitCode::done;
    const bool login = std::ranges::any_of(findings, [](const auto& each) {
        return each.outcome == Finding::Outcome::wrong && each.subject == Subject::login;
    });
    return login ? ExitCode::refused : ExitCode::failed;
}

ExitCode examineServer(const CommandContext& context, const DoctorRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    Output& output = context.output;
    std::vector<Finding> findings{localFolderFinding(profile)};
    std::string details;
    callServer(
        profile, context, {translatable("Cannot examine the server of %1 (%2): %3")}, [&](const FTPTransport& server) {
            details = supportDetails(
                {.program = "zembrastel-cli " ZEMBRASTEL_VERSION, .profile = profile, .password = server.password});
            // For the hosting provider as well, so they stay English.
            if (!output.json()) output.line(details.substr(0, details.size() - 1));
            const auto seen = probeServer(server, request.write, systemClock(), [&output](const std::string& step) {
                output.note(translateEngineText(step + "."));
            });
            for (auto& each : diagnose(profile, seen)) {
                each.text = withoutPassword(std::move(each.text), server.password);
                findings.push_back(std::move(each));
            }
        });
    if (output.json()) {
        auto object = JsonLine::forProfile("details", profile);
        output.line(object.text("text", details));
        printFindingsAsJson(profile, findings, output);
    } else {
        printFindings(findings, output);
    }
    return doctorExitCode(findings);
}

} // namespace

void addDoctor(Syntax& parent) {
    auto [command, request] =
        parent.command("doctor", "Find problems with a server, and what to ask the hosting provider", examineServer);
    command.profileArgument(request.name);
    command.flag(
        "--write", request.write,
        "Also upload a small test file, replace it, and delete it:\nnothing else on the server is touched");
    command.footer("Checks name, port, encryption, login, folder, listings, dates and clock, one after\n"
                   "another. The output contains no password: you can send it to the people who help\n"
                   "you. Ends with 1, or 5 for a refused login, if there is a problem.");
}

} // namespace zembrastel::cli
