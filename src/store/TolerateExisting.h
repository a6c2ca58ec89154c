#pragma once

#include "platform/system/RuntimeError.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace qb {

/// Calls @p step with @p arguments, of which the first is the object if it is a method; errors that say "exists
/// already" (of a table, a column or an index) are no failure.
template <class Step, class... Arguments>
void TolerateExisting(Step&& step, Arguments&&... arguments)
{
    try {
        std::invoke(std::forward<Step>(step), std::forward<Arguments>(arguments)...);
    } catch (const RuntimeError& error) {
        constexpr long Existing[] = {ErrorNumber::TableExists, ErrorNumber::FieldExists, ErrorNumber::IndexExists};
        if (std::find(std::begin(Existing), std::end(Existing), error.Number()) == std::end(Existing))
            throw;
    }
}

} // namespace qb
