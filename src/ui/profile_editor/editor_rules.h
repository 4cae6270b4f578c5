// What the profile editor decides and says, apart from its widgets.
//
// Pure functions, save that validation looks whether the local folder is there. Main thread, for the translations.
#pragma once

#include "model/profile.h"

#include <QString>

#include <cstddef>
#include <string>

namespace zembrastel::ui {

enum class EditorField { none, name, server, port, username, remoteFolder, localFolder, downloadContents };

// Why the profile cannot be saved, and the field that has to change.
struct Objection {
    std::string message;
    EditorField field = EditorField::none;
};

// The message of validated() that this draft gets, and which of its fields earns it; an empty message when it is valid.
// Of several fields that earn the same message the first counts.
[[nodiscard]] Objection objectionTo(const Profile& draft);

// The saved profile as it is now, with what the user changed since the editor was opened on `original`. `draft` is what
// the fields hold; its options count in any case, as the fields follow them until the user has chosen.
[[nodiscard]] Profile withEdits(Profile saved, const Profile& original, const Profile& draft);

struct SavingState {
    bool busy = false;
    bool isNew = false;
    bool downloadFirst = false;
    bool contentsChosen = false; // for the initial download
};

// Does the saving button open the choice of download contents instead of saving?
[[nodiscard]] bool asksForContents(const SavingState& state);
[[nodiscard]] QString savingLabel(const SavingState& state);

[[nodiscard]] bool hasDownloadContents(const Profile& draft);

// The lines that tell of the draft's choices.
[[nodiscard]] QString protocolNote(TransferProtocol protocol);
[[nodiscard]] QString syncContentsText(const Profile& draft);
[[nodiscard]] QString downloadContentsText(const Profile& draft);

[[nodiscard]] QString connectedMessage(std::size_t items);

// The port that goes with a newly chosen protocol: one that was typed by hand stays.
[[nodiscard]] std::int64_t portAfterChange(std::int64_t port, TransferProtocol from, TransferProtocol to);

} // namespace zembrastel::ui
