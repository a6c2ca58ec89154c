#pragma once

#include "store/Checksums.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace qb {

class Library;

/// The checksums of the rows that a merge changes. What it writes is summed; of the rest what was known stays known,
/// under the date that the row has in the end, so that what has rotted before is not taken for good.
class MergeChecksums {
public:
    explicit MergeChecksums(Library& library) : m_library(library) {}

    /// Rows of Items or Files, by a statement of their IDs, are about to get another date, or other texts in part.
    void Hold(const QString& table, const QString& ids, const Values& values = {});
    /// Their texts have been written: all, or those in one column.
    void Wrote(const QString& table, const QString& ids, const QString& column = {});
    /// The contents of a stored file have been written.
    void WroteFile(qint64 id, quint32 sum);
    /// Nothing more is changed: all is noted, inside the transaction of the merge.
    void Note();

private:
    struct Row {
        Checksums Known;
        QStringList Written; ///< columns
    };
    void NoteRow(const QString& table, qint64 id, const Row& row);

    Library& m_library;
    QMap<QString, QMap<qint64, Row>> m_rows; ///< by table and ID
};

} // namespace qb
