// The profiles that an import has found, as a list: which can be taken, which cannot and why, and what is ticked.
//
// Main thread.
#pragma once

#include "model/import/profile_import.h"

#include <QAbstractListModel>
#include <QStringList>

#include <string>
#include <vector>

namespace zembrastel::ui {

struct ImportLine {
    ProfileCandidate candidate; // of one that was skipped, a name alone
    std::string obstacle;       // a sentence; empty when it can be imported
    bool wantsFolder = false;   // naming a local folder overcomes the obstacle
    bool skipped = false;
    bool done = false; // imported
    bool ticked = false;

    [[nodiscard]] bool canBeTicked() const { return obstacle.empty() && !done; }
    // May the user name another local folder?
    [[nodiscard]] bool takesFolder() const { return !done && (obstacle.empty() || wantsFolder); }
};

// Looks at the local folders, which may block: any thread. Those that can be imported are ticked.
[[nodiscard]] std::vector<ImportLine> importLines(ProfilesFound found, const std::vector<Profile>& others);

class ImportRows : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void show(std::vector<ImportLine> found);
    [[nodiscard]] const ImportLine& line(int row) const { return lines[static_cast<std::size_t>(row)]; }
    [[nodiscard]] std::vector<int> tickedRows() const;
    [[nodiscard]] int countOfTakeable() const;

    void toggle(int row);
    void tickAll(bool wanted);
    // Names the local folder of a row, which is ticked if that makes it whole.
    void setLocalFolder(int row, const std::string& folder, const std::vector<Profile>& others);
    void setDone(int row);

    // What stands below the name.
    [[nodiscard]] static QString server(const ImportLine& line);
    [[nodiscard]] static QString place(const ImportLine& line);
    [[nodiscard]] static QString folderAction(const ImportLine& line);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    [[nodiscard]] static QString spoken(const ImportLine& line);
    void changed(int row) { Q_EMIT dataChanged(index(row), index(row)); }

    std::vector<ImportLine> lines;
};

} // namespace zembrastel::ui
