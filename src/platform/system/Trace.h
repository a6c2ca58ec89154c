#pragma once

namespace qb {

/// Appends "<stage> <milliseconds since the process started>" to the file that the environment
/// variable QUILLBASE_TRACE names; does nothing when it is not set.
void Trace(const char* stage);

} // namespace qb
