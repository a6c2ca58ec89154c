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
    /// Replaces the source and returns the one before; an empty source means the system's clock.
    static Source SetSource(Source source);
};

} // namespace qb
