#pragma once

#include "platform/dao/Value.h"
#include "store/IDataObject.h"

#include <QStringList>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace qb {

class Recordset;

/// A column that a row object reads and writes.
struct RowColumn {
    enum Kind {
        Text,    ///< Null reads as empty
        Number,  ///< also moments; Null reads as 0
        Boolean, ///< Null reads as false
        Memo,    ///< a text of any length, read when it is first asked for; Null reads as empty
    };

    const char* Name;
    Kind Holds = Text;
    bool Optional = false; ///< a library may lack it; then it keeps its default
    bool Fixed = false;    ///< never written again once the row is there
};

/// What all objects that stand for one row of a table share: the state, the reading of the row at the
/// first look at a stored property, and the memory of what was read. Memos wait until they are asked for, so
/// that a new title costs no long texts; ReadWhole takes all of a row at one moment. A commit writes the columns only
/// that say something else since; what others write to the rest of the row stays.
class RowObject : public IDataObject {
public:
    // IDataObject
    QString Key() const override { return m_key; }
    void Initialise(Library& library, const QString& key) override;
    void Delete() override { m_state = RecordState::MarkedForDelete; }
    bool Commit() override;

    /// Reads all columns in one statement, where none has been read yet.
    void ReadWhole();

    /// Says what Commit does: a new row is added, one marked for deletion is deleted, any other is updated.
    RecordState State() const { return m_state; }
    /// The row could not be read: what the object says is not what is stored, and it can't be written.
    bool ReadFailed() const { return m_readFailed; }

    /// A column that somebody else has written since the row was read.
    struct ForeignChange {
        size_t Column;
        Value Theirs;    ///< as it stands in the row
        bool OwnChanged; ///< it was changed here, too, to something else
    };
    /// What differs between the row and what was read of it. Raises 3167 when the row is gone. To be
    /// called in the transaction that writes, so that nothing happens in between.
    std::vector<ForeignChange> ForeignChanges() const;
    /// The object says what the row says.
    void TakeTheirs(const ForeignChange& change);
    /// The object says what it said, which is a change of what stands in the row now.
    void KeepOwn(const ForeignChange& change) { m_cells[change.Column].Read = change.Theirs; }
    /// What was changed of a column here is dropped.
    void Discard(size_t column) { m_cells[column].Own = m_cells[column].Read; }
    /// Of a column that has been read.
    const Value& OwnValue(size_t column) const { return m_cells[column].Own; }
    const Value& ReadValue(size_t column) const { return m_cells[column].Read; }

protected:
    /// @p module is the class's name for the error routine, @p columns outlive the object.
    RowObject(const QString& module, const QString& table, std::span<const RowColumn> columns);

    /// The values of a new object; whoever has more of them calls this one first.
    virtual void InitialiseProperties();
    /// The object stands for a row that is to be added to its library.
    virtual void RowBegun() {}
    /// The row has been read, or there is none. An error that it raises is that of the reading.
    virtual void RowRead(bool exists) = 0;
    virtual bool InsertObject() = 0;
    virtual bool UpdateObject() = 0;
    virtual bool DeleteObject() = 0;

    /// The row is one of another table from now on. To be called before anything of it is read.
    void UseTable(const QString& table) { m_table = table; }
    const QString& TableName() const { return m_table; }
    /// Whose name an error of a property write in a wrong state carries.
    virtual QString StateModule() const { return m_module; }

    const QString& ModuleName() const { return m_module; }
    Library& OwnLibrary() const { return *m_library; }
    bool HasLibrary() const { return m_library; }
    qint64 RowKey() const { return m_key.toLongLong(); }

    /// Reads the row but its memos, once, where there is one.
    void GetAttributes();
    const Value& Loaded(size_t column);
    /// Whether a memo says anything; for that it isn't read.
    bool HasText(size_t column);
    /// Writes a property in any state, without a look at the row.
    void Store(size_t column, const Value& value) { m_cells[column].Own = value; }
    void LetOfAnyState(size_t column, const Value& value)
    {
        Loaded(column); // a change is one of what stands there
        Store(column, value);
    }
    void Let(size_t column, const Value& value)
    {
        LetOfAnyState(column, value);
        SetStateForLet();
    }
    void SetStateForLet();

    bool IsChanged(size_t column) const { return !(m_cells[column].Own == m_cells[column].Read); }
    /// Raises an error when the row could not be read: it is not to be written either.
    void RequireRead() const;
    /// Sets the columns that were changed in a row that is being edited.
    void WriteChanged(Recordset& row) const;
    /// The row is as the object is.
    void RowWritten();
    /// Nothing of the row was to be written.
    void SetUnchanged();
    /// The row was added.
    void RowInserted(qint64 key);
    void RowDeleted() { m_state = RecordState::Deleted; }

private:
    struct Cell {
        Value Own;
        Value Read;
        bool Waits = false; ///< the column has not been read yet
    };
    using Row = std::vector<std::optional<Value>>;

    /// One statement, so that it is the row of one moment; empty when there is no row. Columns that the library
    /// lacks or that @p leftOut names have no value.
    Row ReadRow(const std::function<bool(size_t)>& leftOut) const;
    void ReadAttributes(bool whole);
    void ReadMemo(size_t column);
    static Value AsHeld(const Value& value, RowColumn::Kind kind);

    QString m_module;
    QString m_table;
    std::span<const RowColumn> m_columns;
    Library* m_library = nullptr;
    RecordState m_state = RecordState::Clean;
    bool m_attributesLoaded = false;
    bool m_readFailed = false;
    QString m_key;
    std::vector<Cell> m_cells;
};

} // namespace qb
