#pragma once

#include "find/FindTexts.h"
#include "platform/system/MappedFile.h"

#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace qb {

/// An item of a segment: what is known of it, and where its texts begin among the parts.
struct SegmentItem {
    FindItem Item;
    quint32 Language; ///< number among the languages of the segment
    quint32 FirstPart;
};

/// One text of a segment. Places are those in the texts of its chunk.
struct SegmentPart {
    enum Flag : quint8 {
        NotAscii = 1,  ///< there is a folded form beside it
        IntoAscii = 2, ///< folding its case makes ASCII of other characters
    };
    quint32 Begin;
    quint32 Length;
    quint32 FoldedBegin;
    quint32 FoldedLength;
    quint32 Item; ///< number in the segment
    FindField Field;
    quint8 Flags;
    quint16 Piece;
    qint64 Source;
};

struct SegmentSource {
    FindSource Source;
    quint32 Item;
    quint32 Unused;
};

/// Some items whose texts lie together, about a megabyte; what a thread searches at a time. Texts begin with, and are
/// parted by, a byte that no UTF-8 has, so that nothing is found across them.
struct SegmentChunk {
    quint64 Texts;  ///< where they begin in the segment
    quint64 Folded; ///< the folded forms of those that are not ASCII
    quint32 TextsSize;
    quint32 FoldedSize;
    quint32 FirstItem;
    quint32 Items;
    quint32 FirstPart;
    quint32 Parts;
};

inline constexpr char BetweenTexts = char(0xff);

/// Texts of items as they are searched; never changed once they are there. Some lie in the memory, most in a file that
/// is mapped, with only the tables in memory.
class FindSegment {
public:
    /// The tables of a segment.
    struct Tables {
        std::vector<SegmentItem> Items;
        std::vector<SegmentPart> Parts;
        std::vector<SegmentChunk> Chunks;
        std::vector<SegmentSource> Sources;
        std::vector<qint64> Gone; ///< items of earlier segments that are no more
        QStringList Languages;
    };

    /// The texts in memory.
    FindSegment(Tables tables, QByteArray texts);
    /// The texts in a file. Raises nothing; tables that don't fit the texts give a segment that is not valid.
    FindSegment(Tables tables, std::shared_ptr<const MappedFile> texts);

    bool IsValid() const { return m_valid; }
    bool IsInMemory() const { return !m_file; }
    /// The file was cut short: what was read of it is not to be trusted.
    bool IsDamaged() const { return m_file && m_file->IsDamaged(); }
    const Tables& All() const { return m_tables; }
    qsizetype TextsSize() const { return m_texts.size(); }
    QByteArray AllTexts() const { return m_texts.toByteArray(); }

    QByteArrayView TextsOf(const SegmentChunk& chunk) const;
    QByteArrayView FoldedOf(const SegmentChunk& chunk) const;
    std::span<const SegmentPart> PartsOf(const SegmentChunk& chunk) const;
    std::span<const SegmentPart> PartsOfItem(quint32 item) const;
    const SegmentChunk& ChunkOfItem(quint32 item) const;
    QByteArrayView TextOf(const SegmentChunk& chunk, const SegmentPart& part) const;
    QByteArrayView TitleOf(quint32 item) const;
    /// The number of an item by its ID; nothing when it is none of this segment.
    std::optional<quint32> NumberOf(qint64 id) const;
    const QString& LanguageOf(quint32 item) const;
    /// The name of the stored file that a source is; empty for a page.
    QString FileName(const SegmentSource& source) const;
    /// An item out of the segment, to be put into another one.
    FindItemTexts Copy(quint32 item) const;

private:
    bool Fits() const;
    void SortById();

    Tables m_tables;
    std::vector<quint32> m_byId; ///< numbers of items
    QByteArray m_memory;
    std::shared_ptr<const MappedFile> m_file;
    QByteArrayView m_texts;
    bool m_valid;
};

/// Puts texts of items together for a segment.
class ChunkBuilder {
public:
    static constexpr qsizetype Enough = 1 << 20;

    void Add(const FindItemTexts& item);
    bool IsFull() const { return m_texts.size() + m_folded.size() >= Enough; }
    bool IsEmpty() const { return m_items.empty(); }

private:
    friend class SegmentBuilder;

    struct Item {
        FindItem Item;
        QString Language;
        quint32 FirstPart;
    };

    std::vector<Item> m_items;
    std::vector<SegmentPart> m_parts;     ///< items counted from the chunk's first
    std::vector<SegmentSource> m_sources; ///< the same
    QByteArray m_texts;
    QByteArray m_folded;
};

/// Makes a segment of chunks. The texts go to whoever takes them.
class SegmentBuilder {
public:
    /// Takes texts in the order in which they lie in the segment; false when it can't.
    using Sink = std::function<bool(QByteArrayView bytes)>;

    explicit SegmentBuilder(Sink sink) : m_sink(std::move(sink)) {}

    /// False when the sink has failed.
    bool Add(ChunkBuilder&& chunk);
    void AddGone(qint64 item) { m_tables.Gone.push_back(item); }
    qint64 TextsSize() const { return m_size; }
    bool IsEmpty() const { return m_tables.Items.empty() && m_tables.Gone.empty(); }
    size_t Items() const { return m_tables.Items.size(); }
    FindSegment::Tables TakeTables() { return std::move(m_tables); }

private:
    bool Put(const QByteArray& bytes);

    Sink m_sink;
    FindSegment::Tables m_tables;
    qint64 m_size = 0;
};

} // namespace qb
