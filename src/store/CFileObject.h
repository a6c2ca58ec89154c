#pragma once

#include "platform/dao/Database.h"
#include "store/IDataObject.h"

#include <functional>

namespace qb {

/// One row of `Files`: a file that is attached to an item. Its contents lie on the disk, under the
/// row's ID, " - " and the title, in the library's folder of stored files. Neither a failure nor the
/// end of the program at any moment leaves a row without its file or a file without its row; what was
/// under way is finished or taken back by FinishPendingFiles when the library is opened next.
class CFileObject : public IDataObject {
public:
    CFileObject() { InitialiseProperties(); }

    // IDataObject
    QString Key() const override { return m_key; }
    void Initialise(Database& database, const QString& key) override;
    void Delete() override { m_state = RecordState::MarkedForDelete; }
    bool Commit() override;
    RecordState State() const { return m_state; }

    /// The ID of the item that the file belongs to, as text.
    QString CodeID() { return Loaded(m_codeId); }
    void SetCodeID(const QString& value) { Let(m_codeId, value); }
    /// The name that is shown, and under which the file is handed out. A new title alone leaves the
    /// file under its old name on the disk.
    QString Title() { return Loaded(m_title); }
    void SetTitle(const QString& value) { Let(m_title, value); }
    QString Description() { return Loaded(m_description); }
    void SetDescription(const QString& value) { Let(m_description, value); }
    enum class Intake { Copy, Move };
    /// The file to be taken in at the next commit; its name becomes the title. A file that was made for
    /// this only can be moved, where that is possible.
    void SetStoredFile(const QString& path, Intake intake = Intake::Copy);

    qint64 Size() { return Loaded(m_size); } ///< in bytes
    void SetSize(qint64 value) { m_size = value; }
    Date OrigDateTime() { return Loaded(m_origDateTime); } ///< the source file's own date
    void SetOrigDateTime(Date value) { m_origDateTime = value; }
    Date DateAdded() { return Loaded(m_dateAdded); }
    void SetDateAdded(Date value) { m_dateAdded = value; }
    /// The description is written at the next commit.
    bool DescriptionChanged() const { return m_descriptionChanged; }
    void SetDescriptionChanged(bool value)
    {
        GetAttributes(); // which says that it was not changed
        m_descriptionChanged = value;
    }
    /// The row could not be read: what it says is not what is stored, and it can't be written.
    bool ReadFailed() const { return m_readFailed; }
    /// The mother's ID of the item, in a child replica.
    qint32 MotherCodeID() { return Loaded(m_motherCodeId); }
    void SetMotherCodeID(qint32 value) { m_motherCodeId = value; }

    /// Copies the stored file to @p target, over a file that is there. Returns the path written; empty
    /// when there is no such row, or its file has gone: then the user is asked whether the row is to go
    /// too.
    QString SaveToFile2(const QString& target);

    /// Told the bytes done and of all while a file is copied; false ends the copying, and the commit
    /// with it.
    std::function<bool(qint64 done, qint64 total)> Progress;

private:
    template <class Field>
    const Field& Loaded(const Field& field)
    {
        GetAttributes();
        return field;
    }
    void Let(QString& field, const QString& value);
    void InitialiseProperties();
    void GetAttributes();
    bool InsertObject();
    bool UpdateObject();
    bool DeleteObject();
    template <class Body>
    bool UnlessCancelled(const QString& procedure, Body&& body);
    void RowWritten();
    void RequireStorableTitle() const;
    void RequireStorableFile() const;

    Database* m_database = nullptr;
    RecordState m_state = RecordState::Clean;
    bool m_attributesLoaded = false;
    bool m_readFailed = false;
    bool m_fileReplaced = false;
    bool m_descriptionChanged = false;
    QString m_key;
    QString m_codeId;
    QString m_title;
    QString m_storedFile; ///< path of the file to take in
    Intake m_intake = Intake::Copy;
    QString m_description;
    Date m_origDateTime;
    Date m_dateAdded;
    qint64 m_size = 0;
    qint32 m_motherCodeId = 0;
};

} // namespace qb
