// Finds the parts of a screen by what users see or a screen reader announces. Main thread.
#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTest>

namespace zembrastel::testing {

// In milliseconds. Far longer than a busy machine needs, because only a failing test waits that long.
inline constexpr int patience = 30'000;

// Handles events until the condition holds. Returns false after `patience`.
template <class Condition>
[[nodiscard]] bool waitFor(Condition condition) {
    return QTest::qWaitFor(condition, patience);
}

// The visible button or switch with that text or accessible name; nullptr if there is none.
[[nodiscard]] QAbstractButton* findButton(const QWidget& within, const QString& name);

// The same, but throws std::logic_error if there is none.
[[nodiscard]] QAbstractButton& button(const QWidget& within, const QString& name);

// The visible label with that text; nullptr if there is none.
[[nodiscard]] QLabel* findLabel(const QWidget& within, const QString& text);

// The line of a form with that caption. Throws std::logic_error if there is none.
[[nodiscard]] QLineEdit& line(const QWidget& within, const QString& caption);

// The classes of the visible controls that take the keyboard but have no accessible name.
[[nodiscard]] QStringList namelessControls(const QWidget& within);

} // namespace zembrastel::testing
