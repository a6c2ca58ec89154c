#pragma once

#include "platform/dao/Schema.h"

#include <QHash>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace qb {

class Blob;
class Database;

/// Rows of one table as a keyset: the keys of the rows are read when it is opened, a row when
/// it is looked at, and its long columns (Memo, LongBinary) each on demand. Columns are named
/// in any case. Reading or editing without a current row raises 3021; a row that is gone 3167.
class Recordset {
public:
    /// A place that survives moves: the key of a row.
    using Mark = qint64;

    /// Reads the keys and goes to the first row; called by Database::OpenRecordset, with the same parameters. Empty
    /// parts of the statement mean all rows, in the order of their keys.
    Recordset(Database& database, std::shared_ptr<const TableDef> table, const QString& where, const Values& values,
              const QString& orderBy);

    /// Before the first row; an empty recordset is at its begin and its end at once.
    bool AtBegin() const { return IsEmpty() || m_position < 0; }
    bool AtEnd() const { return IsEmpty() || m_position >= RecordCount(); }
    bool IsEmpty() const { return m_keys.empty(); }
    qint64 RecordCount() const { return qint64(m_keys.size()); }

    /// A move drops what was set and not written. It may end before the first row or behind the last one; 3021 is
    /// raised for a step further, and for any move in an empty recordset.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    /// Goes to the first row, in the recordset's order, that fits @p where. With none, NoMatch
    /// is set and the place stays.
    void FindFirst(const QString& where, const Values& values);
    bool NoMatch() const { return m_noMatch; }

    /// The place of the current row, and the way back to it, which is a move. Raises 3021 for a row that is none of
    /// this recordset's, and then stays where it is.
    Mark Bookmark() const;
    void SetBookmark(Mark mark);
    /// The row that was added or changed last.
    Mark LastModified() const { return m_lastModified; }
    /// A second cursor over the same rows.
    Recordset Clone() const { return *this; }

    /// Columns in ordinal order.
    const std::vector<Field>& Fields() const { return m_table->Fields; }
    /// The value as it stands in the row, or as set since AddNew or Edit.
    Value operator[](const QString& field) const;

    /// From AddNew or Edit on, values are set until Update writes them; what was set before is dropped. AddNew needs
    /// no current row and starts with the default values. Edit reads the current row anew. Set raises 3021 outside of
    /// both, and 3265 for a column that the table lacks; whether a value fits is found out by Update.
    void AddNew();
    void Edit();
    void Set(const QString& field, const Value& value);
    /// Adds to the end of a Memo or LongBinary value that is being set.
    void AppendChunk(const QString& field, const Value& chunk);
    /// Bytes of a stored Memo (as UTF-8) or LongBinary value. Other programs can't write between the first
    /// chunk and the last, or the next move.
    QByteArray GetChunk(const QString& field, qint64 offset, qint64 length) const;
    /// Writes the row; the recordset leaves edit mode only on success. After AddNew the current
    /// row is what it was before; LastModified names the new one.
    void Update();
    void CancelUpdate();
    /// Deletes the current row; the next row takes its place.
    void Delete();

private:
    enum class Mode { Browse, Edit, Add };

    size_t FieldIndex(const QString& name) const;
    Mark CurrentKey() const;
    void MoveTo(qint64 position);
    void FetchRow() const;
    Value FetchField(const Field& field) const;
    QByteArray ReadOn(qint64 offset, qint64 length) const;
    qint64 PositionOf(Mark key) const;
    QString Selection(const QString& more) const;
    static Value AsStored(const Field& field, const Value& value);
    void RefuseWithoutKeysLeft() const;
    void Insert();
    void Write();

    Database* m_database;
    std::shared_ptr<const TableDef> m_table;
    QString m_where;
    Values m_values;
    QString m_orderBy;
    std::vector<Mark> m_keys;
    qint64 m_position = 0;
    bool m_noMatch = false;
    Mark m_lastModified = 0;
    Mode m_mode = Mode::Browse;
    std::map<size_t, Value> m_pending;               ///< by column index
    mutable std::vector<std::optional<Value>> m_row; ///< of the current row, empty until fetched
    mutable QHash<Mark, qint64> m_positions;         ///< of keys, filled when first needed
    mutable std::shared_ptr<Blob> m_reading;         ///< what GetChunk reads from, until its end
    mutable QString m_readingField;
};

} // namespace qb
