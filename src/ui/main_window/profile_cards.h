// The parts of a profile's page: the header with the main switch, the status line, the banners, and the counters.
//
// Main thread. Each part shows the values that it is given and reports clicks by signals.
#pragma once

#include "app/profile_status.h"
#include "app/remote_review.h"
#include "ui/main_window/progress_widgets.h"
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
        bool reviewWaits, const std::optional<std::string>& checkFailure, bool filesMissing = false,
        const PathSet& missingOnServer = {});

    // In tab order.
    [[nodiscard]] QList<QWidget*> buttons() const { return {review, retry, skip, forget, send, leave}; }

Q_SIGNALS:
    void reviewRequested();
    void retryRequested();
    void skipRequested();
    void forgetRequested();
    void sendAgainRequested();
    void leaveRequested();

private:
    [[nodiscard]] QFrame* makeReviewBanner();
    [[nodiscard]] QFrame* makeFailureBanner();
    [[nodiscard]] QFrame* makeMissingBanner();
    [[nodiscard]] QFrame* makeServerLacksBanner();

    PushButton* review;
    PushButton* retry;
    PushButton* skip;
    PushButton* forget;
    PushButton* send;
    PushButton* leave;
    WrapLabel* message;
    WrapLabel* missingHeading;
    WrapLabel* missingText;
    WrapLabel* missingPaths;
    QFrame* reviewBanner;
    QFrame* failureBanner;
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
