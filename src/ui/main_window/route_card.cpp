#include "ui/main_window/route_card.h"

#include "ui/bridge/selection_summary.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/symbol_widgets.h"

#include <QHBoxLayout>

namespace zembrastel::ui {
namespace {

// The space that a link keeps beside its text for its focus ring. All other texts of the route keep the same space, so
// that they align.
constexpr int focusRingSpace = 3;

QLabel* makeRouteCaption(const QString& text) {
    QLabel* const caption = makeCaption(text);
    caption->setContentsMargins(readingMargins(focusRingSpace, 0, 0, 0));
    return caption;
}

QWidget* makeTile(std::string_view symbol) {
    auto* const holder = new QWidget;
    auto* const layout = new QHBoxLayout(holder);
    layout->setContentsMargins(readingMargins(focusRingSpace, 0, 0, 0));
    layout->addWidget(new Tile(symbol));
    return holder;
}

ElideLabel* makePath() {
    auto* const label = new ElideLabel;
    label->setFont(fontOf(TextStyle::strong));
    label->setContentsMargins(readingMargins(focusRingSpace, 0, 0, 0));
    // Both ends of the route have the same width, however long their paths are.
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    return label;
}

ElideLabel* makeHost() {
    auto* const label = new ElideLabel;
    label->setFont(fontOf(TextStyle::body));
    setTone(*label, Tone::dim);
    return label;
}

} // namespace

RouteCard::RouteCard(QWidget* parent)
    : QFrame(parent), localPath(makePath()), remotePath(makePath()), host(makeHost()),
      port(makeLabel(QString(), TextStyle::body, Tone::dim)), contents(makeLabel(QString(), TextStyle::strong)),
      openFolder(new PushButton(tr("Open in Finder"), ButtonKind::link)),
      editContents(new PushButton(tr("Edit sync contents…"))), contentsSymbol(new SymbolView("checklist")) {
    setSurface(*this, Surface::card);
    openFolder->setAccessibleName(tr("Open local folder in Finder"));
    openFolder->setAccessibleDescription(tr("Open this local folder in Finder"));
    openFolder->setToolTip(tr("Open this local folder in Finder"));
    connect(openFolder, &QPushButton::clicked, this, &RouteCard::openFolderRequested);
    connect(editContents, &QPushButton::clicked, this, &RouteCard::editContentsRequested);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeRoute());
    layout->addWidget(makeDivider(Qt::Horizontal));
    layout->addWidget(makeContents());
}

void RouteCard::setProfile(const Profile& profile, const FileMap& synchronised) {
    localPath->setWholeText(toQString(profile.localFolder));
    remotePath->setWholeText(toQString(profile.remoteFolder));
    host->setWholeText(toQString(profile.host));
    port->setText(tr("Port %1").arg(profile.port));
    contents->setText(syncContentsSummary(profile, synchronised));
}

void RouteCard::setNarrow(bool narrow) {
    for (auto* const tile : tiles) tile->setVisible(!narrow);
    // Aligned with the symbols in the tiles.
    contentsSymbol->setFixedWidth(narrow ? SymbolView::side : 40);
}

QWidget* RouteCard::makeRoute() {
    auto* const route = new QHBoxLayout;
    route->setSpacing(0);
    route->addLayout(makeEnd("folder", makeLocal()), 1);
    route->addSpacing(16);
    route->addWidget(new SymbolView("arrow.right", &Colours::dim));
    route->addSpacing(16 - focusRingSpace);
    route->addLayout(makeEnd("server", makeRemote()), 1);
    auto* const page = new QWidget;
    auto* const layout = new QVBoxLayout(page);
    layout->setContentsMargins(readingMargins(16 - focusRingSpace, 12, 16, 12));
    layout->setSpacing(8);
    layout->addWidget(makeRouteCaption(tr("LOCAL → SERVER")));
    layout->addLayout(route);
    return page;
}

QLayout* RouteCard::makeEnd(std::string_view symbol, QVBoxLayout* texts) {
    tiles.push_back(makeTile(symbol));
    texts->setSpacing(2);
    auto* const layout = new QHBoxLayout;
    layout->setSpacing(12 - focusRingSpace);
    layout->addWidget(tiles.back(), 0, Qt::AlignTop);
    layout->addLayout(texts, 1);
    return layout;
}

QVBoxLayout* RouteCard::makeLocal() {
    auto* const texts = new QVBoxLayout;
    texts->addWidget(makeRouteCaption(tr("LOCAL FOLDER")));
    texts->addWidget(localPath);
    texts->addWidget(openFolder, 0, Qt::AlignLeft);
    return texts;
}

QVBoxLayout* RouteCard::makeRemote() {
    auto* const server = new QHBoxLayout;
    server->setContentsMargins(readingMargins(focusRingSpace, 0, 0, 0));
    server->setSpacing(8);
    server->addStrut(openFolder->sizeHint().height());
    server->addWidget(host);
    server->addWidget(makeLabel(QStringLiteral("·"), TextStyle::body, Tone::dim));
    server->addWidget(port);
    server->addStretch(1);
    auto* const texts = new QVBoxLayout;
    texts->addWidget(makeRouteCaption(tr("REMOTE FOLDER")));
    texts->addWidget(remotePath);
    texts->addLayout(server);
    return texts;
}

QWidget* RouteCard::makeContents() {
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(contents);
    texts->addWidget(makeLabel(tr("Local deletions kept on server"), TextStyle::small, Tone::dim));
    auto* const page = new QWidget;
    auto* const layout = new QHBoxLayout(page);
    layout->setContentsMargins(readingMargins(16, 10, 12, 10));
    layout->setSpacing(12);
    layout->addWidget(contentsSymbol);
    layout->addLayout(texts, 1);
    layout->addWidget(editContents);
    return page;
}

} // namespace zembrastel::ui
