// The sheet in which the user decides on one profile's files that are newer on the server: which of them to download,
// and then to watch again, or to stay paused.
//
// Main thread; show it with open(). It lives as long as the model presents its review: when that ends, by a decision
// here or by anything else, it closes by itself. Closing it in another way is the same as "Stay paused". Whoever made
// the sheet deletes it, at the earliest when finished() has been told.
#pragma once

#include "app/app_model.h"
#include "ui/bridge/model_bridge.h"
#include "ui/remote_changes/change_list.h"
#include "ui/widgets/push_button.h"

#include <QDialog>
#include <QLabel>
#include <QTimer>

#include <cstddef>

namespace zembrastel::ui {

// "Keep local & start watching", or "Download 2 & start watching".
[[nodiscard]] QString confirmLabel(std::size_t ticked);

class ChangeListView;

class RemoteChangesView : public QDialog {
    Q_OBJECT

public:
    // The bridge must outlive the sheet.
    RemoteChangesView(ModelBridge& bridge, RemoteReview toDecide, QWidget* parent = nullptr);

    [[nodiscard]] const Uuid& profileId() const { return review.id; }
    [[nodiscard]] const PathSet& selected() const;

    // Opens the sheet where the user may just be typing something else: until no key was pressed for a second, keys do
    // nothing here.
    void openByItself();

    void reject() override;

protected:
    bool event(QEvent* event) override;

private:
    [[nodiscard]] QLayout* makeHead();
    [[nodiscard]] QString title() const;
    [[nodiscard]] QLayout* makeTools();
    [[nodiscard]] QWidget* makeFoot();
    void fitHeight();
    void showCount();
    void decide();
    void closeWhenOver();

    AppModel& model;
    const RemoteReview review;
    ChangeListModel* rows = nullptr;
    ChangeListView* list = nullptr;
    QLabel* count = nullptr;
    PushButton* confirm = nullptr;
    QTimer typing; // runs while a key may be meant for something else
};

} // namespace zembrastel::ui
