// The parts of a profile's page: the header with the main switch, the status line, the banners, and the counters.
//
// Main thread. Each part shows the values that it is given and reports clicks by signals.
#pragma once

#include "app/profile_status.h"
#include "app/remote_review.h"
#include "ui/main_window/failure_banner.h"
#include "ui/main_window/progress_widgets.h"
#include "ui/main_window/refused_files_banner.h"
#include "ui/main_window/status_symbol.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/wrap_label.h"

#include <QFrame>
#include <QHBoxLayout>

#include <optional>
#include <string>

namespace zembrastel::ui {

// The name and the main switch, above the part that scrolls.
class DetailHeader : public QWidget {
    Q_OBJECT

public:
    explicit DetailHeader(QWidget* parent = nullptr);

    void setName(const QString& text);
    void setRunning(bool running);

    // "Pause watching" or "Start watching".
    [[nodiscard]] PushButton& mainSwitch() const { return *watching; }

private:
    ElideLabel* name;
    PushButton* watching;
};

// The status with its symbol, its progress and its explanation.
class StatusLine : public QWidget {
    Q_OBJECT

public:
    explicit StatusLine(QWidget* parent = nullptr);

    void setStatus(const ProfileStatus& status, bool running);

private:
    StatusSymbol* symbol;
    QLabel* title;
    ProgressLabel* progress;
    WrapLabel* detail;
};

// Reports what needs the user: a review, a failed server check, or files that are missing, locally or on the server.
// Shows one banner at a time; a review comes first, because the check was made to find it.
class DetailBanners : public QWidget {
    Q_OBJECT

public:
    explicit DetailBanners(QWidget* parent = nullptr);

    // Hidden if none of them applies.
    void setWaiting(
        bool reviewWaits, const std::optional<ShownFailure>& failure, bool filesMissing = false,
        const PathSet& missingOnServer = {});

    // Shows the files that were refused, unless another banner comes first. Call it after setWaiting().
    void setRefused(const ProfileStatus& status, const Profile& profile);

    [[nodiscard]] const FailureBanner& failure() const { return *failureBanner; }
    [[nodiscard]] const RefusedFilesBanner& refused() const { return *refusedBanner; }

    // In tab order.
    [[nodiscard]] QList<QWidget*> buttons() const;

Q_SIGNALS:
    void reviewRequested();
    void forgetRequested();
    void sendAgainRequested();
    void leaveRequested();

private:
    [[nodiscard]] QFrame* makeReviewBanner();
    [[nodiscard]] QFrame* makeMissingBanner();
    [[nodiscard]] QFrame* makeServerLacksBanner();

    PushButton* review;
    PushButton* forget;
    PushButton* send;
    PushButton* leave;
    WrapLabel* missingHeading;
    WrapLabel* missingText;
    WrapLabel* missingPaths;
    QFrame* reviewBanner;
    FailureBanner* failureBanner;
    RefusedFilesBanner* refusedBanner;
    QFrame* missingBanner;
    QFrame* serverLacksBanner;
};

// "3 files are missing on the server."
[[nodiscard]] QString missingOnServerText(std::size_t files);

// The counters since the program was started.
class CountersCard : public QFrame {
    Q_OBJECT

public:
    explicit CountersCard(QWidget* parent = nullptr);

    void setStatus(const ProfileStatus& status);

private:
    ElideLabel* addCounter(QHBoxLayout& row, const QString& caption, int share);

    ElideLabel* uploaded;
    ElideLabel* pending;
    ElideLabel* lastUpload;
};

} // namespace zembrastel::ui
