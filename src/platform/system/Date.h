#pragma once

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <compare>

namespace qb {

/// A moment in local time, to the second. Held as whole seconds since 1899-12-30 00:00:00,
/// which is also the number that a library stores, so equality is exact. 0 means "none".
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
    /// The day must be a valid one; fractions of a second are cut off, and a time that is none counts as midnight.
    /// Midnight of 1899-12-30 is "none".
    static Date FromParts(const QDate& day, const QTime& time = QTime(0, 0));
    static Date FromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
    /// The wall-clock reading of @p moment, whatever its time zone; fractions are cut off.
    static Date FromDateTime(const QDateTime& moment);
    /// @p days is a day count from the same origin with the time of day as its fraction, the
    /// form that 8-byte dates in files have; rounded to the nearest second.
    static Date FromDayCount(double days);

    /// The number that FromSeconds takes.
    constexpr qint64 Seconds() const { return m_seconds; }
    /// Also for midnight of 1899-12-30, which is not told from it.
    constexpr bool IsNone() const { return m_seconds == 0; }
    /// The number that FromDayCount takes.
    double ToDayCount() const;
    /// Those of the origin, midnight of 1899-12-30, when it is "none".
    QDate Day() const;
    QTime Time() const;
    /// The same day at 00:00:00.
    Date DateOnly() const;
    Date AddDays(qint64 days) const;

    friend constexpr auto operator<=>(const Date&, const Date&) = default;

private:
    qint64 m_seconds = 0;
};

} // namespace qb
