// What waits for the user: a review, a server check that failed, or files that are missing, here or on the server. One
// banner at a time; a review goes first, since it is what the check was for.
#pragma once

#include "app/remote_review.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/wrap_label.h"

#include <QFrame>

#include <optional>
#include <string>

namespace zembrastel::ui {

class DetailBanners : public QWidget {
    Q_OBJECT

public:
    explicit DetailBanners(QWidget* parent = nullptr);

    // With none of them there is nothing to see.
    void setWaiting(
        bool reviewWaits, const std::optional<std::string>& checkFailure, bool filesMissing = false,
        const PathSet& missingOnServer = {});

    // In the order of tabulation.
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

} // namespace zembrastel::ui
