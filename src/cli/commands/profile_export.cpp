#include "cli/commands/profile_export.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/option_texts.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "platform/files.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

struct Request {
    std::vector<std::string> names;
    std::string file;
};

ExitCode exportProfiles(const Surroundings& around, const Request& request) {
    const auto profiles = loadProfiles(around.options);
    ProfileExport exported;
    for (const auto& name : request.names) exported.profiles.push_back(chooseProfile(profiles, name));
    if (request.names.empty()) exported.profiles = profiles;
    const std::string json = printableJson(encode(exported));
    if (request.file.empty()) {
        around.output.line(json);
        return ExitCode::done;
    }
    try {
        writeAtomically(std::filesystem::absolute(request.file), json + '\n');
    } catch (const std::exception& error) {
        throw CommandError(ExitCode::failed, "Cannot write the export: " + sentence(describe(error)));
    }
    around.output.note("Exported " + counted(exported.profiles.size(), "profile") + " to " + request.file + ".");
    return ExitCode::done;
}

} // namespace

void addProfileExport(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("export", "Print profiles, without passwords, for profile import elsewhere");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->names, "Names or ids of profiles (default: all)")->type_name("");
    command->add_option("--output", request->file, "Write to FILE instead, for its owner alone")
        ->type_name("FILE")
        ->check(notEmpty());
    command->footer("Example:\n"
                    "  zembrastel-cli profile export --output profiles-export.json");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return exportProfiles(around, *request); };
    });
}

} // namespace zembrastel::cli
