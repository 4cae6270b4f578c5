// The profiles found in an imported file as a list, with ticks: model, delegate and view. A row shows whether its
// profile can be imported and, if not, why.
//
// Main thread. A click on a row, or Space, changes its tick; its button sets its local folder, as do F2 and, where
// there is none yet, Enter.
#pragma once

#include "model/import/profile_import.h"
#include "ui/widgets/row_list.h"
#include "ui/widgets/row_painter.h"

#include <QAbstractListModel>
#include <QStringList>
#include <QStyledItemDelegate>

#include <string>
#include <vector>

namespace zembrastel::ui {

struct ImportLine {
    ProfileCandidate candidate; // only the name, if it was skipped
    std::string obstacle;       // a sentence; empty if it can be imported
    bool needsFolder = false;   // choosing a local folder removes the obstacle
    bool skipped = false;
    bool done = false; // was imported
    bool ticked = false;

    [[nodiscard]] bool canBeTicked() const { return obstacle.empty() && !done; }
    // Returns whether the user may choose another local folder.
    [[nodiscard]] bool acceptsFolder() const { return !done && (obstacle.empty() || needsFolder); }
};

// Checks the local folders, which may block: any thread. Profiles that can be imported are ticked.
[[nodiscard]] std::vector<ImportLine> importLines(ProfilesFound found, const std::vector<Profile>& others);

class ImportListModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void show(std::vector<ImportLine> found);
    [[nodiscard]] const ImportLine& line(int row) const { return lines[static_cast<std::size_t>(row)]; }
    [[nodiscard]] std::vector<int> tickedRows() const;
    [[nodiscard]] int importableCount() const;

    void toggle(int row);
    void tickAll(bool wanted);
    // Sets the local folder of a row. Ticks the row if it can be imported then.
    void setLocalFolder(int row, const std::string& folder, const std::vector<Profile>& others);
    void setDone(int row);

    // The lines below the name.
    [[nodiscard]] static QString server(const ImportLine& line);
    [[nodiscard]] static QString place(const ImportLine& line);
    [[nodiscard]] static QString folderAction(const ImportLine& line);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    [[nodiscard]] static QString accessibleText(const ImportLine& line);
    void changed(int row) { Q_EMIT dataChanged(index(row), index(row)); }

    std::vector<ImportLine> lines;
};

// Paints the tick, the name, the server, the local folder with its button, and the notes.
class ImportListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    enum Part : int { none, tick, folder };

    ImportListDelegate(const ImportListModel& rowModel, QObject* parent);

    // The part under a point. `row` is the row's place in the list.
    [[nodiscard]] Part partAt(const QRect& row, int number, const QPoint& point, Qt::LayoutDirection direction) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    [[nodiscard]] static QRect buttonIn(const QRect& row, const ImportLine& line);
    static void paintTexts(RowPainter& painter, const QRect& row, const ImportLine& line);

    const ImportListModel& rows;
};

class ImportListView : public RowList {
    Q_OBJECT

public:
    explicit ImportListView(ImportListModel& shown, QWidget* parent = nullptr);

Q_SIGNALS:
    void folderRequested(int row);

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

private:
    ImportListModel& rows;
    ImportListDelegate* delegate;
};

} // namespace zembrastel::ui
