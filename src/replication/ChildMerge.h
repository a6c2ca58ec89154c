#pragma once

#include "replication/MergeRun.h"

namespace qb {

/// The third step: a child takes back the file that its mother has worked on: the numbers that she gave its records,
/// her own changes and her deletions; and all its dates are moved so that the next export has what changed since, and
/// no more. The procedures run in the order in which they stand.
class ChildMerge {
public:
    explicit ChildMerge(MergeRun& run)
        : m_run(run), m_lib(run.Lib), m_later(Date::FromSeconds(run.Stamp.Seconds() + 60))
    {
    }

    /// All of it, but for the transaction and the contents on the disk.
    void SynchronizeChild();

    /// What the child has stamped between its export and the mother's run counts as new.
    void UpdateNewItemsDatesInReplica();
    void CopyNewAndUpdatedItemsToReplica();
    void UpdateItemLinksIDsForReplica();
    void CopyItemLinksToReplica();
    void UpdateItemsParentIDsInReplica();
    void BringOrphansBack();
    void UpdateParentIDsInTempTables();
    void CopyFilesToReplica();
    void CopyHTMLFilesToReplica();
    /// What came from the mother carries a date that is no change of the child's.
    void UpdateUpdatedItemsDatesInReplica();

private:
    void ListChanged();
    void HoldChecksums();
    void TakeNumbers();
    void NumberDeletions();
    void Decide();
    void MoveRecordsToTempTable();
    void MoveFilesToTempTable();
    void MoveHTMLFilesToTempTable();
    void TakeRowsOver();
    void TakePagesOfOwnVersions();
    void AddRows();
    void LeaveConflictsToTheMother();
    void DropPages(const QString& items);
    void DropPagesOfConflicts();
    void TakeFileNumbers();
    void DescribeFiles();
    void AddFiles();
    void TravelsAnew(const QString& items, bool withRow);
    void FilesTravelAnew(const QString& files);
    void NoteArrivals();
    void ReportVerdicts();
    void Stamp();

    MergeRun& m_run;
    Library& m_lib;
    const Date m_later; ///< a minute after the mother's stamp
};

} // namespace qb
