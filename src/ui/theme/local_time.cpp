#include "ui/theme/local_time.h"

#include <QCoreApplication>

namespace zembrastel::ui {
namespace {

// The locale's long time without the time zone, which every line would repeat. Quoted text of a format is kept.
QString timeWithSeconds(const QTime& time, const QLocale& locale) {
    QString format;
    bool quoted = false;
    for (const QChar letter : locale.timeFormat(QLocale::LongFormat)) {
        if (letter == u'\'') quoted = !quoted;
        if (quoted || letter != u't') format += letter;
    }
    format.replace(QStringLiteral("()"), QString());
    return locale.toString(time, format.simplified());
}

// Separates the weekday from the rest of a date.
bool isSeparator(QChar letter) { return letter == u',' || letter == u'،' || letter.isSpace(); }

// The locale's long form of a date without the weekday.
QString formatWithMonthName(const QLocale& locale) {
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(QStringLiteral("dddd"));
    while (!format.isEmpty() && isSeparator(format.front())) format.remove(0, 1);
    while (!format.isEmpty() && isSeparator(format.back())) format.chop(1);
    return format;
}

} // namespace

QDateTime localTime(std::chrono::system_clock::time_point instant) {
    using std::chrono::milliseconds;
    return QDateTime::fromMSecsSinceEpoch(std::chrono::floor<milliseconds>(instant.time_since_epoch()).count());
}

QString shortTime(const QTime& time, const QLocale& locale) {
    QString format = locale.timeFormat(QLocale::ShortFormat);
    return locale.toString(time, format.remove(QStringLiteral(":ss")));
}

QString dayAndTime(const QDateTime& when, const QDateTime& now, const QLocale& locale) {
    const QString time = shortTime(when.time(), locale);
    const qint64 daysAgo = when.date().daysTo(now.date());
    if (daysAgo == 0) return QCoreApplication::translate("LocalTime", "Today, %1").arg(time);
    if (daysAgo == 1) return QCoreApplication::translate("LocalTime", "Yesterday, %1").arg(time);
    return QStringLiteral("%1, %2").arg(locale.toString(when.date(), QLocale::ShortFormat), time);
}

QString logTime(const QDateTime& when, const QDateTime& now, const QLocale& locale) {
    return when.date() == now.date() ? timeWithSeconds(when.time(), locale) : dayAndTime(when, now, locale);
}

QString dateWithMonthName(const QDateTime& date, const QLocale& locale) {
    return QStringLiteral("%1, %2").arg(shortDayWithMonthName(date.date(), locale), shortTime(date.time(), locale));
}

QString dayWithMonthName(const QDate& day, const QLocale& locale) {
    return locale.toString(day, formatWithMonthName(locale));
}

QString shortDayWithMonthName(const QDate& day, const QLocale& locale) {
    return locale.toString(day, formatWithMonthName(locale).replace(QStringLiteral("MMMM"), QStringLiteral("MMM")));
}

std::chrono::milliseconds untilTomorrow(const QDateTime& now) {
    return std::chrono::milliseconds(now.msecsTo(now.date().addDays(1).startOfDay()));
}

} // namespace zembrastel::ui
