#include "ui/theme/colours.h"

#include <QMap>

namespace zembrastel::ui {
namespace {

int blend(int first, int second, double share) { return qRound(first + (second - first) * share); }

QColor mixed(const QColor& first, const QColor& second, double share) {
    return {
        blend(first.red(), second.red(), share), blend(first.green(), second.green(), share),
        blend(first.blue(), second.blue(), share)};
}

Colours withDerived(Colours colours) {
    colours.softBorder = mixed(colours.soft, colours.accent, 0.28);
    colours.warnBorder = mixed(colours.warnSoft, colours.warn, 0.32);
    colours.focus = colours.accent;
    colours.primaryFocus = colours.accent;
    colours.selectedBorder = colours.selected;
    colours.accentPress = mixed(colours.accentHover, colours.text, 0.25);
    return colours;
}

Colours makeLight() {
    Colours colours;
    colours.window = 0xf4f7f7;
    colours.side = 0xe9efef;
    colours.card = 0xffffff;
    colours.field = 0xffffff;
    colours.line = 0xd9e1e2;
    colours.control = 0xb9c5c8;
    colours.fieldBorder = 0x7f8e93;
    colours.edge = 0x7f8e93;
    colours.text = 0x16232a;
    colours.dim = 0x536369;
    colours.accent = 0x0f766e;
    colours.accentHover = 0x0b5f59;
    colours.onAccent = 0xffffff;
    colours.soft = 0xdcf0ed;
    colours.selected = 0xcfe7e4;
    colours.selectedDim = 0x3f5257;
    colours.warn = 0xcf5a08;
    colours.warnText = 0xa34a05;
    colours.warnSoft = 0xfdf0e4;
    colours.hover = 0xeef3f3;
    return withDerived(colours);
}

Colours makeDark() {
    Colours colours;
    colours.window = 0x13191b;
    colours.side = 0x0f1416;
    colours.card = 0x1b2326;
    colours.field = 0x151c1e;
    colours.line = 0x2f3a3e;
    colours.control = 0x46545a;
    colours.fieldBorder = 0x5e6e74;
    colours.edge = 0x76868c;
    colours.text = 0xe4ecee;
    colours.dim = 0x9fb0b5;
    colours.accent = 0x2dd4bf;
    colours.accentHover = 0x5eead4;
    colours.onAccent = 0x042f2b;
    colours.soft = 0x143a37;
    colours.selected = 0x143a37;
    colours.selectedDim = 0x9fb0b5;
    colours.warn = 0xfb923c;
    colours.warnText = 0xfdba74;
    colours.warnSoft = 0x38261a;
    colours.hover = 0x253034;
    return withDerived(colours);
}

// What both tables of high contrast derive from their other colours.
Colours withContrast(Colours colours) {
    colours.focus = colours.text;
    colours.softBorder = colours.accent;
    colours.warnBorder = colours.warn;
    colours.accentPress = mixed(colours.accentHover, colours.text, 0.25);
    return colours;
}

Colours makeLightContrast() {
    Colours colours;
    colours.window = colours.side = colours.card = colours.field = 0xffffff;
    colours.line = 0x56656b;
    colours.control = colours.fieldBorder = 0x3c494e;
    colours.edge = colours.selectedBorder = 0x4a585d;
    colours.text = Qt::black;
    colours.dim = 0x2b363b;
    colours.accent = 0x003f3a;
    colours.accentHover = 0x002b28;
    colours.onAccent = 0xffffff;
    colours.primaryFocus = 0x3a88e8;
    colours.soft = 0xe3f4f2;
    colours.selected = 0xcdebe7;
    colours.selectedDim = 0x16232a;
    colours.warn = 0x9c3d00;
    colours.warnText = 0x7a2f00;
    colours.warnSoft = 0xfff1e6;
    colours.hover = 0xe6f0ef;
    return withContrast(colours);
}

Colours makeDarkContrast() {
    Colours colours;
    colours.window = colours.side = colours.card = colours.field = Qt::black;
    colours.line = 0x8a9a9f;
    colours.control = colours.fieldBorder = 0xa9b8bd;
    colours.edge = colours.selectedBorder = 0xa9b8bd;
    colours.text = 0xffffff;
    colours.dim = 0xd3dfe2;
    colours.accent = 0x7ff5e3;
    colours.accentHover = 0xb5faf0;
    colours.onAccent = Qt::black;
    colours.primaryFocus = 0x2f7de1;
    colours.soft = 0x062f2b;
    colours.selected = 0x0a453e;
    colours.selectedDim = 0xe4ecee;
    colours.warn = 0xffb066;
    colours.warnText = 0xffd2a6;
    colours.warnSoft = 0x331a05;
    colours.hover = 0x1d2b2e;
    return withContrast(colours);
}

const QMap<QStringView, ColourRole>& rolesByName() {
    static const QMap<QStringView, ColourRole> roles{
        {u"window", &Colours::window},
        {u"side", &Colours::side},
        {u"card", &Colours::card},
        {u"field", &Colours::field},
        {u"line", &Colours::line},
        {u"control", &Colours::control},
        {u"fieldBorder", &Colours::fieldBorder},
        {u"edge", &Colours::edge},
        {u"text", &Colours::text},
        {u"dim", &Colours::dim},
        {u"accent", &Colours::accent},
        {u"focus", &Colours::focus},
        {u"primaryFocus", &Colours::primaryFocus},
        {u"accentHover", &Colours::accentHover},
        {u"accentPress", &Colours::accentPress},
        {u"onAccent", &Colours::onAccent},
        {u"soft", &Colours::soft},
        {u"softBorder", &Colours::softBorder},
        {u"selected", &Colours::selected},
        {u"selectedDim", &Colours::selectedDim},
        {u"warn", &Colours::warn},
        {u"warnText", &Colours::warnText},
        {u"warnSoft", &Colours::warnSoft},
        {u"warnBorder", &Colours::warnBorder},
        {u"hover", &Colours::hover},
    };
    return roles;
}

} // namespace

const Colours& lightColours() {
    static const Colours colours = makeLight();
    return colours;
}

const Colours& darkColours() {
    static const Colours colours = makeDark();
    return colours;
}

const Colours& lightContrastColours() {
    static const Colours colours = makeLightContrast();
    return colours;
}

const Colours& darkContrastColours() {
    static const Colours colours = makeDarkContrast();
    return colours;
}

QPalette paletteOf(const Colours& colours) {
    QPalette palette;
    palette.setColor(QPalette::Window, colours.window);
    palette.setColor(QPalette::WindowText, colours.text);
    palette.setColor(QPalette::Base, colours.card);
    palette.setColor(QPalette::AlternateBase, colours.window);
    palette.setColor(QPalette::Text, colours.text);
    palette.setColor(QPalette::PlaceholderText, colours.dim);
    palette.setColor(QPalette::Button, colours.card);
    palette.setColor(QPalette::ButtonText, colours.text);
    palette.setColor(QPalette::BrightText, colours.onAccent);
    palette.setColor(QPalette::ToolTipBase, colours.card);
    palette.setColor(QPalette::ToolTipText, colours.text);
    palette.setColor(QPalette::Highlight, colours.accent);
    palette.setColor(QPalette::HighlightedText, colours.onAccent);
    palette.setColor(QPalette::Link, colours.accent);
    palette.setColor(QPalette::LinkVisited, colours.accent);
    palette.setColor(QPalette::Light, colours.card);
    palette.setColor(QPalette::Midlight, colours.hover);
    palette.setColor(QPalette::Mid, colours.line);
    palette.setColor(QPalette::Dark, colours.edge);
    palette.setColor(QPalette::Shadow, colours.fieldBorder);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText}) {
        palette.setColor(QPalette::Disabled, role, colours.edge);
    }
    return palette;
}

QString withColours(const QString& styleSheet, const Colours& colours) {
    QString result;
    result.reserve(styleSheet.size() * 5 / 4);
    const QStringView sheet(styleSheet);
    for (qsizetype at = 0; at < sheet.size();) {
        qsizetype end = at + 1;
        while (sheet[at] == u'@' && end < sheet.size() && sheet[end].isLetter()) ++end;
        const ColourRole role = rolesByName().value(sheet.sliced(at + 1, end - at - 1), nullptr);
        if (role != nullptr) {
            result += (colours.*role).name();
        } else {
            result += sheet.sliced(at, end - at);
        }
        at = end;
    }
    return result;
}

} // namespace zembrastel::ui
