#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Work.h"

#include <memory>

namespace qb {

/// Makes, opens and compacts database files.
class DBEngine {
public:
    using Access = DatabaseAccess;

    /// Makes a new database with an empty schema. Raises 3204 when a file of that name exists,
    /// 75 when it can't be made.
    static std::unique_ptr<Database> CreateDatabase(const QString& path);

    /// Opens a database. Raises 3024 when there is no such file, 3343 when it is no database
    /// (an empty file and a folder included), 3049 when it is damaged or cut short, 3045 when
    /// another process holds it.
    static std::unique_ptr<Database> OpenDatabase(const QString& path, Access access = Access::ReadWrite);

    /// Writes a copy of @p source without its unused space as the new file @p target. Raises
    /// 3204 when @p target exists, 3045 when another process is using @p source. A failure
    /// leaves no target behind. @p work counts the bytes of the source that have been dealt with, about; 3059 when it
    /// was cancelled. A copy that is Passing is not flushed to the disk: it does not outlive the work.
    /// Passing may be of a source that can only be read, whoever else is using it (PassingOfReadOnly).
    enum class Copy { Lasting, Passing, PassingOfReadOnly };
    static void CompactDatabase(const QString& source, const QString& target, Work& work = NoWork(),
                                Copy copy = Copy::Lasting);

    /// What marks a file as a database of this program, in the place where file types are
    /// looked up ("KTQB").
    static constexpr int ApplicationId = 0x4B545142;
    static constexpr int FormatVersion = 2;

private:
    static std::unique_ptr<Database> Connect(const QString& path, int flags);
    static void ClearAway(Database& database);
    static std::unique_ptr<Database> ConnectAndLook(const QString& path, Access access);
};

} // namespace qb
