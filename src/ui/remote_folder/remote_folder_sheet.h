// The sheet that chooses the remote folder of a profile among the folders of its server, and creates new ones.
//
// Main thread; show it with open(). It uses the draft of the profile, which need not be saved. Each folder is listed in
// the background when it is opened; closing the sheet cancels running requests. The caller deletes the sheet.
#pragma once

#include "app/context/main_context.h"
#include "app/remote_folders.h"
#include "model/profile.h"

#include <QDialog>

#include <functional>
#include <optional>
#include <string>

namespace zembrastel::ui {

class ElideLabel;
class FolderTreeModel;
class FolderView;
class PushButton;

class RemoteFolderSheet : public QDialog {
    Q_OBJECT

public:
    // Opens at the draft's remote folder, or at the login folder. `apply` receives the absolute path that the user
    // chooses, before the sheet closes. The context must outlive the sheet.
    using Apply = std::function<void(const std::string& folder)>;
    RemoteFolderSheet(
        MainContext& mainContext, Profile draft, std::string password, Apply applyFolder, QWidget* parent = nullptr);
    ~RemoteFolderSheet() override;

Q_SIGNALS:
    // The server's certificate was refused, so there is nothing to choose from. The sheet closes.
    void certificateRefused();

private:
    [[nodiscard]] QLayout* makeTools();
    [[nodiscard]] QWidget* makeFoot();
    // Of the selected row, or of the row's folder; nullopt without a connection.
    [[nodiscard]] std::optional<std::string> selectedFolder() const;
    void followFolders();
    void showSelection();
    void nameNewFolder();
    void endNaming();
    void confirm();

    const Apply apply;
    RemoteFolders folders;
    FolderTreeModel* rows = nullptr;
    FolderView* list = nullptr;
    ElideLabel* path = nullptr;
    PushButton* create = nullptr;
    PushButton* use = nullptr;
};

} // namespace zembrastel::ui
