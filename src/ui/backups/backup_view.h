// The list of backups, of which one row is chosen at a time; or why there is none to be seen.
//
// Main thread.
#pragma once

#include "ui/backups/backup_list.h"
#include "ui/widgets/row_list.h"

namespace zembrastel::ui {

class BackupView : public RowList {
    Q_OBJECT

public:
    explicit BackupView(BackupRows& shown, QWidget* parent = nullptr);

    // What stands in place of the rows while there are none.
    void setPlaceholder(const QString& title, const QString& explanation);

Q_SIGNALS:
    // Enter on a row.
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
