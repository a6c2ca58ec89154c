#include "exchange/BranchStream.h"

#include "platform/system/Heartbeat.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/TextEncoding.h"

#include <QDir>
#include <QStringDecoder>
#include <QtEndian>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr char Utf8Mark[] = "\xEF\xBB\xBF";
constexpr qint64 MarkLength = 3;
constexpr char TrailerMark[] = "QBX+";
constexpr qint64 TrailerMarkLength = 4;

// A length that does not fit is written as the largest one, and in a longer form behind that.
constexpr quint16 LongString = 0xFFFF;
constexpr qint32 LongContents = std::numeric_limits<qint32>::max();

constexpr qint64 Piece = 1 << 18; // bytes of contents that move at a time

// Dates from year 100 to 9999, the range of dates in such files, as day counts.
constexpr double FirstDay = -657434;
constexpr double LastDay = 2958466;

} // namespace

/// The values of a record in their order, for both directions.
struct BranchForm {
    template <class Stream, class Item>
    static void OfItem(Stream& stream, Item& item)
    {
        stream.Value(item.Title);
        stream.Value(item.Key);
        stream.Value(item.ParentKey);
        stream.Value(item.Spare);
        stream.Value(item.ParentNodeKey);
        stream.Value(item.Description);
        stream.Value(item.Info);
        stream.Value(item.User);
        stream.Value(item.ItemStatus);
        stream.Value(item.ItemRating);
        stream.Value(item.Code);
        stream.Value(item.CodeHeaders);
        stream.Value(item.Notes);
        stream.Value(item.Example);
        stream.Value(item.UsageHeaders);
        stream.Value(item.HTMLPage);
        stream.Value(item.HTMLLastUpdated);
    }
    template <class Stream, class File>
    static void OfFile(Stream& stream, File& file)
    {
        stream.Value(file.Title);
        stream.Value(file.OrigDateTime);
        stream.Value(file.DateAdded);
        stream.Value(file.Size);
        stream.Value(file.Description);
    }
    template <class Stream, class Page>
    static void OfPage(Stream& stream, Page& page)
    {
        stream.Value(page.Name);
        stream.Value(page.Modified);
        stream.Value(page.Number);
        stream.Value(page.Size);
    }
    template <class Stream, class Link>
    static void OfLink(Stream& stream, Link& link)
    {
        stream.Value(link.From);
        stream.Value(link.To);
        stream.Value(link.Note);
    }
    template <class Stream, class Language>
    static void OfLanguage(Stream& stream, Language& language)
    {
        stream.Value(language.Key);
        stream.Value(language.Language);
    }
};

// Writing

BranchWriter::BranchWriter(const QString& path, qint32 items) : m_file(path)
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' can't be made: %2."_s.arg(QDir::toNativeSeparators(path), m_file.errorString()),
                           u"BranchWriter"_s);
    Bytes(Utf8Mark, MarkLength);
    Value(items);
}

void BranchWriter::Write(const BranchItem& item)
{
    BranchForm::OfItem(*this, item);
}

void BranchWriter::Write(const BranchFile& file)
{
    BranchForm::OfFile(*this, file);
}

void BranchWriter::Write(const BranchPage& page)
{
    BranchForm::OfPage(*this, page);
}

void BranchWriter::Write(const BranchTrailer& trailer)
{
    Bytes(TrailerMark, TrailerMarkLength);
    Value(qint32(trailer.Links.size()));
    for (const BranchLink& link : trailer.Links)
        BranchForm::OfLink(*this, link);
    Value(qint32(trailer.Languages.size()));
    for (const BranchLanguage& language : trailer.Languages)
        BranchForm::OfLanguage(*this, language);
}

void BranchWriter::WriteContents(QFile& source, qint64 size, Work& work)
{
    QByteArray piece(qsizetype(std::min(size, Piece)), Qt::Uninitialized);
    Heartbeat heart(work);
    for (qint64 left = size; left > 0;) {
        const qint64 read = source.read(piece.data(), std::min(left, Piece));
        if (read <= 0)
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be read to its end."_s.arg(QDir::toNativeSeparators(source.fileName())),
                               u"BranchWriter"_s);
        Bytes(piece.constData(), read);
        left -= read;
        if (!heart.Beat())
            throw RuntimeError(ErrorNumber::Cancelled, u"The export was stopped."_s, u"BranchWriter"_s);
    }
}

void BranchWriter::SetCount(qint32 items)
{
    const qint64 end = m_file.pos();
    if (!m_file.seek(MarkLength))
        Bytes(nullptr, 1);
    Value(items);
    if (!m_file.seek(end))
        Bytes(nullptr, 1);
}

void BranchWriter::Close()
{
    if (!m_file.flush())
        Bytes(nullptr, 1);
    m_file.close();
}

void BranchWriter::Value(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (bytes.size() < LongString) {
        LittleEndian(quint16(bytes.size()));
    } else {
        LittleEndian(LongString);
        LittleEndian(quint32(bytes.size()));
    }
    Bytes(bytes.constData(), bytes.size());
}

void BranchWriter::Value(qint32 number)
{
    LittleEndian(number);
}

void BranchWriter::Value(quint8 number)
{
    LittleEndian(number);
}

void BranchWriter::Value(bool truth)
{
    LittleEndian(qint16(truth ? -1 : 0));
}

void BranchWriter::Value(Date moment)
{
    LittleEndian(std::bit_cast<quint64>(moment.ToDayCount()));
}

void BranchWriter::Value(qint64 size)
{
    if (size < LongContents) {
        LittleEndian(qint32(size));
    } else {
        LittleEndian(LongContents);
        LittleEndian(size);
    }
}

template <class Number>
void BranchWriter::LittleEndian(Number number)
{
    const Number value = qToLittleEndian(number);
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    Bytes(bytes, sizeof value);
}

void BranchWriter::Bytes(const char* bytes, qint64 size)
{
    if (!bytes || m_file.write(bytes, size) != size)
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be written: %2."_s.arg(QDir::toNativeSeparators(m_file.fileName()), m_file.errorString()),
            u"BranchWriter"_s);
}

// Reading

BranchReader::BranchReader(const QString& path) : m_file(path)
{
    if (!m_file.open(QIODevice::ReadOnly))
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"'%1' can't be opened: %2."_s.arg(QDir::toNativeSeparators(path), m_file.errorString()),
                           u"BranchReader"_s);
    m_isUtf8 = m_file.peek(MarkLength) == Utf8Mark;
    if (m_isUtf8)
        Bytes(MarkLength);
    m_count = ReadCount();
}

void BranchReader::Read(BranchItem& item)
{
    BranchForm::OfItem(*this, item);
}

void BranchReader::Read(BranchFile& file)
{
    BranchForm::OfFile(*this, file);
}

void BranchReader::Read(BranchPage& page)
{
    BranchForm::OfPage(*this, page);
}

qint32 BranchReader::ReadCount()
{
    qint32 count = 0;
    Value(count);
    if (count < 0)
        Fail(u"a number of records is below 0"_s);
    return count;
}

void BranchReader::ReadContents(QFile* target, qint64 size, Work& work)
{
    Heartbeat heart(work);
    for (qint64 left = size; left > 0;) {
        const QByteArray piece = Bytes(std::min(left, Piece));
        if (target && target->write(piece) != piece.size())
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be written: %2."_s.arg(QDir::toNativeSeparators(target->fileName()),
                                                                   target->errorString()),
                               u"BranchReader"_s);
        left -= piece.size();
        if (!heart.Beat())
            throw RuntimeError(ErrorNumber::Cancelled, u"The import was stopped."_s, u"BranchReader"_s);
    }
}

BranchTrailer BranchReader::ReadTrailer()
{
    BranchTrailer trailer;
    if (!m_isUtf8)
        return trailer;
    if (Bytes(TrailerMarkLength) != TrailerMark)
        Fail(u"it does not end as an export does"_s);
    for (qint32 left = ReadCount(); left > 0; --left)
        BranchForm::OfLink(*this, trailer.Links.emplace_back());
    for (qint32 left = ReadCount(); left > 0; --left)
        BranchForm::OfLanguage(*this, trailer.Languages.emplace_back());
    return trailer;
}

void BranchReader::Value(QString& text)
{
    qint64 length = LittleEndian<quint16>();
    if (m_isUtf8 && length == LongString)
        length = LittleEndian<quint32>();
    const QByteArray bytes = Bytes(length);
    if (!m_isUtf8) {
        text = FromWindows1252(bytes);
        return;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    text = decoder.decode(bytes);
    if (decoder.hasError())
        Fail(u"a text in it is damaged"_s);
}

void BranchReader::Value(qint32& number)
{
    number = LittleEndian<qint32>();
}

void BranchReader::Value(quint8& number)
{
    number = LittleEndian<quint8>();
}

void BranchReader::Value(bool& truth)
{
    truth = LittleEndian<qint16>() != 0;
}

void BranchReader::Value(Date& moment)
{
    const double days = std::bit_cast<double>(LittleEndian<quint64>());
    if (!std::isfinite(days) || days < FirstDay || days >= LastDay)
        Fail(u"a date in it is out of range"_s);
    moment = Date::FromDayCount(days);
}

void BranchReader::Value(qint64& size)
{
    size = LittleEndian<qint32>();
    if (m_isUtf8 && size == LongContents)
        size = LittleEndian<qint64>();
    if (size < 0 || size > m_file.size())
        Fail(u"a file in it is said to be larger than all of it"_s);
}

template <class Number>
Number BranchReader::LittleEndian()
{
    const QByteArray bytes = Bytes(sizeof(Number));
    return qFromLittleEndian<Number>(bytes.constData());
}

QByteArray BranchReader::Bytes(qint64 size)
{
    if (size > m_file.size() - m_file.pos())
        Fail(u"it ends in the middle of a record"_s);
    QByteArray bytes = m_file.read(size);
    if (bytes.size() != size)
        Fail(m_file.errorString());
    return bytes;
}

void BranchReader::Fail(const QString& why) const
{
    throw RuntimeError(ErrorNumber::Corrupt, u"The export can't be read: %1."_s.arg(why), u"BranchReader"_s);
}

} // namespace qb
