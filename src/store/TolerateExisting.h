#pragma once

#include "platform/system/RuntimeError.h"

#include <algorithm>
#include <iterator>

namespace qb {

/// Runs @p step; errors that say "exists already" (of a table, a column or an index) are no failure.
template <class Step>
void TolerateExisting(Step&& step)
{
    try {
        step();
    } catch (const RuntimeError& error) {
        constexpr long Existing[] = {ErrorNumber::TableExists, ErrorNumber::FieldExists, ErrorNumber::IndexExists};
        if (std::find(std::begin(Existing), std::end(Existing), error.Number()) == std::end(Existing))
            throw;
    }
}

} // namespace qb
