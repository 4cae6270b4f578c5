// The banner of a site that is already on the server: what the first check found, and what the user can choose.
//
// Main thread. Shows the values that it is given and reports clicks by signals. While the contents are compared, it
// shows the results so far.
#pragma once

#include "transport/compare/first_comparison.h"
#include "ui/widgets/button_flow.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/wrap_label.h"

#include <QFrame>

namespace zembrastel::ui {

// What the banner says and offers.
struct ChoiceText {
    QString heading;
    QString text;
    QString adopt{};       // the label of the button; empty if no file is alike
    QString sendAll{};     // empty if all files are alike and compared
    bool compares = false; // offers to compare contents
};

// Pure. Main thread, because of the translations.
[[nodiscard]] ChoiceText choiceText(const FirstComparison& found);

class ChoiceBanner : public QFrame {
    Q_OBJECT

public:
    explicit ChoiceBanner(QWidget* parent = nullptr);

    // Hidden without a choice: `found` is nullptr.
    void setChoice(const FirstComparison* found, bool comparing);

    // In tab order.
    [[nodiscard]] QList<QWidget*> buttons() const { return {adopt, compare, sendAll, stop}; }

Q_SIGNALS:
    void adoptRequested(zembrastel::Adoption what);
    void compareRequested();
    void stopRequested();

private:
    void showChoice(const FirstComparison& found);
    void showComparing(const FirstComparison& found);
    void announce();

    WrapLabel* heading;
    WrapLabel* text;
    PushButton* adopt;
    PushButton* compare;
    PushButton* sendAll;
    PushButton* stop;
    ButtonFlow* actions;
    QString announced;
};

} // namespace zembrastel::ui
