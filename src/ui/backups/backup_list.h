// The backups of a local folder as a list, a version a row.
//
// Main thread.
#pragma once

#include "transport/download/backups.h"

#include <QAbstractListModel>

#include <vector>

namespace zembrastel::ui {

class BackupRows : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void show(std::vector<Backup> shown);

    [[nodiscard]] const std::vector<Backup>& backups() const { return versions; }
    [[nodiscard]] const Backup& backup(const QModelIndex& index) const {
        return versions[static_cast<std::size_t>(index.row())];
    }
    // Of the same file as the row before it.
    [[nodiscard]] bool isOlderVersion(const QModelIndex& index) const;

    [[nodiscard]] static QString replacedText(const Backup& backup);
    [[nodiscard]] static QString changedText(const Backup& backup);
    [[nodiscard]] static QString sizeText(std::uint64_t bytes);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<Backup> versions;
};

} // namespace zembrastel::ui
