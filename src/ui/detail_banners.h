// What waits for the user before a profile goes on: a review, or a server check that failed. A review goes first, since
// it is what the check was for.
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

    // With neither there is nothing to see.
    void setWaiting(bool reviewWaits, const std::optional<std::string>& checkFailure);

    // In the order of tabulation.
    [[nodiscard]] QList<QWidget*> buttons() const { return {review, retry, skip}; }

Q_SIGNALS:
    void reviewRequested();
    void retryRequested();
    void skipRequested();

private:
    [[nodiscard]] QFrame* makeReviewBanner();
    [[nodiscard]] QFrame* makeFailureBanner();

    PushButton* review;
    PushButton* retry;
    PushButton* skip;
    WrapLabel* message;
    QFrame* reviewBanner;
    QFrame* failureBanner;
};

} // namespace zembrastel
