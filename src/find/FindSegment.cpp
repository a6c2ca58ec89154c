#include "find/FindSegment.h"

#include "find/FoldText.h"

#include <algorithm>
#include <numeric>

namespace qb {

namespace {

/// Vectors may be read beyond the last text.
constexpr qsizetype Padding = 64;

template <class Row>
bool IsWithin(const Row& row, quint64 size)
{
    return row.Texts <= size && row.TextsSize <= size - row.Texts && row.Folded <= size
           && row.FoldedSize <= size - row.Folded;
}

bool PartFits(const SegmentPart& part, const SegmentChunk& chunk)
{
    return part.Begin >= 1 && part.Begin <= chunk.TextsSize && part.Length < chunk.TextsSize - part.Begin + 1
           && part.FoldedBegin <= chunk.FoldedSize && part.FoldedLength <= chunk.FoldedSize - part.FoldedBegin
           && part.Item >= chunk.FirstItem && part.Item < chunk.FirstItem + chunk.Items
           && size_t(part.Field) < FindFields;
}

} // namespace

FindSegment::FindSegment(Tables tables, QByteArray texts)
    : m_tables(std::move(tables)), m_memory(std::move(texts)), m_texts(m_memory), m_valid(Fits())
{
    SortById();
}

FindSegment::FindSegment(Tables tables, std::shared_ptr<const MappedFile> texts)
    : m_tables(std::move(tables)), m_file(std::move(texts)), m_texts(m_file->Bytes()), m_valid(Fits())
{
    SortById();
}

void FindSegment::SortById()
{
    m_byId.resize(m_tables.Items.size());
    std::iota(m_byId.begin(), m_byId.end(), 0u);
    const auto isBefore = [this](quint32 a, quint32 b) {
        return m_tables.Items[a].Item.Id < m_tables.Items[b].Item.Id;
    };
    if (!std::is_sorted(m_byId.begin(), m_byId.end(), isBefore))
        std::sort(m_byId.begin(), m_byId.end(), isBefore);
}

std::optional<quint32> FindSegment::NumberOf(qint64 id) const
{
    const auto found = std::lower_bound(m_byId.begin(), m_byId.end(), id, [this](quint32 number, qint64 wanted) {
        return m_tables.Items[number].Item.Id < wanted;
    });
    return found == m_byId.end() || m_tables.Items[*found].Item.Id != id ? std::nullopt : std::optional(*found);
}

/// Nothing in the tables leads out of the texts, or to another table's end.
bool FindSegment::Fits() const
{
    quint64 items = 0;
    quint64 parts = 0;
    for (const SegmentChunk& chunk : m_tables.Chunks) {
        if (!IsWithin(chunk, quint64(m_texts.size())) || chunk.FirstItem != items || chunk.FirstPart != parts)
            return false;
        items += chunk.Items;
        parts += chunk.Parts;
        if (items > m_tables.Items.size() || parts > m_tables.Parts.size())
            return false;
        quint32 begin = 0;
        for (const SegmentPart& part : PartsOf(chunk)) {
            if (!PartFits(part, chunk) || part.Begin < begin)
                return false;
            begin = part.Begin + part.Length;
        }
    }
    quint32 first = 0;
    for (const SegmentItem& item : m_tables.Items) {
        if (item.FirstPart < first || item.FirstPart > parts || item.Language >= quint32(m_tables.Languages.size()))
            return false;
        first = item.FirstPart;
    }
    return items == m_tables.Items.size() && parts == m_tables.Parts.size()
           && std::all_of(m_tables.Sources.begin(), m_tables.Sources.end(),
                          [items](const SegmentSource& source) { return source.Item < items; });
}

QByteArrayView FindSegment::TextsOf(const SegmentChunk& chunk) const
{
    return m_texts.sliced(qsizetype(chunk.Texts), chunk.TextsSize);
}

QByteArrayView FindSegment::FoldedOf(const SegmentChunk& chunk) const
{
    return m_texts.sliced(qsizetype(chunk.Folded), chunk.FoldedSize);
}

std::span<const SegmentPart> FindSegment::PartsOf(const SegmentChunk& chunk) const
{
    return {m_tables.Parts.data() + chunk.FirstPart, chunk.Parts};
}

std::span<const SegmentPart> FindSegment::PartsOfItem(quint32 item) const
{
    const size_t begin = m_tables.Items[item].FirstPart;
    const size_t end = item + 1 < m_tables.Items.size() ? m_tables.Items[item + 1].FirstPart : m_tables.Parts.size();
    return {m_tables.Parts.data() + begin, end - begin};
}

const SegmentChunk& FindSegment::ChunkOfItem(quint32 item) const
{
    const auto behind = std::upper_bound(
        m_tables.Chunks.begin(), m_tables.Chunks.end(), item,
        [](quint32 wanted, const SegmentChunk& chunk) { return wanted < chunk.FirstItem; });
    return *std::prev(behind);
}

QByteArrayView FindSegment::TextOf(const SegmentChunk& chunk, const SegmentPart& part) const
{
    return TextsOf(chunk).sliced(part.Begin, part.Length);
}

QByteArrayView FindSegment::TitleOf(quint32 item) const
{
    const std::span<const SegmentPart> parts = PartsOfItem(item);
    return parts.empty() || parts.front().Field != FindField::Title ? QByteArrayView()
                                                                    : TextOf(ChunkOfItem(item), parts.front());
}

const QString& FindSegment::LanguageOf(quint32 item) const
{
    return m_tables.Languages[m_tables.Items[item].Language];
}

QString FindSegment::FileName(const SegmentSource& source) const
{
    for (const SegmentPart& part : PartsOfItem(source.Item)) {
        if (source.Source.File != 0 && part.Field == FindField::FileNames && part.Piece == 0
            && part.Source == source.Source.File)
            return QString::fromUtf8(TextOf(ChunkOfItem(source.Item), part));
    }
    return {};
}

FindItemTexts FindSegment::Copy(quint32 item) const
{
    FindItemTexts copy;
    copy.Item = m_tables.Items[item].Item;
    copy.Language = LanguageOf(item);
    const SegmentChunk& chunk = ChunkOfItem(item);
    for (const SegmentPart& part : PartsOfItem(item))
        copy.Texts.push_back({part.Field, part.Piece, part.Source, TextOf(chunk, part).toByteArray()});
    const auto first = std::lower_bound(
        m_tables.Sources.begin(), m_tables.Sources.end(), item,
        [](const SegmentSource& source, quint32 wanted) { return source.Item < wanted; });
    for (auto source = first; source != m_tables.Sources.end() && source->Item == item; ++source)
        copy.Sources.push_back(source->Source);
    return copy;
}

void ChunkBuilder::Add(const FindItemTexts& item)
{
    constexpr qsizetype Most = 0xf0000000; // places are 32 bits
    if (m_texts.isEmpty())
        m_texts.append(BetweenTexts);
    m_items.push_back({item.Item, item.Language, quint32(m_parts.size())});
    const auto number = quint32(m_items.size() - 1);
    for (const FindSource& source : item.Sources)
        m_sources.push_back({source, number, 0});
    for (const FindText& text : item.Texts) {
        if (text.Text.isEmpty() || m_texts.size() + m_folded.size() + 2 * text.Text.size() > Most)
            continue;
        SegmentPart part{.Begin = quint32(m_texts.size()),
                         .Length = quint32(text.Text.size()),
                         .FoldedBegin = quint32(m_folded.size()),
                         .FoldedLength = 0,
                         .Item = number,
                         .Field = text.Field,
                         .Flags = 0,
                         .Piece = text.Piece,
                         .Source = text.Source};
        m_texts += text.Text;
        m_texts += BetweenTexts;
        if (!IsAscii(text.Text)) {
            part.Flags = FoldsIntoAscii(text.Text) ? SegmentPart::NotAscii | SegmentPart::IntoAscii
                                                   : SegmentPart::NotAscii;
            m_folded += BetweenTexts;
            part.FoldedBegin = quint32(m_folded.size());
            AppendFolded(text.Text, Folding::All, m_folded);
            part.FoldedLength = quint32(m_folded.size()) - part.FoldedBegin;
            m_folded += BetweenTexts;
        }
        m_parts.push_back(part);
    }
}

bool SegmentBuilder::Put(const QByteArray& bytes)
{
    m_size += bytes.size() + Padding;
    static const QByteArray padding(Padding, BetweenTexts);
    return m_sink(bytes) && m_sink(padding);
}

bool SegmentBuilder::Add(ChunkBuilder&& chunk)
{
    const auto firstItem = quint32(m_tables.Items.size());
    const auto firstPart = quint32(m_tables.Parts.size());
    SegmentChunk row{.Texts = quint64(m_size),
                     .Folded = quint64(m_size + chunk.m_texts.size() + Padding),
                     .TextsSize = quint32(chunk.m_texts.size()),
                     .FoldedSize = quint32(chunk.m_folded.size()),
                     .FirstItem = firstItem,
                     .Items = quint32(chunk.m_items.size()),
                     .FirstPart = firstPart,
                     .Parts = quint32(chunk.m_parts.size())};
    for (const ChunkBuilder::Item& item : chunk.m_items) {
        qsizetype language = m_tables.Languages.indexOf(item.Language);
        if (language < 0) {
            language = m_tables.Languages.size();
            m_tables.Languages.append(item.Language);
        }
        m_tables.Items.push_back({item.Item, quint32(language), item.FirstPart + firstPart});
    }
    for (SegmentPart part : chunk.m_parts) {
        part.Item += firstItem;
        m_tables.Parts.push_back(part);
    }
    for (SegmentSource source : chunk.m_sources) {
        source.Item += firstItem;
        m_tables.Sources.push_back(source);
    }
    m_tables.Chunks.push_back(row);
    return Put(chunk.m_texts) && Put(chunk.m_folded);
}

} // namespace qb
