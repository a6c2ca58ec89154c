#pragma once

#include "maintenance/LibraryBackup.h"

#include <QString>

namespace qb {

/// Gives out a child of a library that nobody has open: packs a copy with all files and pages into the transfer file
/// @p target, and enters the child in the library; both or neither, whatever happens. The user is asked for a
/// description. An ordinary library becomes a mother by it; a mother, or a child, gets one child more. A file that
/// stands there is replaced once the new one is whole. Raises what BackUpLibrary raises; 3045 also while the library is
/// open for writing anywhere.
BackUpResult GiveOutChild(const QString& library, const QString& target, Work& work = NoWork());

/// The same as the window's command has it: an error is reported, and false then; false without an error when it was
/// cancelled.
bool CreateChildDB(const QString& sourcePath, const QString& targetPath, Work& work = NoWork());

} // namespace qb
