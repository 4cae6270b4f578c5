// The list of a review, of which a click anywhere in a row, or Space, changes the tick.
#pragma once

#include "ui/remote_changes/change_list.h"
#include "ui/widgets/row_list.h"

namespace zembrastel::ui {

class ReviewView : public RowList {
    Q_OBJECT

public:
    explicit ReviewView(ReviewRows& shown, QWidget* parent = nullptr);

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

private:
    ReviewRows& rows;
};

} // namespace zembrastel::ui
