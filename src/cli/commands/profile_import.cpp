#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/profile_options.h"
#include "cli/session/session.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/import/profile_import.h"

#include <algorithm>
#include <functional>

namespace zembrastel::cli {
namespace {

struct ImportRequest {
    std::string file;
    std::vector<std::string> only;
    std::string localFolder;
    std::string remoteFolder;
    bool withoutPasswords = false;
    bool dryRun = false;
};

ProfilesFound profilesIn(const std::string& file) {
    try {
        return file == "-" ? findProfiles(readStandardInput(), "profiles") : readProfiles(file);
    } catch (const std::exception& error) {
        const std::string name = file == "-" ? translate("the standard input") : inQuotes(file);
        throw CommandError(ExitCode::failed, translate("Cannot import %1: %2", {name, reasonText(error)}));
    }
}

void selectCandidates(ProfilesFound& found, const std::vector<std::string>& names) {
    if (names.empty()) return;
    const auto isWanted = [&names](const std::string& name) { return std::ranges::find(names, name) != names.end(); };
    for (const auto& name : names) {
        const auto isIt = [&name](const auto& candidate) { return candidate.profile.name == name; };
        if (std::ranges::any_of(found.candidates, isIt)) continue;
        const auto skipped = std::ranges::find(found.skipped, name, &SkippedProfile::name);
        throw CommandError(
            ExitCode::failed,
            translate("There is no %1 to import.", {inQuotes(name)}) + " "
                + (skipped == found.skipped.end() ? translate("Without --only, all profiles of the file are imported.")
                                                  : translateEngineText(skipped->reason)));
    }
    std::erase_if(found.candidates, [&](const auto& candidate) { return !isWanted(candidate.profile.name); });
    found.skipped.clear();
}

void applyFolderOptions(ProfilesFound& found, const ImportRequest& request) {
    if (request.localFolder.empty() && request.remoteFolder.empty()) return;
    if (found.candidates.size() != 1) {
        throw CommandError(
            ExitCode::usage, translate(
                                 "--local-folder and --remote-folder are for one profile; the file has %1. Choose one "
                                 "with --only NAME.",
                                 {std::to_string(found.candidates.size())}));
    }
    Profile& profile = found.candidates.front().profile;
    if (!request.localFolder.empty()) profile.localFolder = std::filesystem::absolute(request.localFolder).string();
    if (request.remoteFolder.empty()) return;
    profile.remoteFolder = request.remoteFolder;
    std::erase_if(
        found.candidates.front().notes, [](const std::string& note) { return note.ends_with(rootTakenNote); });
}

class Import {
public:
    Import(Session& changed, const ImportRequest& asked, const CommandContext& context)
        : session(changed), request(asked), output(context.output) {}

    // Saves all in one step, and reports them after it.
    void takeAll(std::vector<ProfileCandidate>& candidates) {
        try {
            session.model().saveTogether([&] {
                for (auto& candidate : candidates) take(candidate);
            });
        } catch (const std::exception& error) {
            for (const auto& id : passwordsOf) removeStored(id);
            throw CommandError(ExitCode::failed, translate("Nothing was imported: %1", {reasonText(error)}));
        }
        for (const auto& report : reports) report();
    }

    void skip(const SkippedProfile& skipped) {
        if (output.json()) {
            output.line(JsonLine("skipped").text("profile", skipped.name).text("reason", skipped.reason));
        } else {
            output.line(
                translate("Skipped %1: %2", {inQuotes(skipped.name), translateEngineText(oneLine(skipped.reason))}));
        }
    }

    std::size_t taken = 0;

private:
    void take(ProfileCandidate& candidate) {
        if (request.withoutPasswords) candidate.password.reset();
        try {
            const Profile profile = importable(candidate.profile, session.model().profiles());
            requireSiteFolder(profile.localFolder);
            if (!request.dryRun) save(profile, candidate);
            ++taken;
            reports.emplace_back([this, profile, &candidate] { reportTaken(profile, candidate); });
        } catch (const LocalFolderWanted& error) {
            skipLater(
                candidate, std::string(error.what()) + " " + translate("--only NAME --local-folder PATH names one."));
        } catch (const std::exception& error) {
            skipLater(candidate, sentence(describe(error)));
        }
    }

    void save(const Profile& profile, ProfileCandidate& candidate) {
        if (const auto unstored = session.add(profile, candidate.password)) {
            candidate.password.reset();
            candidate.notes.push_back(translate("Its password was not stored.") + " " + *unstored);
        }
        if (candidate.password) passwordsOf.push_back(profile.id);
    }

    void skipLater(const ProfileCandidate& candidate, const std::string& reason) {
        reports.emplace_back(
            [this, skipped = SkippedProfile{.name = candidate.profile.name, .reason = reason}] { skip(skipped); });
    }

    static void removeStored(const Uuid& id) {
        try {
            PasswordStore::remove(id);
        } catch (const SyncError&) {
            // The user reads the first failure.
        }
    }

    void reportTaken(const Profile& profile, const ProfileCandidate& candidate) {
        if (output.json()) {
            auto object = JsonLine::forProfile(request.dryRun ? "importable" : "imported", profile);
            object.flag("password", candidate.password.has_value());
            object.list(
                "notes", candidate.notes, [](JsonLine& note, const std::string& text) { note.text("text", text); });
            output.line(object);
            return;
        }
        output.line(translate(
            takenText(candidate.password.has_value()),
            {inQuotes(profile.name), oneLine(serverName(profile)), std::string(rawValue(profile.transport)),
             oneLine(profile.remoteFolder), oneLine(profile.localFolder)}));
        for (const auto& note : candidate.notes) output.line("  " + translateEngineText(oneLine(note)));
    }

    [[nodiscard]] const char* takenText(bool withPassword) const {
        if (request.dryRun) {
            return withPassword ? translatable("Would import %1: %2, %3, %4, from %5, with its password.")
                                : translatable("Would import %1: %2, %3, %4, from %5, without a password.");
        }
        return withPassword ? translatable("Imported %1: %2, %3, %4, from %5, with its password.")
                            : translatable("Imported %1: %2, %3, %4, from %5, without a password.");
    }

    Session& session;
    const ImportRequest& request;
    Output& output;
    std::vector<Uuid> passwordsOf;              // the profiles whose password was stored
    std::vector<std::function<void()>> reports; // printed after saving
};

ExitCode importProfiles(const CommandContext& context, const ImportRequest& request) {
    auto found = profilesIn(request.file);
    selectCandidates(found, request.only);
    applyFolderOptions(found, request);
    auto session = Session::forChanges(context);
    Import import(session, request, context);
    import.takeAll(found.candidates);
    for (const auto& skipped : found.skipped) import.skip(skipped);
    if (import.taken == 0) {
        throw CommandError(ExitCode::failed, translate("Nothing was imported from %1.", {inQuotes(request.file)}));
    }
    if (!request.dryRun)
        context.output.note(translate("Not enabled yet: watch NAME starts one, profile set --enabled keeps it."));
    return ExitCode::done;
}

} // namespace

void addProfileImport(Syntax& parent) {
    auto [command, request] = parent.command(
        "import", "Save the profiles of FileZilla, of VS Code's sftp.json or of an export", importProfiles);
    command.argument("FILE", request.file, "The file to read (- is standard input)").notEmpty();
    command.option("--only", request.only, "NAME", "Import this one and no others (repeatable)").repeatable();
    command
        .option(
            "--local-folder", request.localFolder, "PATH",
            "The local folder to publish, if the file does not name\nit; for one profile")
        .notEmpty();
    command.option("--remote-folder", request.remoteFolder, "PATH", "The site's folder on the server; for one profile")
        .notEmpty();
    command.flag("--no-passwords", request.withoutPasswords, "Do not store the passwords in the file");
    command.flag("--dry-run", request.dryRun, "Only show what would be imported; nothing is saved");
    command.footer("Reads sitemanager.xml of FileZilla (or what File, Export writes), .vscode/sftp.json and what\n"
                   "profile export writes. FTP and FTPS sites are imported, others are skipped with the reason.\n"
                   "Imported profiles are not enabled. Their passwords go to the desktop's secret store.\n\n"
                   "Examples:\n"
                   "  zembrastel-cli profile import ~/.config/filezilla/sitemanager.xml --dry-run\n"
                   "  zembrastel-cli profile import ~/.config/filezilla/sitemanager.xml --only \"My website\" \\\n"
                   "    --local-folder ~/website");
}

} // namespace zembrastel::cli
