#include "maintenance/Compaction.h"

#include "maintenance/LibraryCheck.h"
#include "maintenance/PhasedWork.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/Library.h"
#include "store/LibrarySwap.h"
#include "store/LibraryUse.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The path of the library that the session's copy is of: several may have one identity, if they were copied by hand.
QString SessionCopyNote()
{
    return ApplicationFolder() + u"KTSStartupBackup.path"_s;
}

QMap<QString, qint64> RowsOf(const QString& path)
{
    QMap<QString, qint64> rows;
    const std::unique_ptr<Database> database = DBEngine::OpenDatabase(path, DatabaseAccess::ReadOnly);
    for (const QString& table : database->TableNames())
        rows.insert(table, database->QueryValue(u"SELECT count(*) FROM "_s + Quoted(table)).ToLong());
    return rows;
}

void RefuseMissing(const QString& library)
{
    if (!QFileInfo::exists(library))
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"The file '%1' was not found."_s.arg(QDir::toNativeSeparators(library)),
                           u"CompactLibrary"_s);
}

QString IdentityOf(const QString& path)
{
    const std::unique_ptr<Database> database = DBEngine::OpenDatabase(path, DatabaseAccess::ReadOnly);
    return IsLibrary(*database) ? LibraryIdentity(*database) : QString();
}

} // namespace

qint64 CompactLibrary(const QString& library, Work& work)
{
    const QString path = QFileInfo(library).absoluteFilePath();
    FinishSwap(path);
    RefuseMissing(path);
    const SoleUse sole(path, u"CompactLibrary"_s);
    const qint64 before = QFileInfo(path).size();
    LibrarySwap swap(path);
    DBEngine::CompactDatabase(path, swap.NewLibrary(), work, DBEngine::Copy::Passing);
    if (RowsOf(swap.NewLibrary()) != RowsOf(path))
        throw RuntimeError(ErrorNumber::InUse,
                           u"The library '%1' was changed while it was compacted. Nothing was changed."_s.arg(
                               QDir::toNativeSeparators(path)),
                           u"CompactLibrary"_s);
    RefuseDamaged(*DBEngine::OpenDatabase(swap.NewLibrary(), DatabaseAccess::ReadOnly), work);
    const qint64 after = QFileInfo(swap.NewLibrary()).size();
    swap.PutInPlace(LibrarySwap::Parts::DatabaseOnly, work);
    return before - after;
}

QString SessionCopyPath()
{
    return ApplicationFolder() + u"KTSStartupBackup.qbd"_s;
}

void RemoveSessionCopy()
{
    if (QFileInfo::exists(SessionCopyPath()) && !QFile::remove(SessionCopyPath()))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The file '%1' can't be deleted."_s.arg(QDir::toNativeSeparators(SessionCopyPath())),
                           u"RemoveSessionCopy"_s);
    QFile::remove(SessionCopyNote()); // last, since a copy without a note passes for that of any twin
}

void MakeSessionCopy(const QString& library, Work& work)
{
    RemoveSessionCopy(); // when this one fails, that of an earlier session must not pass for it
    const QString interim = InterimName(SessionCopyPath());
    QFile::remove(interim);
    DBEngine::CompactDatabase(library, interim, work, DBEngine::Copy::Passing);
    try {
        MoveIntoPlace(interim, SessionCopyPath(), true);
    } catch (const RuntimeError&) {
        QFile::remove(interim);
        throw;
    }
    ReplaceContents(SessionCopyNote(), QFileInfo(library).canonicalFilePath().toUtf8());
}

QString WhyNotUndone(const QString& library)
{
    if (!QFileInfo::exists(SessionCopyPath()))
        return u"There is no copy of the library from the start of the session."_s;
    QFile note(SessionCopyNote());
    QByteArray path;
    const bool isOther = note.open(QIODevice::ReadOnly) && ReadAll(note, path).isEmpty() && !path.isEmpty()
                         && QString::fromUtf8(path) != QFileInfo(library).canonicalFilePath();
    try {
        if (!isOther && IdentityOf(SessionCopyPath()) == IdentityOf(library))
            return {};
    } catch (const RuntimeError& error) {
        return error.Description();
    }
    return u"The copy from the start of the session is of another library."_s;
}

void UndoSession(const QString& library, Work& work)
{
    const QString path = QFileInfo(library).absoluteFilePath();
    const QString procedure = u"UndoSession"_s;
    FinishSwap(path);
    RefuseMissing(path);
    if (const QString why = WhyNotUndone(path); !why.isEmpty())
        throw RuntimeError(ErrorNumber::FileNotFound, why + u" Nothing was changed."_s, procedure);
    const SoleUse sole(path, procedure);
    LibrarySwap swap(path);
    CopyFileContents(SessionCopyPath(), swap.NewLibrary(), work);
    KeepNoMoreRightsThan(path, swap.NewLibrary());
    RefuseDamaged(*DBEngine::OpenDatabase(swap.NewLibrary(), DatabaseAccess::ReadOnly), work);
    swap.PutInPlace(LibrarySwap::Parts::DatabaseOnly, work);
}

} // namespace qb
