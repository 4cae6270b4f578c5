#include "ui/profile_editor/editor_rules.h"

#include "model/error.h"

#include <QCoreApplication>

#include <array>
#include <utility>

namespace zembrastel::ui {
namespace {

struct EditorRules {
    Q_DECLARE_TR_FUNCTIONS(EditorRules)
};

std::string failureOf(const Profile& profile) {
    try {
        (void)profile.validated();
        return {};
    } catch (const std::exception& error) {
        return describe(error);
    }
}

// A profile that passes validation.
Profile validProfile() {
    Profile profile;
    profile.name = "name";
    profile.host = "host";
    profile.username = "user";
    profile.localFolder = "/";
    return profile;
}

struct Part {
    EditorField field;
    void (*take)(Profile& profile, const Profile& draft);
};

constexpr std::array parts{
    Part{EditorField::name, [](Profile& profile, const Profile& draft) { profile.name = draft.name; }},
    Part{EditorField::server, [](Profile& profile, const Profile& draft) { profile.host = draft.host; }},
    Part{EditorField::port, [](Profile& profile, const Profile& draft) { profile.port = draft.port; }},
    Part{EditorField::username, [](Profile& profile, const Profile& draft) { profile.username = draft.username; }},
    Part{
        EditorField::remoteFolder,
        [](Profile& profile, const Profile& draft) { profile.remoteFolder = draft.remoteFolder; }},
    Part{
        EditorField::localFolder,
        [](Profile& profile, const Profile& draft) { profile.localFolder = draft.localFolder; }},
    Part{
        EditorField::downloadContents,
        [](Profile& profile, const Profile& draft) {
            profile.needsDownload = draft.needsDownload;
            profile.initialDownloadSelection = draft.initialDownloadSelection;
        }},
};

} // namespace

ValidationProblem validate(const Profile& draft) {
    ValidationProblem problem{.message = failureOf(draft)};
    if (problem.message.empty()) return problem;
    // Finds the field that makes a valid profile fail with the same message, so that the rules stay in validated()
    // alone.
    for (const Part& part : parts) {
        Profile probe = validProfile();
        part.take(probe, draft);
        if (failureOf(probe) != problem.message) continue;
        problem.field = part.field;
        break;
    }
    return problem;
}

Profile forConnection(Profile draft) {
    const Profile valid = validProfile();
    draft.name = valid.name;
    draft.localFolder = valid.localFolder;
    draft.needsDownload = false;
    return draft;
}

EditorField fieldAtFault(const Failure& failure) {
    switch (failure.code) {
    case CurlCode::hostNotFound:
        return EditorField::server;
    case CurlCode::notConnected:
        return EditorField::port;
    case CurlCode::loginRefused:
        return EditorField::username;
    case CurlCode::noSuchFolder:
        return EditorField::remoteFolder;
    default:
        return EditorField::none;
    }
}

Profile withEdits(Profile saved, const Profile& original, const Profile& draft) {
    const auto takeIfEdited = [&](auto field) {
        if (draft.*field != original.*field) saved.*field = draft.*field;
    };
    const auto takeEdited = [&](auto... fields) { (takeIfEdited(fields), ...); };
    takeEdited(
        &Profile::name, &Profile::host, &Profile::port, &Profile::transport, &Profile::username, &Profile::remoteFolder,
        &Profile::localFolder, &Profile::exclusions, &Profile::initialDownloadSelection, &Profile::syncSelection,
        &Profile::trustedKey, &Profile::compareContents);
    saved.enabled = draft.enabled;
    saved.needsDownload = draft.needsDownload;
    return saved;
}

bool asksForContents(const SavingState& state) { return state.downloadFirst && !state.contentsChosen; }

QString savingLabel(const SavingState& state) {
    if (state.busy) return EditorRules::tr("Saving…");
    if (asksForContents(state)) return EditorRules::tr("Choose download contents…");
    if (state.downloadFirst && state.starts)
        return state.isNew ? EditorRules::tr("Create profile & download") : EditorRules::tr("Save & resynchronise");
    return state.isNew ? EditorRules::tr("Create profile") : EditorRules::tr("Save changes");
}

bool hasDownloadContents(const Profile& draft) {
    return draft.initialDownloadSelection && draft.initialDownloadSelection->hasSelection();
}

QString protocolNote(TransferProtocol protocol) {
    return protocol == TransferProtocol::ftp
               ? EditorRules::tr("FTP sends your password and files without encryption.")
               : EditorRules::tr("TLS encrypts transfers and verifies the server certificate.");
}

QString syncContentsText(const Profile& draft, const KindLookup& kinds) {
    const auto& selection = draft.effectiveSyncSelection();
    const DownloadSelection& synchronised = selection ? *selection : DownloadSelection::everything();
    return selectionSummary(synchronised, kinds(synchronised));
}

QString downloadContentsText(const Profile& draft, const KindLookup& kinds) {
    if (!hasDownloadContents(draft)) return EditorRules::tr("No download contents chosen yet");
    const DownloadSelection& downloaded = *draft.initialDownloadSelection;
    return selectionSummary(downloaded, kinds(downloaded), SelectionScope::server);
}

QString connectedMessage(std::size_t items) {
    return EditorRules::tr(
        "Connected. The remote folder is readable (%n items). Upload permission is checked when a file uploads.",
        nullptr, static_cast<int>(items));
}

std::int64_t portAfterChange(std::int64_t port, TransferProtocol from, TransferProtocol to) {
    return port == defaultPort(from) ? defaultPort(to) : port;
}

} // namespace zembrastel::ui
