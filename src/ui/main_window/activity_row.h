// Paints a line of the log: symbol, text that gives way in its middle, time.
#pragma once

#include "ui/main_window/activity_model.h"

#include <QStyledItemDelegate>

namespace zembrastel::ui {

class ActivityRow : public QStyledItemDelegate {
    Q_OBJECT

public:
    ActivityRow(const ActivityModel& rowModel, QObject* parent);

    // The same for every row.
    [[nodiscard]] static int height();

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const ActivityModel& rows;
};

} // namespace zembrastel::ui
