#pragma once

#include "text/TokenKind.h"

#include <QString>
#include <optional>
#include <utility>
#include <vector>

namespace qb {

/// Words and what they are, found without regard to how many there are.
class WordKinds {
public:
    /// The first kind of a word counts.
    void Add(QStringView word, TokenKind kind);
    /// To be called once, when all words are in. @p folds: the case of letters doesn't count.
    void Finish(bool folds);
    /// Nothing for a word that is not here.
    std::optional<TokenKind> Find(QStringView word) const;
    bool IsEmpty() const { return m_words.empty(); }

private:
    struct Slot {
        quint32 Hash = 0;
        qint32 Index = -1;
    };
    quint32 HashOf(QStringView word) const;

    std::vector<std::pair<QString, TokenKind>> m_words;
    std::vector<Slot> m_slots; ///< a power of two of them, half of them free
    bool m_folds = false;
};

} // namespace qb
