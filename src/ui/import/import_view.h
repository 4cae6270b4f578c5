// The list of an import: a click on a row, or Space, changes its tick; its button names its local folder, as do F2 and,
// where there is none yet, Enter.
#pragma once

#include "ui/import/import_row.h"
#include "ui/widgets/row_list.h"

namespace zembrastel::ui {

class ImportView : public RowList {
    Q_OBJECT

public:
    explicit ImportView(ImportRows& shown, QWidget* parent = nullptr);

Q_SIGNALS:
    void folderWanted(int row);

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

private:
    ImportRows& rows;
    ImportRow* delegate;
};

} // namespace zembrastel::ui
