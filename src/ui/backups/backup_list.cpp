#include "ui/backups/backup_list.h"

#include "ui/remote_changes/change_list.h"
#include "ui/theme/local_time.h"
#include "ui/theme/text_style.h"

#include <QLocale>

#include <utility>

namespace zembrastel::ui {

void BackupRows::show(std::vector<Backup> shown) {
    beginResetModel();
    versions = std::move(shown);
    endResetModel();
}

bool BackupRows::isOlderVersion(const QModelIndex& index) const {
    return index.row() > 0 && backup(index.siblingAtRow(index.row() - 1)).path == backup(index).path;
}

QString BackupRows::replacedText(const Backup& backup) {
    return tr("Replaced: %1").arg(reviewDate(localTime(backup.kept), QLocale()));
}

QString BackupRows::changedText(const Backup& backup) {
    return tr("Last changed: %1").arg(reviewDate(localTime(backup.modified), QLocale()));
}

QString BackupRows::sizeText(std::uint64_t bytes) {
    return QLocale().formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
}

int BackupRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(versions.size());
}

QVariant BackupRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Backup& shown = backup(index);
    const QString path = QString::fromStdString(shown.path);
    switch (role) {
    case Qt::DisplayRole:
        return path;
    case Qt::ToolTipRole:
        return asToolTip(path);
    case Qt::AccessibleTextRole:
        return QStringList{path, replacedText(shown), changedText(shown), sizeText(shown.size)}.join(
            QStringLiteral(", "));
    default:
        return {};
    }
}

} // namespace zembrastel::ui
