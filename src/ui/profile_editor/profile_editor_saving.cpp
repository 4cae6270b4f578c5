// Saves what the editor holds.
#include "app/demo.h"
#include "model/error.h"
#include "ui/profile_editor/connection_fields.h"
#include "ui/profile_editor/new_place_dialog.h"
#include "ui/profile_editor/profile_editor.h"
#include "ui/theme/qt_text.h"
#include "ui/widgets/message_strip.h"
#include "ui/widgets/push_button.h"

#include <QPointer>

#include <utility>

namespace zembrastel::ui {

void ProfileEditor::save() {
    if (busy) return;
    if (asksForContents(savingState())) {
        choose(false);
        return;
    }
    forgetMessage();
    newPlace.reset();
    const Profile wanted = draft();
    if (!refuse(wanted) && !asksAboutPlace(wanted)) storeAndFinish();
}

// A download that comes first makes the new place known.
bool ProfileEditor::asksAboutPlace(const Profile& wanted) {
    const Profile* const saved = model.profile(wanted.id);
    const std::size_t files = model.baseline(wanted.id).size();
    if (saved == nullptr || files == 0 || wanted.needsDownload || isSamePlaceOnServer(*saved, wanted)) return false;
    const auto answered = [this](NewPlace answer) {
        newPlace = answer;
        storeAndFinish();
    };
    auto* const question = new NewPlaceDialog(*saved, wanted, files, answered, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->open();
    return true;
}

void ProfileEditor::storeAndFinish() {
    const Profile wanted = draft();
    if (!passwordNeedsStoring()) {
        finishSaving(std::nullopt);
        return;
    }
    busy = true;
    test.cancel();
    showState();
    setFocus();
    const std::string password = connection->password();
    model.storePassword(
        wanted.id, password,
        [self = QPointer<ProfileEditor>(this), &model = model, id = wanted.id,
         password](const std::optional<std::string>& failure) {
            if (self) self->passwordStored(password, failure);
            if (!failure) model.removeStrayPassword(id);
        });
}

// Checked before the password is stored, so that a refused profile leaves no password behind.
bool ProfileEditor::refuse(const Profile& wanted) {
    ValidationProblem problem = validate(model.isDemo() ? withExistingFolder(wanted) : wanted);
    if (problem.message.empty()) {
        try {
            model.checkSavable(wanted);
            return false;
        } catch (const std::exception& error) {
            // The only remaining reason is that another profile uses the folder.
            problem = {.message = describe(error), .field = EditorField::localFolder};
        }
    }
    fail(problem);
    return true;
}

// An unknown or unchanged password is left as it is stored.
bool ProfileEditor::passwordNeedsStoring() const { return !original || connection->password() != savedPassword; }

void ProfileEditor::passwordStored(const std::string& password, const std::optional<std::string>& failure) {
    busy = false;
    showState();
    if (!isVisible()) return; // closed while the secret store waited for the user
    if (original && model.profile(original->id) == nullptr) {
        continueAsNew();
        return;
    }
    if (!failure) {
        savedPassword = password;
        finishSaving(password);
        return;
    }
    const QString remedy =
        tr("Unlock the desktop's keyring, or install one such as GNOME Keyring or KWallet, and save again. You can "
           "also go on without it and enter the password again next time.");
    strip->showFailure(
        toQString(*failure) + u' ' + remedy, tr("Keep the password for this session only"),
        [this, password] { finishSaving(password); });
}

void ProfileEditor::finishSaving(const std::optional<std::string>& password) {
    const Profile wanted = draft();
    busy = true;
    showState();
    try {
        if (password) model.keepForSession(wanted.id, *password);
        if (newPlace) {
            model.saveMoved(wanted, *newPlace);
        } else {
            model.save(wanted, std::nullopt);
        }
    } catch (const std::exception& error) {
        busy = false;
        showState();
        saveButton->setFocus();
        fail({.message = describe(error)});
        return;
    }
    accept();
}

} // namespace zembrastel::ui
