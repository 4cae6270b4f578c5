// The manual in a window of its own: the installed file, without a network.
//
// Main thread. Search in the text with Ctrl+F and Enter. Links inside the manual and to its neighbour files are
// followed here, others by the desktop.
#pragma once

#include "ui/help/document_view.h"
#include "ui/widgets/search_field.h"

#include <QWidget>

namespace zembrastel::ui {

// The folder of the installed documents; empty if the manual is not installed.
[[nodiscard]] QString manualFolder();

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
    void follow(const QUrl& link);
    void findNext();

    const QString documents;
    QString shown; // the file name
    SearchField* search;
    DocumentView* text;
};

} // namespace zembrastel::ui
