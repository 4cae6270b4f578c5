// The dialog with the program's version, licence and addresses.
//
// Main thread; show it with open(). The caller deletes it.
#pragma once

#include <QDialog>

namespace zembrastel::ui {

// The versions that a report of a problem needs: of the program, Qt, curl and the system.
[[nodiscard]] QString versionDetails();

class AboutDialog : public QDialog {
    Q_OBJECT

public:
    explicit AboutDialog(QWidget* parent = nullptr);

private:
    [[nodiscard]] QWidget* makeBody();
    [[nodiscard]] QWidget* makeFoot();
    [[nodiscard]] QWidget* makeLink(const QString& label, const QString& address);
};

} // namespace zembrastel::ui
