#include "ui/widgets/message_strip.h"

#include "ui/theme/style.h"
#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"
#include "ui/widgets/layouts.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <utility>

namespace zembrastel::ui {

class MessageStrip::Symbol : public QWidget {
public:
    explicit Symbol(QWidget* parent) : QWidget(parent) { setFixedSize(side, side - 2); }

    void setFailure(bool now) {
        failure = now;
        setAccessibleName(failure ? MessageStrip::tr("Failed") : MessageStrip::tr("Succeeded"));
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const Colours& now = colours();
        const QRectF square(0, -1, side, side); // the symbol leaves the edges of this square empty
        if (failure) {
            paintSymbol(painter, square, "exclamationmark.circle.fill", now.warn, 0, now.warnSoft);
        } else {
            paintSymbol(painter, square, "checkmark.circle.fill", now.accent, 0, now.soft);
        }
    }

private:
    static constexpr int side = 20;

    bool failure = false;
};

MessageStrip::MessageStrip(QWidget* parent)
    : QFrame(parent), symbol(new Symbol(this)), text(new WrapLabel(QString(), TextStyle::body, Tone::normal, this)),
      offerButton(new PushButton(QString(), ButtonKind::outlined, this)) {
    auto* const layout = makeLayout<QVBoxLayout>(10, this);
    layout->setContentsMargins(13, 10, 14, 10);
    auto* const line = makeLayout<QHBoxLayout>(8);
    line->addWidget(symbol, 0, Qt::AlignTop);
    line->addWidget(text, 1);
    layout->addLayout(line);
    layout->addWidget(offerButton, 0, Qt::AlignLeft);
    connect(offerButton, &QPushButton::clicked, this, [this] {
        // A copy, because the callback may clear the strip and with it the stored function.
        const auto accepted = onOffer;
        if (accepted) accepted();
    });
    clear();
}

void MessageStrip::showSuccess(const QString& message) {
    offerButton->hide();
    show(false, message);
}

void MessageStrip::showFailure(const QString& message) {
    offerButton->hide();
    show(true, message);
}

void MessageStrip::showFailure(const QString& message, const QString& offer, std::function<void()> accepted) {
    offerButton->setLabel(offer);
    offerButton->show();
    onOffer = std::move(accepted);
    show(true, message);
    offerButton->setFocus();
}

void MessageStrip::show(bool failure, const QString& message) {
    setSurface(*this, failure ? Surface::warningBanner : Surface::infoBanner);
    symbol->setFailure(failure);
    text->setWrappedText(message);
    setAccessibleName(message);
    setVisible(true);
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void MessageStrip::clear() {
    setVisible(false);
    offerButton->hide();
    onOffer = {};
    text->setWrappedText(QString());
}

QString MessageStrip::message() const { return text->text(); }

} // namespace zembrastel::ui
