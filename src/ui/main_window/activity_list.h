// "Recent activity": the log of the shown profile in a card that is as high as its lines need, so that the page around
// it scrolls and the list itself never does.
#pragma once

#include "ui/main_window/activity_model.h"

#include <QFrame>
#include <QListView>

namespace zembrastel::ui {

class ActivityList : public QFrame {
    Q_OBJECT

public:
    explicit ActivityList(QWidget* parent = nullptr);

    void setActivity(const std::deque<Activity>& activity);

    [[nodiscard]] QListView& list() const { return *view; }

Q_SIGNALS:
    // A line became the current one; where it is, in the card's coordinates.
    void lineReached(const QRect& place);

private:
    [[nodiscard]] QWidget* makeEmptyPage();
    void fitLines();

    ActivityModel* lines;
    QListView* view;
    QWidget* emptyPage;
};

} // namespace zembrastel::ui
