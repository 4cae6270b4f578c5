// A tree as a list of lines, and its view: folders that open and close, and messages in place of their contents.
//
// Main thread. Up and Down move, Left and Right fold, Enter on the message of a failure tries again.
#pragma once

#include "ui/widgets/row_list.h"

#include <QAbstractListModel>

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

namespace zembrastel::ui {

// The difference between two lists of lines: the former lines [first, formerEnd) were replaced by the next lines
// [first, nextEnd).
struct LineChange {
    int first = 0;
    int formerEnd = 0;
    int nextEnd = 0;
};

template <class Line>
[[nodiscard]] LineChange changeBetween(const std::vector<Line>& former, const std::vector<Line>& next) {
    const auto top = std::ranges::mismatch(former, next);
    const auto most = std::min(former.end() - top.in1, next.end() - top.in2);
    const auto bottom = std::mismatch(former.rbegin(), former.rbegin() + most, next.rbegin());
    const auto same = bottom.first - former.rbegin();
    return {
        .first = static_cast<int>(top.in1 - former.begin()),
        .formerEnd = static_cast<int>(std::ssize(former) - same),
        .nextEnd = static_cast<int>(std::ssize(next) - same)};
}

class FoldingRows : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] virtual int depthOf(const QModelIndex& row) const = 0; // 0 for lines at the top of the tree
    [[nodiscard]] virtual bool isFolder(const QModelIndex& row) const = 0;
    [[nodiscard]] virtual bool isOpen(const QModelIndex& row) const = 0;
    // Not an entry of the tree, but a message about its folder.
    [[nodiscard]] virtual bool isMessage(const QModelIndex& row) const = 0;
    virtual void toggleFold(const QModelIndex& row) = 0;
    // Does nothing for a line that is not the message of a failure.
    virtual void retry(const QModelIndex& row) = 0;

    // The folder that contains the line; invalid for lines at the top of the tree.
    [[nodiscard]] QModelIndex folderOf(const QModelIndex& child) const;

protected:
    // "level 2", for screen readers.
    [[nodiscard]] QString levelOf(const QModelIndex& row) const;

    // Replaces only the lines between the unchanged ones above and below, so that the view keeps its place.
    template <class Line>
    void replaceLines(std::vector<Line>& lines, std::vector<Line> next) {
        const auto [first, formerEnd, nextEnd] = changeBetween(lines, next);
        if (formerEnd > first) {
            beginRemoveRows({}, first, formerEnd - 1);
            lines.erase(lines.begin() + first, lines.begin() + formerEnd);
            endRemoveRows();
        }
        if (nextEnd > first) {
            beginInsertRows({}, first, nextEnd - 1);
            lines.insert(
                lines.begin() + first, std::move_iterator(next.begin() + first),
                std::move_iterator(next.begin() + nextEnd));
            endInsertRows();
        }
    }
};

class FoldingList : public RowList {
    Q_OBJECT

public:
    explicit FoldingList(FoldingRows& shown, QWidget* parent = nullptr);

protected:
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;

private:
    void unfold(const QModelIndex& row);
    void fold(const QModelIndex& row);

    FoldingRows& tree;
    std::optional<int> rowToRestore;
};

} // namespace zembrastel::ui
