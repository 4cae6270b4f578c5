// What a test looks for on a screen, as those who see it, hear it or type on it do. Main thread.
#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTest>

namespace zembrastel::testing {

// In milliseconds. Far longer than a busy machine takes, as only what never comes takes all of it.
inline constexpr int patience = 30'000;

// Handles events until the condition holds. False when it does not come to that.
template <class Condition>
[[nodiscard]] bool waitFor(Condition condition) {
    return QTest::qWaitFor(condition, patience);
}

// The button or switch that can be seen, by its text or by its name for screen readers; nullptr when there is none.
[[nodiscard]] QAbstractButton* findButton(const QWidget& within, const QString& name);

// The same, but throws std::logic_error when there is none.
[[nodiscard]] QAbstractButton& button(const QWidget& within, const QString& name);

// The label of that text that can be seen; nullptr when there is none.
[[nodiscard]] QLabel* findLabel(const QWidget& within, const QString& text);

// The line of a form. Throws std::logic_error when there is none of that caption.
[[nodiscard]] QLineEdit& line(const QWidget& within, const QString& caption);

// The classes of the controls that can be seen and take the keyboard, but have no name for screen readers.
[[nodiscard]] QStringList namelessControls(const QWidget& within);

} // namespace zembrastel::testing
