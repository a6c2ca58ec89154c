#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Work.h"
#include "store/Checksums.h"
#include "store/PendingFiles.h"
#include "store/RowObject.h"

#include <memory>

namespace qb {

/// One row of `Files`: a file that is attached to an item. Its contents lie on the disk, under the
/// row's ID, " - " and the title, in the library's folder of stored files. Neither a failure nor the
/// end of the program at any moment leaves a row without its file or a file without its row; what was
/// under way is finished or taken back by FinishPendingFiles when the library is opened next.
class CFileObject : public RowObject {
public:
    /// All is empty, and there is no library, until Initialise is called.
    CFileObject();

    /// The columns, as RowObject numbers them.
    enum Column : size_t {
        CodeIDColumn,
        TitleColumn,
        DateAddedColumn,
        OrigDateTimeColumn,
        DescriptionColumn,
        SizeColumn,
        MotherCodeIDColumn
    };

    /// The ID of the item that the file belongs to, as text.
    QString CodeID() { return QString::number(Loaded(CodeIDColumn).ToLong()); }
    void SetCodeID(const QString& value) { Let(CodeIDColumn, value.toLongLong()); }
    /// The name that is shown, and under which the file is handed out. A new title alone leaves the
    /// file under its old name on the disk; but in a replica whose others know the file it makes a new one of it, with
    /// a key of its own, as a replacement does: of those that they know they take descriptions only.
    QString Title() { return Loaded(TitleColumn).ToText(); }
    void SetTitle(const QString& value) { Let(TitleColumn, value); }
    QString Description() { return Loaded(DescriptionColumn).ToText(); }
    void SetDescription(const QString& value) { Let(DescriptionColumn, value); }
    enum class Intake { Copy, Move };
    /// The file to be taken in at the next commit; its name becomes the title. A file that was made for
    /// this only can be moved, where that is possible.
    void SetStoredFile(const QString& path, Intake intake = Intake::Copy);

    /// Takes the stored file in ahead of the commit, so that the library is not locked while it is copied.
    /// Files that are taken in together have one work and a number each. An error is reported; false then.
    bool TakeIn(std::shared_ptr<PendingWork> work, qint64 number);
    /// After a commit inside of another transaction, which is committed now: puts the file in its place.
    bool PutInPlace();

    qint64 Size() { return Loaded(SizeColumn).ToLong(); } ///< in bytes
    void SetSize(qint64 value) { LetOfAnyState(SizeColumn, value); }
    Date OrigDateTime() { return Loaded(OrigDateTimeColumn).ToDate(); } ///< the source file's own date
    void SetOrigDateTime(Date value) { LetOfAnyState(OrigDateTimeColumn, value); }
    Date DateAdded() { return Loaded(DateAddedColumn).ToDate(); }
    void SetDateAdded(Date value) { LetOfAnyState(DateAddedColumn, value); }
    /// The description is written at the next commit.
    bool DescriptionChanged() const { return m_descriptionChanged; }
    void SetDescriptionChanged(bool value)
    {
        GetAttributes(); // which says that it was not changed
        m_descriptionChanged = value;
    }
    /// The mother's ID of the item, in a child replica.
    qint32 MotherCodeID() { return qint32(Loaded(MotherCodeIDColumn).ToLong()); }
    void SetMotherCodeID(qint32 value) { LetOfAnyState(MotherCodeIDColumn, value); }

    /// Copies the stored file to @p target, over a file that is there. Returns the path written; empty
    /// when there is no such row, or its file has gone: then the user is asked whether the row is to go
    /// too.
    QString SaveToFile2(const QString& target);

    /// Watches the copying of files from now on, in bytes; to cancel it ends the commit too. It must live as
    /// long as this object copies.
    void SetWork(Work& work) { m_work = &work; }

protected:
    // RowObject
    void InitialiseProperties() override;
    void RowRead(bool exists) override;
    bool InsertObject() override;
    bool UpdateObject() override;
    bool DeleteObject() override;

private:
    template <class Body>
    bool UnlessCancelled(const QString& procedure, Body&& body);
    void CopyStoredFile(std::shared_ptr<PendingWork> work, qint64 number);
    bool TravelsAsNew() const;
    void ReplaceRow();
    qint64 AddRow();
    Checksums KnownChecksums() const;
    void NoteChecksums(qint64 id, qint64 stamp, const Checksums& known) const;
    void Settle();
    void FileWritten();
    qint64 MotherRecordOfItem() const;
    QString OwnTitle() const { return OwnValue(TitleColumn).ToText(); }
    void RequireStorableTitle() const;
    void RequireStorableFile() const;

    bool m_fileReplaced = false;
    bool m_replaces = false; ///< the file that arrives now
    bool m_descriptionChanged = false;
    QString m_storedFile; ///< path of the file to take in
    Intake m_intake = Intake::Copy;
    std::unique_ptr<ArrivingFile> m_arriving;
    std::unique_ptr<StoredFileDeletion> m_replaced; ///< the row that a new one stands for
    Work* m_work = &NoWork();
};

} // namespace qb
