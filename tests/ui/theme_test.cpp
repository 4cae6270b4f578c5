#include "ui/theme/symbol_icon.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/push_button.h"

#include <gtest/gtest.h>

#include <QApplication>

#include <algorithm>
#include <cmath>

using namespace zembrastel;
using namespace zembrastel::ui;

namespace {

bool hasPixelOf(const QImage& image, const QColor& colour) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == colour) return true;
        }
    }
    return false;
}

} // namespace

TEST(Theme, SwitchingLeavesNoOldColourBehind) {
    theme().apply(Appearance::light);
    PushButton button("Start watching", ButtonKind::primary);
    button.setSymbol("play");
    QLabel* const label = makeLabel("Help", TextStyle::small, Tone::warn);
    label->setParent(&button);
    const QIcon icon = symbolIcon("checkmark.circle.fill", &Colours::accent);
    for (const Appearance appearance : {Appearance::light, Appearance::dark, Appearance::light}) {
        theme().apply(appearance);
        const Colours& now = appearance == Appearance::dark ? darkColours() : lightColours();
        const QImage seen = button.grab().toImage();
        EXPECT_TRUE(hasPixelOf(seen, now.accent)) << "button";
        EXPECT_TRUE(hasPixelOf(button.icon().pixmap(40, 32).toImage(), now.onAccent)) << "its symbol";
        EXPECT_TRUE(hasPixelOf(icon.pixmap(40, 40).toImage(), now.accent)) << "icon";
        EXPECT_TRUE(hasPixelOf(icon.pixmap(40, 40).toImage(), now.onAccent)) << "knock-out";
        EXPECT_TRUE(hasPixelOf(icon.pixmap(40, 40, QIcon::Disabled).toImage(), now.edge)) << "disabled icon";
        EXPECT_EQ(label->palette().color(QPalette::WindowText), now.warnText);
        EXPECT_EQ(QApplication::palette().color(QPalette::PlaceholderText), now.dim);
    }
}

double luminance(const QColor& colour) {
    const auto part = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
}

double contrastOf(const QColor& one, const QColor& other) {
    const double first = luminance(one) + 0.05;
    const double second = luminance(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

TEST(Theme, FocusAndTextStandOutInEveryPalette) {
    for (const Colours& now : {lightColours(), darkColours(), lightContrastColours(), darkContrastColours()}) {
        const bool high = now.window == now.card;
        for (const QColor& page : {now.window, now.card, now.side}) {
            EXPECT_GE(contrastOf(now.focus, page), 3);
            EXPECT_GE(contrastOf(now.text, page), high ? 10 : 4.5);
            EXPECT_GE(contrastOf(now.dim, page), high ? 7 : 4.5);
            EXPECT_GE(contrastOf(now.warnText, page), high ? 7 : 4.5);
            EXPECT_TRUE(!high || contrastOf(now.primaryFocus, page) >= 3);
        }
        EXPECT_GE(contrastOf(high ? now.primaryFocus : now.onAccent, now.accent), 3);
        EXPECT_GE(contrastOf(now.selectedDim, now.selected), high ? 7 : 4.5);
    }
}

TEST(Theme, StyleSheetNamesOnlyKnownColours) {
    theme().apply(Appearance::dark);
    EXPECT_FALSE(qApp->styleSheet().isEmpty());
    EXPECT_FALSE(qApp->styleSheet().remove("@name").contains(u'@'));
    EXPECT_EQ(withColours("a:@accent;b:@accentHover;c:@accents@", lightColours()), "a:#0f766e;b:#0b5f59;c:@accents@");
}

TEST(Symbols, EverySymbolIsDrawnAtEveryScale) {
    for (const std::string_view name : symbolNames()) {
        for (const double ratio : {1.0, 1.5, 2.0}) {
            const QPixmap picture = symbolPixmap(name, 20, Qt::black, ratio);
            EXPECT_EQ(picture.width(), qRound(20 * ratio)) << name;
            EXPECT_DOUBLE_EQ(picture.devicePixelRatio(), ratio);
            EXPECT_TRUE(picture.toImage().pixelColor(0, 0).alpha() == 0) << name;
            EXPECT_TRUE(hasPixelOf(symbolPixmap(name, 60, Qt::black, ratio).toImage(), Qt::black)) << name;
        }
    }
    EXPECT_TRUE(symbolPixmap("no such symbol", 20, Qt::black, 1).isNull());
}
