#include "replication/ReplicaCreation.h"

#include "maintenance/PhasedWork.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/LibraryUse.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "store/PendingReplica.h"
#include "support/ErrorRoutine.h"

#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"CreateChildDB"_s;

/// A copy on its way to be a child. The mother's part of it is one transaction, which waits until the file is whole.
class ChildCopy : public PackedCopy {
public:
    explicit ChildCopy(const QString& library) : m_library(library) {}

    QString Noun() const override { return u"replica"_s; }
    bool IsAlone() const override { return true; }

    void Prepare(Database& copy) override
    {
        m_mother = DBEngine::OpenDatabase(m_library);
        m_transaction.emplace(*m_mother);
        m_isFirst = !ReadReplicaState(*m_mother).IsMother && !m_mother->TableExists(u"DeletedItems"_s);
        Clock::BeginSecond(); // both stamps are to say the same
        if (CDBCreate().CreateChildDB(*m_mother, copy))
            return;
        Prompts::Current().MsgBox({.Text = u"Child database could not be created."_s,
                                   .Caption = u"Error while creating child database"_s,
                                   .Icon = MsgBoxIcon::Critical});
        throw RuntimeError(ErrorNumber::Engine, u"The tables of a child could not be made. Nothing was changed."_s,
                           Procedure);
    }

    /// At first both know everything by the same numbers.
    void Complete(Database& copy) override
    {
        copy.Execute(u"UPDATE Items SET MotherRecordID = ID, MotherParentID = ParentID"_s);
        copy.Execute(u"UPDATE Files SET MotherCodeID = CodeID, MotherRecordID = ID"_s);
        copy.Execute(u"UPDATE ItemLinks SET MotherItemID = ItemID, MotherLinkItemID = LinkItemID"_s);
    }

    void Decide(const PlacedFile& file) override
    {
        m_placed = file.Path;
        NotePendingReplica(*m_mother, {.File = file.Path,
                                       .Complete = file.Complete,
                                       .Locked = file.Locked,
                                       .Identity = file.Identity,
                                       .IsFirst = m_isFirst});
        m_transaction->Commit();
        m_transaction.reset();
    }

    void TakeBack() override
    {
        try {
            TakePendingReplicaBack(*m_mother);
        } catch (const RuntimeError&) {
            // The next opening does it.
        }
    }

    void Placed() override
    {
        try {
            SyncFileSystem(m_placed);
            ForgetPendingReplica(*m_mother);
            Clock::LetPass(m_mother->QueryValue(u"SELECT max(LastSynchronized) FROM ChildCopies"_s).ToDate());
        } catch (const RuntimeError&) {
            // It is done; the next opening finds the file and drops the note.
        }
    }

private:
    QString m_library;
    std::unique_ptr<Database> m_mother;
    std::optional<Transaction> m_transaction;
    bool m_isFirst = false;
    QString m_placed;
};

} // namespace

BackUpResult GiveOutChild(const QString& library, const QString& target, Work& work)
{
    {
        const std::unique_ptr<Library> whole = Library::Open(library);
        FinishPendingFiles(*whole);
        FinishPendingPages(*whole);
    }
    // What somebody wrote between the copy and its stamp the child would never get.
    const SoleUse sole(library, Procedure);
    ChildCopy child(library);
    return PackLibraryCopy(library, target, {}, child, work);
}

bool CreateChildDB(const QString& sourcePath, const QString& targetPath, Work& work)
{
    return Guarded(
        u"CDBManipulate"_s, Procedure,
        [&] {
            try {
                GiveOutChild(sourcePath, targetPath, work);
                return true;
            } catch (const RuntimeError& error) {
                if (IsCancellation(error))
                    return false;
                throw;
            }
        },
        false);
}

} // namespace qb
