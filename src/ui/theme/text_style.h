// The kinds of text that the program shows, and labels of them.
//
// Sizes are in points, so that they follow the desktop's text size.
#pragma once

#include <QFont>
#include <QLabel>
#include <QSize>
#include <QString>

namespace zembrastel::ui {

// Of the design; a larger desktop font enlarges every style alike.
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
    badge,
};

enum class Tone { normal, dim, accent, warn };

// How much larger than the design's all texts are; never less than 1.
[[nodiscard]] double textScale();

// A length of the design's that has to grow with its texts.
[[nodiscard]] int scaledToText(int points);
[[nodiscard]] QSize scaledToText(const QSize& size);

[[nodiscard]] QFont fontOf(TextStyle style);

void setTone(QLabel& label, Tone tone);

// A label of one line. The text is shown as it stands, never as markup.
[[nodiscard]] QLabel* makeLabel(
    const QString& text, TextStyle style, Tone tone = Tone::normal, QWidget* parent = nullptr);

// The small dim capitals over a group. The text comes in capitals.
[[nodiscard]] QLabel* makeCaption(const QString& text, QWidget* parent = nullptr);

} // namespace zembrastel::ui
