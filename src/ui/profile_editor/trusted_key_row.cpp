#include "ui/profile_editor/trusted_key_row.h"

#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/symbol_widgets.h"

#include <QHBoxLayout>

#include <utility>

namespace zembrastel::ui {
namespace {

// The first and the last two groups of digits.
QString shortened(const KeyHash& key) {
    const QStringList groups = toQString(key.grouped()).split(u' ');
    return groups.mid(0, 2).join(u' ') + QStringLiteral(" … ") + groups.mid(groups.size() - 2).join(u' ');
}

} // namespace

TrustedKeyRow::TrustedKeyRow(std::optional<TrustedKey> key, QWidget* parent)
    : QWidget(parent), trusted(std::move(key)), heading(makeLabel(QString(), TextStyle::strong)),
      text(new WrapLabel(QString(), TextStyle::small, Tone::dim)), button(new PushButton(QString())) {
    auto* const texts = makeLayout<QVBoxLayout>(2);
    texts->addWidget(heading);
    texts->addWidget(text);
    auto* const row = makeLayout<QHBoxLayout>(12, this);
    row->addWidget(new SymbolView("lock"), 0, Qt::AlignTop);
    row->addLayout(texts, 1);
    row->addWidget(button, 0, Qt::AlignTop);
    connect(button, &QPushButton::clicked, this, &TrustedKeyRow::toggle);
    show();
}

void TrustedKeyRow::setKey(const TrustedKey& key) {
    trusted = key;
    forgotten = false;
    show();
}

void TrustedKeyRow::fitTo(const Profile& draft) {
    Profile withKey = draft;
    withKey.trustedKey = trusted;
    setVisible(withKey.keyInForce() != nullptr);
}

void TrustedKeyRow::toggle() {
    forgotten = !forgotten;
    show();
    Q_EMIT edited();
}

void TrustedKeyRow::show() {
    if (!trusted) return;
    heading->setText(
        forgotten ? tr("Certificate is verified again after saving.") : tr("Certificate trusted for this profile"));
    text->setWrappedText(tr("Key %1, since %2. Its name and issuer are not verified.")
                             .arg(shortened(trusted->key), shortDayWithMonthName(localTime(trusted->since).date())));
    text->setVisible(!forgotten);
    button->setLabel(forgotten ? tr("Undo") : tr("Forget"));
    button->setAccessibleDescription(heading->text());
}

} // namespace zembrastel::ui
