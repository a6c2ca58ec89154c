#include "text/KeywordSet.h"

namespace qb {

namespace {

/// Case of the letters A to Z is taken out, which is all that words of programs are made of.
size_t HashOf(QStringView word)
{
    constexpr size_t Offset = 14695981039346656037u;
    constexpr size_t Prime = 1099511628211u;
    size_t hash = Offset;
    for (const QChar character : word) {
        const char16_t unit = character.unicode();
        const char16_t lower = unit >= u'A' && unit <= u'Z' ? char16_t(unit | 0x20) : unit;
        hash = (hash ^ lower) * Prime;
    }
    return hash;
}

} // namespace

KeywordSet::KeywordSet(const QString& text) : m_text(text)
{
    size_t size = 16;
    while (size < 2 * size_t(text.count(u'*')))
        size *= 2;
    m_slots.resize(size);
    for (qsizetype begin = text.indexOf(u'*') + 1; begin > 0 && begin < text.size();) {
        const qsizetype end = text.indexOf(u'*', begin);
        if (end < 0)
            break;
        const QStringView word = QStringView(text).sliced(begin, end - begin);
        if (!word.isEmpty() && Find(word).isNull()) { // the first spelling counts
            const size_t hash = HashOf(word);
            size_t place = hash & (size - 1);
            while (m_slots[place].Length != 0)
                place = (place + 1) & (size - 1);
            m_slots[place] = {hash, begin, word.size()};
        }
        begin = end + 1;
    }
}

QStringView KeywordSet::Find(QStringView word) const
{
    if (m_slots.empty())
        return {};
    const size_t hash = HashOf(word);
    for (size_t place = hash & (m_slots.size() - 1); m_slots[place].Length != 0;
         place = (place + 1) & (m_slots.size() - 1)) {
        const Slot& slot = m_slots[place];
        if (slot.Hash != hash || slot.Length != word.size())
            continue;
        const QStringView known = QStringView(m_text).sliced(slot.Begin, slot.Length);
        if (known.compare(word, Qt::CaseInsensitive) == 0)
            return known;
    }
    return {};
}

} // namespace qb
