#include "store/Checksums.h"

#include "platform/dao/Database.h"
#include "platform/system/Heartbeat.h"

#include <QDir>
#include <QFile>
#include <zlib.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// As it stands in the schema, by which a table of somebody else's making is told from it.
const QString TableSql =
    u"CREATE TABLE own_Checksums (OfTable TEXT NOT NULL, OfRow INTEGER NOT NULL, Stamp INTEGER NOT NULL, "
    "Sums TEXT NOT NULL, PRIMARY KEY (OfTable, OfRow)) WITHOUT ROWID"_s;

constexpr int Hexadecimal = 16;

quint32 Continued(quint32 sum, const char* bytes, qsizetype size)
{
    return quint32(crc32_z(sum, reinterpret_cast<const Bytef*>(bytes), size_t(size)));
}

QString Digits(quint32 sum)
{
    return QString::number(sum, Hexadecimal).rightJustified(8, u'0');
}

/// What a note ends with: rot in the note itself must not pass for rot in a text.
QString SealOf(const QString& table, qint64 row, qint64 stamp, const QString& sums)
{
    return Digits(ChecksumOfText(u"%1/%2/%3/%4"_s.arg(table).arg(row).arg(stamp).arg(sums)));
}

QString Written(const Checksums& sums)
{
    QString text;
    for (auto sum = sums.begin(); sum != sums.end(); ++sum)
        text += sum.key() + u'=' + Digits(sum.value()) + u' ';
    return text;
}

} // namespace

void MakeChecksumTable(Database& library)
{
    if (!library.TableExists(u"own_Checksums"_s))
        library.Execute(TableSql);
}

bool HasChecksumTable(Database& library)
{
    return library.QueryValue(u"SELECT sql FROM main.sqlite_schema WHERE type = 'table' AND name = 'own_Checksums'"_s)
               .ToText()
           == TableSql;
}

std::optional<NotedChecksums> ReadChecksums(Database& library, const QString& table, qint64 row)
{
    if (!HasChecksumTable(library))
        return {};
    Statement found = library.Query(u"SELECT Stamp, Sums FROM main.own_Checksums WHERE OfTable = ? AND OfRow = ?"_s,
                                    {table, row});
    if (!found.Step())
        return {};
    NotedChecksums noted{.Stamp = found.Long(0), .Sums = {}, .IsWhole = true};
    const QString text = found.Text(1);
    const qsizetype end = text.lastIndexOf(u' ') + 1;
    noted.IsWhole = text.mid(end) == SealOf(table, row, noted.Stamp, text.left(end));
    if (library.HasWallDates())
        noted.Stamp = Date::FromWallSeconds(noted.Stamp).Seconds();
    for (const QString& sum : text.left(end).split(u' ', Qt::SkipEmptyParts))
        noted.Sums.insert(sum.section(u'=', 0, 0), sum.section(u'=', 1).toUInt(nullptr, Hexadecimal));
    return noted;
}

void WriteChecksums(Database& library, const QString& table, qint64 row, qint64 stamp, const Checksums& sums)
{
    if (!HasChecksumTable(library))
        return;
    const QString text = Written(sums);
    library.Execute(u"INSERT OR REPLACE INTO main.own_Checksums (OfTable, OfRow, Stamp, Sums) VALUES (?, ?, ?, ?)"_s,
                    {table, row, stamp, text + SealOf(table, row, stamp, text)});
}

void ForgetChecksums(Database& library, const QString& table, qint64 row)
{
    if (HasChecksumTable(library))
        library.Execute(u"DELETE FROM main.own_Checksums WHERE OfTable = ? AND OfRow = ?"_s, {table, row});
}

void ConvertChecksumStamps(Database& library)
{
    if (!HasChecksumTable(library))
        return;
    struct Note {
        QString Table;
        qint64 Row;
        qint64 Stamp;
        QString Sums;
    };
    std::vector<Note> notes;
    Statement rows = library.Query(u"SELECT OfTable, OfRow, Stamp, Sums FROM main.own_Checksums"_s);
    while (rows.Step()) {
        const QString text = rows.Text(3);
        Note note{rows.Text(0), rows.Long(1), rows.Long(2), text.left(text.lastIndexOf(u' ') + 1)};
        if (text.mid(note.Sums.size()) == SealOf(note.Table, note.Row, note.Stamp, note.Sums))
            notes.push_back(std::move(note));
    }
    Statement change(library, u"UPDATE main.own_Checksums SET Stamp = ?, Sums = ? WHERE OfTable = ? AND OfRow = ?"_s);
    for (const Note& note : notes) {
        const qint64 stamp = Date::FromWallSeconds(note.Stamp).Seconds();
        change.Bind({stamp, note.Sums + SealOf(note.Table, note.Row, stamp, note.Sums), note.Table, note.Row});
        while (change.Step()) {}
    }
}

quint32 ChecksumOfBytes(const QByteArray& bytes)
{
    return Continued(0, bytes.constData(), bytes.size());
}

quint32 ChecksumOfText(const QString& text)
{
    return ChecksumOfBytes(text.toUtf8());
}

quint32 ChecksumOfFile(const QString& path, Work& work)
{
    constexpr qsizetype Piece = 1 << 20;
    QFile file(path);
    QByteArray bytes(Piece, Qt::Uninitialized);
    quint32 sum = 0;
    qint64 count = file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? file.read(bytes.data(), Piece) : -1;
    Heartbeat heart(work);
    for (; count > 0; count = file.read(bytes.data(), Piece)) {
        sum = Continued(sum, bytes.constData(), count);
        if (!heart.Beat())
            throw RuntimeError(ErrorNumber::UserInterrupt, u"It was cancelled."_s, u"ChecksumOfFile"_s);
    }
    if (count < 0 || file.error() != QFileDevice::NoError)
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The file '%1' can't be read: %2."_s.arg(QDir::toNativeSeparators(path), file.errorString()),
            u"ChecksumOfFile"_s);
    return sum;
}

} // namespace qb
