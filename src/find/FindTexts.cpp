#include "find/FindTexts.h"

#include "find/PageText.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/TextEncoding.h"

#include <cstring>

namespace qb {

using namespace Qt::StringLiterals;

QByteArray SearchedText(const QString& stored)
{
    return NormalText(PlainTextFromRtf(stored)).toUtf8();
}

QByteArray SearchedFileText(const QByteArray& bytes)
{
    const auto text = DecodeText(bytes, FallbackEncoding::Windows1252);
    return text ? SearchedText(*text) : QByteArray();
}

QByteArray SearchedPageText(const QByteArray& bytes)
{
    const auto page = DecodeText(bytes, FallbackEncoding::Windows1252);
    return page ? NormalText(TextOfPage(*page)).toUtf8() : QByteArray();
}

namespace {

quint64 WordAt(const char* place)
{
    quint64 word = 0;
    std::memcpy(&word, place, sizeof word);
    return word;
}

} // namespace

void RowHasher::Add(QByteArrayView bytes)
{
    // Four chains at a time, since a multiplication takes longer than the machine has to wait for it.
    constexpr qsizetype Width = 32;
    constexpr quint64 Odd = 0xd6e8feb86659fd93u;
    quint64 lanes[4] = {1, 2, 3, 4};
    const char* at = bytes.data();
    qsizetype left = bytes.size();
    for (; left >= Width; at += Width, left -= Width) {
        for (qsizetype i = 0; i < 4; ++i) {
            lanes[i] = (lanes[i] ^ WordAt(at + 8 * i)) * Odd;
            lanes[i] ^= lanes[i] >> 32;
        }
    }
    for (const quint64 lane : lanes)
        Mix(lane);
    char rest[Width] = {};
    if (left > 0)
        std::memcpy(rest, at, size_t(left));
    for (qsizetype i = 0; i < 4; ++i)
        Mix(WordAt(rest + 8 * i));
    Mix(quint64(bytes.size()));
}

quint64 RowHasher::Result() const
{
    const quint64 mixed = (m_state ^ (m_state >> 32)) * 0xd6e8feb86659fd93u;
    return mixed ^ (mixed >> 32);
}

} // namespace qb
