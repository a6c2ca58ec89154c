#include "find/ByteScan.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#define QUILLBASE_VECTORS
#endif

namespace qb {

namespace {

constexpr uchar CaseBit = 0x20;

constexpr bool IsSmall(uchar byte)
{
    return byte >= 'a' && byte <= 'z';
}

constexpr uchar Lower(uchar byte)
{
    return byte >= 'A' && byte <= 'Z' ? uchar(byte | CaseBit) : byte;
}

constexpr std::array<uchar, 256> LowerTable = [] {
    std::array<uchar, 256> table{};
    for (size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = Lower(uchar(byte));
    return table;
}();

/// How common a byte is in source code, roughly: the most common first.
int Commonness(uchar byte, bool foldsCase)
{
    constexpr char Common[] = " etaoinsrlcdpu_mfhg,.()b;\n-=v0y1*wx/\"k2:>'3j<z8q4566&7[]9{}#+!|@$?%\\^`~";
    constexpr int Most = int(sizeof Common);
    const auto* found = static_cast<const char*>(std::memchr(Common, Lower(byte), sizeof Common - 1));
    if (!found)
        return byte >= 0xc0 ? Most / 4 : 1; // lead bytes of a script are common where it is used
    const int rank = Most - int(found - Common);
    return !foldsCase && Lower(byte) != byte ? rank / 3 : rank;
}

} // namespace

ByteScan::Level ByteScan::Best()
{
#ifdef QUILLBASE_VECTORS
    static const Level best = __builtin_cpu_supports("avx2") ? Avx2 : Sse2;
    return best;
#else
    return Single;
#endif
}

ByteScan::ByteScan(QByteArrayView needle, Case sensitivity, Level atMost)
    : m_needle(needle.toByteArray()), m_case(sensitivity), m_level(std::min(atMost, Best()))
{
    if (m_case == FoldsAscii)
        std::transform(m_needle.begin(), m_needle.end(), m_needle.begin(),
                       [](char byte) { return char(Lower(uchar(byte))); });
    ChooseAnchors();
}

void ByteScan::ChooseAnchors()
{
    constexpr qsizetype Looked = 64; // far anchors would need far more of the text at a time
    const auto anchor = [this](qsizetype offset) {
        const auto byte = uchar(m_needle[offset]);
        return Anchor{offset, byte, m_case == FoldsAscii && IsSmall(byte) ? CaseBit : uchar(0)};
    };
    const auto commonness = [this](qsizetype offset) {
        return Commonness(uchar(m_needle[offset]), m_case == FoldsAscii);
    };
    qsizetype rarest = 0;
    for (qsizetype i = 1; i < std::min(m_needle.size(), Looked); ++i) {
        if (commonness(i) < commonness(rarest))
            rarest = i;
    }
    qsizetype second = m_needle.size() == 1 ? 0 : rarest == 0 ? 1 : 0;
    for (qsizetype i = 0; i < std::min(m_needle.size(), Looked); ++i) {
        if (i != rarest && commonness(i) < commonness(second))
            second = i;
    }
    m_anchors = {anchor(rarest), anchor(second)};
}

bool ByteScan::MatchesAt(const char* place) const
{
    if (m_case == Exact)
        return std::memcmp(place, m_needle.constData(), size_t(m_needle.size())) == 0;
    return std::equal(m_needle.begin(), m_needle.end(), place,
                      [](char wanted, char byte) { return uchar(wanted) == LowerTable[uchar(byte)]; });
}

/// Looks at the places of one vector whose anchors fit; false when there is no room for another place.
bool ByteScan::TakeMask(Walk& walk, quint32 mask) const
{
    const qsizetype base = walk.At;
    qsizetype next = base;
    for (; mask != 0; mask &= mask - 1) {
        const qsizetype place = base + std::countr_zero(mask);
        if (place < next || (m_needle.size() > qsizetype(m_anchors.size()) && !MatchesAt(walk.Text + place)))
            continue;
        walk.Places[walk.Found++] = quint32(place);
        next = place + m_needle.size();
        if (walk.Found == walk.Places.size()) {
            walk.At = next;
            return false;
        }
    }
    walk.At = next;
    return true;
}

void ByteScan::ScanSingle(Walk& walk) const
{
    const qsizetype last = walk.Size - m_needle.size();
    const Anchor& anchor = m_anchors[0];
    while (walk.At <= last && walk.Found < walk.Places.size()) {
        const auto byte = uchar(uchar(walk.Text[walk.At + anchor.Offset]) | anchor.CaseBit);
        if (byte == anchor.Byte && MatchesAt(walk.Text + walk.At)) {
            walk.Places[walk.Found++] = quint32(walk.At);
            walk.At += m_needle.size();
        } else {
            ++walk.At;
        }
    }
}

#ifdef QUILLBASE_VECTORS

void ByteScan::ScanSse2(Walk& walk) const
{
    constexpr qsizetype Width = 16;
    const qsizetype end = walk.Size - std::max(m_needle.size(), qsizetype(1)) - Width;
    const __m128i first = _mm_set1_epi8(char(m_anchors[0].Byte));
    const __m128i second = _mm_set1_epi8(char(m_anchors[1].Byte));
    const __m128i firstCase = _mm_set1_epi8(char(m_anchors[0].CaseBit));
    const __m128i secondCase = _mm_set1_epi8(char(m_anchors[1].CaseBit));
    while (walk.At <= end) {
        const char* at = walk.Text + walk.At;
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + m_anchors[0].Offset));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + m_anchors[1].Offset));
        const __m128i fits = _mm_and_si128(_mm_cmpeq_epi8(_mm_or_si128(a, firstCase), first),
                                           _mm_cmpeq_epi8(_mm_or_si128(b, secondCase), second));
        const auto mask = quint32(_mm_movemask_epi8(fits));
        const qsizetype next = walk.At + Width;
        if (mask != 0 && !TakeMask(walk, mask))
            return;
        walk.At = std::max(walk.At, next);
    }
}

__attribute__((target("avx2"))) void ByteScan::ScanAvx2(Walk& walk) const
{
    constexpr qsizetype Width = 32;
    const qsizetype end = walk.Size - std::max(m_needle.size(), qsizetype(1)) - Width;
    const __m256i first = _mm256_set1_epi8(char(m_anchors[0].Byte));
    const __m256i second = _mm256_set1_epi8(char(m_anchors[1].Byte));
    const __m256i firstCase = _mm256_set1_epi8(char(m_anchors[0].CaseBit));
    const __m256i secondCase = _mm256_set1_epi8(char(m_anchors[1].CaseBit));
    while (walk.At <= end) {
        const char* at = walk.Text + walk.At;
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + m_anchors[0].Offset));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + m_anchors[1].Offset));
        const __m256i fits = _mm256_and_si256(_mm256_cmpeq_epi8(_mm256_or_si256(a, firstCase), first),
                                              _mm256_cmpeq_epi8(_mm256_or_si256(b, secondCase), second));
        const auto mask = quint32(_mm256_movemask_epi8(fits));
        const qsizetype next = walk.At + Width;
        if (mask != 0 && !TakeMask(walk, mask))
            return;
        walk.At = std::max(walk.At, next);
    }
}

qsizetype ByteScan::CountSse2(QByteArrayView text, qsizetype& at) const
{
    constexpr qsizetype Width = 16;
    const __m128i wanted = _mm_set1_epi8(char(m_anchors[0].Byte));
    const __m128i caseBit = _mm_set1_epi8(char(m_anchors[0].CaseBit));
    qsizetype count = 0;
    for (; at + Width <= text.size(); at += Width) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
        count += std::popcount(unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_or_si128(bytes, caseBit), wanted))));
    }
    return count;
}

__attribute__((target("avx2,popcnt"))) qsizetype ByteScan::CountAvx2(QByteArrayView text, qsizetype& at) const
{
    constexpr qsizetype Width = 32;
    const __m256i wanted = _mm256_set1_epi8(char(m_anchors[0].Byte));
    const __m256i caseBit = _mm256_set1_epi8(char(m_anchors[0].CaseBit));
    qsizetype count = 0;
    for (; at + Width <= text.size(); at += Width) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text.data() + at));
        const __m256i fits = _mm256_cmpeq_epi8(_mm256_or_si256(bytes, caseBit), wanted);
        count += std::popcount(unsigned(_mm256_movemask_epi8(fits)));
    }
    return count;
}

#else

void ByteScan::ScanSse2(Walk&) const {}
void ByteScan::ScanAvx2(Walk&) const {}
qsizetype ByteScan::CountSse2(QByteArrayView, qsizetype&) const
{
    return 0;
}
qsizetype ByteScan::CountAvx2(QByteArrayView, qsizetype&) const
{
    return 0;
}

#endif

qsizetype ByteScan::CountByte(QByteArrayView text) const
{
    const Anchor& anchor = m_anchors[0];
    qsizetype at = 0;
    qsizetype count = m_level == Avx2 ? CountAvx2(text, at) : m_level == Sse2 ? CountSse2(text, at) : 0;
    for (; at < text.size(); ++at)
        count += uchar(uchar(text[at]) | anchor.CaseBit) == anchor.Byte ? 1 : 0;
    return count;
}

size_t ByteScan::Next(QByteArrayView text, qsizetype& at, std::span<quint32> places) const
{
    Walk walk{text.data(), text.size(), at, places};
    if (text.size() - at >= m_needle.size() && !places.empty()) {
        if (m_level == Avx2)
            ScanAvx2(walk);
        else if (m_level == Sse2)
            ScanSse2(walk);
        ScanSingle(walk); // the rest, and all of it without vectors
    }
    at = walk.At;
    return walk.Found;
}

qsizetype ByteScan::First(QByteArrayView text, qsizetype at) const
{
    quint32 place = 0;
    return Next(text, at, {&place, 1}) == 1 ? qsizetype(place) : -1;
}

} // namespace qb
