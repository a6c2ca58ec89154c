#include "find/FindCacheFile.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/RuntimeError.h"

#include <QRandomGenerator>
#include <cstring>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<char, 8> Magic{'Q', 'B', 'F', 'i', 'n', 'd', '\r', '\n'};
constexpr quint32 Version = 3;
constexpr quint32 ByteOrder = 0x01020304;
constexpr qint64 Page = 4096;
constexpr QFileDevice::Permissions Private = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

quint64 HashOf(QByteArrayView bytes)
{
    RowHasher hasher;
    hasher.Add(bytes);
    return hasher.Result();
}

template <class Row>
void PutRows(const std::vector<Row>& rows, QByteArray& out)
{
    const quint64 count = rows.size();
    out.append(reinterpret_cast<const char*>(&count), sizeof count);
    out.append(reinterpret_cast<const char*>(rows.data()), qsizetype(rows.size() * sizeof(Row)));
}

/// Takes rows off the begin of @p bytes; false when there are not as many as there should be.
template <class Row>
bool TakeRows(QByteArrayView& bytes, std::vector<Row>& rows)
{
    quint64 count = 0;
    if (bytes.size() < qsizetype(sizeof count))
        return false;
    std::memcpy(&count, bytes.data(), sizeof count);
    bytes = bytes.sliced(sizeof count);
    if (count > quint64(bytes.size()) / sizeof(Row))
        return false;
    rows.resize(count);
    if (count == 0)
        return true; // without rows there is no place to copy to
    std::memcpy(static_cast<void*>(rows.data()), bytes.data(), count * sizeof(Row));
    bytes = bytes.sliced(qsizetype(count * sizeof(Row)));
    return true;
}

bool SyncData(QFile& file)
{
    return file.flush() && ::fdatasync(file.handle()) == 0;
}

} // namespace

qint64 FindCacheFile::Padded(qint64 size)
{
    return (size + Page - 1) / Page * Page;
}

QByteArray FindCacheFile::TablesAsBytes(const FindSegment::Tables& tables)
{
    QByteArray bytes;
    PutRows(tables.Items, bytes);
    PutRows(tables.Parts, bytes);
    PutRows(tables.Chunks, bytes);
    PutRows(tables.Sources, bytes);
    PutRows(tables.Gone, bytes);
    const QByteArray languages = tables.Languages.join(u'\n').toUtf8();
    PutRows(std::vector<char>(languages.begin(), languages.end()), bytes);
    return bytes;
}

bool FindCacheFile::ReadTables(QByteArrayView bytes, FindSegment::Tables& tables)
{
    std::vector<char> languages;
    const bool fits = TakeRows(bytes, tables.Items) && TakeRows(bytes, tables.Parts) && TakeRows(bytes, tables.Chunks)
                      && TakeRows(bytes, tables.Sources) && TakeRows(bytes, tables.Gone) && TakeRows(bytes, languages)
                      && bytes.isEmpty();
    tables.Languages = QString::fromUtf8(languages.data(), qsizetype(languages.size())).split(u'\n');
    return fits;
}

FindCacheFile::Header FindCacheFile::NewHeader(const FileStamp& stamp) const
{
    Header header;
    header.Magic = Magic;
    header.Version = Version;
    header.ByteOrder = ByteOrder;
    header.Library = HashOf(m_library.toUtf8());
    header.Commits = stamp.Commits;
    header.Pages = stamp.Pages;
    header.Inode = stamp.Inode;
    header.Modified = stamp.Modified;
    while (header.Generation == 0)
        header.Generation = QRandomGenerator::global()->generate64();
    return header;
}

QByteArray FindCacheFile::BytesOf(Header& header)
{
    const auto* begin = reinterpret_cast<const char*>(&header);
    header.Hash = HashOf({begin, qsizetype(offsetof(Header, Hash))});
    QByteArray bytes(Page, '\0');
    static_assert(sizeof(Header) <= Page);
    std::memcpy(bytes.data(), begin, sizeof header);
    return bytes;
}

std::optional<FindCacheFile::Header> FindCacheFile::ReadHeader(QFile& file) const
{
    Header header;
    QByteArray bytes;
    if (!file.seek(0) || !ReadAll(file, bytes, sizeof header).isEmpty() || bytes.size() < qsizetype(sizeof header))
        return {};
    std::memcpy(static_cast<void*>(&header), bytes.constData(), sizeof header);
    const bool isOurs = header.Magic == Magic && header.Version == Version && header.ByteOrder == ByteOrder
                        && header.Library == HashOf(m_library.toUtf8()) && header.Segments <= MostSegments
                        && header.Hash == HashOf(QByteArrayView(bytes).first(offsetof(Header, Hash)));
    return isOurs ? std::optional(header) : std::nullopt;
}

FindCacheFile::Head FindCacheFile::ReadHead() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const std::optional<Header> header = ReadHeader(file);
    return header ? Head{{header->Commits, header->Pages, header->Inode, header->Modified},
                         header->Generation,
                         size_t(header->Segments)}
                  : Head();
}

std::vector<std::shared_ptr<const FindSegment>> FindCacheFile::Load(Head& head) const
{
    head = {};
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const std::optional<Header> header = ReadHeader(file);
    if (!header)
        return {};
    std::vector<std::shared_ptr<const FindSegment>> segments;
    for (size_t i = 0; i < header->Segments; ++i) {
        const Entry& entry = header->Entries[i];
        FindSegment::Tables tables;
        QByteArray bytes;
        const auto size = quint64(file.size());
        const bool isWhole = entry.Tables <= size && entry.TablesSize <= size - entry.Tables
                             && file.seek(qint64(entry.Tables))
                             && ReadAll(file, bytes, qint64(entry.TablesSize)).isEmpty()
                             && HashOf(bytes) == entry.TablesHash && ReadTables(bytes, tables);
        if (!isWhole)
            return {};
        QString reason;
        // By the open file: the name may be another one's by now.
        const auto texts = MappedFile::Map(file, qint64(entry.Texts), qint64(entry.TextsSize), reason);
        if (!texts)
            return {};
        auto segment = std::make_shared<const FindSegment>(std::move(tables), texts);
        if (!segment->IsValid())
            return {};
        segments.push_back(std::move(segment));
    }
    head = {{header->Commits, header->Pages, header->Inode, header->Modified}, header->Generation, segments.size()};
    return segments;
}

FindCacheFile::Writer::Writer(const FindCacheFile& file)
    : m_owner(file), m_interim(InterimName(file.m_path)), m_file(m_interim),
      m_builder([this](QByteArrayView bytes) { return Put(bytes); })
{
    QFile::remove(m_interim);
    const bool opened = m_file.open(QIODevice::WriteOnly) && m_file.setPermissions(Private);
    if (!opened)
        m_failure = m_file.errorString();
    else
        Put(QByteArray(Page, '\0')); // for the header
}

FindCacheFile::Writer::~Writer()
{
    if (m_file.isOpen()) {
        m_file.close();
        QFile::remove(m_interim);
    }
}

bool FindCacheFile::Writer::Put(QByteArrayView bytes)
{
    if (m_failure.isEmpty())
        m_failure = WriteAll(m_file, bytes.data(), bytes.size());
    return m_failure.isEmpty();
}

bool FindCacheFile::Writer::Finish(const FileStamp& stamp)
{
    Header header = m_owner.NewHeader(stamp);
    header.Segments = 1;
    Entry& entry = header.Entries[0];
    entry.Texts = Page;
    entry.TextsSize = quint64(std::max(m_builder.TextsSize(), Page));
    Put(QByteArray(qsizetype(Padded(m_builder.TextsSize()) - m_builder.TextsSize()), '\0'));
    if (m_builder.TextsSize() == 0)
        Put(QByteArray(Page, '\0')); // there is something to map
    const QByteArray tables = TablesAsBytes(m_builder.TakeTables());
    entry.Tables = quint64(m_file.pos());
    entry.TablesSize = quint64(tables.size());
    entry.TablesHash = HashOf(tables);
    Put(tables);
    if (!m_failure.isEmpty() || !m_file.seek(0) || !Put(BytesOf(header)) || !m_file.flush())
        return false;
    m_file.close();
    try {
        MoveIntoPlace(m_interim, m_owner.m_path, true);
        return true;
    } catch (const RuntimeError& error) {
        m_failure = error.Description();
        QFile::remove(m_interim);
        return false;
    }
}

std::optional<FindCacheFile::Head> FindCacheFile::Append(const Head& head, const FindSegment* segment,
                                                         const FileStamp& stamp) const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadWrite))
        return {};
    const std::optional<Header> before = ReadHeader(file);
    if (!before || before->Generation != head.Generation || (segment && before->Segments == MostSegments))
        return {};
    Header header = NewHeader(stamp);
    header.Segments = before->Segments;
    header.Entries = before->Entries;
    if (segment) {
        qint64 end = Page;
        for (size_t i = 0; i < before->Segments; ++i)
            end = std::max(end, qint64(before->Entries[i].Tables + before->Entries[i].TablesSize));
        const QByteArray texts = segment->AllTexts()
                                 + QByteArray(Padded(segment->TextsSize() + 1) - segment->TextsSize(), '\0');
        const QByteArray tables = TablesAsBytes(segment->All());
        Entry& entry = header.Entries[header.Segments++];
        entry.Texts = quint64(Padded(end));
        entry.TextsSize = quint64(texts.size());
        entry.Tables = entry.Texts + entry.TextsSize;
        entry.TablesSize = quint64(tables.size());
        entry.TablesHash = HashOf(tables);
        if (!file.seek(qint64(entry.Texts)) || !WriteAll(file, texts.constData(), texts.size()).isEmpty()
            || !WriteAll(file, tables.constData(), tables.size()).isEmpty() || !SyncData(file))
            return {};
    }
    const QByteArray bytes = BytesOf(header);
    if (!file.seek(0) || !WriteAll(file, bytes.constData(), bytes.size()).isEmpty() || !SyncData(file))
        return {};
    return Head{stamp, header.Generation, size_t(header.Segments)};
}

} // namespace qb
