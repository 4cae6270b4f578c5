// What waits for the user before a profile goes on: a review, a server check that failed, or files that are missing. A
// review goes first, since it is what the check was for.
#pragma once

#include "ui/push_button.h"
#include "ui/wrap_label.h"

#include <QFrame>

#include <optional>
#include <string>

namespace zembrastel {

class DetailBanners : public QWidget {
    Q_OBJECT

public:
    explicit DetailBanners(QWidget* parent = nullptr);

    // With none of them there is nothing to see.
    void setWaiting(bool reviewWaits, const std::optional<std::string>& checkFailure, bool filesMissing = false);

    // In the order of tabulation.
    [[nodiscard]] QList<QWidget*> buttons() const { return {review, retry, skip, forget}; }

Q_SIGNALS:
    void reviewRequested();
    void retryRequested();
    void skipRequested();
    void forgetRequested();

private:
    [[nodiscard]] QFrame* makeReviewBanner();
    [[nodiscard]] QFrame* makeFailureBanner();
    [[nodiscard]] QFrame* makeMissingBanner();

    PushButton* review;
    PushButton* retry;
    PushButton* skip;
    PushButton* forget;
    WrapLabel* message;
    QFrame* reviewBanner;
    QFrame* failureBanner;
    QFrame* missingBanner;
};

} // namespace zembrastel
