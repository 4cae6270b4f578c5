// The decisions and texts of the profile editor, without its widgets.
//
// Pure functions, except that validation checks whether the local folder exists. Main thread, because of the
// translations.
#pragma once

#include "model/profile.h"
#include "transport/failure.h"
#include "ui/bridge/selection_summary.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace zembrastel::ui {

enum class EditorField { none, name, server, port, username, remoteFolder, localFolder, downloadContents };

// The reason why the profile cannot be saved, and the field to correct.
struct ValidationProblem {
    std::string message;
    EditorField field = EditorField::none;
};

// The message that validated() gives this draft and the first field that causes it; an empty message if the draft is
// valid.
[[nodiscard]] ValidationProblem validate(const Profile& draft);

// The draft with a name and a local folder, so that validation concerns the server and the login alone.
[[nodiscard]] Profile forConnection(Profile draft);

// The field to correct after this failure of a connection; none if no field is at fault.
[[nodiscard]] EditorField fieldAtFault(const Failure& failure);

// The saved profile in its current form, with the fields that the user changed since the editor opened with `original`.
// The options of `draft` always apply, because its fields follow the profile until the user changes them.
[[nodiscard]] Profile withEdits(Profile saved, const Profile& original, const Profile& draft);

struct SavingState {
    bool busy = false;
    bool isNew = false;
    bool downloadFirst = false;
    bool starts = true;          // watching, and with it the download
    bool contentsChosen = false; // for the initial download
};

// Returns whether the save button opens the choice of download contents instead of saving.
[[nodiscard]] bool asksForContents(const SavingState& state);
[[nodiscard]] QString savingLabel(const SavingState& state);

[[nodiscard]] bool hasDownloadContents(const Profile& draft);

// Returns the kinds of what a selection ticks, if they are known.
using KindLookup = std::function<std::optional<TickedKinds>(const DownloadSelection& selection)>;

// The texts that describe the draft's choices.
[[nodiscard]] QString protocolNote(TransferProtocol protocol);
[[nodiscard]] QString syncContentsText(const Profile& draft, const KindLookup& kinds);
[[nodiscard]] QString downloadContentsText(const Profile& draft, const KindLookup& kinds);

[[nodiscard]] QString connectedMessage(std::size_t items);

// The port after a change of protocol. A port that the user typed is kept.
[[nodiscard]] std::int64_t portAfterChange(std::int64_t port, TransferProtocol from, TransferProtocol to);

} // namespace zembrastel::ui
