#include "replication/ChangeFile.h"

#include "maintenance/Containers.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/PhasedWork.h"
#include "maintenance/ReplacedFile.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "store/CDBCreate.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "store/PendingReplica.h"
#include "store/ReplicaLog.h"
#include "store/SideFolders.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"ExportChangedItems"_s;
const QString LibrarySchemaName = u"library"_s;

// Ends of the phases, in parts of a thousand of the whole.
constexpr qint64 RowsWritten = 400;
constexpr qint64 Packed = 850;

void RequireTarget(const QString& target, const QString& library)
{
    RequireReplaceable(target, library, u"a synchronization file"_s);
    if (const QString why = WhyNotWritable(target); !why.isEmpty() && QFileInfo(target).absoluteDir().exists())
        throw RuntimeError(ErrorNumber::PathAccess, u"The changes can't be exported. "_s + why, Procedure);
}

void RequireChild(const Library& child, ExportAgain again)
{
    const QString why = !child.IsChildReplica()
                            ? u"The library is no child of another one; it has no changes to export."_s
                        : !child.LastExportedDate().IsNone() && again == ExportAgain::No
                            ? u"The changes of this child library are on their way to its mother already."_s
                            : QString();
    if (!why.isEmpty())
        throw RuntimeError(ErrorNumber::InvalidCall, why + u" Nothing was changed."_s, Procedure);
}

/// A file of the changes of one child on its way.
class ChangeFile {
public:
    ChangeFile(Library& child, const QString& target, ExportAgain again, Work& work)
        : m_child(child), m_again(again), m_target(QFileInfo(target).absoluteFilePath()), m_work(work),
          m_stage(QFileInfo(m_target).absolutePath()),
          m_database(m_stage.Scratch() + QFileInfo(m_target).fileName().chopped(1) + u't')
    {
    }

    std::optional<ExportedChanges> Write()
    {
        MakeTables();
        {
            const auto file = DBEngine::OpenDatabase(m_database);
            const AttachedFile library(*file, m_child.Name(), LibrarySchemaName, DatabaseAccess::ReadOnly);
            // Until the child says that it was exported nobody else changes it. From here on nothing opens its file
            // beside the engine, which would take its locks away.
            m_lock.emplace(m_child);
            m_child.ReadReplica();
            RequireChild(m_child, m_again);
            m_result.Exported = m_child.NextStamp();
            if (!WriteRows(*file))
                return std::nullopt;
        }
        PackAndCompare();
        Stamp();
        Place();
        return m_result;
    }

private:
    void MakeTables()
    {
        if (CDBCreate().CreateSynchroDatabase(m_database))
            return;
        Prompts::Current().MsgBox({.Text = u"Program encountered a problem while creating synchronization file. The "
                                           "file was not created."_s,
                                   .Caption = u"Synchronization file not created"_s,
                                   .Icon = MsgBoxIcon::Critical});
        throw RuntimeError(ErrorNumber::Engine, u"The synchronization file could not be made. Nothing was changed."_s,
                           Procedure);
    }

    bool WriteRows(Database& file)
    {
        m_work.Begin(RowsWritten);
        file.Execute(u"PRAGMA main.synchronous = OFF"_s); // it does not outlive the work
        Transaction transaction(file);
        const ExportPlace place{.Connection = file,
                                .Library = LibrarySchemaName,
                                .File = MainSchema,
                                .FilesFolder = m_child.FilesFolder(),
                                .HTMLFolder = m_child.HTMLFolder()};
        if (!ExportChangedItems(place, false, m_result.Exported, m_result.Counts, m_work))
            return false;
        EndUnless(!m_work.IsCancelled(), Procedure);
        transaction.Commit();
        return true;
    }

    void PackAndCompare()
    {
        m_container = m_stage.Scratch() + u"packed"_s;
        m_work.Begin(Packed);
        EndUnless(PackContainer(m_database, m_container, {}, m_work), Procedure);
        KeepNoMoreRightsThan(m_child.Name(), m_container);
        m_work.Begin(PhasedWork::Whole);
        if (const QString why = WhyNotAsPacked(m_database, m_container, m_work); !why.isEmpty())
            throw RuntimeError(
                ErrorNumber::PathAccess,
                u"The export '%1' failed: %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(m_target), why),
                Procedure);
    }

    /// From its commit on the child is exported, unless the file does not get its name.
    void Stamp()
    {
        NotePendingReplica(m_child, {.File = m_target,
                                     .Complete = m_container,
                                     .Locked = m_stage.LockedFolder(),
                                     .Exported = m_child.LastExportedDate()});
        RefreshMotherIDs(m_child);
        m_child.Execute(u"UPDATE Properties SET LastExported = ?"_s, {m_result.Exported});
        ReplicaLog(m_child).Note(
            {.Event = ReplicaEvent::Exported, .Moment = m_result.Exported, .RowDate = m_result.Exported});
        m_lock->Commit();
        m_lock.reset();
    }

    void Place()
    {
        try {
            if (!RenameFile(m_container, m_stage.PathFor(QFileInfo(m_target).fileName())))
                throw RuntimeError(
                    ErrorNumber::PathAccess,
                    u"'%1' can't be written. Nothing was changed."_s.arg(QDir::toNativeSeparators(m_target)),
                    Procedure);
            m_stage.PutInPlace(false);
        } catch (const RuntimeError&) {
            TakeBack();
            throw;
        }
        m_result.File = m_target;
        try {
            SyncFileSystem(m_target);
            ForgetPendingReplica(m_child);
            m_child.ReadReplica();
        } catch (const RuntimeError&) {
            // It is done; the next opening finds the file and drops the note.
        }
    }

    void TakeBack()
    {
        try {
            TakePendingReplicaBack(m_child);
            m_child.ReadReplica();
        } catch (const RuntimeError&) {
            // The next opening does it.
        }
    }

    Library& m_child;
    ExportAgain m_again;
    QString m_target;
    PhasedWork m_work;
    StagedFiles m_stage;
    QString m_database; ///< as it is packed
    QString m_container;
    std::optional<Transaction> m_lock; ///< on the child
    ExportedChanges m_result;
};

} // namespace

std::optional<ExportedChanges> WriteChanges(Library& child, const QString& target, ExportAgain again, Work& work)
{
    RequireTarget(target, child.Name());
    child.ReadReplica();
    RequireChild(child, again);
    if (const QString foreign = WhoseFoldersAreForeign(child); !foreign.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess, foreign + u" Nothing was changed."_s, Procedure);
    FinishPendingFiles(child);
    FinishPendingPages(child);
    return ChangeFile(child, target, again, work).Write();
}

bool CompactSynchronizationFile(const QString& path, Work& work)
{
    return Guarded(
        u"CDBManipulate"_s, u"CompactSynchronizationFile"_s,
        [&] {
            const QString database = path.chopped(1) + u't';
            const QString container = InterimName(path);
            if (!RenameFile(path, database))
                throw RuntimeError(
                    ErrorNumber::PathAccess,
                    u"'%1' can't be renamed to be packed. Nothing was changed."_s.arg(QDir::toNativeSeparators(path)),
                    u"CompactSynchronizationFile"_s);
            bool isPacked = false;
            try {
                isPacked = PackContainer(database, container, {}, work)
                           && WhyNotAsPacked(database, container, work).isEmpty();
                if (isPacked)
                    MoveIntoPlace(container, path, true);
            } catch (const RuntimeError&) {
                isPacked = false; // the database is accepted as it is, too
            }
            QFile::remove(container);
            if (!isPacked)
                RenameFile(database, path);
            else
                QFile::remove(database);
            return isPacked;
        },
        false);
}

} // namespace qb
