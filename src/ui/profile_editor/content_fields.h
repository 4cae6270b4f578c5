// The right half of the profile editor: the local folder, the sync contents, and the options for the start.
//
// The editor keeps the selections; this half only shows them.
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

    // Writes everything but the selections.
    void writeTo(Profile& draft) const;

    void showSelections(const QString& syncContentsText, const QString& downloadContentsText);

    [[nodiscard]] bool startOnSave() const;
    [[nodiscard]] bool downloadFirst() const;
    // Whether the user has set an option here.
    [[nodiscard]] bool optionsChosen() const { return startChosen || downloadChosen; }
    // Shows the profile's current options, except those that the user has set here.
    void followOptions(const Profile& profile);

    // As if the user had chosen no download.
    void switchDownloadOff();

    // The widget of a field; nullptr if it is not on this half.
    [[nodiscard]] QWidget* field(EditorField which) const;

Q_SIGNALS:
    // The user changed a field or an option.
    void edited();
    void optionsChanged();
    void advancedShown();
    void syncContentsRequested();
    void downloadContentsRequested();

private:
    void addLocalFolder(QVBoxLayout& column, const Profile& profile);
    void addExclusions(QVBoxLayout& column, const Profile& profile);
    void addSyncContents(QVBoxLayout& column, bool isNew);
    void addOptions(QVBoxLayout& column);
    void addComparison(QVBoxLayout& column, const Profile& profile);
    void showAdvanced(bool shown);
    void chooseFolder();
    void chooseStart(bool on);
    void chooseDownload(bool on);

    QLineEdit* localFolderField = nullptr;
    PushButton* disclosure = nullptr;
    QWidget* advanced = nullptr;
    QPlainTextEdit* exclusionsField = nullptr;
    WrapLabel* syncContents = nullptr;
    Switch* startSwitch = nullptr;
    Switch* downloadSwitch = nullptr;
    Switch* compareSwitch = nullptr;
    bool startChosen = false;
    bool downloadChosen = false;
    bool downloadWaits = false; // the user switched the start off, and with it the download
    bool following = false;     // the profile is setting the switches, not the user
    QWidget* downloadPart = nullptr;
    PushButton* downloadButton = nullptr;
    WrapLabel* downloadContents = nullptr;
};

} // namespace zembrastel::ui
