#pragma once

#include "platform/system/Work.h"
#include "removed/RemovedEvent.h"
#include "replication/MergeChecksums.h"
#include "replication/MergeContents.h"
#include "replication/MergeReport.h"
#include "replication/MergeTables.h"
#include "store/Library.h"

#include <QString>
#include <functional>

namespace qb {

/// One merge under way, inside one transaction over the library, the main file of its connection, and a private copy of
/// the synchronization file, attached as SynchroSchema; what is decided stands in the tables that MakeMergeTables
/// describes. The procedures of both sides run over these, as statements over all rows at a time.
class MergeRun {
public:
    /// @p last is when both sides were last the same for the library, @p exported when the child wrote its file, @p
    /// other the identity of the other side and @p name what it is called. To be made before the transaction.
    MergeRun(Library& library, bool asMother, Date last, Date exported, const QString& other, const QString& name,
             MergeUndo& undo, Work& work);
    ~MergeRun();
    MergeRun(const MergeRun&) = delete;
    MergeRun& operator=(const MergeRun&) = delete;

    Library& Lib;
    const bool AsMother;
    const Date Last;     ///< the bound of what changed here
    const Date Exported; ///< of the child
    Date Stamp;          ///< of this synchronization, on both sides
    const QString Other; ///< DBID of the child, in a mother; ReplicaLog's name for the mother in a child
    Work& Watcher;
    MergeUndo& Undo;
    RemovedEvent Removed;
    MergeContents Contents;
    MergeChecksums Sums;
    MergeReport Report;
    qint64 OrphanedFolderID = 0;
    bool IsPreview = false; ///< it will be rolled back: nothing is made for it

    // Procedures that both sides have

    /// Finds the folder of items without a parent, or makes it.
    void SetUpOrphanedItemsFolder();
    /// Decides for each item that the other side has deleted, and what stands below it, whether it goes.
    void MoveAndRemoveDeletedItems();
    void RemoveDeletedFiles();
    void RemoveDeletedItemsLinks();
    /// Puts what is marked, or has lost its parent, below the folder of orphaned items. In a mother, the child is not
    /// to delete files of what was kept.
    void MoveMarkedItemsToOrphanedItemsFolder(bool forChild);
    /// Removes that folder when it is empty.
    void CheckItToDeleteOrphanedItemsFolder();

    // Pieces of them

    qint64 Execute(const QString& sql, const Values& values = {}) { return Lib.Execute(sql, values); }
    void Tell(const QString& text, const QString& caption = QStringLiteral("Error"));
    /// The same for each of what a statement counts.
    void TellOfEach(const QString& text, const QString& counted, const Values& values = {});
    /// Notes in `ReplicaLog` what a SELECT gives of its columns.
    void Log(const QString& rows, const Values& values = {});
    /// A line for each row of a statement that gives an ID and a title, and what else is to be told in a third column.
    void Line(MergeEvent event, const QString& sql, const Values& values = {});
    /// The same for the items of verdicts: v is the verdict, i the item here and s the row that decided. @p detail is
    /// an expression.
    void LinesOf(MergeEvent event, const QString& what, const QString& detail);
    /// Says what became of the items that both merges decide about, and what of a version that lost was dropped with
    /// it. @p parent is an expression of the item that the other side has above row s, as it is called here.
    void ReportVerdicts(const QString& parent);
    /// Gives the new items numbers ahead, so that all of them are known before the first is added.
    void NumberNewItems(const QString& verdicts);
    /// A stored file of a version that lost, in the library or packed in the synchronization file.
    struct CopiedFile {
        qint64 Owner = 0; ///< the item in the library
        qint64 File = 0;  ///< its row
        QString Title;
        bool IsPacked = false;
    };
    /// Copies the files that a statement gives, in that order of columns, for the solver; @p then hears of each.
    void CopyToTempFiles(const QString& files, const Values& values = {},
                         const std::function<void(const CopiedFile& file, qint64 copy)>& then = {});
    /// The rows that a statement gives as IDs are no longer known to be whole by what was noted of them.
    void ForgetChecksumsOf(const QString& table, const QString& ids);
    /// Whose version of an item: the one in the library, or the one in the synchronization file.
    enum class VersionOf { Library, File };
    /// Versions of items, by a statement of their IDs there, before they are overwritten or go: they are kept where
    /// they can be brought back.
    void SetAside(VersionOf whose, const QString& ids, const QString& reason);
    /// The same of stored files of the library.
    void SetAsideFiles(const QString& ids, const QString& reason);
    /// The same of what is said of stored files.
    void SetAsideDescriptions(VersionOf whose, const QString& ids, const QString& reason);
    /// Items that would stand below themselves: the one that was moved first goes to the folder of orphaned items.
    void BreakCycles();
    void EndIfCancelled();
    /// Nothing more is written: notes the checksums of what was, with those of the items @p taken over.
    void NoteChecksums(const QString& taken);
    /// From here on rows of the library are written, as many as the file has.
    void BeginWriting();

private:
    void RecursiveRemoveDeletedItems();
    void KeepWhatChanged(qint64 round);
    void PutWithOrphans(const QString& items);
    void WriteKeptNotes();
    void NoteWhatOthersLack();
    void RemoveGoneItems();
    void NoteDeletions(const QString& table, const QString& deletions, const QString& rows);
    bool TellsOthers() const; ///< whether somebody else is to learn of what is taken in here
    bool TellsMother() const; ///< whether it is a mother of this one
    bool IsToKeep(const QString& ids);
    QString PathOf(qint64 item);
    void ReportMissingPages();
    QString MotherColumn() const; ///< of Items and Files, by which the other side's numbers are known here
};

} // namespace qb
