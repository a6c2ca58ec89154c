#include "text/WordKinds.h"

namespace qb {

quint32 WordKinds::HashOf(QStringView word) const
{
    constexpr quint32 Offset = 2166136261u;
    constexpr quint32 Prime = 16777619u;
    quint32 hash = Offset;
    for (const QChar character : word) {
        const char16_t unit = m_folds ? character.toCaseFolded().unicode() : character.unicode();
        hash = (hash ^ unit) * Prime;
    }
    return hash ^ (hash >> 15);
}

void WordKinds::Add(QStringView word, TokenKind kind)
{
    m_words.emplace_back(word.toString(), kind);
}

void WordKinds::Finish(bool folds)
{
    m_folds = folds;
    size_t size = 16;
    while (size < 2 * m_words.size())
        size *= 2;
    m_slots.assign(size, {});
    for (size_t i = 0; i < m_words.size(); ++i) {
        if (Find(m_words[i].first))
            continue;
        const quint32 hash = HashOf(m_words[i].first);
        size_t place = hash & (size - 1);
        while (m_slots[place].Index >= 0)
            place = (place + 1) & (size - 1);
        m_slots[place] = {hash, qint32(i)};
    }
}

std::optional<TokenKind> WordKinds::Find(QStringView word) const
{
    if (m_slots.empty())
        return std::nullopt;
    const quint32 hash = HashOf(word);
    const Qt::CaseSensitivity sensitivity = m_folds ? Qt::CaseInsensitive : Qt::CaseSensitive;
    for (size_t place = hash & (m_slots.size() - 1); m_slots[place].Index >= 0;
         place = (place + 1) & (m_slots.size() - 1)) {
        if (m_slots[place].Hash != hash)
            continue;
        const auto& [known, kind] = m_words[size_t(m_slots[place].Index)];
        if (word.compare(known, sensitivity) == 0)
            return kind;
    }
    return std::nullopt;
}

} // namespace qb
