// The left half of the profile editor: the profile's name, its server and its login.
#pragma once

#include "model/profile.h"
#include "ui/profile_editor/editor_rules.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWidget>

namespace zembrastel::ui {

class TrustedKeyRow;
class WrapLabel;

class ConnectionFields : public QWidget {
    Q_OBJECT

public:
    explicit ConnectionFields(const Profile& shown, QWidget* parent = nullptr);

    void writeTo(Profile& draft) const;

    [[nodiscard]] std::string password() const { return passwordField->text().toStdString(); }
    // Trusts the key in place of the one that is shown.
    void setTrustedKey(const TrustedKey& key);

    // As if the user had entered it.
    void enterRemoteFolder(const std::string& folder);

    // Shows the password and enables the field.
    void setPassword(const std::string& password);
    // Disables the field, with a note, until setPassword() is called.
    void showPasswordLoading();

    // The widget of a field; nullptr if it is not on this half.
    [[nodiscard]] QWidget* field(EditorField which) const;

Q_SIGNALS:
    // The user changed a field. connectionEdited() is not emitted for the name.
    void edited();
    void connectionEdited();
    void remoteFolderRequested();

private:
    void addRemoteFolder(QVBoxLayout& column);
    void changeProtocol(int index);
    void showTrustedKey();
    void addPasswordToggle();
    [[nodiscard]] QLineEdit* makeLine(const std::string& text);

    QLineEdit* nameField;
    QComboBox* protocolField;
    WrapLabel* note;
    TrustedKeyRow* trust;
    QLineEdit* serverField;
    QLineEdit* portField;
    QLineEdit* usernameField;
    QLineEdit* passwordField;
    QAction* passwordToggle = nullptr;
    QLineEdit* remoteFolderField;
    TransferProtocol protocol;
};

} // namespace zembrastel::ui
