#include "platform/system/Date.h"

#include <cmath>

namespace qb {

namespace {
constexpr qint64 SecondsPerDay = 86400;
constexpr qint64 OriginJulianDay = 2415019; // 1899-12-30

qint64 FloorDiv(qint64 value, qint64 by)
{
    const qint64 quotient = value / by;
    return value % by < 0 ? quotient - 1 : quotient;
}
} // namespace

Date Date::FromParts(const QDate& day, const QTime& time)
{
    return FromSeconds((day.toJulianDay() - OriginJulianDay) * SecondsPerDay + time.msecsSinceStartOfDay() / 1000);
}

Date Date::FromParts(int year, int month, int day, int hour, int minute, int second)
{
    return FromParts(QDate(year, month, day), QTime(hour, minute, second));
}

Date Date::FromDateTime(const QDateTime& moment)
{
    return FromParts(moment.date(), moment.time());
}

Date Date::FromDayCount(double days)
{
    return FromSeconds(std::llround(days * double(SecondsPerDay)));
}

double Date::ToDayCount() const
{
    return double(m_seconds) / double(SecondsPerDay);
}

QDate Date::Day() const
{
    return QDate::fromJulianDay(FloorDiv(m_seconds, SecondsPerDay) + OriginJulianDay);
}

QTime Date::Time() const
{
    return QTime(0, 0).addSecs(int(m_seconds - FloorDiv(m_seconds, SecondsPerDay) * SecondsPerDay));
}

Date Date::DateOnly() const
{
    return FromSeconds(FloorDiv(m_seconds, SecondsPerDay) * SecondsPerDay);
}

Date Date::AddDays(qint64 days) const
{
    return FromSeconds(m_seconds + days * SecondsPerDay);
}

} // namespace qb
