#include "ui/theme/text_style.h"

#include "ui/theme/style.h"

#include <QApplication>
#include <QFontDatabase>

#include <algorithm>

namespace zembrastel::ui {
namespace {

struct Look {
    double points;
    QFont::Weight weight;
};

Look lookOf(TextStyle style) {
    switch (style) {
    case TextStyle::welcome:
        return {22, QFont::Bold};
    case TextStyle::profileName:
        return {18, QFont::Bold};
    case TextStyle::dialogTitle:
        return {16, QFont::Bold};
    case TextStyle::counter:
        return {14, QFont::DemiBold};
    case TextStyle::confirmationTitle:
        return {12, QFont::Bold};
    case TextStyle::section:
        return {11, QFont::DemiBold};
    case TextStyle::fixedWidth:
        return {9.25, QFont::Normal};
    case TextStyle::body:
        return {bodyPointSize, QFont::Normal};
    case TextStyle::strong:
        return {bodyPointSize, QFont::DemiBold};
    case TextStyle::explanation:
        return {9.75, QFont::Normal};
    case TextStyle::small:
        return {9, QFont::Normal};
    case TextStyle::fieldLabel:
        return {9, QFont::DemiBold};
    case TextStyle::capitals:
    case TextStyle::badge:
        return {8.25, QFont::DemiBold};
    }
    return {bodyPointSize, QFont::Normal};
}

QString nameOf(Tone tone) {
    switch (tone) {
    case Tone::dim:
        return QStringLiteral("dim");
    case Tone::accent:
        return QStringLiteral("accent");
    case Tone::warn:
        return QStringLiteral("warn");
    case Tone::normal:
        break;
    }
    return QStringLiteral("normal");
}

} // namespace

double textScale() { return std::max(1.0, QApplication::font().pointSizeF() / bodyPointSize); }

int scaledToText(int points) { return qRound(points * textScale()); }

QSize scaledToText(const QSize& size) { return {scaledToText(size.width()), scaledToText(size.height())}; }

QFont fontOf(TextStyle style) {
    const Look look = lookOf(style);
    QFont font = QApplication::font();
    font.setPointSizeF(look.points * textScale());
    font.setWeight(look.weight);
    if (style == TextStyle::fixedWidth) {
        const QString family = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
        font.setFamilies({QFontDatabase::isFixedPitch(family) ? family : QStringLiteral("monospace")});
        font.setStyleHint(QFont::Monospace);
    }
    if (style == TextStyle::capitals) font.setLetterSpacing(QFont::AbsoluteSpacing, 0.5);
    return font;
}

void setTone(QLabel& label, Tone tone) { setStyleProperty(label, "tone", nameOf(tone)); }

QLabel* makeLabel(const QString& text, TextStyle style, Tone tone, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setFont(fontOf(style));
    label->setAlignment(readingStart() | Qt::AlignVCenter);
    setTone(*label, tone);
    return label;
}

QLabel* makeCaption(const QString& text, QWidget* parent) {
    return makeLabel(text, TextStyle::capitals, Tone::dim, parent);
}

} // namespace zembrastel::ui
