#include "ui/main_window/welcome_page.h"

#include "ui/theme/text_style.h"
#include "ui/widgets/symbol_widgets.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

QLayout* makeFeature(std::string_view symbol, const QString& text) {
    auto* const layout = new QHBoxLayout;
    layout->setSpacing(8);
    layout->addWidget(new SymbolView(symbol));
    layout->addWidget(makeLabel(text, TextStyle::body));
    return layout;
}

QLayout* makeFeatures(const QString& protocols, const QString& passwords) {
    auto* const layout = new QHBoxLayout;
    layout->setSpacing(24);
    layout->addStretch(1);
    layout->addLayout(makeFeature("network", protocols));
    layout->addLayout(makeFeature("key", passwords));
    layout->addStretch(1);
    return layout;
}

// Larger than body text, to suit the large heading.
QLabel* makeExplanation(const QString& text) {
    auto* const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    QFont font = fontOf(TextStyle::body);
    font.setPointSizeF(11.5 * textScale());
    label->setFont(font);
    setTone(*label, Tone::dim);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

WelcomePage::WelcomePage(QWidget* parent)
    : QWidget(parent), create(new PushButton(tr("Create your first profile"), ButtonKind::primary)),
      import(new PushButton(tr("Import profiles…"), ButtonKind::link)) {
    create->setSymbol("plus");
    create->setTall();
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addStretch(6);
    layout->addWidget(new Tile("arrow.up.forward.square", TileKind::filled, 72), 0, Qt::AlignHCenter);
    layout->addSpacing(24);
    layout->addWidget(makeLabel(tr("Save locally. Ship automatically."), TextStyle::welcome), 0, Qt::AlignHCenter);
    layout->addSpacing(8);
    layout->addWidget(
        makeExplanation(tr("Connect your project folder to a web server.\nZembrastel takes care of the uploads.")), 0,
        Qt::AlignHCenter);
    layout->addSpacing(24);
    layout->addLayout(makeFeatures(tr("FTP & FTPS"), tr("Keychain passwords")));
    layout->addSpacing(32);
    layout->addWidget(create, 0, Qt::AlignHCenter);
    layout->addSpacing(12);
    layout->addWidget(import, 0, Qt::AlignHCenter);
    layout->addStretch(7);
}

} // namespace zembrastel::ui
