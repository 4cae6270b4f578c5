#include "ui/theme/theme.h"

#include "ui/theme/text_style.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPointer>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QWidget>

#include <algorithm>

// The linker drops the resources of a static library unless they are initialised by this macro, which must stand
// outside every namespace.
static void loadResources() { Q_INIT_RESOURCE(resources); }

namespace zembrastel::ui {
namespace {

// The default delegate of a combo box ignores the style sheet.
void letItemsBeStyled(QComboBox& box) {
    if (qobject_cast<QStyledItemDelegate*>(box.itemDelegate()) == nullptr) {
        box.setItemDelegate(new QStyledItemDelegate(&box));
    }
}

class Style : public QProxyStyle {
public:
    Style() : QProxyStyle(QStringLiteral("Fusion")) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returnData)
        const override {
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
        if (hint == SH_EtchDisabledText || hint == SH_DitherDisabledText) return 0;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }

    using QProxyStyle::polish;
    void polish(QWidget* widget) override {
        QProxyStyle::polish(widget);
        // Enter presses the focused button in a window as it does in a dialog.
        if (auto* const button = qobject_cast<QPushButton*>(widget)) button->setAutoDefault(true);
        if (auto* const box = qobject_cast<QComboBox*>(widget)) letItemsBeStyled(*box);
    }
};

QString styleSheetTemplate() {
    QFile file(QStringLiteral(":/zembrastel/theme.qss"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll());
}

// Desktop fonts have 9 to 11 points. A larger font enlarges the whole program.
double bodySizeFor(const QFont& desktop) {
    constexpr double largestUsual = 11;
    return bodyPointSize * std::max(1.0, QFontInfo(desktop).pointSizeF() / largestUsual);
}

void setUp() {
    loadResources();
    QApplication::setStyle(new Style);
    QFont font = QApplication::font();
    font.setPointSizeF(bodySizeFor(font));
    if (QFontDatabase::hasFamily(QStringLiteral("Inter"))) font.setFamily(QStringLiteral("Inter"));
    QApplication::setFont(font);
}

} // namespace

Theme::Theme(QObject* parent) : QObject(parent) { loadResources(); }

void Theme::apply(Appearance chosen) {
    if (applied == chosen) return;
    if (!applied) setUp();
    applied = chosen;
    restyle();
}

void Theme::setHighContrast(bool wanted) {
    if (contrast == wanted) return;
    contrast = wanted;
    if (applied) restyle();
}

void Theme::restyle() {
    static const QString sheet = styleSheetTemplate();
    const QString name = appearance() == Appearance::dark ? QStringLiteral("dark") : QStringLiteral("light");
    QApplication::setPalette(paletteOf(colours()));
    qApp->setStyleSheet(withColours(sheet, colours()).replace(QStringLiteral("%appearance%"), name));
    Q_EMIT changed();
}

const Colours& Theme::colours() const {
    if (appearance() == Appearance::dark) return contrast ? darkContrastColours() : darkColours();
    return contrast ? lightContrastColours() : lightColours();
}

void Theme::setAnimated(bool wanted) {
    if (animationsOn == wanted) return;
    animationsOn = wanted;
    // Symbols that stand still request no repaint of their own.
    for (QWidget* const widget : QApplication::allWidgets()) widget->update();
    Q_EMIT changed();
}

Theme& theme() {
    static QPointer<Theme> current;
    if (current == nullptr) current = new Theme(qApp);
    return *current;
}

} // namespace zembrastel::ui
