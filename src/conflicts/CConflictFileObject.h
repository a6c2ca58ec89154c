#pragma once

#include "platform/system/Date.h"
#include "store/RowObject.h"

namespace qb {

/// Which versions of an item a stored file occurs in.
enum class FileAppearance {
    Unknown = 0,
    InItem = 1,     ///< only in that of `Items`
    InTempItem = 2, ///< only in that of `TempItems`
    InBoth = 3,
    InBothDescribed = 4 ///< in both, with different descriptions
};

/// One stored file of a version of an item: a row of `Files`, or of `TempFiles`, where its contents are a column.
class CConflictFileObject : public RowObject {
public:
    CConflictFileObject();

    /// The columns, as RowObject numbers them.
    enum Column : size_t {
        CodeIDColumn,
        TitleColumn,
        DescriptionColumn,
        SizeColumn,
        OrigDateTimeColumn,
        DateAddedColumn,
        LastUpdatedColumn
    };

    /// True: the row is one of `TempFiles`. To be set before anything is read.
    bool TemporaryTable() const;
    void SetTemporaryTable(bool value);

    QString CodeID() { return QString::number(Loaded(CodeIDColumn).ToLong()); }
    void SetCodeID(const QString& value) { Let(CodeIDColumn, value.toLongLong()); }
    QString Title() { return Loaded(TitleColumn).ToText(); }
    void SetTitle(const QString& value) { Let(TitleColumn, value); }
    QString Description() { return Loaded(DescriptionColumn).ToText(); }
    void SetDescription(const QString& value);
    bool DescriptionChanged() const { return m_descriptionChanged; }
    void SetDescriptionChanged(bool value) { m_descriptionChanged = value; }
    qint64 Size() { return Loaded(SizeColumn).ToLong(); } ///< in bytes
    void SetSize(qint64 value) { LetOfAnyState(SizeColumn, value); }
    Date OrigDateTime() { return Loaded(OrigDateTimeColumn).ToDate(); }
    void SetOrigDateTime(Date value) { LetOfAnyState(OrigDateTimeColumn, value); }
    Date DateAdded() { return Loaded(DateAddedColumn).ToDate(); }
    void SetDateAdded(Date value) { LetOfAnyState(DateAddedColumn, value); }
    Date LastUpdated() { return Loaded(LastUpdatedColumn).ToDate(); }
    void SetLastUpdated(Date value) { LetOfAnyState(LastUpdatedColumn, value); }

    /// Where the contents of a row of `Files` lie, or a file that SetStoredFile named; empty when they are missing, or
    /// in a column.
    QString StoredFile();
    void SetStoredFile(const QString& path) { m_storedFile = path; }
    /// The contents of a row of `TempFiles`, whole; Null when they are missing, or in a file.
    Value FileField();
    /// Whether there are contents, in the column or as a file.
    bool HasContents();
    /// Writes the contents of a row of `TempFiles` to a file, in pieces. False when they are missing.
    bool WriteContents(const QString& path);

    /// The ID of the same file in the other version, 0 if there is none.
    qint64 CorrespondingID() const { return m_correspondingID; }
    void SetCorrespondingID(qint64 value) { m_correspondingID = value; }
    bool HasCorrespondingID() const { return m_correspondingID != 0; }
    /// The user's mark that the file changes sides. A file that both versions have never does.
    bool MoveToTheSecondSet() const { return m_moveToTheSecondSet && !HasCorrespondingID(); }
    void SetMoveToTheSecondSet(bool value) { m_moveToTheSecondSet = value; }
    FileAppearance AppearsIn() const { return m_appearsIn; }
    void SetAppearsIn(FileAppearance value) { m_appearsIn = value; }

    /// Stores what a row of `TempFiles` says in `Files`: its description and date where the other version has the file,
    /// else a new row with its contents. The object stands for that row from then on. An error is reported; false then.
    bool KeepObject();

protected:
    // RowObject
    void InitialiseProperties() override;
    void RowRead(bool) override {}
    bool InsertObject() override;
    bool UpdateObject() override;
    bool DeleteObject() override;

private:
    qint64 RowNumber() const;
    void AddToFiles();
    void DescribeInFiles(qint64 id);

    bool m_descriptionChanged = false;
    QString m_storedFile;
    qint64 m_correspondingID = 0;
    bool m_moveToTheSecondSet = false;
    FileAppearance m_appearsIn = FileAppearance::Unknown;
};

} // namespace qb
