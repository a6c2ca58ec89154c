#pragma once

#include "platform/dao/Value.h"
#include "platform/system/Work.h"

#include <QMap>
#include <QString>
#include <optional>

namespace qb {

class Database;

/// The checksums of what a row holds, by the names of its columns; that of a stored file's contents is under
/// FileContentsName.
using Checksums = QMap<QString, quint32>;
inline const QString FileContentsName = QStringLiteral("File");

/// What was noted of a row when this program wrote it.
struct NotedChecksums {
    qint64 Stamp = 0; ///< of the row then; a row that says otherwise was written by another program since
    Checksums Sums;
    bool IsWhole = true; ///< false: the note itself has been damaged
};

/// Makes the program's own table of checksums where it is missing. Raises an error when the file can't be written.
void MakeChecksumTable(Database& library);
/// Whether there is the table, as this program makes it. Without it nothing is noted, and nothing known.
bool HasChecksumTable(Database& library);

/// What was noted of a row of @p table; nothing when nothing is known of it.
std::optional<NotedChecksums> ReadChecksums(Database& library, const QString& table, qint64 row);
/// Notes it in place of what was noted before, inside the transaction that writes the row. @p stamp is what the row
/// says of its last change from now on.
void WriteChecksums(Database& library, const QString& table, qint64 row, qint64 stamp, const Checksums& sums);
/// The row is deleted.
void ForgetChecksums(Database& library, const QString& table, qint64 row);

/// The dates of the library have been converted from readings of a clock to moments: so are the stamps, inside the
/// caller's transaction. What is damaged stays damaged.
void ConvertChecksumStamps(Database& library);

/// The sum of a text, as the library stores it.
quint32 ChecksumOfText(const QString& text);
quint32 ChecksumOfBytes(const QByteArray& bytes);
/// The sum of a file's contents. Raises RuntimeError 75 when it can't be read, 18 when the work is to end.
quint32 ChecksumOfFile(const QString& path, Work& work = NoWork());

} // namespace qb
