#include "ui/main_window/counters_card.h"

#include "ui/theme/local_time.h"
#include "ui/theme/reading_direction.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"

#include <QVBoxLayout>

namespace zembrastel::ui {

CountersCard::CountersCard(QWidget* parent) : QFrame(parent) {
    setSurface(*this, Surface::card);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 12, 0, 12);
    row->setSpacing(0);
    uploaded = addCounter(*row, tr("UPLOADED THIS SESSION"), 3);
    row->addWidget(makeDivider(Qt::Vertical));
    pending = addCounter(*row, tr("PENDING"), 2);
    row->addWidget(makeDivider(Qt::Vertical));
    lastUpload = addCounter(*row, tr("LAST UPLOAD"), 3);
    setStatus({});
}

void CountersCard::setStatus(const ProfileStatus& status) {
    const QLocale locale;
    uploaded->setWholeText(locale.toString(static_cast<qlonglong>(status.uploaded)));
    pending->setWholeText(locale.toString(static_cast<qlonglong>(status.pending)));
    lastUpload->setWholeText(
        status.lastUpload ? dayAndTime(localTime(*status.lastUpload), QDateTime::currentDateTime())
                          : QStringLiteral("—"));
}

ElideLabel* CountersCard::addCounter(QHBoxLayout& row, const QString& caption, int share) {
    auto* const value = new ElideLabel;
    value->setFont(fontOf(TextStyle::counter));
    value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* const texts = new QVBoxLayout;
    texts->setContentsMargins(readingMargins(16, 0, 8, 0));
    texts->setSpacing(2);
    texts->addWidget(makeCaption(caption));
    texts->addWidget(value);
    row.addLayout(texts, share);
    return value;
}

} // namespace zembrastel::ui
