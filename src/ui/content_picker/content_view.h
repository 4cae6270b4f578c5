// The view of the content picker's tree: a folding list in which Space ticks.
//
// Main thread.
#pragma once

#include "ui/content_picker/content_delegate.h"
#include "ui/widgets/folding_list.h"

namespace zembrastel::ui {

class ContentView : public FoldingList {
    Q_OBJECT

public:
    explicit ContentView(ContentTreeModel& shown, QWidget* parent = nullptr);

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

private:
    ContentTreeModel& rows;
    ContentDelegate* delegate;
};

} // namespace zembrastel::ui
