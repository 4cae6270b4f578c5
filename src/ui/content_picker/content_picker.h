// The sheet in which files and folders of the server are ticked: for the first download, or for all that is kept in
// sync, where what exists locally alone can be ticked too.
//
// Main thread; show it with open(). Folders are listed as they are opened, in the background; closing the sheet ends
// what is under way. A listing that fails is a line of the tree, with its way to try again. Whoever made the sheet
// deletes it.
#pragma once

#include "app/context/main_context.h"
#include "app/remote_browser_model.h"
#include "model/download_selection.h"
#include "model/profile.h"

#include <QDialog>
#include <QLabel>

#include <functional>
#include <memory>
#include <string>

namespace zembrastel::ui {

class ContentTreeModel;

class RemoteDownloadPicker : public QDialog {
    Q_OBJECT

public:
    using Apply = std::function<void(DownloadSelection)>;

    // Starts with `chosen`, and lists the profile's remote folder at once. `apply` receives the selection when it is
    // confirmed, before the sheet closes. The context must outlive the sheet.
    RemoteDownloadPicker(
        MainContext& mainContext, Profile toBrowse, std::string knownPassword, DownloadSelection chosen, bool forSync,
        Apply applySelection, QWidget* parent = nullptr);
    ~RemoteDownloadPicker() override;

    [[nodiscard]] const DownloadSelection& selection() const;
    [[nodiscard]] RemoteBrowserModel& browser() { return *tree; }

    // Forgets what was listed and begins anew; the ticks stay.
    void refresh();

    void done(int result) override;

private:
    [[nodiscard]] QLayout* makeHead();
    [[nodiscard]] QLayout* makeTools();
    [[nodiscard]] QWidget* makeFoot();
    void showSummary();

    MainContext& context;
    const Profile profile;
    const std::string password;
    const bool syncMode;
    const Apply apply;
    std::unique_ptr<RemoteBrowserModel> tree;
    ContentTreeModel* rows = nullptr;
    QLabel* summary = nullptr;
};

} // namespace zembrastel::ui
