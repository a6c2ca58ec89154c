#pragma once

#include "find/FindSnapshot.h"
#include "platform/dao/FileStamp.h"

#include <QFile>
#include <array>

namespace qb {

/// The file in which the searched texts of a library are kept; docs/file-formats.md describes it. It is only ever
/// replaced whole, or has something added at its end, so what was read from it, or mapped, stays as it was.
class FindCacheFile {
public:
    static constexpr size_t MostSegments = 32;

    /// @p path is that of the cache, @p library says whose texts it holds.
    FindCacheFile(QString path, QString library) : m_path(std::move(path)), m_library(std::move(library)) {}

    const QString& Path() const { return m_path; }

    /// What the head of the file says.
    struct Head {
        FileStamp Stamp;        ///< of the library when the texts were in step with it
        quint64 Generation = 0; ///< differs for every state of the file; 0: there is no usable file
        size_t Segments = 0;
    };
    Head ReadHead() const;

    /// All segments, the earliest first; none when there is no usable file, or somebody else writes it right now.
    std::vector<std::shared_ptr<const FindSegment>> Load(Head& head) const;

    /// Adds texts to a new file, which takes the place of the old one when it is complete.
    class Writer {
    public:
        explicit Writer(const FindCacheFile& file);
        ~Writer();

        SegmentBuilder& Builder() { return m_builder; }
        /// Why something could not be written, in the system's words; empty while all is well.
        const QString& Failure() const { return m_failure; }
        /// False when it can't be written; then the old file stays.
        bool Finish(const FileStamp& stamp);

    private:
        bool Put(QByteArrayView bytes);

        const FindCacheFile& m_owner;
        QString m_interim;
        QFile m_file;
        QString m_failure;
        SegmentBuilder m_builder;
    };

    /// Adds a segment to the file that has this head, and says that it is in step with the library as it is at @p
    /// stamp.
    /// Without a segment it says only that. Returns the new head; nothing when that can't be done, with the file as it
    /// was.
    std::optional<Head> Append(const Head& head, const FindSegment* segment, const FileStamp& stamp) const;

private:
    struct Entry {
        quint64 Texts = 0; ///< where they begin, at a multiple of 4096
        quint64 TextsSize = 0;
        quint64 Tables = 0;
        quint64 TablesSize = 0;
        quint64 TablesHash = 0;
    };
    /// The first bytes of the file, as they lie there.
    struct Header {
        std::array<char, 8> Magic{};
        quint32 Version = 0;
        quint32 ByteOrder = 0;
        quint64 Library = 0;
        quint32 Commits = 0;
        quint32 Pages = 0;
        quint64 Inode = 0;
        qint64 Modified = 0;
        quint64 Generation = 0;
        quint64 Segments = 0;
        std::array<Entry, MostSegments> Entries{};
        quint64 Hash = 0; ///< of all before
    };

    std::optional<Header> ReadHeader(QFile& file) const;
    Header NewHeader(const FileStamp& stamp) const;
    static QByteArray BytesOf(Header& header);
    static QByteArray TablesAsBytes(const FindSegment::Tables& tables);
    static bool ReadTables(QByteArrayView bytes, FindSegment::Tables& tables);
    static qint64 Padded(qint64 size);

    QString m_path;
    QString m_library;
};

} // namespace qb
