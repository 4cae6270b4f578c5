// Shows a document in Markdown without ever scrolling sideways: lines of commands wrap, pictures shrink to the width.
//
// Main thread.
#pragma once

#include <QTextBlock>
#include <QTextBrowser>

namespace zembrastel::ui {

class DocumentView final : public QTextBrowser {
    Q_OBJECT

public:
    explicit DocumentView(QWidget* parent = nullptr);

    // Leaves comments out. Pictures are found in searchPaths().
    void showMarkdown(const QString& markdown);

    // Scrolls to the heading with this anchor; does nothing if there is none.
    void scrollToHeading(const QString& anchor);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void wrapLines();
    void fitPictures();
    void fit(const QTextFragment& picture);
    void styleTables();
};

// The anchor of a heading, as links in the documents name it: "Exit codes" is "exit-codes".
[[nodiscard]] QString anchorOf(const QString& heading);

} // namespace zembrastel::ui
