#pragma once

#include "platform/system/Work.h"

#include <QString>
#include <functional>

namespace qb {

class Database;

/// What becomes of a library that stands under the name of the restored one.
enum class RestoreOver {
    Refuse,
    Replace, ///< it goes, with its folders, once the new one is whole
    Number,  ///< the new one gets the first free number behind its name
};

struct RestoreResult {
    QString Library; ///< its path
    qint64 Items = 0;
    qint64 Files = 0; ///< of stored files
    qint64 Pages = 0; ///< of files of web pages
};

/// Unpacks a backup, or one of its volumes, to a library with its files and pages, which appears when it is complete
/// and has been checked. Folders that stand there without a library are kept under numbered names. Raises an error,
/// with what was there as it was: 3204 when a library stands there that is not to be replaced, 3045 when that is
/// open, 3343 for what is no backup, 75 for names that lead out of their folder and what can't be read or written, 18
/// when it was cancelled.
/// What @p inspect raises of the unpacked database, which is known to be that of a backup, ends the work too.
RestoreResult RestoreLibrary(const QString& backupFile, const QString& target, RestoreOver over, Work& work = NoWork(),
                             const std::function<void(Database&)>& inspect = {});

/// Makes a library, in its place, of the unpacked database that stands there, with the same errors.
RestoreResult CompleteUnpacked(const QString& target, Work& work = NoWork());

/// @p library, or the first name of it with a number behind the base under which no file stands.
QString NumberedLibrary(const QString& library);

} // namespace qb
