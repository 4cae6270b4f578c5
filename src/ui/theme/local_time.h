// Instants as the user's locale writes them, near ones by the day's name.
//
// Pure; any thread. `now` decides what is today; both instants are taken in the local time zone.
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

#include <chrono>

namespace zembrastel::ui {

[[nodiscard]] QDateTime localTime(std::chrono::system_clock::time_point instant);

// To the minute, also where the locale's short form has seconds.
[[nodiscard]] QString shortTime(const QTime& time, const QLocale& locale);

// "Today, 09:41", "Yesterday, 18:02", and earlier "20/11/26, 18:02".
[[nodiscard]] QString dayAndTime(const QDateTime& when, const QDateTime& now, const QLocale& locale = QLocale());

// For a log: of today the time alone, to the second.
[[nodiscard]] QString logTime(const QDateTime& when, const QDateTime& now, const QLocale& locale = QLocale());

// A date in the locale's style, with the month's name and without the weekday: "14 Nov 2026, 17:48".
[[nodiscard]] QString dateWithMonthName(const QDateTime& date, const QLocale& locale = QLocale());

// How long `now`'s day still lasts.
[[nodiscard]] std::chrono::milliseconds untilTomorrow(const QDateTime& now);

} // namespace zembrastel::ui
