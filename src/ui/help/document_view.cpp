#include "ui/help/document_view.h"

#include "ui/theme/theme.h"

#include <QImage>
#include <QList>
#include <QScrollBar>
#include <QTextTable>

#include <algorithm>

namespace zembrastel::ui {
namespace {

// Comments in the documents are for their tests.
QString withoutComments(const QString& markdown) {
    QStringList lines = markdown.split(u'\n');
    lines.removeIf([](const QString& line) { return line.startsWith(u"<!--"); });
    return lines.join(u'\n');
}

} // namespace

DocumentView::DocumentView(QWidget* parent) : QTextBrowser(parent) {
    setFrameShape(QFrame::NoFrame);
    setOpenLinks(false);
    connect(&theme(), &Theme::changed, this, &DocumentView::styleTables);
}

void DocumentView::showMarkdown(const QString& markdown) {
    document()->setMarkdown(withoutComments(markdown), QTextDocument::MarkdownDialectGitHub);
    styleTables();
    wrapLines();
    fitPictures();
}

void DocumentView::scrollToHeading(const QString& anchor) {
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 || anchorOf(block.text()) != anchor) continue;
        setTextCursor(QTextCursor(block));
        verticalScrollBar()->setValue(verticalScrollBar()->value() + cursorRect().top());
        return;
    }
}

void DocumentView::resizeEvent(QResizeEvent* event) {
    fitPictures(); // first, for the scroll bars are for the width of the pictures that it finds
    QTextBrowser::resizeEvent(event);
}

void DocumentView::wrapLines() {
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        if (!format.nonBreakableLines()) continue;
        format.setNonBreakableLines(false);
        QTextCursor(block).setBlockFormat(format);
    }
}

void DocumentView::fitPictures() {
    QList<QTextFragment> pictures;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        for (auto each = block.begin(); !each.atEnd(); ++each) {
            if (each.fragment().charFormat().isImageFormat()) pictures.append(each.fragment());
        }
    }
    for (const auto& each : pictures) fit(each);
}

void DocumentView::fit(const QTextFragment& picture) {
    QTextImageFormat format = picture.charFormat().toImageFormat();
    const QImage image(document()->resource(QTextDocument::ImageResource, format.name()).value<QImage>());
    if (image.isNull()) return;
    const double width = std::min<double>(image.width(), viewport()->width() - 2 * document()->documentMargin());
    if (format.width() == width) return;
    format.setWidth(width);
    format.setHeight(image.height() * width / image.width());
    QTextCursor cursor(document());
    cursor.setPosition(picture.position());
    cursor.setPosition(picture.position() + picture.length(), QTextCursor::KeepAnchor);
    cursor.setCharFormat(format);
}

void DocumentView::styleTables() {
    for (QTextFrame* const frame : document()->rootFrame()->childFrames()) {
        auto* const table = qobject_cast<QTextTable*>(frame);
        if (table == nullptr) continue;
        QTextTableFormat format = table->format();
        format.setBorderCollapse(true);
        format.setBorderBrush(colours().line);
        format.setBorder(1);
        format.setCellPadding(4);
        table->setFormat(format);
    }
}

QString anchorOf(const QString& heading) {
    QString anchor;
    for (const QChar each : heading.toLower()) {
        if (each.isLetterOrNumber() || each == u'-' || each == u'_') anchor += each;
        if (each == u' ') anchor += u'-';
    }
    return anchor;
}

} // namespace zembrastel::ui
