#include "platform/dao/OpeningChecks.h"

#include "platform/dao/DBEngine.h"
#include "platform/dao/DateForm.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView FileMagic{"SQLite format 3\0", 16};
const QString Procedure = u"DBEngine::OpenDatabase"_s;

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

} // namespace

void RefuseWhatIsNoDatabase(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        throw RuntimeError(ErrorNumber::FileNotFound, u"The file '%1' was not found."_s.arg(Shown(path)), Procedure);
    if (info.isDir())
        throw RuntimeError(ErrorNumber::NotADatabase, u"'%1' is a folder, not a database."_s.arg(Shown(path)),
                           Procedure);
    if (info.size() == 0)
        throw RuntimeError(ErrorNumber::NotADatabase, u"'%1' is empty, not a database."_s.arg(Shown(path)), Procedure);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(ErrorNumber::CannotOpen, u"'%1' can't be opened: %2."_s.arg(Shown(path), file.errorString()),
                           Procedure);
    if (file.read(FileMagic.size()) != FileMagic)
        throw RuntimeError(ErrorNumber::NotADatabase, u"'%1' is not a database of this program."_s.arg(Shown(path)),
                           Procedure);
}

void RefuseUnwritable(const QString& path)
{
    if (const QString reason = WhyNotWritable(path); !reason.isEmpty())
        throw RuntimeError(ErrorNumber::CannotOpen, u"'%1' can't be changed. %2"_s.arg(Shown(path), reason), Procedure);
}

void RefuseWhatCantBeUsed(Database& database, const QString& schema, DatabaseAccess access)
{
    const QString path = database.NameOf(schema);
    const auto pragma = [&](const QString& name) {
        return database.QueryValue(u"PRAGMA %1.%2"_s.arg(Quoted(schema), name));
    };
    if (access == DatabaseAccess::ReadWrite && database.IsReadOnly(schema))
        throw RuntimeError(ErrorNumber::CannotOpen, u"'%1' is read-only."_s.arg(Shown(path)), Procedure);
    const qint64 version = pragma(u"user_version"_s).ToLong();
    if (access == DatabaseAccess::ReadWrite && version > DBEngine::FormatVersion)
        throw RuntimeError(
            ErrorNumber::CannotOpen,
            u"'%1' was made by a newer version of the program (format %2, this one knows %3); it can be opened for "
            "reading only."_s.arg(Shown(path))
                .arg(version)
                .arg(DBEngine::FormatVersion),
            Procedure);
    if (schema != MainSchema && version < DateForm::FirstFormat)
        throw RuntimeError(
            ErrorNumber::CannotOpen,
            u"'%1' was made by an older version of the program, whose dates are of another form."_s.arg(Shown(path)),
            Procedure);
    const qint64 expected = pragma(u"page_count"_s).ToLong() * pragma(u"page_size"_s).ToLong();
    if (QFileInfo(path).size() < expected)
        throw RuntimeError(ErrorNumber::Corrupt, u"'%1' is damaged or incomplete."_s.arg(Shown(path)), Procedure);
    // A file that another tool has switched to a write-ahead log could not lie on a share.
    if (access == DatabaseAccess::ReadWrite && pragma(u"journal_mode"_s).ToText() == u"wal"_s)
        pragma(u"journal_mode = DELETE"_s);
}

void ApplyFilePragmas(Database& database, const QString& schema)
{
    // With FULL the removal of the journal is not on the disk when a commit returns: a power cut within
    // seconds finds the journal again and undoes the commit.
    database.Execute(u"PRAGMA %1.synchronous = EXTRA"_s.arg(Quoted(schema)));
    database.Execute(u"PRAGMA %1.cache_size = -8000"_s.arg(Quoted(schema))); // kB
}

} // namespace qb
