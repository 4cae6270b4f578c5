// The page of one profile: status, banners, route, counters and log.
//
// Main thread. Follows the bridge's signals for that profile and acts on the model. A signal asks the window for what
// needs a dialog.
#pragma once

#include "ui/bridge/model_bridge.h"
#include "ui/main_window/activity_list.h"
#include "ui/main_window/choice_banner.h"
#include "ui/main_window/profile_cards.h"
#include "ui/main_window/progress_widgets.h"
#include "ui/main_window/route_card.h"

#include <QScrollArea>
#include <QTimer>

#include <functional>

namespace zembrastel::ui {

// Copies a description of the profile for support to the clipboard, without its password. Main thread. Asks the secret
// store for the password first, to remove it from the text. If the store has none, copies the text anyway: the server's
// messages were already stored without the password. Then calls `copied`. The bridge must outlive the model's answer.
void copyDetails(
    ModelBridge& bridge, const Uuid& id, std::function<void()> copied = [] {});

class ProfileDetail : public QWidget {
    Q_OBJECT

public:
    explicit ProfileDetail(ModelBridge& modelBridge, QWidget* parent = nullptr);

    void showProfile(const Uuid& profileId);
    void setNarrow(bool narrow);

    // In tab order.
    [[nodiscard]] QList<QWidget*> controls() const;

Q_SIGNALS:
    void reviewRequested(const zembrastel::Uuid& id);
    void skipCheckRequested(const zembrastel::Uuid& id);
    void editRequested(const zembrastel::Uuid& id);
    void createFolderRequested(const zembrastel::Uuid& id);
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
    void retry();
    void adopt(Adoption what);
    void saving(const std::function<void()>& change);
    void openFolder();
    void fitMargin();
    void startMidnightTimer();

    ModelBridge& bridge;
    Uuid id;
    DetailHeader* header;
    QScrollArea* scroll;
    QWidget* page;
    StatusLine* statusLine;
    ProgressStrip* progress;
    ChoiceBanner* choice;
    DetailBanners* banners;
    RouteCard* route;
    CountersCard* counters;
    PushButton* copy; // copies details for support
    PushButton* backups;
    ActivityList* activity;
    QTimer tomorrow; // when "Today" becomes "Yesterday"
};

} // namespace zembrastel::ui
