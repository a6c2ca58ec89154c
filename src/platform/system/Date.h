#pragma once

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <compare>

namespace qb {

/// A moment, to the second. Held as whole seconds since 1899-12-30 00:00:00 UTC, which is also the number that a
/// library stores: equality is exact, and neither a journey nor the end of summer time changes the order of moments.
/// What people see and type is the reading of a clock on the wall, in the time zone of the system. 0 means "none".
class Date {
public:
    constexpr Date() = default;

    /// @p seconds as a library stores them; any number is taken.
    static constexpr Date FromSeconds(qint64 seconds)
    {
        Date date;
        date.m_seconds = seconds;
        return date;
    }
    /// The moment at which a clock on the wall reads that. The day must be a valid one; fractions of a second are cut
    /// off, and a time that is none counts as midnight. Of an hour that comes twice it is the first one; what the
    /// clocks leave out is the moment at which they do. Midnight of 1899-12-30 is "none".
    static Date FromParts(const QDate& day, const QTime& time = QTime(0, 0));
    static Date FromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
    /// @p moment must be a valid one, of any time zone; fractions are cut off.
    static Date FromDateTime(const QDateTime& moment);
    /// @p days is the reading of a clock on the wall as a day count from the same origin, with the time of day as its
    /// fraction: the form that 8-byte dates in files have. Rounded to the nearest second.
    static Date FromDayCount(double days);
    /// @p seconds are the reading of a clock on the wall, counted from the origin: the form in which libraries and
    /// files of older versions hold dates. Later readings give later moments, or the same one. 0 is "none"; what lies
    /// outside of the years 100 to 9999, which no library stores, is taken as it is.
    static Date FromWallSeconds(qint64 seconds);

    /// The number that FromSeconds takes.
    constexpr qint64 Seconds() const { return m_seconds; }
    /// Also for midnight of 1899-12-30, which is not told from it.
    constexpr bool IsNone() const { return m_seconds == 0; }
    /// The number that FromDayCount takes.
    double ToDayCount() const;
    /// The number that FromWallSeconds takes.
    qint64 WallSeconds() const;
    /// What a clock on the wall reads. Those of the origin, midnight of 1899-12-30, when it is "none".
    QDate Day() const;
    QTime Time() const;
    /// The first moment of the same day on the wall.
    Date DateOnly() const;
    /// The same reading of the clock, so many days later.
    Date AddDays(qint64 days) const;
    /// As programs read it: "2026-03-02T13:30:05Z"; empty when it is "none".
    QString ToIso() const;

    friend constexpr auto operator<=>(const Date&, const Date&) = default;

private:
    qint64 m_seconds = 0;
};

} // namespace qb
