#pragma once

#include "maintenance/BackupFile.h"
#include "maintenance/LibraryCheck.h"
#include "platform/dao/Database.h"
#include "platform/system/Work.h"

#include <QString>
#include <QStringList>

namespace qb {

/// Rows of a table with contents: all of the routine's own table, or those of another, or some of it. A table may be
/// one of an attached file, as "synchro.Files".
struct ContentRows {
    QString Table = {}; ///< empty: the routine's own
    QString Where = {}; ///< part of a statement; empty: all
    Values WhereValues = {};
};

/// Asks whether the library of a name goes for the one that is to have it; No gives that one a number.
bool MayReplaceDatabase();

/// Backup and restore of a library, and the ways of stored files and web pages into a database and out of it again.
///
/// Pages lie as the library keeps them: `<ID>.htm` with a folder `<ID>`, and the default pages beside them. In a table
/// `HTMLFiles` the page of an item is its first row with an empty Folder and the name `<ID>.htm`; what lies in the
/// folder of an item has its Folder below that, and what belongs to no page has the item number 0 and its whole Folder.
/// Folders end in "\".
class CDBManipulate {
public:
    /// @p work must outlive the object. What is to be cancelled is, within a second.
    explicit CDBManipulate(Work& work = NoWork()) : m_work(work) {}

    // Whole libraries

    /// Packs a library with its files and pages into @p backupFile, which is replaced once the new one has been
    /// compared with the library. Reports an error, and returns false then, with what was there as it was; false
    /// without an error when it was cancelled.
    bool BackUp(const QString& sourceDB, const QString& backupFile);
    /// What the last backup found damaged in the library. Such a backup must not make others go.
    const std::vector<LibraryFault>& Damage() const { return m_damage; }

    /// Unpacks a backup, or one of its volumes, to the library @p targetDB. Where a library of that name exists, the
    /// user is asked whether it is replaced; if not, a number is put behind the name, and @p targetDB says so. With
    /// @p noCopy it is replaced without a question. With an empty @p sourceFile the target is itself what was
    /// unpacked, and becomes a library in its place; @p force asks about the target all the same. A transfer file
    /// (".qbr") goes once its library is whole. Reports an error, and returns false then, with what was there as it
    /// was.
    bool Restore(QString& targetDB, const QString& sourceFile, bool force, bool noCopy);

    // Contents. The database is that which Use() names.

    /// The database whose tables are meant, which must outlive the use.
    void Use(Database& database) { m_database = &database; }

    /// The length of the next contents, for the progress in bytes; 0 when nobody counts.
    void ExpectBytes(qint64 bytes) { m_expected = bytes; }

    /// Takes the pages of the items that have one (@p items: rows with ID, Title and HTMLLastUpdated, by default
    /// those of `Items` with HTMLPage) into @p table, by default `HTMLFiles`. An item whose page is missing is noted in
    /// the error log, and, where all were asked for, has no page in the database any more.
    void ImportAllHTMLFiles(const QString& folder, const ContentRows& items = {}, const QString& table = {});
    /// Takes a folder in, its files first, then the folders in it. @p subFolder is what their Folder begins with.
    void ImportHTMLFolder(const QString& table, const QString& folder, const QString& subFolder, qint64 itemID);
    /// Takes the default pages in.
    void ImportDefaultHTMLFiles(const QString& folder);
    /// Takes in what lies in the folder of pages and belongs to no page that was taken in before.
    void ImportOtherHTMLFiles(const QString& folder);
    /// Fills the contents of the rows of `Files`. A file that is missing is passed over.
    void ImportAllItemFiles(const QString& folder, const ContentRows& files = {});

    /// Writes all rows of a table of packed pages to the disk. A row that would lead out of the folder raises
    /// RuntimeError 75.
    void ExportAllHTMLFiles(const QString& folder, const ContentRows& rows = {});
    /// Writes the contents of all rows of `Files` to the disk; a row without contents gives an empty file.
    void ExportAllItemFiles(const QString& folder, const ContentRows& rows = {});

    /// Makes the contents of a file a value, in pieces; inside a transaction.
    void ImportFileToField(const PackedField& field, const QString& file);
    /// Writes a value to a file, in pieces; a file that is there is replaced.
    void SaveToFile(const PackedField& field, const QString& file);

    /// What the imports since Use() have taken in.
    const ContentSums& ImportedFiles() const { return m_files; }
    const ContentSums& ImportedPages() const { return m_pages; }
    /// The rows of `Files` whose file was missing.
    qint64 MissingFiles() const { return m_missingFiles; }
    /// The items whose page was missing.
    qint64 MissingPages() const { return m_missingPages; }

private:
    class Percent;
    bool RestoreOrRefuse(QString& targetDB, const QString& sourceFile, bool force, bool noCopy);
    ContentPace& Pace();
    void ImportPage(const QString& table, qint64 itemID, const QString& name, const QString& subFolder,
                    const QString& file);
    void NoteMissingPage(qint64 id, const QString& title, const Value& updated);
    QString PageName(qint64 item, const QString& folder, const QString& name);

    Work& m_work;
    Database* m_database = nullptr;
    qint64 m_expected = 0;
    std::optional<ContentPace> m_pace;
    ContentSums m_files;
    ContentSums m_pages;
    qint64 m_missingFiles = 0;
    qint64 m_missingPages = 0;
    std::vector<LibraryFault> m_damage;
};

} // namespace qb
