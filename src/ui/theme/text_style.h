// The text styles of the program, and labels in them.
//
// Sizes are in points, so that they follow the desktop's text size.
#pragma once

#include <QFont>
#include <QLabel>
#include <QSize>
#include <QString>

namespace zembrastel::ui {

// The design's size; a larger desktop font enlarges every style by the same factor.
inline constexpr double bodyPointSize = 10;

enum class TextStyle {
    welcome,
    profileName,
    dialogTitle,
    counter,
    confirmationTitle,
    section, // "Recent activity"
    body,
    fixedWidth,  // keys, to compare them letter by letter
    strong,      // row titles, paths, links
    explanation, // below the title of a sheet
    small,       // help, times, second lines
    fieldLabel,
    capitals,
    badge,
};

enum class Tone { normal, dim, accent, warn };

// The factor by which texts are larger than in the design; at least 1.
[[nodiscard]] double textScale();

// A length of the design that grows with the text size.
[[nodiscard]] int scaledToText(int points);
[[nodiscard]] QSize scaledToText(const QSize& size);

[[nodiscard]] QFont fontOf(TextStyle style);

void setTone(QLabel& label, Tone tone);

// A label of one line. Shows the text unchanged, never as markup.
[[nodiscard]] QLabel* makeLabel(
    const QString& text, TextStyle style, Tone tone = Tone::normal, QWidget* parent = nullptr);

// The small dim capitals over a group. The caller passes the text in capitals.
[[nodiscard]] QLabel* makeCaption(const QString& text, QWidget* parent = nullptr);

} // namespace zembrastel::ui
