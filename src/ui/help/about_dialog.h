// The dialog with the program's version, licence and addresses.
//
// Main thread; show it with open(). The caller deletes it.
#pragma once

#include <QDialog>

namespace zembrastel::ui {

class AboutDialog : public QDialog {
    Q_OBJECT

public:
    explicit AboutDialog(QWidget* parent = nullptr);

private:
    [[nodiscard]] QWidget* makeBody();
    [[nodiscard]] QWidget* makeFoot();
    [[nodiscard]] QWidget* makeLink(const QString& label, const QString& address);

    const QString curl; // with its version, which curl itself reports
};

} // namespace zembrastel::ui
