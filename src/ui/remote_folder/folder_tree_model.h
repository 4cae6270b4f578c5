// The folders of a server as a list of lines: one line per visible folder, and messages about folders below them.
//
// Main thread. A new folder is a line to be edited, below its parent; see editedRow().
#pragma once

#include "app/remote_folders.h"
#include "ui/widgets/folding_list.h"

#include <optional>
#include <string>
#include <vector>

namespace zembrastel::ui {

struct FolderLine {
    enum class Kind {
        folder,
        loading,
        failure,
        empty,
        edit,     // of a new folder's name
        creating, // a new folder
        refused,  // a new folder
    };

    Kind kind = Kind::folder;
    int depth = 0;
    std::string path; // of a message, the path of its folder
    std::string name = {};

    friend bool operator==(const FolderLine&, const FolderLine&) = default;
};

class FolderTreeModel : public FoldingRows {
    Q_OBJECT

public:
    // The folders are borrowed.
    FolderTreeModel(RemoteFolders& shown, QObject* parent) : FoldingRows(parent), folders(shown) { update(); }

    [[nodiscard]] const FolderLine& line(const QModelIndex& row) const { return lines[std::size_t(row.row())]; }
    [[nodiscard]] QString shownText(const FolderLine& line) const;
    [[nodiscard]] bool isLoginFolder(const FolderLine& line) const;

    // The row of this folder; invalid if it is not visible.
    [[nodiscard]] QModelIndex rowOf(const std::string& path) const;

    // Adds the line for the name of a new folder in this one, in place of an earlier one.
    void edit(const std::string& parent);
    void endEditing();
    [[nodiscard]] QModelIndex editedRow() const;
    // Returns the parent of the new folder; nullopt if none is edited.
    [[nodiscard]] const std::optional<std::string>& editedParent() const { return edited; }

    // Shows what the folders are now.
    void update();

    [[nodiscard]] int depthOf(const QModelIndex& row) const override { return line(row).depth; }
    [[nodiscard]] bool isFolder(const QModelIndex& row) const override {
        return line(row).kind == FolderLine::Kind::folder;
    }
    [[nodiscard]] bool isOpen(const QModelIndex& row) const override;
    [[nodiscard]] bool isMessage(const QModelIndex& row) const override { return !isFolder(row); }
    void toggleFold(const QModelIndex& row) override;
    void retry(const QModelIndex& row) override;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    [[nodiscard]] std::vector<FolderLine> wantedLines() const;
    void append(std::vector<FolderLine>& to, const RemoteFolder& folder, int depth) const;
    [[nodiscard]] std::optional<FolderLine> newFolderIn(const std::string& parent, int depth) const;
    [[nodiscard]] std::optional<FolderLine> messageOf(const std::string& folder, int depth) const;
    [[nodiscard]] QString accessibleText(const FolderLine& line) const;
    [[nodiscard]] QString describe(const QModelIndex& row) const;

    RemoteFolders& folders;
    std::vector<FolderLine> lines;
    std::optional<std::string> edited; // the parent of the folder that is named
};

} // namespace zembrastel::ui
