// The backups of a local folder as a list, one version per row: model, delegate and view.
//
// Main thread. One row is selected at a time. Without rows the view shows the reason.
#pragma once

#include "transport/download/backups.h"
#include "ui/widgets/row_list.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

#include <vector>

namespace zembrastel::ui {

class BackupListModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void show(std::vector<Backup> shown);

    [[nodiscard]] const std::vector<Backup>& backups() const { return versions; }
    [[nodiscard]] const Backup& backup(const QModelIndex& index) const {
        return versions[static_cast<std::size_t>(index.row())];
    }
    // True if the row above shows the same file.
    [[nodiscard]] bool isOlderVersion(const QModelIndex& index) const;

    [[nodiscard]] static QString replacedText(const Backup& backup);
    [[nodiscard]] static QString changedText(const Backup& backup);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<Backup> versions;
};

// Paints the file, the dates of the version's replacement and last change, and its size.
class BackupListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    BackupListDelegate(const BackupListModel& rowModel, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const BackupListModel& rows;
};

class BackupListView : public RowList {
    Q_OBJECT

public:
    explicit BackupListView(BackupListModel& shown, QWidget* parent = nullptr);

    // The text shown while there are no rows.
    void setPlaceholder(const QString& title, const QString& explanation);

Q_SIGNALS:
    // Enter was pressed on a row.
    void openRequested();

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString emptyTitle;
    QString emptyExplanation;
};

} // namespace zembrastel::ui
