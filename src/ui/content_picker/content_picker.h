// The sheet that selects files and folders of the server: for the initial download, or for all sync contents, which may
// also include items that exist only locally.
//
// Main thread; show it with open(). Lists each folder in the background when it is opened; closing the sheet cancels
// running listings. A failed listing is a line of the tree with a "Retry" button. The caller deletes the sheet.
#pragma once

#include "app/context/main_context.h"
#include "app/remote_browser_model.h"
#include "model/download_selection.h"
#include "model/profile.h"
#include "ui/bridge/selection_summary.h"

#include <QDialog>
#include <QLabel>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zembrastel::ui {

class ContentTreeModel;
class SearchField;

class RemoteDownloadPicker : public QDialog {
    Q_OBJECT

public:
    using Apply = std::function<void(const DownloadSelection& chosen, const std::optional<TickedKinds>& kinds)>;

    // Starts with `chosen` and lists the profile's remote folder at once. `apply` receives the selection when the user
    // confirms it, before the sheet closes. The context must outlive the sheet.
    RemoteDownloadPicker(
        MainContext& mainContext, Profile toBrowse, std::string knownPassword, DownloadSelection chosen, bool forSync,
        Apply applySelection, QWidget* parent = nullptr);
    ~RemoteDownloadPicker() override;

    [[nodiscard]] const DownloadSelection& selection() const;
    // Of what is ticked; nullopt if not all of it was listed.
    [[nodiscard]] std::optional<TickedKinds> kinds() const;
    // Asks first if ticks were changed; see discard().
    void reject() override;

    [[nodiscard]] RemoteBrowserModel& browser() { return *tree; }

    // Lists everything again; the ticks are kept.
    void refresh();

    void done(int result) override;

Q_SIGNALS:
    // The user confirmed the choice of a download from a folder that is empty on the server.
    void nothingToDownload();
    // The server's certificate was refused, so there is nothing to choose from. The sheet closes.
    void certificateRefused();

private:
    [[nodiscard]] QLayout* makeHead();
    [[nodiscard]] QLayout* makeTools();
    [[nodiscard]] QWidget* makeFoot();
    void followRows();
    void showSummary();
    void confirm();
    [[nodiscard]] bool hasNothingToDownload() const;
    void discard() { QDialog::reject(); }

    MainContext& context;
    const Profile profile;
    const std::string password;
    const bool syncMode;
    const DownloadSelection before;
    const Apply apply;
    std::unique_ptr<RemoteBrowserModel> tree;
    ContentTreeModel* rows = nullptr;
    QLabel* summary = nullptr;
    SearchField* searchField = nullptr;
};

} // namespace zembrastel::ui
