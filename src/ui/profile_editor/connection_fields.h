// The left half of the profile editor: the profile's name, its server and its login.
#pragma once

#include "model/profile.h"
#include "ui/profile_editor/editor_rules.h"

#include <QComboBox>
#include <QLineEdit>
#include <QWidget>

namespace zembrastel::ui {

class WrapLabel;

class ConnectionFields : public QWidget {
    Q_OBJECT

public:
    explicit ConnectionFields(const Profile& shown, QWidget* parent = nullptr);

    void writeTo(Profile& draft) const;

    [[nodiscard]] std::string password() const { return passwordField->text().toStdString(); }
    // Shows a password and lets it be changed.
    void setPassword(const std::string& password);
    // Until then the field is disabled, with a note.
    void awaitPassword();

    // The widget of a field; nullptr when it is not among these.
    [[nodiscard]] QWidget* field(EditorField which) const;

Q_SIGNALS:
    // The user changed something; for all but the name, something that the connection depends on.
    void edited();
    void connectionEdited();

private:
    void changeProtocol(int index);
    [[nodiscard]] QLineEdit* makeLine(const std::string& text);

    QLineEdit* nameField;
    QComboBox* protocolField;
    WrapLabel* note;
    QLineEdit* serverField;
    QLineEdit* portField;
    QLineEdit* usernameField;
    QLineEdit* passwordField;
    QLineEdit* remoteFolderField;
    TransferProtocol protocol;
};

} // namespace zembrastel::ui
