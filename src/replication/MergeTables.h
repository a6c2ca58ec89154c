#pragma once

#include <QString>

namespace qb {

class Database;

/// The name under which a synchronization file is attached to the library that takes it in.
inline const QString SynchroSchema = QStringLiteral("synchro");

/// Makes the temporary tables of a merge, empty. What has been decided stands in them:
///
///   merge_Changed (ID)                 items of the library that changed here since both sides were last the same
///   merge_Deleted (ID, DateDeleted)    items of the library that the other side has deleted
///   merge_Kept (ID)                    of them those that stay, merge_Gone (ID) those that go
///   merge_Spared (ID)                  items whose stored files stay, whatever the other side has deleted of them
///   merge_GoneFiles, merge_Survivors, merge_GoneLinks (ID)
///                                      stored files that go, those that were deleted there and stay, links that go
///   merge_Taken (ID)                   items whose row here is now the other side's
///   merge_OwnPages (ID)                in a child: of them those with a page that it has changed itself since
///   merge_MothersPages (ID)            in a child: items whose texts stay its own, and whose page is the mother's
///   merge_Touched (ID)                 in a child: items that got another place or page while their texts stayed
///   merge_Orphaned (ID)                items that go below the folder of orphaned items if they have no parent
///   merge_Verdicts (SRow, SID, OldMother, LID, What)
///                                      what becomes of the rows of Items in the file: SRow their rowid there, SID the
///                                      child's ID, OldMother what it calls the mother's, LID the item in the library
///   merge_Loose (ID)                   items whose parent may be gone, or that may stand below themselves
void MakeMergeTables(Database& library);
void DropMergeTables(Database& library);

// Pieces of statements over them

/// A condition on a row of a file's IDs of the other side: what isn't known there is 0, less, or Null.
QString IsKnown(const QString& column);
/// The items of the library about which was decided @p verdicts, as a list of SQL literals; a statement of IDs.
QString ItemsOf(const QString& verdicts);
/// The same as rows of the file.
QString RowsOf(const QString& verdicts);
/// The columns of an item that both sides have alike, each behind the name @p row of its table when there is one.
QString SharedColumns(const QString& row = {});
/// A condition on a row of a child: it still has the date @p date with which it was taken over from the mother, and so
/// was not changed here.
QString IsTakenOver(const QString& table, const QString& id, const QString& date);
/// A condition on what a child has deleted since its export, by the mother's ID; the mother learns that in the next
/// round. ?1 is the export's date.
QString IsDeletedHere(const QString& table, const QString& mothers);

} // namespace qb
