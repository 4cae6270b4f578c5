// The banner of a failure that keeps uploads back: what happened, what to do next, and buttons for that. "Details"
// unfolds the words of curl.
//
// Main thread. It shows the values that it is given and reports clicks by signals.
#pragma once

#include "app/diagnosis/failure_catalogue.h"
#include "app/profile_status.h"

#include <QFrame>
#include <QPlainTextEdit>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel::ui {

class ButtonFlow;
class PushButton;
class SymbolView;
class WrapLabel;

struct ShownFailure {
    Explanation explanation;
    bool ofCheck = false; // the server check, which the user can skip
    // Of a worker that waits to retry: the file that failed, if it was one, the time of the next attempt, and how many
    // files wait for it.
    std::string path = {};
    std::optional<std::chrono::system_clock::time_point> retryAt = std::nullopt;
    std::int64_t waiting = 0;
};

// What to show of a profile with this status; `checkFailure` is the message of a failed server check, nullptr if none
// failed. Nullopt if no failure keeps uploads back.
[[nodiscard]] std::optional<ShownFailure> shownFailure(
    const ProfileStatus& status, const std::string* checkFailure, const Profile& profile);

// "a.mp4 is tried again at 09:42:30. 2 more files wait behind it."
[[nodiscard]] QString retryText(const ShownFailure& failure);

class FailureBanner : public QFrame {
    Q_OBJECT

public:
    explicit FailureBanner(QWidget* parent = nullptr);

    // A new failure is announced to screen readers.
    void setFailure(const ShownFailure& failure);

    // In tab order.
    [[nodiscard]] QList<QWidget*> buttons() const;

Q_SIGNALS:
    void certificateRequested();
    void createFolderRequested();
    void editRequested();
    void retryRequested();
    void skipRequested();
    void pauseRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showActions(const ShownFailure& failure);
    void unfold(bool open);
    void fitDetails();

    SymbolView* triangle;
    SymbolView* clock;
    WrapLabel* heading;
    WrapLabel* text;
    PushButton* certificate;
    PushButton* keys;
    PushButton* create;
    PushButton* edit;
    PushButton* retry;
    PushButton* skip;
    PushButton* pause;
    PushButton* details;
    ButtonFlow* flow;
    QWidget* divider;
    QPlainTextEdit* words;
};

} // namespace zembrastel::ui
