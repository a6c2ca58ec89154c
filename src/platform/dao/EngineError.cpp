#include "platform/dao/EngineError.h"

#include "platform/dao/Schema.h"

#include <QDir>
#include <sqlite3.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct Entry {
    int Code;
    long Number;
    const char* Text; ///< %1 is the database's path
};

// Extended codes stand before the primary code that they belong to: the first match is taken.
constexpr Entry Entries[] = {
    {SQLITE_CONSTRAINT_FOREIGNKEY, ErrorNumber::RelatedRecordRequired,
     "The change was refused: a related record is missing or still in use."},
    {SQLITE_IOERR_WRITE, ErrorNumber::DiskError,
     "'%1' could not be written: the disk is full, a limit on file sizes is reached, or the disk or the network "
     "failed; nothing was changed."},
    {SQLITE_FULL, ErrorNumber::DiskFull, "There is not enough space on the disk of '%1'; nothing was changed."},
    {SQLITE_READONLY_DBMOVED, ErrorNumber::CannotOpen,
     "The file '%1' has gone: it was moved, renamed or deleted; nothing was changed."},
    {SQLITE_READONLY, ErrorNumber::ReadOnly, "'%1' is read-only; nothing was changed."},
    {SQLITE_CANTOPEN, ErrorNumber::CannotOpen,
     "'%1' can't be opened: the file, or the folder in which its journal is written, is not accessible."},
    {SQLITE_NOTADB, ErrorNumber::NotADatabase, "'%1' is not a database of this program."},
    {SQLITE_CORRUPT, ErrorNumber::Corrupt, "'%1' is damaged or incomplete."},
    {SQLITE_BUSY, ErrorNumber::InUse, "'%1' is in use by another program; nothing was changed."},
    {SQLITE_LOCKED, ErrorNumber::InUse, "'%1' is in use; nothing was changed."},
    {SQLITE_IOERR, ErrorNumber::DiskError, "'%1' could not be read or written: the disk or the network failed."},
    {SQLITE_TOOBIG, ErrorNumber::ResourceExceeded, "A text or file is too large for '%1'."},
    {SQLITE_NOMEM, ErrorNumber::ResourceExceeded, "There is not enough memory to work on '%1'."},
    {SQLITE_INTERRUPT, ErrorNumber::Cancelled,
     "The work on '%1' was ended before it was done: it was cancelled, or took longer than a sound file needs."},
    {SQLITE_PERM, ErrorNumber::CannotOpen, "'%1' can't be opened: access is denied."},
    {SQLITE_AUTH, ErrorNumber::CannotOpen, "'%1' can't be opened: access is denied."},
};

constexpr int PrimaryCodeMask = 0xff;

/// Named column checks come back as "CHECK constraint failed: <column>:<rule>".
RuntimeError CheckError(const QString& detail, const QString& action)
{
    const QString column = detail.section(u':', 1, 1).trimmed();
    const QString rule = detail.section(u':', 2).trimmed();
    struct Rule {
        QLatin1StringView Name;
        long Number;
        const char* Text;
    };
    static const Rule rules[] = {
        {CheckRule::Length, ErrorNumber::TooLong, "'%1' is too long; nothing was changed."},
        {CheckRule::ZeroLength, ErrorNumber::ZeroLengthNotAllowed, "'%1' can't be empty; nothing was changed."},
        {CheckRule::Range, ErrorNumber::Overflow, "The value of '%1' is out of range; nothing was changed."},
    };
    for (const Rule& known : rules) {
        if (rule == known.Name)
            return {known.Number, QString::fromLatin1(known.Text).arg(column), action};
    }
    return {ErrorNumber::ValueNotAllowed, u"The value of '%1' is not allowed; nothing was changed."_s.arg(column),
            action};
}

RuntimeError ConstraintError(int code, const QString& detail, const QString& action)
{
    const QString column = detail.section(u':', 1).trimmed().section(u'.', -1);
    switch (code) {
    case SQLITE_CONSTRAINT_CHECK:
        return CheckError(detail, action);
    case SQLITE_CONSTRAINT_NOTNULL:
        return {ErrorNumber::NullNotAllowed, u"'%1' must have a value; nothing was changed."_s.arg(column), action};
    default:
        return {ErrorNumber::UniqueKeyRefused,
                u"The change was refused because it would make a duplicate value in '%1'."_s.arg(column), action};
    }
}

} // namespace

RuntimeError EngineError(sqlite3* connection, int code, const QString& file, const QString& action)
{
    const int extended = connection ? sqlite3_extended_errcode(connection) : code;
    const QString detail = QString::fromUtf8(connection ? sqlite3_errmsg(connection) : sqlite3_errstr(code));
    const QString path = QDir::toNativeSeparators(file);
    for (const Entry& entry : Entries) {
        if (entry.Code == extended || entry.Code == (extended & PrimaryCodeMask))
            return {entry.Number, QString::fromLatin1(entry.Text).replace(u"%1"_s, path), action};
    }
    if ((extended & PrimaryCodeMask) == SQLITE_CONSTRAINT)
        return ConstraintError(extended, detail, action);
    return {ErrorNumber::Engine, u"%1 ('%2')"_s.arg(detail, path), action};
}

} // namespace qb
