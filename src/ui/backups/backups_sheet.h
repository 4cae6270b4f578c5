// The sheet with the kept versions of replaced files: shows their size, opens and restores them.
//
// Main thread; show it with open(). Disk access runs in the background; closing the sheet cancels it. Never removes a
// backup. The caller deletes the sheet.
#pragma once

#include "app/backups_model.h"
#include "app/context/main_context.h"
#include "model/profile.h"
#include "ui/backups/backup_list.h"
#include "ui/widgets/message_strip.h"
#include "ui/widgets/push_button.h"

#include <QDialog>
#include <QLabel>

#include <optional>

namespace zembrastel::ui {

class BackupListView;

// "No versions", or "2 files, 3 versions, 1.2 MB".
[[nodiscard]] QString backupsSummary(const BackupTotals& totals);

class BackupsSheet : public QDialog {
    Q_OBJECT

public:
    // Lists the backups at once. The context must outlive the sheet.
    BackupsSheet(MainContext& mainContext, Profile shown, QWidget* parent = nullptr);

    // Lists the backups again. The selected version stays selected if it still exists.
    void refresh();

Q_SIGNALS:
    // The list is up to date.
    void listed();

private:
    [[nodiscard]] QLayout* makeHead();
    [[nodiscard]] QLayout* makeTools();
    [[nodiscard]] QWidget* makeFoot();
    void addMessage();
    void show(const BackupResult<std::vector<Backup>>& result);
    void choose(const std::optional<Backup>& wanted);
    [[nodiscard]] std::optional<Backup> chosen() const;
    void enableButtons();
    void openChosen();
    void askToRestore();
    void restore(const Backup& backup);

    const Profile profile;
    BackupsModel backups;
    BackupListModel* rows = nullptr;
    BackupListView* list = nullptr;
    QLabel* summary = nullptr;
    PushButton* openButton = nullptr;
    PushButton* restoreButton = nullptr;
    PushButton* closeButton = nullptr;
    MessageStrip* message = nullptr;
    bool restoring = false;
};

} // namespace zembrastel::ui
