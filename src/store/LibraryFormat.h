#pragma once

namespace qb {

class Database;

/// Brings a library of an older format, which is open for writing, to the present one, in one transaction: its dates
/// become moments, the stamps of its checksums too, and `DBVersion` says so. Nothing when another process has done it
/// meanwhile. Raises 3051 when it fails, with the library as it was: it can be opened for reading then.
void BringUpToDate(Database& library);

} // namespace qb
