#include "panels/TextStore.h"

#include <QStringDecoder>
#include <algorithm>
#include <cstring>
#include <utility>

namespace qb {

namespace {

using Length = quint32;
constexpr size_t BlockSize = 256 * 1024;

} // namespace

QByteArrayView KeptText::Utf8() const
{
    if (!m_at)
        return {};
    Length length;
    std::memcpy(&length, m_at, sizeof length);
    return {m_at + sizeof length, qsizetype(length)};
}

QStringView KeptText::In(std::vector<QChar>& room) const
{
    const QByteArrayView utf8 = Utf8();
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    room.resize(std::max(room.size(), size_t(decoder.requiredSpace(utf8.size()))));
    return {room.data(), decoder.appendToBuffer(room.data(), utf8)};
}

/// A text that is large for a block gets one of its own, beside the one that is being filled.
char* TextStore::Room(size_t size)
{
    if (size > BlockSize / 8)
        return m_blocks.emplace_back(std::make_unique_for_overwrite<char[]>(size)).get();
    if (size > m_left) {
        m_next = m_blocks.emplace_back(std::make_unique_for_overwrite<char[]>(BlockSize)).get();
        m_left = BlockSize;
    }
    m_left -= size;
    return std::exchange(m_next, m_next + size);
}

KeptText TextStore::Keep(QByteArrayView utf8)
{
    KeptText text;
    if (utf8.isEmpty())
        return text;
    const Length length = Length(utf8.size());
    char* room = Room(sizeof length + length);
    std::memcpy(room, &length, sizeof length);
    std::memcpy(room + sizeof length, utf8.data(), length);
    text.m_at = room;
    return text;
}

void TextStore::Clear()
{
    m_blocks.clear();
    m_next = nullptr;
    m_left = 0;
}

} // namespace qb
