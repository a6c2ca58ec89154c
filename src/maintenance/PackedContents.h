#pragma once

#include "platform/archive/Pace.h"
#include "platform/dao/Database.h"

#include <QByteArray>
#include <QString>

namespace qb {

/// Blobs move in pieces of so many bytes, so that memory does not grow with them.
inline constexpr qint64 BlobChunk = 16384;

/// A LongBinary value of one row.
struct PackedField {
    Database& Db;
    QString Table;
    qint64 RowKey;
    QString Field = QStringLiteral("File");
};

/// How many contents went into or came out of a database, and their sum, which depends on their order.
struct ContentSums {
    qint64 Count = 0;
    qint64 Bytes = 0;
    quint32 Sum = 0;

    /// One more, of which the check sum is known.
    void Add(qint64 bytes, quint32 sum);
    friend bool operator==(const ContentSums&, const ContentSums&) = default;
};

/// The bytes of a long piece of work, over all of its contents.
class ContentPace {
public:
    ContentPace(Work& work, qint64 total) : m_work(work), m_pace(work, total) {}
    /// Raises RuntimeError 18 when the work is to end.
    void Add(qint64 bytes);
    /// Whom it tells, when there is something else to tell.
    Work& Watcher() { return m_work; }

private:
    Work& m_work;
    Pace m_pace;
    qint64 m_done = 0;
};

/// Makes the contents of a file the value; inside a transaction. Returns their length and check sum. Raises
/// RuntimeError 75 for a file that can't be read or is too large for a value, 18 when it was cancelled.
ContentSums FileToField(const PackedField& field, const QString& file, ContentPace& pace);

/// Writes a value to a file, which is replaced; Null makes an empty one. The same errors.
ContentSums FieldToFile(const PackedField& field, const QString& file, ContentPace& pace);

/// Reads a value for its length and check sum.
ContentSums SumOfField(const PackedField& field, ContentPace& pace);

/// All values of a column File that are not Null, in the order of their rows.
ContentSums SumOfTable(Database& database, const QString& table, ContentPace& pace);

/// The bytes of these values.
qint64 BytesOfTable(Database& database, const QString& table);

} // namespace qb
