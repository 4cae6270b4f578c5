// The page of one profile: what it does, from where to where, how much, and its log.
//
// Main thread. Shows what the bridge tells of that profile, and acts on the model; what needs a dialog is told to the
// window by a signal.
#pragma once

#include "ui/bridge/model_bridge.h"
#include "ui/main_window/activity_list.h"
#include "ui/main_window/counters_card.h"
#include "ui/main_window/detail_header.h"
#include "ui/main_window/profile_cards.h"
#include "ui/main_window/progress_widgets.h"
#include "ui/main_window/route_card.h"
#include "ui/main_window/status_line.h"

#include <QScrollArea>
#include <QTimer>

#include <functional>

namespace zembrastel::ui {

class ProfileDetail : public QWidget {
    Q_OBJECT

public:
    explicit ProfileDetail(ModelBridge& modelBridge, QWidget* parent = nullptr);

    void showProfile(const Uuid& profileId);
    void setNarrow(bool narrow);

    // In the order of tabulation.
    [[nodiscard]] QList<QWidget*> controls() const;

Q_SIGNALS:
    void reviewRequested(const zembrastel::Uuid& id);
    void skipCheckRequested(const zembrastel::Uuid& id);
    void editContentsRequested(const zembrastel::Uuid& id);
    void backupsRequested(const zembrastel::Uuid& id);
    void failed(const QString& message);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    [[nodiscard]] QWidget* makePage();
    [[nodiscard]] QLayout* makeActivityHead();
    void connectModel();
    void connectControls();
    void refresh();
    void refreshStatus();
    void refreshActivity();
    void refreshBanners();
    void offerDetails();
    void toggle();
    void saving(const std::function<void()>& change);
    void openFolder();
    void fitMargin();
    void awaitTomorrow();

    ModelBridge& bridge;
    Uuid id;
    DetailHeader* header;
    QScrollArea* scroll;
    QWidget* page;
    StatusLine* statusLine;
    ProgressStrip* progress;
    DetailBanners* banners;
    RouteCard* route;
    CountersCard* counters;
    PushButton* copy; // the details, for whoever helps with a failure
    PushButton* backups;
    ActivityList* activity;
    QTimer tomorrow; // when "Today" becomes "Yesterday"
};

} // namespace zembrastel::ui
