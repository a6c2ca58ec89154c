#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <array>
#include <span>

namespace qb {

/// Looks for one sequence of bytes in texts, many bytes at a time: two of its bytes, the rarest ones, are compared with
/// a whole vector of the text, and what fits is looked at.
class ByteScan {
public:
    enum Case {
        Exact,
        FoldsAscii ///< capitals and small letters of ASCII are the same
    };
    /// What the machine can do at once: nothing more, 16 bytes, 32 bytes.
    enum Level { Single, Sse2, Avx2 };

    /// @p needle is not empty.
    explicit ByteScan(QByteArrayView needle, Case sensitivity = Exact, Level atMost = Best());
    static Level Best();

    qsizetype Length() const { return m_needle.size(); }

    /// Writes the places of the needle in @p text from @p at on to @p places, none within another; returns how many. As
    /// long as it returns as many as there is room for, there may be more: @p at is where to go on.
    size_t Next(QByteArrayView text, qsizetype& at, std::span<quint32> places) const;

    /// How often a needle of one byte is in @p text.
    qsizetype CountByte(QByteArrayView text) const;

    /// The first place from @p at on, or -1.
    qsizetype First(QByteArrayView text, qsizetype at = 0) const;

private:
    /// Where a scan stands.
    struct Walk {
        const char* Text;
        qsizetype Size; ///< of the text
        qsizetype At;   ///< the next place to look at
        std::span<quint32> Places;
        size_t Found = 0;
    };
    bool MatchesAt(const char* place) const;
    bool TakeMask(Walk& walk, quint32 mask) const;
    void ScanSingle(Walk& walk) const;
    void ScanSse2(Walk& walk) const;
    void ScanAvx2(Walk& walk) const;
    qsizetype CountSse2(QByteArrayView text, qsizetype& at) const;
    qsizetype CountAvx2(QByteArrayView text, qsizetype& at) const;
    void ChooseAnchors();

    struct Anchor {
        qsizetype Offset = 0;
        uchar Byte = 0;
        uchar CaseBit = 0; ///< is set in each byte of the text before it is compared
    };

    QByteArray m_needle; ///< small letters only where case folds
    Case m_case;
    Level m_level;
    std::array<Anchor, 2> m_anchors; ///< the same one twice in a needle of one byte
};

} // namespace qb
