#include "find/FuzzyTitles.h"

#include "find/FoldText.h"

#include <algorithm>

namespace qb {

namespace {

// What a letter, or a word, is worth where it stands.
constexpr int Letter = 1;
constexpr int BesideTheLast = 4;
constexpr int AtBeginOfWord = 6;
constexpr int InOnePiece = 20;
constexpr int WholeWord = 12;
constexpr int AtBeginOfTitle = 8;
constexpr int LongestCounted = 60; ///< characters of a title; shorter ones are worth more

QChar Folded(QChar character)
{
    constexpr char16_t FirstBeyondAscii = 0x80;
    if (character.unicode() < FirstBeyondAscii)
        return character.toLower(); // without the tables, which take a while to make
    const char32_t folded = FoldedCharacter(character.unicode(), Folding::All);
    return folded == 0 || folded > 0xffff ? character : QChar(char16_t(folded));
}

} // namespace

quint64 FuzzyTitles::LettersOf(QStringView text)
{
    quint64 letters = 0;
    for (const QChar character : text)
        letters |= quint64(1) << (character.unicode() % 64);
    return letters;
}

FuzzyTitles::FuzzyTitles(const std::vector<Title>& titles)
{
    m_entries.reserve(titles.size());
    for (const Title& title : titles) {
        const auto begin = qint32(m_texts.size());
        m_texts += title.Text;
        for (const QChar character : title.Text)
            m_folded += Folded(character);
        const QStringView folded = QStringView(m_folded).mid(begin);
        m_entries.push_back({title.Id, LettersOf(folded), begin, qint32(title.Text.size())});
    }
}

QString FuzzyTitles::TitleOf(qsizetype number) const
{
    const Entry& entry = m_entries[size_t(number)];
    return m_texts.mid(entry.Begin, entry.Length);
}

/// Also a capital behind a small letter begins one.
bool FuzzyTitles::BeginsWord(const Entry& entry, qsizetype at) const
{
    const qsizetype place = entry.Begin + at;
    if (at == 0)
        return true;
    const QChar before = m_texts[place - 1];
    const QChar own = m_texts[place];
    return (!before.isLetterOrNumber() && own.isLetterOrNumber()) || (before.isLower() && own.isUpper());
}

/// 0 when the title lacks a letter of the word.
int FuzzyTitles::ScoreWord(const Entry& entry, const QString& word, std::vector<qsizetype>* places) const
{
    const QStringView title = QStringView(m_folded).mid(entry.Begin, entry.Length);
    int best = 0;
    qsizetype bestPlace = -1;
    for (qsizetype at = title.indexOf(word); at >= 0; at = title.indexOf(word, at + 1)) {
        const bool begins = BeginsWord(entry, at);
        const qsizetype end = at + word.size();
        const bool ends = end == title.size() || BeginsWord(entry, end) || !title[end].isLetterOrNumber();
        const int score = InOnePiece + int(word.size()) * (Letter + BesideTheLast) + (begins ? AtBeginOfWord : 0)
                          + (begins && ends ? WholeWord : 0) + (at == 0 ? AtBeginOfTitle : 0);
        if (score > best) {
            best = score;
            bestPlace = at;
        }
    }
    if (best > 0) {
        for (qsizetype i = 0; places && i < word.size(); ++i)
            places->push_back(bestPlace + i);
        return best;
    }
    const int first = ScoreSpread(entry, word, false, nullptr);
    if (first == 0)
        return 0;
    const int atBegins = ScoreSpread(entry, word, true, nullptr);
    if (places)
        ScoreSpread(entry, word, atBegins >= first, places);
    return std::max(first, atBegins);
}

/// Of letters that are spread: each where it comes first, or, @p atBegins, where it begins a word if it does anywhere.
int FuzzyTitles::ScoreSpread(const Entry& entry, const QString& word, bool atBegins,
                             std::vector<qsizetype>* places) const
{
    const QStringView title = QStringView(m_folded).mid(entry.Begin, entry.Length);
    qsizetype last = -2;
    int score = 0;
    for (const QChar character : word) {
        qsizetype next = title.indexOf(character, std::max<qsizetype>(0, last + 1));
        for (qsizetype at = next; atBegins && at >= 0 && next != last + 1; at = title.indexOf(character, at + 1)) {
            if (BeginsWord(entry, at)) {
                next = at;
                break;
            }
        }
        if (next < 0)
            return 0;
        score += Letter + (next == last + 1 ? BesideTheLast : 0) + (BeginsWord(entry, next) ? AtBeginOfWord : 0);
        if (places)
            places->push_back(next);
        last = next;
    }
    return score;
}

int FuzzyTitles::Score(const Entry& entry, const std::vector<Word>& words, std::vector<qsizetype>* places) const
{
    int score = 0;
    for (const Word& word : words) {
        if ((word.Letters & ~entry.Letters) != 0)
            return 0;
        const int own = ScoreWord(entry, word.Text, places);
        if (own == 0)
            return 0;
        score += own;
    }
    constexpr int Scale = 64; // the length decides only between titles that are as good otherwise
    return score * Scale + LongestCounted - std::min(int(entry.Length), LongestCounted);
}

std::vector<FuzzyTitles::Match> FuzzyTitles::Find(const QString& typed, size_t most) const
{
    std::vector<Word> words;
    for (const QString& part : typed.simplified().split(u' ', Qt::SkipEmptyParts)) {
        QString folded;
        for (const QChar character : part)
            folded += Folded(character);
        words.push_back({folded, LettersOf(folded)});
    }
    std::vector<Match> matches;
    if (words.empty())
        return matches;
    for (size_t i = 0; i < m_entries.size(); ++i) {
        if (const int score = Score(m_entries[i], words, nullptr))
            matches.push_back({m_entries[i].Id, qsizetype(i), score, {}});
    }
    const auto isBetter = [](const Match& a, const Match& b) {
        return a.Score != b.Score ? a.Score > b.Score : a.Number < b.Number;
    };
    const size_t count = std::min(most, matches.size());
    std::partial_sort(matches.begin(), matches.begin() + qsizetype(count), matches.end(), isBetter);
    matches.resize(count);
    for (Match& match : matches) {
        Score(m_entries[size_t(match.Number)], words, &match.Places);
        std::sort(match.Places.begin(), match.Places.end());
        match.Places.erase(std::unique(match.Places.begin(), match.Places.end()), match.Places.end());
    }
    return matches;
}

} // namespace qb
