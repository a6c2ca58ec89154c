#include "platform/system/Clock.h"

#include <QThread>
#include <utility>

namespace qb {

namespace {
Clock::Source& CurrentSource()
{
    static Clock::Source source;
    return source;
}

constexpr int Second = 1000; // milliseconds

int Left()
{
    return Second - QDateTime::currentDateTime().time().msec();
}
} // namespace

Date Clock::Now()
{
    const Source& source = CurrentSource();
    return source ? source() : Date::FromDateTime(QDateTime::currentDateTimeUtc());
}

Date Clock::Today()
{
    return Now().DateOnly();
}

void Clock::LetPass(Date moment)
{
    constexpr qint64 Ahead = 2; // seconds
    while (!CurrentSource() && Now() <= moment && moment.Seconds() - Now().Seconds() <= Ahead)
        QThread::msleep(static_cast<unsigned long>(Left()));
}

void Clock::BeginSecond()
{
    if (const int left = Left(); !CurrentSource() && left < Second / 2)
        QThread::msleep(static_cast<unsigned long>(left));
}

Clock::Source Clock::SetSource(Source source)
{
    return std::exchange(CurrentSource(), std::move(source));
}

} // namespace qb
