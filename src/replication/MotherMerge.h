#pragma once

#include "replication/MergeRun.h"

namespace qb {

/// The second step: a mother takes in what one of her children has exported, decides each conflict by date, and leaves
/// in the file what the child has to take over. The procedures run in the order in which they stand.
class MotherMerge {
public:
    explicit MotherMerge(MergeRun& run) : m_run(run), m_lib(run.Lib) {}

    /// All of it, but for the transaction and the contents on the disk. False when her own changes could not be
    /// exported, which has been told.
    bool SynchronizeMother();

    /// Her own changes stand in the X tables: the child will know them by her numbers.
    void CopyMotherIDsInXTables();
    void CopyNewAndUpdatedItems();
    void UpdateItemLinksIDs();
    void CopyItemLinks();
    void UpdateItemsParentIDs();
    void CopyFiles();
    void CopyHTMLFiles();
    /// What stays in the file is what the child has to do to its IDs, and the marks of conflicts.
    void ClearSynchroFileTables();
    /// What she has put below the folder of orphaned items stays with her.
    void DeleteOrphanedItemsFromSynchroXTables();
    void CopyDeletions();
    void CopyMotherIDsUpdatesForDeletedItems();
    void CopyXTables();

private:
    bool ExportOwnChanges();
    void NoteWhatIsWithheld();
    void ListChanged();
    void DatePagesForTheMother();
    void Decide();
    void SetAsideWhatIsGone();
    void MoveRecordsToTempTable();
    void MoveFilesToTempTable();
    void MoveHTMLFilesToTempTable();
    void TakeRowsOver();
    void AddRows();
    void SetPlaces();
    void UpdateIDOfInMotherDeletedItems();
    void TellWhatIsForgotten();
    void NoteArrivals();
    void ReportVerdicts();
    void DescribeFiles();
    void AddFiles();
    void SendSurvivors();
    void BringDatesDown();
    void StampBoth();
    void CleanLists();

    MergeRun& m_run;
    Library& m_lib;
};

} // namespace qb
