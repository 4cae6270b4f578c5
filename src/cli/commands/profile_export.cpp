#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/files.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

struct ExportRequest {
    std::vector<std::string> names;
    std::string file;
};

ExitCode exportProfiles(const CommandContext& context, const ExportRequest& request) {
    const auto profiles = StateFolder(context.options).loadProfiles();
    ProfileExport exported;
    for (const auto& name : request.names) exported.profiles.push_back(chooseProfile(profiles, name));
    if (request.names.empty()) exported.profiles = profiles;
    const std::string json = printableJson(encode(exported));
    if (request.file.empty()) {
        context.output.line(json);
        return ExitCode::done;
    }
    try {
        writeAtomically(std::filesystem::absolute(request.file), json + '\n');
    } catch (const std::exception& error) {
        throw CommandError(ExitCode::failed, translate("Cannot write the export: %1", {reasonText(error)}));
    }
    context.output.note(translatePlural(
        "Exported %n profile to %1.", "Exported %n profiles to %1.", exported.profiles.size(), {request.file}));
    return ExitCode::done;
}

} // namespace

void addProfileExport(Syntax& parent) {
    auto [command, request] =
        parent.command("export", "Print profiles, without passwords, for profile import elsewhere", exportProfiles);
    command.argument("NAME", request.names, "Names or ids of profiles (default: all)").optional();
    command.option("--output", request.file, "FILE", "Write to FILE instead, which only you can read").notEmpty();
    command.footer("Example:\n"
                   "  zembrastel-cli profile export --output profiles-export.json");
}

} // namespace zembrastel::cli
