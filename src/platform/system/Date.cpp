#include "platform/system/Date.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 SecondsPerDay = 86400;
constexpr qint64 OriginJulianDay = 2415019;              // 1899-12-30
constexpr qint64 Earliest = -56802297600;                // 0100-01-01, of what a library stores
constexpr qint64 Latest = 255611462399;                  // 9999-12-31 23:59:59
constexpr qint64 OriginOfSystem = 25569 * SecondsPerDay; // 1970-01-01, from the origin

qint64 FloorDiv(qint64 value, qint64 by)
{
    const qint64 quotient = value / by;
    return value % by < 0 ? quotient - 1 : quotient;
}

/// How far the clock on the wall is ahead of UTC at a moment, in seconds.
qint64 OffsetAt(qint64 seconds)
{
    const std::time_t moment = seconds - OriginOfSystem;
    std::tm wall{};
    return ::localtime_r(&moment, &wall) ? wall.tm_gmtoff : 0; // null for years that no number holds
}

/// The first moment after @p before, and not after @p after, at which the offset is no longer @p offset.
qint64 ChangeOfOffset(qint64 before, qint64 after, qint64 offset)
{
    while (after - before > 1) {
        const qint64 middle = before + (after - before) / 2;
        (OffsetAt(middle) == offset ? before : after) = middle;
    }
    return after;
}

/// The moment at which the clock on the wall reads @p wall.
qint64 MomentOf(qint64 wall)
{
    // No zone is ahead or behind by a day, and none changes its clocks twice within two.
    const qint64 before = wall - SecondsPerDay;
    const qint64 after = wall + SecondsPerDay;
    const qint64 first = wall - OffsetAt(before);
    if (OffsetAt(first) == OffsetAt(before))
        return first;
    const qint64 second = wall - OffsetAt(after);
    if (OffsetAt(second) == OffsetAt(after))
        return second;
    return ChangeOfOffset(before, after, OffsetAt(before));
}

} // namespace

Date Date::FromWallSeconds(qint64 seconds)
{
    if (seconds == 0 || seconds < Earliest || seconds > Latest)
        return FromSeconds(seconds);
    return FromSeconds(std::clamp(MomentOf(seconds), Earliest, Latest)); // what can be stored stays so
}

qint64 Date::WallSeconds() const
{
    return IsNone() ? 0 : m_seconds + OffsetAt(m_seconds);
}

Date Date::FromParts(const QDate& day, const QTime& time)
{
    return FromWallSeconds((day.toJulianDay() - OriginJulianDay) * SecondsPerDay + time.msecsSinceStartOfDay() / 1000);
}

Date Date::FromParts(int year, int month, int day, int hour, int minute, int second)
{
    return FromParts(QDate(year, month, day), QTime(hour, minute, second));
}

Date Date::FromDateTime(const QDateTime& moment)
{
    constexpr qint64 MillisecondsPerSecond = 1000;
    return FromSeconds(FloorDiv(moment.toMSecsSinceEpoch(), MillisecondsPerSecond) + OriginOfSystem);
}

Date Date::FromDayCount(double days)
{
    return FromWallSeconds(std::llround(days * double(SecondsPerDay)));
}

double Date::ToDayCount() const
{
    return double(WallSeconds()) / double(SecondsPerDay);
}

QDate Date::Day() const
{
    return QDate::fromJulianDay(FloorDiv(WallSeconds(), SecondsPerDay) + OriginJulianDay);
}

QTime Date::Time() const
{
    const qint64 wall = WallSeconds();
    return QTime(0, 0).addSecs(int(wall - FloorDiv(wall, SecondsPerDay) * SecondsPerDay));
}

Date Date::DateOnly() const
{
    return FromParts(Day());
}

Date Date::AddDays(qint64 days) const
{
    return FromWallSeconds(WallSeconds() + days * SecondsPerDay);
}

QString Date::ToIso() const
{
    if (IsNone())
        return {};
    const QDate day = QDate::fromJulianDay(FloorDiv(m_seconds, SecondsPerDay) + OriginJulianDay);
    const QTime time = QTime(0, 0).addSecs(int(m_seconds - FloorDiv(m_seconds, SecondsPerDay) * SecondsPerDay));
    return day.toString(u"yyyy-MM-dd"_s) + time.toString(u"'T'HH:mm:ss'Z'"_s);
}

} // namespace qb
