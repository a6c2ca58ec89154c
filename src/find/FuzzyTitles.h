#pragma once

#include <QString>
#include <vector>

namespace qb {

/// Titles that are found by some of their letters: each word of what is typed has its letters in the title, in order
/// but
/// not side by side; the words may come in any order. Case and accents don't count. For one thread at a time.
class FuzzyTitles {
public:
    struct Title {
        qint64 Id = 0;
        QString Text;
    };
    struct Match {
        qint64 Id = 0;
        qsizetype Number = 0;          ///< among the titles
        int Score = 0;                 ///< the higher the better
        std::vector<qsizetype> Places; ///< of the letters in the title, in order, for highlighting
    };

    FuzzyTitles() = default;
    explicit FuzzyTitles(const std::vector<Title>& titles);

    /// The best @p most matches, the best first: whole words before beginnings of words before letters that are spread,
    /// short titles before long ones. An empty text finds nothing.
    std::vector<Match> Find(const QString& typed, size_t most) const;

    QString TitleOf(qsizetype number) const;
    qsizetype Count() const { return qsizetype(m_entries.size()); }

private:
    struct Entry {
        qint64 Id;
        quint64 Letters; ///< a bit for each kind of letter in it
        qint32 Begin;
        qint32 Length;
    };
    struct Word {
        QString Text;
        quint64 Letters;
    };

    static quint64 LettersOf(QStringView text);
    int Score(const Entry& entry, const std::vector<Word>& words, std::vector<qsizetype>* places) const;
    int ScoreWord(const Entry& entry, const QString& word, std::vector<qsizetype>* places) const;
    int ScoreSpread(const Entry& entry, const QString& word, bool atBegins, std::vector<qsizetype>* places) const;
    bool BeginsWord(const Entry& entry, qsizetype at) const;

    QString m_texts;  ///< all titles, one behind the other
    QString m_folded; ///< the same, folded character by character
    std::vector<Entry> m_entries;
};

} // namespace qb
