#pragma once

#include "platform/system/RuntimeError.h"

struct sqlite3;

namespace qb {

/// Turns the connection's last error into a RuntimeError with the number and the sentence
/// that fit it. @p action says what was being done, and @p file which database it was.
RuntimeError EngineError(sqlite3* connection, int code, const QString& file, const QString& action);

} // namespace qb
