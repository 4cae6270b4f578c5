// Instants in the user's locale; today and yesterday by name.
//
// Pure; any thread. `now` decides which day is today. Both instants are in the local time zone.
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

#include <chrono>

namespace zembrastel::ui {

[[nodiscard]] QDateTime localTime(std::chrono::system_clock::time_point instant);

// To the minute, even if the locale's short form has seconds.
[[nodiscard]] QString shortTime(const QTime& time, const QLocale& locale);

// "Today, 09:41", "Yesterday, 18:02", and earlier "20/11/26, 18:02".
[[nodiscard]] QString dayAndTime(const QDateTime& when, const QDateTime& now, const QLocale& locale = QLocale());

// For a log: today's times without a day, to the second.
[[nodiscard]] QString logTime(const QDateTime& when, const QDateTime& now, const QLocale& locale = QLocale());

// A date in the locale's style, with the month's name and without the weekday: "14 Nov 2026, 17:48".
[[nodiscard]] QString dateWithMonthName(const QDateTime& date, const QLocale& locale = QLocale());

// A day in the same style, with the whole name of the month: "14 November 2026".
[[nodiscard]] QString dayWithMonthName(const QDate& day, const QLocale& locale = QLocale());

// The same with the month's short name: "14 Nov 2026".
[[nodiscard]] QString shortDayWithMonthName(const QDate& day, const QLocale& locale = QLocale());

// The time until midnight.
[[nodiscard]] std::chrono::milliseconds untilTomorrow(const QDateTime& now);

} // namespace zembrastel::ui
