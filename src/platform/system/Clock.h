#pragma once

#include "platform/system/Date.h"

#include <functional>

namespace qb {

/// The only source of the present time. A test puts its own in with SetSource.
class Clock {
public:
    using Source = std::function<Date()>;

    /// The present moment.
    static Date Now();
    /// The first moment of the present day, as a clock on the wall has it.
    static Date Today();
    /// Waits until the present second is over, if it is @p moment or an earlier one; a moment that is further ahead is
    /// not waited for. A source that was put in never waits.
    static void LetPass(Date moment);
    /// Waits for the next second when little is left of the present one, so that what is done next is done in one
    /// second. A source that was put in never waits.
    static void BeginSecond();
    /// Replaces the source and returns the one before; an empty source means the system's clock.
    static Source SetSource(Source source);
};

} // namespace qb
