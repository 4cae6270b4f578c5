#include "ui/main_window/detail_header.h"

#include "ui/theme/text_style.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel::ui {

DetailHeader::DetailHeader(QWidget* parent)
    : QWidget(parent), name(new ElideLabel), watching(new PushButton(QString())) {
    name->setFont(fontOf(TextStyle::profileName));
    name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addWidget(makeCaption(tr("FOLDER SYNC")));
    texts->addWidget(name);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 2);
    layout->setSpacing(16);
    layout->addLayout(texts, 1);
    layout->addWidget(watching, 0, Qt::AlignBottom);
    setRunning(false);
}

void DetailHeader::setName(const QString& text) { name->setWholeText(text); }

void DetailHeader::setRunning(bool running) {
    watching->setLabel(running ? tr("Pause watching") : tr("Start watching"));
    watching->setKind(running ? ButtonKind::outlined : ButtonKind::primary);
    watching->setSymbol(running ? "pause.fill" : "play");
}

} // namespace zembrastel::ui
