#include "ui/remote_changes/change_list.h"

#include "ui/theme/local_time.h"
#include "ui/theme/text_style.h"

namespace zembrastel::ui {
namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

QDateTime atSecond(double sinceEpoch) { return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(sinceEpoch) * 1000); }

// What stood between the weekday and the rest.
bool isSeparator(QChar letter) { return letter == u',' || letter == u'،' || letter.isSpace(); }

} // namespace

PathSet preselection(const std::vector<RemoteChange>& changes) {
    PathSet ticked;
    for (const auto& change : changes) {
        if (!change.bothChanged) ticked.insert(change.path);
    }
    return ticked;
}

QString reviewDate(const QDateTime& date, const QLocale& locale) {
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(QStringLiteral("dddd")).replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    while (!format.isEmpty() && isSeparator(format.front())) format.remove(0, 1);
    while (!format.isEmpty() && isSeparator(format.back())) format.chop(1);
    return ReviewRows::tr("%1, %2").arg(locale.toString(date.date(), format), shortTime(date.time(), locale));
}

ReviewRows::ReviewRows(const RemoteReview& review, QObject* parent)
    : QAbstractListModel(parent), changes(review.changes), ticked(preselection(review.changes)) {}

QString ReviewRows::localDate(const RemoteChange& change) {
    return tr("Local: %1").arg(reviewDate(atSecond(change.local.modified), QLocale()));
}

QString ReviewRows::serverDate(const RemoteChange& change) {
    return tr("Server: %1").arg(reviewDate(atSecond(sinceUnixEpoch(change.remoteDate).count()), QLocale()));
}

QString ReviewRows::warning() { return tr("Also changed locally since the last sync"); }

QString ReviewRows::spoken(const RemoteChange& change) const {
    QStringList parts{
        text(change.path), isTicked(change) ? tr("Selected") : tr("Not selected"), localDate(change),
        serverDate(change)};
    if (change.bothChanged) parts += warning();
    return parts.join(QStringLiteral(", "));
}

int ReviewRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(changes.size());
}

QVariant ReviewRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const RemoteChange& shown = change(index);
    switch (role) {
    case Qt::DisplayRole:
        return text(shown.path);
    case Qt::ToolTipRole:
        return asToolTip(text(shown.path));
    case Qt::CheckStateRole:
        return isTicked(shown) ? Qt::Checked : Qt::Unchecked;
    case Qt::AccessibleTextRole:
        return spoken(shown);
    default:
        return {};
    }
}

Qt::ItemFlags ReviewRows::flags(const QModelIndex&) const {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

void ReviewRows::toggle(const QModelIndex& index) {
    const std::string& path = change(index).path;
    if (ticked.erase(path) == 0) ticked.insert(path);
    Q_EMIT dataChanged(index, index);
}

void ReviewRows::tickAll(bool wanted) {
    ticked.clear();
    if (wanted) {
        for (const auto& each : changes) ticked.insert(each.path);
    }
    if (!changes.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

} // namespace zembrastel::ui
