#include "platform/system/Clock.h"

#include <utility>

namespace qb {

namespace {
Clock::Source& CurrentSource()
{
    static Clock::Source source;
    return source;
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

Clock::Source Clock::SetSource(Source source)
{
    return std::exchange(CurrentSource(), std::move(source));
}

} // namespace qb
