#include "maintenance/PackedContents.h"

#include "maintenance/PhasedWork.h"
#include "maintenance/StatementPulse.h"
#include "platform/dao/Blob.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MostBytes = 1'000'000'000; // that the engine takes for one value

[[noreturn]] void Fail(const QString& file, const QString& why)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"The file '%1': %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(file), why),
                       u"PackedContents"_s);
}

quint32 Extended(quint32 sum, const QByteArray& bytes)
{
    return quint32(::crc32(sum, reinterpret_cast<const Bytef*>(bytes.constData()), uInt(bytes.size())));
}

/// Opens an ordinary file, and neither follows a link nor waits for a pipe.
void OpenPlain(QFile& file)
{
    const int number = ::open(QFile::encodeName(file.fileName()).constData(),
                              O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (number < 0)
        Fail(file.fileName(), QString::fromLocal8Bit(std::strerror(errno)));
    if (!file.open(number, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle)) {
        ::close(number);
        Fail(file.fileName(), file.errorString());
    }
}

bool IsNull(const PackedField& field, const TableDef& table)
{
    const QString sql = u"SELECT %1 IS NULL FROM %2 WHERE rowid = ?"_s.arg(Quoted(field.Field), table.Reference());
    return field.Db.QueryValue(sql, {field.RowKey}).ToBoolean();
}

void MakeRoom(const PackedField& field, const TableDef& table, qint64 size, ContentPace& pace)
{
    constexpr qint64 Large = 1024 * 1024; // takes longer than a thread
    const auto make = [&] { Blob::MakeRoom(field.Db, table, field.Field, field.RowKey, size); };
    if (size < Large)
        make();
    else
        RunPulsed(field.Db, pace.Watcher(), make);
    pace.Add(0); // many small ones take their time, too
}

template <class Take>
ContentSums ReadField(const PackedField& field, ContentPace& pace, Take&& take)
{
    const TableDef& table = field.Db.GetTableDef(field.Table);
    std::optional<Blob> blob;
    if (!IsNull(field, table))
        blob.emplace(field.Db, table, field.Field, field.RowKey);
    const qint64 size = blob ? blob->Size() : 0;
    pace.Add(0);
    quint32 sum = 0;
    for (qint64 at = 0; at < size; at += BlobChunk) {
        const QByteArray piece = blob->Read(at, BlobChunk);
        take(piece);
        sum = Extended(sum, piece);
        pace.Add(piece.size());
    }
    return {1, size, sum};
}

} // namespace

void ContentSums::Add(qint64 bytes, quint32 sum)
{
    ++Count;
    Bytes += bytes;
    QByteArray line = QByteArray::number(bytes) + ' ' + QByteArray::number(sum) + '\n';
    Sum = Extended(Sum, line);
}

void ContentPace::Add(qint64 bytes)
{
    m_done += bytes;
    EndUnless(m_pace.Tell(m_done), u"PackedContents"_s);
}

ContentSums FileToField(const PackedField& field, const QString& file, ContentPace& pace)
{
    QFile source(file);
    OpenPlain(source);
    const qint64 size = source.size();
    if (size > MostBytes)
        Fail(file, u"its %1 bytes are too many; %2 are the most that fit into a backup"_s.arg(size).arg(MostBytes));
    const TableDef table = field.Db.GetTableDef(field.Table);
    MakeRoom(field, table, size, pace);
    if (size == 0)
        return {1, 0, 0};
    Blob blob(field.Db, table, field.Field, field.RowKey, Blob::Access::Write);
    quint32 sum = 0;
    QByteArray piece;
    for (qint64 at = 0; at < size;) { // the odd piece comes first, whole ones follow
        const qint64 odd = at == 0 ? size % BlobChunk : 0;
        const qint64 length = odd > 0 ? odd : BlobChunk;
        if (const QString why = ReadAll(source, piece, length); !why.isEmpty() || piece.size() != length)
            Fail(file, why.isEmpty() ? u"it became shorter while it was read"_s : why);
        blob.Write(at, piece);
        sum = Extended(sum, piece);
        at += length;
        pace.Add(length);
    }
    return {1, size, sum};
}

ContentSums FieldToFile(const PackedField& field, const QString& file, ContentPace& pace)
{
    QFile::remove(file);
    QFile target(file);
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        Fail(file, target.errorString());
    return ReadField(field, pace, [&](const QByteArray& piece) {
        if (const QString why = WriteAll(target, piece.constData(), piece.size()); !why.isEmpty())
            Fail(file, why);
    });
}

ContentSums SumOfField(const PackedField& field, ContentPace& pace)
{
    return ReadField(field, pace, [](const QByteArray&) {});
}

ContentSums SumOfTable(Database& database, const QString& table, ContentPace& pace)
{
    ContentSums sums;
    Statement rows = database.Query(u"SELECT rowid FROM %1 WHERE File IS NOT NULL ORDER BY rowid"_s.arg(Quoted(table)));
    while (rows.Step()) {
        const ContentSums one = SumOfField({database, table, rows.Long(0)}, pace);
        sums.Add(one.Bytes, one.Sum);
    }
    return sums;
}

qint64 BytesOfTable(Database& database, const QString& table)
{
    return database.QueryValue(u"SELECT total(length(File)) FROM "_s + Quoted(table)).ToLong();
}

} // namespace qb
