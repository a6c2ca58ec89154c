#pragma once

#include "find/FindRun.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/Library.h"
#include "web/LocalPages.h"

#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <map>
#include <set>

namespace qb::test {

/// A search as it is meant, character by character and text by text, with nothing of the engine in it: what the engine
/// finds is held against it.
class FindReference {
public:
    struct Text {
        FindField Field;
        QString Plain;                   ///< lines end with LF
        std::array<QString, 4> Folded{}; ///< by whether case, and accents, fold: 1 and 2
    };
    struct Item {
        qint64 Id, Parent, LastChanged;
        qint32 Status, Rating;
        QString Language;
        std::vector<Text> Texts;
    };
    struct Hit {
        qint64 Id;
        int Rank;
        std::array<quint32, FindFields> Counters;
        friend bool operator==(const Hit&, const Hit&) = default;
    };

    explicit FindReference(Library& library)
    {
        const QString libraryLanguage =
            library.QueryValue(QStringLiteral("SELECT LanguageUsed FROM Properties")).ToText();
        Statement rows = library.Query(QStringLiteral(
            "SELECT ID, ParentID, LastChanged, ItemStatus, ItemRating, Title, Description, Code, Notes, Example, Info, "
            "HTMLPage FROM Items"));
        while (rows.Step()) {
            Item item{rows.Long(0),
                      rows.Long(1),
                      rows.Long(2),
                      qint32(rows.Long(3)),
                      qint32(rows.Long(4)),
                      libraryLanguage,
                      {}};
            static const QRegularExpression language(QStringLiteral("\\{\\\\\\*\\\\qblang ([^}]*)\\}"));
            for (const int column : {7, 9}) {
                const QRegularExpressionMatch match = language.match(rows.Text(column));
                if (match.hasMatch()) {
                    item.Language = match.captured(1);
                    break;
                }
            }
            const std::pair<int, FindField> columns[] = {{5, FindField::Title}, {6, FindField::Description},
                                                         {7, FindField::Code},  {8, FindField::Notes},
                                                         {9, FindField::Usage}, {10, FindField::Links}};
            for (const auto& [column, field] : columns)
                Add(item, field, rows.Text(column));
            if (rows.Long(11) != 0)
                AddFile(item, FindField::WebPage,
                        library.HTMLFolder() + QString::number(item.Id) + QStringLiteral(".htm"));
            m_items.push_back(std::move(item));
        }
        Statement files = library.Query(QStringLiteral("SELECT CodeID, ID, Title, Description FROM Files"));
        while (files.Step()) {
            Item& item = Of(files.Long(0));
            Add(item, FindField::FileNames, files.Text(2));
            Add(item, FindField::FileNames, files.Text(3));
            AddFile(item, FindField::FileTexts,
                    library.FilesFolder() + files.Text(1) + QStringLiteral(" - ") + files.Text(2));
        }
        Statement links = library.Query(QStringLiteral("SELECT ItemID, Note FROM ItemLinks"));
        while (links.Step())
            Add(Of(links.Long(0)), FindField::Links, links.Text(1));
    }

    const std::vector<Item>& Items() const { return m_items; }

    std::vector<Hit> Find(const FindQuery& query) const
    {
        std::vector<std::pair<Hit, qint64>> hits;
        for (const Item& item : m_items) {
            Hit hit{item.Id, 0, {}};
            if (IsSelected(query, item) && Search(query, item, hit))
                hits.emplace_back(hit, item.LastChanged);
        }
        std::sort(hits.begin(), hits.end(), [](const auto& a, const auto& b) {
            return std::tuple(a.first.Rank, -a.second, a.first.Id) < std::tuple(b.first.Rank, -b.second, b.first.Id);
        });
        std::vector<Hit> result;
        for (const auto& [hit, changed] : hits)
            result.push_back(hit);
        return result;
    }

    static char32_t FoldedCharacter(char32_t character, unsigned folding)
    {
        if (folding & 2u) {
            if (QChar::category(character) == QChar::Mark_NonSpacing)
                return 0;
            std::u32string kept;
            const QString decomposed = QString::fromUcs4(&character, 1).normalized(QString::NormalizationForm_D);
            for (const char32_t part : decomposed.toStdU32String()) {
                if (QChar::category(part) != QChar::Mark_NonSpacing)
                    kept += part;
            }
            if (kept.size() == 1)
                character = kept[0];
        }
        return folding & 1u ? QChar::toCaseFolded(character) : character;
    }

    static std::u32string Fold(const QString& text, unsigned folding)
    {
        std::u32string folded;
        for (const char32_t character : text.toStdU32String()) {
            if (const char32_t one = FoldedCharacter(character, folding))
                folded += one;
        }
        return folded;
    }

private:
    struct Count {
        quint32 Times = 0;
        bool Whole = false;
    };

    Item& Of(qint64 id)
    {
        return *std::find_if(m_items.begin(), m_items.end(), [id](const Item& item) { return item.Id == id; });
    }

    static void Add(Item& item, FindField field, const QString& stored)
    {
        Text text{field, PlainTextFromRtf(stored).replace(QStringLiteral("\r\n"), QStringLiteral("\n")), {}};
        for (unsigned folding = 0; folding < 4; ++folding)
            text.Folded[folding] = QString::fromStdU32String(Fold(text.Plain, folding));
        item.Texts.push_back(std::move(text));
    }

    static void AddFile(Item& item, FindField field, const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return;
        QString text = QString::fromUtf8(file.readAll());
        if (text.contains(QChar(u'\0')))
            return;
        if (field == FindField::WebPage) { // the pages of the tests have no more markup than this
            text.remove(QRegularExpression(QStringLiteral("<[^>]*>")));
            text.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
        }
        Add(item, field, text);
    }

    static bool IsWordCharacter(char32_t character)
    {
        return character == U'_' || QChar::isLetterOrNumber(character) || QChar::isMark(character);
    }

    /// Whether a character that may be one of a word stands beside an end of the match that is one.
    static bool IsWhole(const std::u32string& text, size_t begin, size_t end)
    {
        const bool before = begin > 0 && IsWordCharacter(text[begin - 1]) && IsWordCharacter(text[begin]);
        const bool behind = end < text.size() && IsWordCharacter(text[end]) && IsWordCharacter(text[end - 1]);
        return !before && !behind;
    }

    static bool IsWholeIn(const QString& text, qsizetype begin, qsizetype end)
    {
        const std::u32string before = CharactersIn(text, std::max<qsizetype>(begin - 4, 0), begin);
        const std::u32string own = CharactersIn(text, begin, end);
        const std::u32string behind = CharactersIn(text, end, end + 4);
        return IsWhole(before + own + behind, before.size(), before.size() + own.size());
    }

    static Count CountIn(const QString& text, const QString& needle, bool wholeOnly)
    {
        Count count;
        for (qsizetype at = text.indexOf(needle); at >= 0; at = text.indexOf(needle, at + needle.size())) {
            const bool whole = IsWholeIn(text, at, at + needle.size());
            if (!whole && wholeOnly)
                continue;
            ++count.Times;
            count.Whole = count.Whole || whole;
        }
        return count;
    }

    static QRegularExpression ExpressionOf(const FindQuery& query)
    {
        QRegularExpression::PatternOptions options = QRegularExpression::MultilineOption
                                                     | QRegularExpression::UseUnicodePropertiesOption;
        if (!CountsCapitals(query))
            options |= QRegularExpression::CaseInsensitiveOption;
        return QRegularExpression(
            query.WholeWord ? QStringLiteral("(?<!\\w)(?:%1)(?!\\w)").arg(query.Text) : query.Text, options);
    }

    static std::u32string CharactersIn(const QString& text, qsizetype begin, qsizetype end)
    {
        return text.mid(begin, end - begin).toStdU32String();
    }

    static Count CountMatches(const QString& text, const QRegularExpression& expression)
    {
        QRegularExpressionMatchIterator matches = expression.globalMatch(text);
        Count count;
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            if (match.capturedLength() == 0)
                continue;
            ++count.Times;
            if (count.Whole)
                continue;
            count.Whole = IsWholeIn(text, match.capturedStart(), match.capturedEnd());
        }
        return count;
    }

    static bool CountsCapitals(const FindQuery& query)
    {
        if (query.Case != FindCase::Smart)
            return query.Case == FindCase::Exact;
        QString text = query.Text;
        if (query.Mode == FindMode::Expression)
            text.remove(QRegularExpression(QStringLiteral("\\\\.")));
        const std::u32string characters = text.toStdU32String();
        return std::any_of(characters.begin(), characters.end(), [](char32_t character) {
            const QChar::Category category = QChar::category(character);
            return category == QChar::Letter_Uppercase || category == QChar::Letter_Titlecase;
        });
    }

    bool IsSelected(const FindQuery& query, const Item& item) const
    {
        if (query.Branch != 0) {
            std::set<qint64> seen;
            qint64 at = item.Id;
            while (at != query.Branch && at != 0 && seen.insert(at).second) {
                const auto parent = std::find_if(m_items.begin(), m_items.end(),
                                                 [at](const Item& one) { return one.Id == at; });
                at = parent == m_items.end() ? 0 : parent->Parent;
            }
            if (at != query.Branch)
                return false;
        }
        return (query.ChangedSince.IsNone() || item.LastChanged >= query.ChangedSince.Seconds())
               && (!query.Status || *query.Status == item.Status) && (!query.Rating || *query.Rating == item.Rating)
               && (query.Language.isEmpty() || item.Language.compare(query.Language, Qt::CaseInsensitive) == 0);
    }

    static bool Search(const FindQuery& query, const Item& item, Hit& hit)
    {
        QStringList words{query.Text};
        if (query.Mode == FindMode::AllWords) {
            words = query.Text.split(
                QRegularExpression(QStringLiteral("\\s+"), QRegularExpression::UseUnicodePropertiesOption),
                Qt::SkipEmptyParts);
            words.removeDuplicates();
        }
        const unsigned folding = (CountsCapitals(query) ? 0u : 1u) | (query.FoldAccents ? 2u : 0u);
        const QRegularExpression expression = query.Mode == FindMode::Expression ? ExpressionOf(query)
                                                                                 : QRegularExpression();
        bool inTitle = true;
        bool wholeInTitle = true;
        bool whole = true;
        for (const QString& word : std::as_const(words)) {
            QString needle = QString::fromStdU32String(Fold(word, folding));
            if (needle.isEmpty())
                needle = QString::fromStdU32String(Fold(word, folding & 1u));
            Count all;
            Count title;
            for (const Text& text : item.Texts) {
                if (!(query.Fields & BitOf(text.Field)))
                    continue;
                const Count count = query.Mode == FindMode::Expression
                                        ? CountMatches(text.Plain, expression)
                                        : CountIn(text.Folded[folding], needle, query.WholeWord);
                hit.Counters[size_t(text.Field)] += count.Times;
                Count& into = text.Field == FindField::Title ? title : all;
                into.Times += count.Times;
                into.Whole = into.Whole || count.Whole;
            }
            if (all.Times + title.Times == 0)
                return false;
            inTitle = inTitle && title.Times > 0;
            wholeInTitle = wholeInTitle && title.Whole;
            whole = whole && (all.Whole || title.Whole);
        }
        hit.Rank = wholeInTitle ? 0 : inTitle ? 1 : whole ? 2 : 3;
        return true;
    }

    std::vector<Item> m_items;
};

} // namespace qb::test
