#include "ui/theme/symbol_icon.h"

#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <QCache>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <array>
#include <memory>

namespace zembrastel::ui {
namespace {

constexpr QSize iconBesideText(20, 16);
constexpr int symbolBesideText = 16;

struct Symbol {
    std::string_view name;
    const char* file;
};

constexpr std::array symbols{
    Symbol{"arrow.up.forward.square", "outsq"},
    Symbol{"plus", "plus"},
    Symbol{"network", "network"},
    Symbol{"key", "key"},
    Symbol{"lock", "lock"},
    Symbol{"exclamationmark.shield", "shield"},
    Symbol{"checklist", "checklist"},
    Symbol{"arrow.clockwise", "refresh"},
    Symbol{"arrow.down.doc", "downdoc"},
    Symbol{"exclamationmark.triangle", "tri"},
    Symbol{"exclamationmark.circle", "excl"},
    Symbol{"exclamationmark.circle.fill", "exclfill"},
    Symbol{"checkmark.circle.fill", "okfill"},
    Symbol{"checkmark.square.fill", "sqcheck"},
    Symbol{"minus.square.fill", "sqminus"},
    Symbol{"square", "square"},
    Symbol{"arrow.triangle.2.circlepath", "sync"},
    Symbol{"pause.fill", "pause"},
    Symbol{"play", "play"},
    Symbol{"folder", "folder"},
    Symbol{"folder.badge.plus", "newfolder"},
    Symbol{"file", "file"},
    Symbol{"server", "server"},
    Symbol{"file.missing", "missing"},
    Symbol{"arrow.right", "right"},
    Symbol{"arrow.up", "up"},
    Symbol{"arrow.down", "down"},
    Symbol{"clock", "clock"},
    Symbol{"dot", "dot"},
    Symbol{"ellipsis", "more"},
    Symbol{"pencil", "pencil"},
    Symbol{"trash", "trash"},
    Symbol{"chevron.right", "chevr"},
    Symbol{"chevron.down", "chevd"},
    Symbol{"chevron.up", "chevu"},
    Symbol{"magnifyingglass", "search"},
    Symbol{"eye", "eye"},
    Symbol{"eye.slash", "eyeoff"},
    Symbol{"xmark", "clear"},
};

QByteArray drawing(std::string_view name) {
    const auto* const found = std::ranges::find(symbols, name, &Symbol::name);
    if (found == symbols.end()) return {};
    (void)theme(); // loads the resources
    QFile file(QStringLiteral(":/zembrastel/icons/%1.svg").arg(QLatin1String(found->file)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Symbols that point along the reading direction are mirrored with it.
bool isMirrored(std::string_view symbol) {
    return (symbol == "chevron.right" || symbol == "arrow.right")
           && QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

QString keyOf(std::string_view symbol, const QColor& colour, const QColor& knockOut) {
    return QLatin1String(symbol.data(), static_cast<qsizetype>(symbol.size())) + colour.name(QColor::HexArgb)
           + knockOut.name(QColor::HexArgb);
}

// Returns nullptr for an unknown name. Valid until the next call.
QSvgRenderer* rendererOf(std::string_view symbol, const QColor& colour, const QColor& knockOut) {
    static QCache<QString, QSvgRenderer> renderers(100);
    const QString key = keyOf(symbol, colour, knockOut);
    if (QSvgRenderer* const known = renderers.object(key)) return known;
    QByteArray svg = drawing(symbol);
    if (svg.isEmpty()) return nullptr;
    svg.replace("\"FG\"", '"' + colour.name().toLatin1() + '"');
    svg.replace("\"KO\"", '"' + knockOut.name().toLatin1() + '"');
    auto made = std::make_unique<QSvgRenderer>(svg);
    QSvgRenderer* const renderer = made.get();
    renderers.insert(key, made.release());
    return renderer;
}

QColor orOnAccent(const QColor& knockOut) { return knockOut.isValid() ? knockOut : colours().onAccent; }

void render(QPainter& painter, const QRectF& where, QSvgRenderer& renderer, double angle, bool mirrored) {
    const double side = std::min(where.width(), where.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(where.center());
    painter.rotate(angle);
    if (mirrored) painter.scale(-1, 1);
    renderer.render(&painter, QRectF(-side / 2, -side / 2, side, side));
    painter.restore();
}

// Draws in the current colours of the theme.
class SymbolEngine : public QIconEngine {
public:
    SymbolEngine(std::string_view name, ColourRole role, bool isBesideText, bool turns)
        : symbol(name), colour(role), besideText(isBesideText), turning(turns) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const bool grey = mode == QIcon::Disabled && !turning;
        const QColor& ink = grey ? colours().edge : colours().*colour;
        paintSymbol(*painter, placeOf(rect), symbol, ink, turning ? turningClock().angle() : 0);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return picture;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new SymbolEngine(*this); }

private:
    // Qt places the icon at the side away from the text, so the rest of the width enlarges the gap.
    [[nodiscard]] QRectF placeOf(const QRect& rect) const {
        if (!besideText) return rect;
        const double side = rect.height() * double(symbolBesideText) / iconBesideText.height();
        const bool mirrored = QGuiApplication::layoutDirection() == Qt::RightToLeft;
        return {mirrored ? rect.x() + rect.width() - side : rect.x(), double(rect.y()), side, side};
    }

    std::string_view symbol;
    ColourRole colour;
    bool besideText;
    bool turning;
};

// The name from the table, whose lifetime is unlimited.
std::string_view lasting(std::string_view name) {
    const auto* const found = std::ranges::find(symbols, name, &Symbol::name);
    return found == symbols.end() ? std::string_view() : found->name;
}

} // namespace

const std::vector<std::string_view>& symbolNames() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> all;
        for (const Symbol& symbol : symbols) all.push_back(symbol.name);
        return all;
    }();
    return names;
}

QPixmap symbolPixmap(
    std::string_view symbol, int points, const QColor& colour, qreal pixelRatio, const QColor& knockOut) {
    const QColor second = orOnAccent(knockOut);
    const QString key = QStringLiteral("symbol %1 %2 %3 ").arg(points).arg(pixelRatio).arg(isMirrored(symbol))
                        + keyOf(symbol, colour, second);
    QPixmap picture;
    if (QPixmapCache::find(key, &picture)) return picture;
    QSvgRenderer* const renderer = rendererOf(symbol, colour, second);
    if (renderer == nullptr) return {};
    const int pixels = qRound(points * pixelRatio);
    picture = QPixmap(pixels, pixels);
    picture.fill(Qt::transparent);
    {
        QPainter painter(&picture);
        render(painter, QRectF(0, 0, pixels, pixels), *renderer, 0, isMirrored(symbol));
    }
    picture.setDevicePixelRatio(pixelRatio);
    QPixmapCache::insert(key, picture);
    return picture;
}

void paintSymbol(
    QPainter& painter, const QRectF& where, std::string_view symbol, const QColor& colour, double angle,
    const QColor& knockOut) {
    QSvgRenderer* const renderer = rendererOf(symbol, colour, orOnAccent(knockOut));
    if (renderer != nullptr) render(painter, where, *renderer, angle, isMirrored(symbol));
}

QIcon symbolIcon(std::string_view symbol, ColourRole colour) {
    return QIcon(new SymbolEngine(lasting(symbol), colour, false, false));
}

void setButtonSymbol(QAbstractButton& button, std::string_view symbol, ColourRole colour, bool turning) {
    button.setIconSize(iconBesideText);
    button.setIcon(QIcon(new SymbolEngine(lasting(symbol), colour, true, turning)));
}

} // namespace zembrastel::ui
