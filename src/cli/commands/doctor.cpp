#include "cli/commands/doctor.h"

#include "app/diagnosis/diagnosis.h"
#include "app/diagnosis/support_details.h"
#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/password_mask.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

using Outcome = Finding::Outcome;

struct Request {
    std::string name;
    bool write = false;
};

// What is to be seen without the server.
Finding localFolder(const Profile& profile) {
    std::error_code failed;
    if (std::filesystem::is_directory(profile.localFolder, failed)) {
        return {.subject = "localFolder", .text = "The local folder is there."};
    }
    return {
        .subject = "localFolder",
        .outcome = Outcome::wrong,
        .text = "The local folder " + profile.localFolder + " is not there.",
        .remedy = "Connect the disk it is on, or choose another local folder in the profile."};
}

void tellAsJson(const Profile& profile, const std::vector<Finding>& findings, Output& output) {
    for (const auto& each : findings) {
        JsonLine object("finding");
        object.text("profile", profile.name).text("id", profile.id.text()).text("subject", each.subject);
        object.text("outcome", word(each.outcome)).text("text", each.text).text("remedy", each.remedy);
        output.line(object);
    }
}

std::string mark(Outcome outcome) {
    switch (outcome) {
    case Outcome::fine:
        return "  ok      ";
    case Outcome::unknown:
        return "  ?       ";
    case Outcome::notice:
        return "  note    ";
    case Outcome::wrong:
        break;
    }
    return "  WRONG   ";
}

void tellRemedies(const std::vector<Finding>& findings, Outcome outcome, const std::string& heading, Output& output) {
    bool first = true;
    for (const auto& each : findings) {
        if (each.outcome != outcome) continue;
        if (first) output.line("\n" + heading);
        first = false;
        output.line("- " + oneLine(each.text) + "\n  " + oneLine(each.remedy));
    }
}

void tell(const std::vector<Finding>& findings, Output& output) {
    output.line("\nWhat was looked at");
    for (const auto& each : findings) output.line(mark(each.outcome) + oneLine(each.text));
    tellRemedies(findings, Outcome::wrong, "What is wrong, and what helps", output);
    tellRemedies(findings, Outcome::notice, "What to know", output);
    if (std::ranges::count(findings, Outcome::wrong, &Finding::outcome) == 0) output.line("\nNothing is wrong.");
}

ExitCode exitCode(const std::vector<Finding>& findings) {
    const auto bad = std::ranges::find(findings, Outcome::wrong, &Finding::outcome);
    if (bad == findings.end()) return ExitCode::done;
    const bool login = std::ranges::any_of(
        findings, [](const auto& each) { return each.outcome == Outcome::wrong && each.subject == "login"; });
    return login ? ExitCode::refused : ExitCode::failed;
}

ExitCode examine(const Surroundings& around, const Request& request) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, request.name);
    Output& output = around.output;
    std::vector<Finding> findings{localFolder(profile)};
    std::string details;
    callServer(profile, around, "examine the server", [&](const FTPTransport& server) {
        details = supportDetails(
            {.program = "zembrastel-cli " ZEMBRASTEL_VERSION, .profile = profile, .password = server.password});
        if (!output.json()) output.line(details.substr(0, details.size() - 1));
        const auto seen = probeServer(
            server, request.write, systemClock(), [&output](const std::string& step) { output.note(step + "."); });
        for (auto& each : diagnose(profile, seen)) {
            each.text = withoutPassword(std::move(each.text), server.password);
            findings.push_back(std::move(each));
        }
    });
    if (output.json()) {
        JsonLine object("details");
        output.line(object.text("profile", profile.name).text("id", profile.id.text()).text("text", details));
        tellAsJson(profile, findings, output);
    } else {
        tell(findings, output);
    }
    return exitCode(findings);
}

} // namespace

void addDoctor(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("doctor", "Find out what is wrong with a server, and what to ask the hoster");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command->add_flag(
        "--write", request->write,
        "Also upload a small test file, replace it, and delete it:\nnothing else on the server is touched");
    command->footer("Looks at name, port, encryption, login, folder, listings, dates and clock, one\n"
                    "after another. What it prints contains no password and can be sent to whoever\n"
                    "helps. Exits with 1, or 5 for a refused login, when something is wrong.");
    command->callback(
        [&chosen, request] { chosen = [request](const Surroundings& around) { return examine(around, *request); }; });
}

} // namespace zembrastel::cli
