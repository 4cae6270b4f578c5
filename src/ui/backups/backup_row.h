// Paints a version in the list of backups: the file, when the version was replaced and last changed, and its size.
#pragma once

#include "ui/backups/backup_list.h"

#include <QStyledItemDelegate>

namespace zembrastel::ui {

class BackupRow : public QStyledItemDelegate {
    Q_OBJECT

public:
    BackupRow(const BackupRows& rowModel, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const BackupRows& rows;
};

} // namespace zembrastel::ui
