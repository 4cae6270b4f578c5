// The sheet for the files of one profile that are newer on the server: the user chooses which of them to download
// before watching resumes, or stays paused.
//
// Main thread; show it with open(). Closes by itself when the model no longer presents its review, after a decision
// here or elsewhere. Closing it in any other way means "Stay paused". The caller deletes the sheet, not before
// finished() was emitted.
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

    // Opens the sheet without a request of the user, who may be typing elsewhere: ignores all keys until no key was
    // pressed for one second.
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
    QTimer typing; // runs while keys may be meant for another window
};

} // namespace zembrastel::ui
