// The right half of the profile editor: the local folder, what of it is synchronised, and how it begins.
//
// The selections themselves are not kept here, only shown.
#pragma once

#include "model/profile.h"
#include "ui/profile_editor/editor_rules.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>
#include <QWidget>

namespace zembrastel::ui {

class PushButton;
class Switch;
class WrapLabel;

class ContentFields : public QWidget {
    Q_OBJECT

public:
    ContentFields(const Profile& shown, bool isNew, QWidget* parent = nullptr);

    // All but the selections.
    void writeTo(Profile& draft) const;

    void showSelections(const Profile& draft);

    [[nodiscard]] bool startOnSave() const;
    [[nodiscard]] bool downloadFirst() const;
    // Options that the user has not chosen are as the profile has them, which may change meanwhile.
    void followOptions(const Profile& profile);

    // The widget of a field; nullptr when it is not among these.
    [[nodiscard]] QWidget* field(EditorField which) const;

Q_SIGNALS:
    // The user changed something, an option included.
    void edited();
    void optionsChanged();
    void advancedShown();
    void syncContentsWanted();
    void downloadContentsWanted();

private:
    void addLocalFolder(QVBoxLayout& column, const Profile& profile);
    void addExclusions(QVBoxLayout& column, const Profile& profile);
    void addSyncContents(QVBoxLayout& column, bool isNew);
    void addOptions(QVBoxLayout& column);
    void showAdvanced(bool shown);
    void chooseFolder();
    void chooseStart();
    void chooseDownload(bool on);

    QLineEdit* localFolderField = nullptr;
    PushButton* disclosure = nullptr;
    QWidget* advanced = nullptr;
    QPlainTextEdit* exclusionsField = nullptr;
    WrapLabel* syncContents = nullptr;
    Switch* startSwitch = nullptr;
    Switch* downloadSwitch = nullptr;
    bool startChosen = false;
    bool downloadChosen = false;
    bool following = false; // the switches are set by the profile, not by the user
    QWidget* downloadPart = nullptr;
    PushButton* downloadButton = nullptr;
    WrapLabel* downloadContents = nullptr;
};

} // namespace zembrastel::ui
