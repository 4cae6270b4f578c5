#include "cli/commands/profile_import.h"

#include "app/profile_takeover.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_saving.h"
#include "cli/terminal/standard_input.h"
#include "cli/text/option_texts.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "model/import/profile_import.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string file;
    std::vector<std::string> only;
    std::string localFolder;
    std::string remoteFolder;
    bool withoutPasswords = false;
    bool onlyLooks = false;
};

ProfilesFound profilesIn(const std::string& file) {
    try {
        return file == "-" ? findProfiles(readStandardInput(), "profiles") : readProfiles(file);
    } catch (const std::exception& error) {
        const std::string name = file == "-" ? "the standard input" : inQuotes(file);
        throw CommandError(ExitCode::failed, "Cannot import " + name + ": " + sentence(describe(error)));
    }
}

void keepOnly(ProfilesFound& found, const std::vector<std::string>& names) {
    if (names.empty()) return;
    const auto isWanted = [&names](const std::string& name) { return std::ranges::find(names, name) != names.end(); };
    for (const auto& name : names) {
        const auto isIt = [&name](const auto& candidate) { return candidate.profile.name == name; };
        if (std::ranges::any_of(found.candidates, isIt)) continue;
        const auto skipped = std::ranges::find(found.skipped, name, &SkippedProfile::name);
        throw CommandError(
            ExitCode::failed,
            "There is no " + inQuotes(name) + " to import. "
                + (skipped == found.skipped.end() ? "Without --only all that there is comes along." : skipped->reason));
    }
    std::erase_if(found.candidates, [&](const auto& candidate) { return !isWanted(candidate.profile.name); });
    found.skipped.clear();
}

void applyFolders(ProfilesFound& found, const Request& request) {
    if (request.localFolder.empty() && request.remoteFolder.empty()) return;
    if (found.candidates.size() != 1) {
        throw CommandError(
            ExitCode::usage, "--local-folder and --remote-folder are for one profile; here are "
                                 + std::to_string(found.candidates.size()) + ". --only NAME takes one.");
    }
    Profile& profile = found.candidates.front().profile;
    if (!request.localFolder.empty()) profile.localFolder = std::filesystem::absolute(request.localFolder).string();
    if (request.remoteFolder.empty()) return;
    profile.remoteFolder = request.remoteFolder;
    std::erase_if(
        found.candidates.front().notes, [](const std::string& note) { return note.ends_with(rootTakenNote); });
}

// One run of the command.
class Import {
public:
    Import(EditableState& changed, const Request& asked, const Surroundings& surroundings)
        : state(changed), request(asked), output(surroundings.output) {}

    // All are saved in one step, and told of after it.
    void takeAll(std::vector<ProfileCandidate>& candidates) {
        try {
            state.model().saveTogether([&] {
                for (auto& candidate : candidates) take(candidate);
            });
        } catch (const std::exception& error) {
            for (const auto& id : passwordsOf) removeStored(id);
            throw CommandError(ExitCode::failed, "Nothing was imported: " + sentence(describe(error)));
        }
        for (const auto& tellOne : told) tellOne();
    }

    void skip(const SkippedProfile& skipped) {
        if (output.json()) {
            output.line(JsonLine("skipped").text("profile", skipped.name).text("reason", skipped.reason));
        } else {
            output.line("Skipped " + inQuotes(skipped.name) + ": " + oneLine(skipped.reason));
        }
    }

    std::size_t taken = 0;

private:
    void take(ProfileCandidate& candidate) {
        if (request.withoutPasswords) candidate.password.reset();
        try {
            const Profile profile = importable(candidate.profile, state.model().profiles());
            requireOwnFolder(profile.localFolder);
            if (!request.onlyLooks) state.add(profile, candidate.password);
            if (!request.onlyLooks && candidate.password) passwordsOf.push_back(profile.id);
            ++taken;
            told.emplace_back([this, profile, &candidate] { tell(profile, candidate); });
        } catch (const LocalFolderWanted& error) {
            skipLater(candidate, std::string(error.what()) + " --only NAME --local-folder PATH names one.");
        } catch (const std::exception& error) {
            skipLater(candidate, sentence(describe(error)));
        }
    }

    void skipLater(const ProfileCandidate& candidate, const std::string& reason) {
        told.emplace_back(
            [this, skipped = SkippedProfile{.name = candidate.profile.name, .reason = reason}] { skip(skipped); });
    }

    static void removeStored(const Uuid& id) {
        try {
            PasswordStore::remove(id);
        } catch (const SyncError&) {
            // What failed first is what the user is told.
        }
    }

    void tell(const Profile& profile, const ProfileCandidate& candidate) {
        if (output.json()) {
            JsonLine object(request.onlyLooks ? "importable" : "imported");
            object.text("profile", profile.name).text("id", profile.id.text());
            object.flag("password", candidate.password.has_value());
            object.list(
                "notes", candidate.notes, [](JsonLine& note, const std::string& text) { note.text("text", text); });
            output.line(object);
            return;
        }
        output.line(
            (request.onlyLooks ? "Would import " : "Imported ") + inQuotes(profile.name) + ": "
            + oneLine(
                serverName(profile) + ", " + std::string(rawValue(profile.transport)) + ", " + profile.remoteFolder
                + ", from " + profile.localFolder)
            + (candidate.password ? ", with its password." : ", without a password."));
        for (const auto& note : candidate.notes) output.line("  " + oneLine(note));
    }

    EditableState& state;
    const Request& request;
    Output& output;
    std::vector<Uuid> passwordsOf; // the profiles whose password was stored
    std::vector<std::function<void()>> told;
};

ExitCode importProfiles(const Surroundings& around, const Request& request) {
    auto found = profilesIn(request.file);
    keepOnly(found, request.only);
    applyFolders(found, request);
    EditableState state(around);
    Import import(state, request, around);
    import.takeAll(found.candidates);
    for (const auto& skipped : found.skipped) import.skip(skipped);
    if (import.taken == 0) {
        throw CommandError(ExitCode::failed, "Nothing was imported from " + inQuotes(request.file) + ".");
    }
    if (!request.onlyLooks)
        around.output.note("Not enabled yet: watch NAME starts one, profile set --enabled keeps it.");
    return ExitCode::done;
}

} // namespace

void addProfileImport(CLI::App& parent, Command& chosen) {
    auto* command =
        parent.add_subcommand("import", "Save the profiles of FileZilla, of VS Code's sftp.json or of an export");
    const auto request = std::make_shared<Request>();
    command->add_option("FILE", request->file, "The file to read (- is standard input)")
        ->required()
        ->type_name("")
        ->check(notEmpty());
    takeOneEach(
        *command->add_option("--only", request->only, "Import this one and no others (repeatable)")->type_name("NAME"));
    command
        ->add_option(
            "--local-folder", request->localFolder,
            "The folder here that is to be published, where the\nfile does not name it; for one profile")
        ->type_name("PATH")
        ->check(notEmpty());
    command->add_option("--remote-folder", request->remoteFolder, "The site's folder on the server; for one profile")
        ->type_name("PATH")
        ->check(notEmpty());
    command->add_flag("--no-passwords", request->withoutPasswords, "Leave out the passwords that the file holds");
    command->add_flag("--dry-run", request->onlyLooks, "Only show what there is to import; nothing is saved");
    command->footer("Reads sitemanager.xml of FileZilla (or what File, Export writes), .vscode/sftp.json and what\n"
                    "profile export writes. FTP and FTPS are taken, all else is skipped with the reason. Imported\n"
                    "profiles are not enabled. Their passwords go to the desktop's secret store.\n\n"
                    "Examples:\n"
                    "  zembrastel-cli profile import ~/.config/filezilla/sitemanager.xml --dry-run\n"
                    "  zembrastel-cli profile import ~/.config/filezilla/sitemanager.xml --only \"My website\" \\\n"
                    "    --local-folder ~/website");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return importProfiles(around, *request); };
    });
}

} // namespace zembrastel::cli
