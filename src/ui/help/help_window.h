// The manual in a window of its own: the installed file, without a network.
//
// Main thread. Search in the text with Ctrl+F and Enter. Links inside the manual and to its neighbour files are
// followed here, others by the desktop.
#pragma once

#include "ui/widgets/search_field.h"

#include <QTextBrowser>
#include <QWidget>

namespace zembrastel::ui {

// The folder of the installed documents; empty if the manual is not installed.
[[nodiscard]] QString manualFolder();

// The anchor of a heading, as links in the documents name it: "Exit codes" is "exit-codes".
[[nodiscard]] QString anchorOf(const QString& heading);

class HelpWindow : public QWidget {
    Q_OBJECT

public:
    // `folder` contains MANUAL.md.
    explicit HelpWindow(const QString& folder, QWidget* parent = nullptr);

    // Shows the window in front of others.
    void bringForward();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void openDocument(const QString& file);
    void styleTables();
    void follow(const QUrl& link);
    void scrollTo(const QString& anchor);
    void findNext();

    const QString documents;
    QString shown; // the file name
    SearchField* search;
    QTextBrowser* text;
};

} // namespace zembrastel::ui
