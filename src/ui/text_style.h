// The kinds of text that the program shows, and labels of them.
//
// Sizes are in points, so that they follow the desktop's text size.
#pragma once

#include <QFont>
#include <QLabel>
#include <QString>

namespace zembrastel {

inline constexpr double bodyPointSize = 10;

enum class TextStyle {
    welcome,
    profileName,
    dialogTitle,
    counter,
    confirmationTitle,
    section, // "Recent activity"
    body,
    strong,      // row titles, paths, links
    explanation, // below the title of a sheet
    small,       // help, times, second lines
    fieldLabel,
    capitals,
};

enum class Tone { normal, dim, accent, warn };

[[nodiscard]] QFont fontOf(TextStyle style);

void setTone(QLabel& label, Tone tone);

// A label of one line. The text is shown as it stands, never as markup.
[[nodiscard]] QLabel* makeLabel(
    const QString& text, TextStyle style, Tone tone = Tone::normal, QWidget* parent = nullptr);

// The small dim capitals over a group. The text comes in capitals.
[[nodiscard]] QLabel* makeCaption(const QString& text, QWidget* parent = nullptr);

} // namespace zembrastel
