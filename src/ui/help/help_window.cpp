#include "ui/help/help_window.h"

#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

constexpr QSize usualSize(880, 720);
constexpr int margin = 24;
constexpr int searchWidth = 280;

const QString manual = QStringLiteral("MANUAL.md");

} // namespace

QString manualFolder() {
    // The second is for a program that was moved with its files.
    for (const QString& folder :
         {QStringLiteral(ZEMBRASTEL_DOCUMENTS),
          QCoreApplication::applicationDirPath() + QStringLiteral("/../share/doc/zembrastel-cli")}) {
        if (QFileInfo::exists(folder + u'/' + manual)) return folder;
    }
    return {};
}

HelpWindow::HelpWindow(const QString& folder, QWidget* parent)
    : QWidget(parent, Qt::Window), documents(folder), search(new SearchField(tr("Search the manual"))),
      text(new DocumentView) {
    setWindowTitle(tr("Zembrastel Help"));
    search->setMaximumWidth(scaledToText(searchWidth));
    connect(search, &QLineEdit::returnPressed, this, &HelpWindow::findNext);
    auto* const contents = new PushButton(tr("Contents"));
    connect(contents, &QPushButton::clicked, this, [this] { openDocument(manual); });
    auto* const tools = makeSheetTools({contents}, search);
    text->setAccessibleName(windowTitle());
    text->setSearchPaths({documents});
    connect(text, &QTextBrowser::anchorClicked, this, &HelpWindow::follow);
    auto* const layout = makeLayout<QVBoxLayout>(12, this);
    layout->setContentsMargins(margin, 16, margin, margin);
    layout->addLayout(tools);
    QFrame* const card = makeSurface(Surface::card);
    makeLayout<QVBoxLayout>(0, card)->addWidget(text);
    layout->addWidget(card, 1);
    resize(scaledToText(usualSize).boundedTo(screen()->availableSize()));
    openDocument(manual);
    text->setFocus();
}

void HelpWindow::bringForward() {
    show();
    raise();
    activateWindow();
}

void HelpWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void HelpWindow::openDocument(const QString& file) {
    if (file != shown) {
        QFile document(documents + u'/' + file);
        if (!document.open(QIODevice::ReadOnly)) return;
        text->showMarkdown(QString::fromUtf8(document.readAll()));
        shown = file;
    }
    text->moveCursor(QTextCursor::Start);
}

void HelpWindow::follow(const QUrl& link) {
    if (!link.scheme().isEmpty()) {
        QDesktopServices::openUrl(link);
        return;
    }
    if (!link.path().isEmpty()) openDocument(QFileInfo(link.path()).fileName());
    if (link.hasFragment()) text->scrollToHeading(link.fragment());
}

// From the end of the text, the search goes on at its beginning.
void HelpWindow::findNext() {
    if (search->text().isEmpty() || text->find(search->text())) return;
    text->moveCursor(QTextCursor::Start);
    (void)text->find(search->text());
}

} // namespace zembrastel::ui
