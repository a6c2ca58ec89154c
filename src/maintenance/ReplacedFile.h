#pragma once

#include <QString>

namespace qb {

/// Raises a RuntimeError when what stands under the name @p file must not go for a file that is made of the library at
/// the path @p library: a folder, a device or pipe (75), the library itself or any database (3204). @p maker says what
/// is made, as in "a backup"; nothing has been changed then.
void RequireReplaceable(const QString& file, const QString& library, const QString& maker);

} // namespace qb
