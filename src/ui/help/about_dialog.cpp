#include "ui/help/about_dialog.h"

#include "transport/curl/conversation.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/symbol_widgets.h"
#include "ui/widgets/wrap_label.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QSysInfo>
#include <QUrl>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

constexpr int dialogWidth = 496;
constexpr int margin = 24;
constexpr int tileSide = 64;

const QString version = QStringLiteral(ZEMBRASTEL_VERSION);
const QString webSite = QStringLiteral(ZEMBRASTEL_WEB_SITE);

// Without curl's version if curl does not print it.
QString curlName() {
    const QString known = toQString(curlVersion());
    return known.isEmpty() ? QStringLiteral("curl") : QStringLiteral("curl ") + known;
}

// The versions that a report of a problem needs: of the program, Qt, curl and the system.
QString versionDetails(const QString& curl) {
    return QStringLiteral("Zembrastel %1\nQt %2\n%3\n%4, %5")
        .arg(
            version, QString::fromLatin1(qVersion()), curl, QSysInfo::prettyProductName(),
            QSysInfo::currentCpuArchitecture());
}

} // namespace

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent), curl(curlName()) {
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("About Zembrastel"));
    setAccessibleName(windowTitle());
    auto* const layout = makeLayout<QVBoxLayout>(0, this);
    layout->addWidget(makeBody(), 1);
    QWidget* const foot = makeFoot();
    layout->addWidget(foot);
    for (auto* const each : foot->findChildren<PushButton*>()) {
        each->setDefault(each->isFilled());
        if (each->isFilled()) each->setFocus();
    }
    const int width = scaledToText(dialogWidth);
    setFixedSize(width, layout->heightForWidth(width));
}

QWidget* AboutDialog::makeBody() {
    auto* const body = new QWidget;
    auto* const texts = makeLayout<QVBoxLayout>(0);
    texts->addWidget(makeLabel(tr("Zembrastel"), TextStyle::dialogTitle));
    texts->addSpacing(2);
    texts->addWidget(makeLabel(tr("Version %1").arg(version), TextStyle::body, Tone::dim));
    texts->addSpacing(12);
    texts->addWidget(new WrapLabel(tr("Keeps a local folder published to an FTP or FTPS server.")));
    texts->addSpacing(12);
    texts->addWidget(new WrapLabel(
        tr("© 2026 The Zembrastel developers. Free software under the MIT licence, without any warranty."),
        TextStyle::small, Tone::dim));
    texts->addSpacing(4);
    texts->addWidget(new WrapLabel(
        tr("Running with Qt %1 and %2.").arg(QString::fromLatin1(qVersion()), curl), TextStyle::small, Tone::dim));
    texts->addSpacing(12);
    auto* const links = makeLayout<QHBoxLayout>(16);
    links->addWidget(makeLink(tr("Website"), webSite + u'/'));
    links->addWidget(makeLink(tr("Report a problem"), webSite + QStringLiteral("/problems")));
    links->addWidget(makeLink(tr("Licence"), webSite + QStringLiteral("/licence")));
    links->addStretch(1);
    texts->addLayout(links);
    auto* const layout = makeLayout<QHBoxLayout>(16, body);
    layout->setContentsMargins(margin, margin, margin, 20);
    layout->addWidget(new Tile("arrow.up.forward.square", TileKind::filled, tileSide), 0, Qt::AlignTop);
    layout->addLayout(texts, 1);
    return body;
}

QWidget* AboutDialog::makeLink(const QString& label, const QString& address) {
    auto* const link = new PushButton(label, ButtonKind::link, this);
    link->setToolTip(asToolTip(address));
    connect(link, &QPushButton::clicked, this, [address] { QDesktopServices::openUrl(QUrl(address)); });
    return link;
}

QWidget* AboutDialog::makeFoot() {
    auto* const copy = new PushButton(tr("Copy version"));
    connect(copy, &QPushButton::clicked, this, [this, copy] {
        QGuiApplication::clipboard()->setText(versionDetails(curl));
        copy->setLabel(tr("Version copied"));
    });
    auto* const close = new PushButton(tr("Close"), ButtonKind::primary);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    QWidget* const foot = makeSheetFoot({close});
    qobject_cast<QHBoxLayout*>(foot->layout())->insertWidget(0, copy);
    return foot;
}

} // namespace zembrastel::ui
