// The view of the content picker's tree.
//
// Main thread. Up and Down move, Left and Right fold, Space ticks, Enter retries a failed listing.
#pragma once

#include "ui/content_picker/content_delegate.h"
#include "ui/widgets/row_list.h"

#include <optional>

namespace zembrastel::ui {

class ContentView : public RowList {
    Q_OBJECT

public:
    explicit ContentView(ContentTreeModel& shown, QWidget* parent = nullptr);

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;

private:
    void unfold(const QModelIndex& row);
    void fold(const QModelIndex& row);

    ContentTreeModel& rows;
    ContentDelegate* delegate;
    std::optional<int> rowToRestore;
};

} // namespace zembrastel::ui
