#pragma once

#include <QString>
#include <vector>

namespace qb {

/// A set of keywords in the form `*word*word*`. A word is a member when `*`, the word and `*` stand
/// in the text, without regard to case; the spelling of the set is found with it. The time of a
/// look-up does not depend on the number of words.
class KeywordSet {
public:
    KeywordSet() = default;
    /// What stands before the first asterisk and behind the last one is no word. Of two spellings of a word the first
    /// counts.
    explicit KeywordSet(const QString& text);

    /// All of it as it was given, repeated words too.
    const QString& Text() const { return m_text; }
    /// The word in the set's own spelling, or null.
    QStringView Find(QStringView word) const;

private:
    struct Slot {
        size_t Hash = 0;
        qsizetype Begin = 0;
        qsizetype Length = 0; ///< 0: free
    };

    QString m_text;
    std::vector<Slot> m_slots; ///< a power of two of them, half of them free
};

} // namespace qb
