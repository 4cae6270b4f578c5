#include "ui/profile_editor/connection_fields.h"

#include "platform/text.h"
#include "ui/profile_editor/trusted_key_row.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/symbol_icon.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/wrap_label.h"

#include <QHBoxLayout>
#include <QRegularExpressionValidator>

namespace zembrastel::ui {
namespace {

constexpr int portWidth = 88;

} // namespace

ConnectionFields::ConnectionFields(const Profile& profile, QWidget* parent)
    : QWidget(parent), nameField(makeLine(profile.name)), protocolField(new QComboBox(this)),
      note(new WrapLabel(protocolNote(profile.transport), TextStyle::small, Tone::dim, this)),
      trust(new TrustedKeyRow(profile.trustedKey, this)), serverField(makeLine(profile.host)),
      portField(makeLine(std::to_string(profile.port))), usernameField(makeLine(profile.username)),
      passwordField(makeLine({})), remoteFolderField(makeLine(profile.remoteFolder)), protocol(profile.transport) {
    auto* const column = makeLayout<QVBoxLayout>(fieldGap, this);
    nameField->setPlaceholderText(tr("My website"));
    column->addLayout(makeField(tr("Profile name"), nameField));

    for (const auto choice : allTransferProtocols) protocolField->addItem(toQString(rawValue(choice)));
    protocolField->setCurrentIndex(static_cast<int>(profile.transport));
    connect(protocolField, &QComboBox::activated, this, &ConnectionFields::changeProtocol);
    column->addLayout(makeField(tr("Protocol"), protocolField, note));
    column->addWidget(trust);
    connect(trust, &TrustedKeyRow::edited, this, [this] {
        Q_EMIT connectionEdited();
        Q_EMIT edited();
    });

    auto* const server = makeLayout<QHBoxLayout>(fieldGap);
    serverField->setPlaceholderText(QStringLiteral("ftp.example.com"));
    server->addLayout(makeField(tr("Server"), serverField), 1);
    portField->setFixedWidth(portWidth);
    portField->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,5}")), portField));
    server->addLayout(makeField(tr("Port"), portField));
    column->addLayout(server);

    auto* const login = makeLayout<QHBoxLayout>(fieldGap);
    login->addLayout(makeField(tr("Username"), usernameField), 1);
    passwordField->setEchoMode(QLineEdit::Password);
    addPasswordToggle();
    login->addLayout(makeField(tr("Password"), passwordField), 1);
    column->addLayout(login);

    addRemoteFolder(*column);
    column->addStretch(1);
    showTrustedKey();
}

void ConnectionFields::addRemoteFolder(QVBoxLayout& column) {
    remoteFolderField->setPlaceholderText(QStringLiteral("/public_html"));
    auto* const choose = new PushButton(tr("Choose a folder…"), ButtonKind::outlined, this);
    choose->setAccessibleName(tr("Choose a remote folder"));
    connect(choose, &QPushButton::clicked, this, &ConnectionFields::remoteFolderRequested);
    auto* const row = makeLayout<QHBoxLayout>(8);
    row->addWidget(remoteFolderField, 1);
    row->addWidget(choose);
    auto* const part = makeField(tr("Remote folder"), remoteFolderField, row);
    part->addWidget(new WrapLabel(
        tr("Paths beginning with / start at the FTP root. Other paths start in the login folder."), TextStyle::small,
        Tone::dim));
    column.addLayout(part);
}

void ConnectionFields::enterRemoteFolder(const std::string& folder) {
    remoteFolderField->setText(toQString(folder));
    Q_EMIT connectionEdited();
    Q_EMIT edited();
}

void ConnectionFields::setTrustedKey(const TrustedKey& key) {
    trust->setKey(key);
    showTrustedKey();
}

void ConnectionFields::showTrustedKey() {
    Profile draft;
    writeTo(draft);
    trust->fitTo(draft);
}

// An eye in the field. It is hidden again whenever another password is loaded.
void ConnectionFields::addPasswordToggle() {
    passwordToggle = passwordField->addAction(symbolIcon("eye", &Colours::dim), QLineEdit::TrailingPosition);
    passwordToggle->setCheckable(true);
    connect(passwordToggle, &QAction::toggled, this, [this](bool shown) {
        passwordField->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
        passwordToggle->setIcon(symbolIcon(shown ? "eye.slash" : "eye", &Colours::dim));
        passwordToggle->setText(shown ? tr("Hide password") : tr("Show password"));
    });
    passwordToggle->setText(tr("Show password"));
}

QLineEdit* ConnectionFields::makeLine(const std::string& text) {
    auto* const line = new QLineEdit(toQString(text), this);
    line->setCursorPosition(0);
    connect(line, &QLineEdit::textEdited, this, [this, line] {
        showTrustedKey();
        if (line != nameField) Q_EMIT connectionEdited();
        Q_EMIT edited();
    });
    return line;
}

void ConnectionFields::changeProtocol(int index) {
    const auto chosen = allTransferProtocols.at(static_cast<std::size_t>(index));
    if (chosen == protocol) return;
    const auto port = portAfterChange(portField->text().toLongLong(), protocol, chosen);
    protocol = chosen;
    portField->setText(QString::number(port));
    note->setWrappedText(protocolNote(chosen));
    showTrustedKey();
    Q_EMIT connectionEdited();
    Q_EMIT edited();
}

void ConnectionFields::writeTo(Profile& draft) const {
    draft.name = nameField->text().toStdString();
    draft.transport = protocol;
    draft.host = trimmed(serverField->text().toStdString());
    draft.trustedKey = trust->key();
    draft.port = portField->text().toLongLong(); // 0, which is no valid port, if the field is empty
    draft.username = usernameField->text().toStdString();
    draft.remoteFolder = remoteFolderField->text().toStdString();
}

void ConnectionFields::setPassword(const std::string& password) {
    passwordToggle->setChecked(false);
    passwordField->setText(toQString(password));
    passwordField->setPlaceholderText({});
    passwordField->setAccessibleDescription({});
    passwordField->setEnabled(true);
}

void ConnectionFields::showPasswordLoading() {
    const QString waiting = tr("Reading from keyring…");
    passwordField->setPlaceholderText(waiting);
    passwordField->setAccessibleDescription(waiting);
    passwordField->setEnabled(false);
}

QWidget* ConnectionFields::field(EditorField which) const {
    switch (which) {
    case EditorField::name:
        return nameField;
    case EditorField::server:
        return serverField;
    case EditorField::port:
        return portField;
    case EditorField::username:
        return usernameField;
    case EditorField::remoteFolder:
        return remoteFolderField;
    default:
        return nullptr;
    }
}

} // namespace zembrastel::ui
