#include "ui/certificate/certificate_sheet.h"

#include "platform/text.h"
#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/symbol_widgets.h"
#include "ui/widgets/wrap_label.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr int sheetWidth = 640;
constexpr int margin = 24;
constexpr int labelWidth = 112;
constexpr int groupsInLine = 8;
constexpr int keyLineHeight = 20;
constexpr int faultSymbol = 16;

using enum CertificateFault;

// The user compares the day with what the provider says, in no time zone.
QString dayIn(std::chrono::sys_seconds instant) { return dayWithMonthName(localTime(instant).toUTC().date()); }

// Two lines of eight groups, as rich text, since plain text has no line height.
QString keyInLines(const KeyHash& key) {
    const QStringList groups = toQString(key.grouped()).split(u' ');
    const QString gap = QStringLiteral("&nbsp;&nbsp;");
    return QStringLiteral("<p style=\"margin: 0; line-height: %1px\">%2<br>%3</p>")
        .arg(scaledToText(keyLineHeight))
        .arg(groups.mid(0, groupsInLine).join(gap), groups.mid(groupsInLine).join(gap));
}

QString text(CertificateFault fault, const ServerCertificate& certificate, const Profile& profile) {
    switch (fault) {
    case otherName:
        return CertificateSheet::tr("Not the name of this server, %1").arg(onOneLine(toQString(profile.host)));
    case selfSigned:
        return CertificateSheet::tr("Signed by itself, not by an authority");
    case unknownAuthority:
        return CertificateSheet::tr("Signed by an unknown authority");
    case expired:
        return CertificateSheet::tr("Expired on %1").arg(dayIn(certificate.validUntil));
    case notYetValid:
        return CertificateSheet::tr("Not valid before %1").arg(dayIn(certificate.validFrom));
    case otherFault:
        break;
    }
    return CertificateSheet::tr("Refused by this machine");
}

QLayout* makeFault(const QString& text) {
    auto* const row = makeLayout<QHBoxLayout>(6);
    row->addWidget(new SymbolView("exclamationmark.triangle", &Colours::warn, faultSymbol), 0, Qt::AlignTop);
    row->addWidget(new WrapLabel(text, TextStyle::fieldLabel, Tone::warn), 1);
    return row;
}

QLabel* makeSelectable(const QString& text) {
    auto* const label = new WrapLabel(text);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::ClickFocus);
    return label;
}

QLabel* makeKey(const KeyHash& key) {
    auto* const label = makeLabel(keyInLines(key), TextStyle::fixedWidth);
    label->setTextFormat(Qt::RichText);
    label->setAccessibleName(toQString(key.grouped()));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::ClickFocus);
    return label;
}

QString firstSeenText(std::chrono::system_clock::time_point seen, std::chrono::system_clock::time_point now) {
    const QDateTime first = localTime(seen);
    const QString time = shortTime(first.time(), QLocale());
    return first.date() == localTime(now).date()
               ? CertificateSheet::tr("First seen today, %1").arg(time)
               : CertificateSheet::tr("First seen on %1, %2").arg(shortDayWithMonthName(first.date()), time);
}

PushButton* makeCopy(const KeyHash& key) {
    auto* const copy = new PushButton(CertificateSheet::tr("Copy"), ButtonKind::link);
    copy->setAccessibleName(CertificateSheet::tr("Copy key"));
    QObject::connect(copy, &QPushButton::clicked, copy, [text = toQString(key.text())] {
        QGuiApplication::clipboard()->setText(text);
    });
    return copy;
}

// One row of the card. The caller adds what stands below the value.
QVBoxLayout* addRow(QVBoxLayout& rows, const QString& label, QLabel* value, QWidget* button = nullptr) {
    if (rows.count() > 0) rows.addWidget(makeDivider(Qt::Horizontal));
    auto* const name = new WrapLabel(label, TextStyle::fieldLabel, Tone::dim);
    name->setFixedWidth(scaledToText(labelWidth));
    name->setBuddy(value);
    const QString shown = value->accessibleName().isEmpty() ? value->text() : value->accessibleName();
    value->setAccessibleName(label + u' ' + shown);
    auto* const values = makeLayout<QVBoxLayout>(2);
    values->addWidget(value);
    auto* const row = makeLayout<QHBoxLayout>(12);
    row->addWidget(name, 0, Qt::AlignTop);
    row->addLayout(values, 1);
    if (button != nullptr) row->addWidget(button, 0, Qt::AlignTop);
    rows.addLayout(row);
    return values;
}

} // namespace

CertificateSheet::CertificateSheet(
    Profile shown, InspectedCertificate inspected, Times times, Trust trust, QWidget* parent)
    : QDialog(parent), profile(std::move(shown)), seen(std::move(inspected)), now(times.now),
      firstSeen(times.firstSeen.value_or(times.now)), onTrust(std::move(trust)) {
    setWindowModality(Qt::WindowModal);
    auto* const body = new QVBoxLayout;
    body->setContentsMargins(margin, 20, margin, 16);
    body->setSpacing(16);
    body->addLayout(makeHead());
    body->addWidget(makeCard());
    body->addLayout(makeConsequences());
    auto* const layout = makeLayout<QVBoxLayout>(0, this);
    layout->addLayout(body, 1);
    layout->addWidget(makeFoot());
    dismissButton->setDefault(true); // takes effect only once the button is inside its dialog
    dismissButton->setFocus();
    const int width = std::min(scaledToText(sheetWidth), screen()->availableGeometry().width());
    setFixedSize(width, layout->heightForWidth(width));
}

QLayout* CertificateSheet::makeHead() {
    const QString host = onOneLine(toQString(profile.host));
    if (profile.keyInForce() != nullptr) {
        return makeSheetHead(
            *this, "exclamationmark.triangle", tr("The key of %1 has changed").arg(host),
            {tr("Either your provider has replaced the key, or somebody has put another server in between. Uploads "
                "have "
                "stopped. Nothing has been sent, not even the password.")},
            TileKind::warning);
    }
    return makeSheetHead(
        *this, "exclamationmark.shield", tr("The certificate cannot be verified"),
        {tr("Zembrastel cannot tell whether %1 is your server. Nothing has been sent, not even the password.")
             .arg(host)},
        TileKind::warning);
}

QWidget* CertificateSheet::makeCard() {
    QFrame* const card = makeSurface(Surface::card);
    auto* const rows = new QVBoxLayout(card);
    rows->setContentsMargins(readingMargins(16, 12, 16, 12));
    rows->setSpacing(8);
    profile.keyInForce() != nullptr ? addKeys(*rows) : addFacts(*rows);
    return card;
}

void CertificateSheet::addFacts(QVBoxLayout& rows) {
    const auto& certificate = seen.certificate;
    const auto addFaults = [this](QVBoxLayout& below, std::initializer_list<CertificateFault> kinds) {
        for (const auto fault : seen.faults) {
            if (std::ranges::find(kinds, fault) != kinds.end()) {
                below.addLayout(makeFault(text(fault, seen.certificate, profile)));
            }
        }
    };
    const auto of = [](const std::string& name) { return makeSelectable(toQString(printable(name))); };
    addFaults(*addRow(rows, tr("Issued for"), of(certificate.issuedFor)), {otherName});
    addFaults(*addRow(rows, tr("Issued by"), of(certificate.issuedBy)), {selfSigned, unknownAuthority});
    const QString valid = tr("%1 to %2").arg(dayIn(certificate.validFrom), dayIn(certificate.validUntil));
    addFaults(*addRow(rows, tr("Valid"), makeSelectable(valid)), {expired, notYetValid, otherFault});
    addRow(rows, tr("Key (SHA-256)"), makeKey(certificate.key), makeCopy(certificate.key));
}

void CertificateSheet::addKeys(QVBoxLayout& rows) {
    const auto& trusted = *profile.keyInForce();
    const auto& certificate = seen.certificate;
    const auto addNote = [](QVBoxLayout& below, const QString& note) {
        below.addWidget(makeLabel(note, TextStyle::small, Tone::dim));
    };
    const QString since = shortDayWithMonthName(localTime(trusted.since).date());
    addNote(*addRow(rows, tr("Trusted key"), makeKey(trusted.key)), tr("Trusted on %1").arg(since));
    addNote(
        *addRow(rows, tr("Key shown now"), makeKey(certificate.key), makeCopy(certificate.key)),
        firstSeenText(firstSeen, now));
    addRow(rows, tr("Issued for"), makeSelectable(toQString(printable(certificate.issuedFor))));
    addRow(
        rows, tr("Valid"),
        makeSelectable(tr("%1 to %2").arg(dayIn(certificate.validFrom), dayIn(certificate.validUntil))));
}

QLayout* CertificateSheet::makeConsequences() {
    auto* const texts = makeLayout<QVBoxLayout>(4);
    if (profile.keyInForce() != nullptr) {
        texts->addWidget(new WrapLabel(tr("Ask your provider which key is right before you trust the new one.")));
        return texts;
    }
    texts->addWidget(makeLabel(tr("What trusting it means"), TextStyle::strong));
    texts->addWidget(new WrapLabel(
        tr("Zembrastel accepts this one key for this profile, whatever the certificate says. The connection is "
           "encrypted "
           "as usual. If the server ever shows another key, uploads stop and you are told."),
        TextStyle::explanation, Tone::dim));
    texts->addWidget(new WrapLabel(tr("Trust it only if your provider states the same key."), TextStyle::explanation));
    return texts;
}

QWidget* CertificateSheet::makeFoot() {
    const bool changed = profile.keyInForce() != nullptr;
    auto* const dismiss = new PushButton(changed ? tr("Keep stopped") : tr("Cancel"));
    connect(dismiss, &QPushButton::clicked, this, &QDialog::reject);
    dismissButton = dismiss;
    auto* const trust = new PushButton(
        changed ? tr("Trust the new key for this profile…") : tr("Trust this certificate for this profile…"),
        ButtonKind::caution);
    connect(trust, &QPushButton::clicked, this, &CertificateSheet::askToTrust);
    return makeSheetFoot({dismiss, trust});
}

void CertificateSheet::askToTrust() {
    ConfirmDialog::ask(
        this, tr("Trust this key?"), tr("Anyone who holds it can read and change what you upload."),
        tr("Trust this key"), [this] {
            accept();
            onTrust(
                {.key = seen.certificate.key,
                 .host = profile.host,
                 .port = profile.port,
                 .since = std::chrono::floor<std::chrono::seconds>(now)});
        });
}

} // namespace zembrastel::ui
