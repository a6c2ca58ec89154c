#pragma once

#include "help/Handbook.h"

#include <QString>
#include <functional>

namespace qb {

/// Shows a topic of the handbook by @p show. Where there is no handbook in @p folder the user is asked whether to open
/// the one on the web, and @p show is not called.
void ShowHelp(const QString& topic, const std::function<void(const QString& topic)>& show,
              const QString& folder = Handbook::DefaultFolder());

} // namespace qb
