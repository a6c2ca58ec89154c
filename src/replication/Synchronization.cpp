#include "replication/Synchronization.h"

#include "maintenance/Containers.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/PhasedWork.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "replication/ChildMerge.h"
#include "replication/MergedFiles.h"
#include "replication/MotherMerge.h"
#include "replication/SynchroFile.h"
#include "store/CDBCreate.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "store/PendingReplica.h"
#include "store/ReplicaLog.h"
#include "store/SideFolders.h"
#include "store/TolerateExisting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"Synchronize"_s;
constexpr int Unusable = 0;
constexpr int AsChild = 1;
constexpr int AsMother = 2;

const QString AsABranch =
    u"Export the items of the replica, import them into the mother database, forget the replica and "
    "create a new one; nothing is lost that way."_s;

// Ends of the phases, in parts of a thousand of the whole.
constexpr qint64 Unpacked = 100;
constexpr qint64 Merged = 700;

[[noreturn]] void Fail(int number, const QString& why)
{
    throw RuntimeError(number, why + u" Nothing was changed."_s, Procedure);
}

/// One file on its way into one library.
class FileTaking {
public:
    FileTaking(Library& library, const QString& file, const SyncOptions& options, Work& work)
        : m_library(library), m_file(QFileInfo(file).absoluteFilePath()), m_options(options), m_work(work)
    {
    }
    FileTaking(const FileTaking&) = delete;
    FileTaking& operator=(const FileTaking&) = delete;
    /// An answer that could not be kept yet stays for the next opening.
    ~FileTaking()
    {
        if (m_isOutOfStage && !m_mustAnswer)
            QFile::remove(m_database);
        if (m_isOutOfStage) // an error may have left it
            QFile::remove(m_database + u"-journal"_s);
    }

    SyncResult Run()
    {
        Unpack();
        m_result.Result = SynchronizationOf();
        if (m_result.Result != Unusable)
            Merge();
        m_result.HasConflicts = HasPendingConflicts(m_library);
        if (m_result.Done && !m_options.Preview)
            Finish();
        return m_result;
    }

private:
    void Unpack()
    {
        ClaimFolder(MergedFolderOf(m_library.Name()), m_library.Identity());
        m_stage.emplace(MergedFolderOf(m_library.Name()));
        m_work.Begin(Unpacked);
        m_database = UnpackSynchroFile(m_file, m_stage->Scratch().chopped(1), m_work);
        KeepNoMoreRightsThan(m_library.Name(), m_database);
        const auto database = DBEngine::OpenDatabase(m_database);
        RefuseWhatIsNoSynchroFile(*database);
        m_facts = FactsOf(*database);
    }

    // Whose file it is

    /// What the file is to the library. What can't be used for now is told, or asked about, unless it is only looked
    /// at.
    int SynchronizationOf()
    {
        m_library.ReadReplica();
        const Value known = m_library.QueryValue(
            u"SELECT coalesce(LastSynchronized, 0) FROM ChildCopies WHERE DBCopyID = ?"_s, {m_facts.Identity});
        if (!known.IsNull()) {
            if (known.ToDate() == m_facts.LastSynchronized && known.ToDate() < m_facts.LastExported)
                return AsMother;
            if (!m_options.Preview)
                Tell(u"This export file has already been synchronized with the mother database."_s
                         + WayOnFrom(known.ToDate()),
                     u"Old synchronization file"_s, MsgBoxIcon::Exclamation);
            return Unusable;
        }
        if (!m_library.IsChildReplica() || m_library.Identity() != m_facts.Identity)
            return Unusable;
        if (m_library.Replica().LastSynchronized >= m_facts.LastSynchronized)
            return AskAbout(
                u"The synchronization file has not been synchronized with the mother database yet. Please "
                "synchronize with the mother database first.\r\nOn this place you can also decide to delete "
                "the synchro file and thus not synchronize the child and the mother databases. Do you want to "
                "delete the synchro file from your hard drive?"_s,
                u"Can't synchronize"_s);
        if (IsFromExport())
            return AsChild;
        return AskAbout(
            u"This synchronization file is old and has already been synchronized with this child database. The file "
            "can be destroyed, because is is not needed any more. Do you want to delete this file from "
            "your hard drive?\r\n\r\nThis database knows nothing of the changes that the file answers, as after it was "
            "brought back from a backup, or opened twice. "_s
                + AsABranch,
            u"Old synchro file"_s);
    }

    /// What is to be done where child and mother have lost each other; empty for a file that is merely old.
    QString WayOnFrom(Date known) const
    {
        if (m_facts.LastExported <= known)
            return {};
        if (m_facts.LastSynchronized < known)
            return u"\r\n\r\nThe replica that it is of has not taken in the last answer of this database. Write that "
                   "once more with 'Hand Out Again', synchronize the replica with it, and export its changes then. "
                   "If the replica does not take it: "_s
                   + AsABranch;
        return u"\r\n\r\nThe replica that it is of was synchronized with a later state of this database, as after this "
               "one was brought back from a backup or its synchronization undone. If you have that state, "
               "synchronize it instead. Otherwise: "_s
               + AsABranch;
    }

    /// Of the last export, or of an earlier one since the last synchronization.
    bool IsFromExport()
    {
        if (m_library.LastExportedDate() == m_facts.LastExported)
            return true;
        return !m_library.LastExportedDate().IsNone() && ReplicaLog(m_library).IsThere()
               && !m_library
                       .QueryValue(u"SELECT 1 FROM ReplicaLog WHERE Event = ? AND RowDate = ?"_s,
                                   {int(ReplicaEvent::Exported), m_facts.LastExported})
                       .IsNull();
    }

    /// "Yes" leaves the file as it is; "No" leaves what is packed in it under its name, which is accepted again.
    int AskAbout(const QString& text, const QString& caption)
    {
        if (m_options.Preview)
            return Unusable;
        const MsgBoxResult answer = Prompts::Current().MsgBox({.Text = text,
                                                               .Caption = caption,
                                                               .Buttons = MsgBoxButtons::YesNo,
                                                               .Icon = MsgBoxIcon::Question,
                                                               .Default = MsgBoxResult::Yes});
        if (answer == MsgBoxResult::No)
            PutInPlaceOfFile(m_database);
        return Unusable;
    }

    static void Tell(const QString& text, const QString& caption, MsgBoxIcon icon)
    {
        Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = icon});
    }

    void PutInPlaceOfFile(const QString& source)
    {
        const QString interim = InterimName(m_file);
        try {
            CopyFileContents(source, interim, m_work);
            MoveIntoPlace(interim, m_file, true);
        } catch (const RuntimeError&) {
            QFile::remove(interim);
            throw;
        }
    }

    // The merge

    void Merge()
    {
        const bool asMother = m_result.Result == AsMother;
        if (asMother && !CDBCreate().CreateAditionalTablesinSynchroDB(m_database))
            Fail(ErrorNumber::Engine, u"The synchronization file could not be prepared."_s);
        MoveOutOfStage();
        const AttachedFile attached(m_library, m_database, SynchroSchema);
        m_work.Begin(Merged);
        MergeRun run(m_library, asMother, LastOf(asMother), m_facts.LastExported,
                     asMother ? m_facts.Identity : ReplicaLog::FromMother(), NameOfOther(asMother), m_undo, m_work);
        Transaction transaction(m_library);
        RequireSameState(asMother);
        if (!m_options.Preview && MergeUndo::IsWanted())
            m_undo.PutAside(m_file);
        run.Stamp = asMother ? NextStampOf() : m_facts.LastSynchronized;
        run.IsPreview = m_options.Preview;
        run.Report.File = m_file;
        run.Report.Made = run.Stamp;
        run.Report.Since = asMother ? run.Last : Date();
        if (!MergeRows(run, asMother))
            return;
        m_result.Report = run.Report;
        m_result.Done = true;
        if (m_options.Preview)
            return;
        KeepReport(m_library, run.Report);
        m_undo.WaitForCopy();
        run.Contents.TakeOld();
        if (asMother)
            NotePendingReplica(
                m_library,
                {.File = m_file, .Complete = m_database, .Locked = m_stage->LockedFolder(), .Kept = KeptAnswer()});
        run.Removed.Note();
        run.EndIfCancelled();
        transaction.Commit();
        m_mustAnswer = asMother;
        Complete(run);
    }

    /// The stage goes whatever happens; what is committed with the library must not.
    void MoveOutOfStage()
    {
        RemoveStaleInterims(MergedFolderOf(m_library.Name()));
        const QString place = InterimName(KeptAnswer());
        if (!RenameFile(m_database, place))
            Fail(ErrorNumber::PathAccess, u"'%1' can't be written."_s.arg(QDir::toNativeSeparators(place)));
        m_database = place;
        m_isOutOfStage = true;
    }
    QString KeptAnswer() const { return KeptAnswerOf(m_library.Name(), m_facts.Identity); }

    bool MergeRows(MergeRun& run, bool asMother)
    {
        if (!CDBCreate().CreateTemporaryTablesInMainDB(m_library))
            Fail(ErrorNumber::Engine, u"The tables for conflicts could not be made."_s);
        if (asMother) {
            for (const LibrarySchema::AddedField& mark : LibrarySchema::MergeMarks()) {
                if (mark.Column.Name == u"Deleted"_s)
                    TolerateExisting(&Database::AppendField, m_library, mark.Table, mark.Column);
            }
            return MotherMerge(run).SynchronizeMother();
        }
        if (!CDBCreate().CreateAditionalSynchroFieldsInMainDB(m_library))
            Fail(ErrorNumber::Engine, u"The columns for marks could not be made."_s);
        ChildMerge(run).SynchronizeChild();
        return true;
    }

    Date LastOf(bool asMother) { return asMother ? m_facts.LastSynchronized : m_library.Replica().LastSynchronized; }

    QString NameOfOther(bool asMother)
    {
        if (!asMother)
            return m_library.QueryValue(u"SELECT MasterReplicaPath FROM Properties"_s).ToText();
        const QString description =
            m_library.QueryValue(u"SELECT ShortDescr FROM ChildCopies WHERE DBCopyID = ?"_s, {m_facts.Identity})
                .ToText();
        return description.isEmpty() ? m_facts.Identity : description;
    }

    /// Later than the export and all that either side was stamped with, whatever their clocks say.
    Date NextStampOf()
    {
        return std::max(m_library.NextStamp(),
                        Date::FromSeconds(std::max(m_facts.LastExported, m_facts.LastSynchronized).Seconds() + 1));
    }

    /// Nobody else has merged it, or exported again, since it was looked at.
    void RequireSameState(bool asMother)
    {
        const ReplicaState before = m_library.Replica();
        m_library.ReadReplica();
        const bool isSame = before.IsChild == m_library.Replica().IsChild
                            && before.LastSynchronized == m_library.Replica().LastSynchronized
                            && before.LastExported == m_library.Replica().LastExported
                            && (!asMother
                                || m_library
                                           .QueryValue(u"SELECT LastSynchronized FROM ChildCopies WHERE DBCopyID = ?"_s,
                                                       {m_facts.Identity})
                                           .ToDate()
                                       == m_facts.LastSynchronized);
        if (!isSame)
            Fail(ErrorNumber::InUse, u"The library is being synchronized by another program."_s);
        if (HasPendingConflicts(m_library))
            Fail(ErrorNumber::InvalidCall, u"There are unresolved conflicts in the library."_s);
    }

    /// The library has merged. What fails from here on is finished by the next opening, or by hand.
    void Complete(MergeRun& run)
    {
        m_library.ReadReplica();
        run.Removed.Place();
        for (const QString& reason : run.Contents.Place())
            m_result.Report.Faults.push_back({u"A stored file or a page that was synchronized could not be put in its "
                                              "place; it is put there when the library is opened next. "_s
                                                  + reason,
                                              u"Synchronize"_s});
        Clock::LetPass(run.Stamp);
    }

    /// Nothing reads the file any more: what was made of it takes its place, or it goes.
    void Finish()
    {
        if (m_mustAnswer)
            AnswerOrSayHow();
        else
            QFile::remove(m_file);
        m_undo.Complete();
        for (const MergeFault& fault : m_result.Report.Faults)
            Tell(fault.Text, fault.Caption, MsgBoxIcon::Critical);
    }

    void AnswerOrSayHow()
    {
        try {
            Answer();
        } catch (const RuntimeError& error) {
            throw RuntimeError(error.Number(),
                               u"The library has been synchronized, but the synchronization file for the child could "
                               "not be written: %1 It is written when the library is opened next. Until then give "
                               "'%2' to nobody."_s.arg(error.Description(), QDir::toNativeSeparators(m_file)),
                               error.Source());
        }
    }

    void Answer()
    {
        const QString kept = KeptAnswer();
        const QString container = m_stage->Scratch() + u"packed"_s;
        m_work.Begin(PhasedWork::Whole);
        bool isPacked = false;
        try {
            isPacked = PackContainer(m_database, container, {}, NoWork(), Compression::Fast)
                       && WhyNotAsPacked(m_database, container, NoWork()).isEmpty();
        } catch (const RuntimeError&) {
            isPacked = false; // the database is accepted as it is, too
        }
        if (m_result.HasConflicts)
            KeepFormerAnswer(m_library.Name(), m_facts.Identity, m_facts.LastSynchronized);
        MoveIntoPlace(isPacked ? container : m_database, kept, true);
        QFile::remove(m_database); // where it was packed
        KeepNoMoreRightsThan(m_library.Name(), kept);
        PutInPlaceOfFile(kept);
        ForgetPendingReplica(m_library);
    }

    Library& m_library;
    QString m_file;
    SyncOptions m_options;
    PhasedWork m_work;
    MergeUndo m_undo{m_library};
    std::optional<StagedFiles> m_stage;
    QString m_database; ///< the private copy
    SynchroFacts m_facts;
    SyncResult m_result;
    bool m_isOutOfStage = false;
    bool m_mustAnswer = false;
};

} // namespace

bool HasPendingConflicts(Database& library)
{
    return library.TableExists(u"TempItems"_s) && !library.QueryValue(u"SELECT 1 FROM TempItems LIMIT 1"_s).IsNull();
}

SyncResult Synchronize(Library& library, const QString& file, const SyncOptions& options, Work& work)
{
    if (file.isEmpty() || !QFileInfo::exists(file))
        return {};
    if (HasPendingConflicts(library))
        Fail(ErrorNumber::InvalidCall, u"There are unresolved conflicts in the library."_s);
    if (const QString foreign = WhoseFoldersAreForeign(library); !foreign.isEmpty())
        Fail(ErrorNumber::PathAccess, foreign);
    FinishPendingFiles(library);
    FinishPendingPages(library);
    ForgetFormerAnswer(library.Name());
    return FileTaking(library, file, options, work).Run();
}

} // namespace qb
