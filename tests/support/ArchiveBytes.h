#pragma once

#include <QByteArray>
#include <optional>
#include <sys/stat.h>

namespace qb::test {

/// An entry of an archive, with whatever it is to declare.
struct RawEntry {
    QByteArray Name{};
    QByteArray Data{}; ///< as it stands in the archive
    quint16 Method = 0;
    quint16 Flags = 0;
    std::optional<quint32> Size{};       ///< declared; that of the data otherwise
    std::optional<quint32> PackedSize{}; ///< the same
    std::optional<quint32> Crc{};        ///< that of the data otherwise
    std::optional<quint32> Offset{};     ///< of the local header
    quint32 Mode = S_IFREG | 0644;
    quint16 MadeOn = 3; ///< Unix
};

/// Writes an archive byte by byte.
class ArchiveBytes {
public:
    static constexpr quint16 Deflated = 8;
    static constexpr quint16 Encrypted = 1;
    static constexpr quint16 Utf8 = 0x800;

    ArchiveBytes& Add(const RawEntry& entry)
    {
        const auto offset = quint32(m_local.size());
        m_local += Number(0x04034b50, 4) + Common(entry) + Number(0, 2) + entry.Name + entry.Data;
        return AddToDirectory(entry, offset);
    }
    /// An entry of the directory alone, whose local header is the one at @p offset.
    ArchiveBytes& AddToDirectory(const RawEntry& entry, quint32 offset)
    {
        m_directory += Number(0x02014b50, 4) + Number(entry.MadeOn << 8 | 20, 2) + Common(entry)
                       + Number(0, 2)                               // extra field
                       + Number(0, 2) + Number(0, 2) + Number(0, 2) // comment, disk, text
                       + Number(quint64(entry.Mode) << 16, 4) + Number(entry.Offset.value_or(offset), 4) + entry.Name;
        ++m_count;
        return *this;
    }
    /// The whole, which says that its directory begins at @p directoryAt, or where it does.
    QByteArray Bytes(const QByteArray& comment = {}, std::optional<quint32> directoryAt = {}) const
    {
        const quint64 at = directoryAt.value_or(quint32(m_local.size()));
        const auto size = quint64(m_directory.size());
        QByteArray end;
        if (m_count > 0xffff) {
            end += Number(0x06064b50, 4) + Number(44, 8) + Number(45, 2) + Number(45, 2) + Number(0, 4) + Number(0, 4)
                   + Number(m_count, 8) + Number(m_count, 8) + Number(size, 8) + Number(at, 8);
            end += Number(0x07064b50, 4) + Number(0, 4) + Number(quint64(m_local.size()) + size, 8) + Number(1, 4);
        }
        const quint64 count = qMin<quint64>(m_count, 0xffff);
        end += Number(0x06054b50, 4) + Number(0, 2) + Number(0, 2) + Number(count, 2) + Number(count, 2)
               + Number(size, 4) + Number(at, 4) + Number(quint64(comment.size()), 2) + comment;
        return m_local + m_directory + end;
    }
    /// Puts bytes before all that is added later, which counts them in its offsets.
    ArchiveBytes& AddPlain(const QByteArray& bytes)
    {
        m_local += bytes;
        return *this;
    }

    static quint32 Crc32(const QByteArray& bytes)
    {
        quint32 crc = ~0u;
        for (const char byte : bytes) {
            crc ^= quint8(byte);
            for (int bit = 0; bit < 8; ++bit)
                crc = crc & 1 ? crc >> 1 ^ 0xedb88320u : crc >> 1;
        }
        return ~crc;
    }
    /// An entry whose data are those of @p contents, deflated.
    static RawEntry DeflatedEntry(const QByteArray& name, const QByteArray& contents)
    {
        const QByteArray deflated = qCompress(contents).mid(6).chopped(4); // without length, header and checksum
        return {.Name = name,
                .Data = deflated,
                .Method = Deflated,
                .Size = quint32(contents.size()),
                .Crc = Crc32(contents)};
    }
    static QByteArray Number(quint64 value, int bytes)
    {
        QByteArray number;
        for (int i = 0; i < bytes; ++i)
            number += char(value >> 8 * i);
        return number;
    }

private:
    /// What a local header and the directory both say, up to the length of the name.
    static QByteArray Common(const RawEntry& entry)
    {
        constexpr quint16 Noon = 12 << 11;
        constexpr quint16 Date = (2024 - 1980) << 9 | 5 << 5 | 6;
        return Number(20, 2) + Number(entry.Flags, 2) + Number(entry.Method, 2) + Number(Noon, 2) + Number(Date, 2)
               + Number(entry.Crc.value_or(Crc32(entry.Data)), 4)
               + Number(entry.PackedSize.value_or(quint32(entry.Data.size())), 4)
               + Number(entry.Size.value_or(quint32(entry.Data.size())), 4) + Number(quint64(entry.Name.size()), 2);
    }

    QByteArray m_local;
    QByteArray m_directory;
    quint64 m_count = 0;
};

} // namespace qb::test
