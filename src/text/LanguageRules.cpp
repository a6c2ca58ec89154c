#include "text/LanguageRules.h"

#include <QHash>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct FormRow {
    QLatin1StringView Key;
    ScanRule::Form Form;
    TokenKind Paint;
    int Marks; ///< openers, closers and names that stand before the options; 0: all that stands there
};
constexpr FormRow FormRows[] = {
    {"line"_L1, ScanRule::Form::Line, TokenKind::Comment, 1},
    {"block"_L1, ScanRule::Form::Block, TokenKind::Comment, 2},
    {"string"_L1, ScanRule::Form::String, TokenKind::String, 2},
    {"raw"_L1, ScanRule::Form::Raw, TokenKind::String, 2},
    {"heredoc"_L1, ScanRule::Form::Heredoc, TokenKind::String, 1},
    {"char"_L1, ScanRule::Form::Character, TokenKind::String, 1},
    {"regex"_L1, ScanRule::Form::Regex, TokenKind::String, 1},
    {"quote"_L1, ScanRule::Form::Quote, TokenKind::String, 1},
    {"sigil"_L1, ScanRule::Form::Sigil, TokenKind::Variable, 1},
    {"number-prefix"_L1, ScanRule::Form::NumberPrefix, TokenKind::Number, 0},
    {"enter"_L1, ScanRule::Form::Enter, TokenKind::Text, 2},
    {"leave"_L1, ScanRule::Form::Leave, TokenKind::Text, 1},
    {"skip"_L1, ScanRule::Form::Skip, TokenKind::Text, 0},
};

struct FlagRow {
    QLatin1StringView Name;
    bool ScanRule::*Flag;
};
constexpr FlagRow FlagRows[] = {
    {"not-after-word"_L1, &ScanRule::NotAfterWord},
    {"whole-word"_L1, &ScanRule::WholeWord},
    {"lines"_L1, &ScanRule::Lines},
    {"nested"_L1, &ScanRule::Nested},
    {"spaced"_L1, &ScanRule::Spaced},
    {"loose"_L1, &ScanRule::Loose},
    {"braces"_L1, &ScanRule::Braces},
    {"dotted"_L1, &ScanRule::Dotted},
    {"leave"_L1, &ScanRule::Leaves},
};

struct PlaceRow {
    QLatin1StringView Name;
    ScanRule::Place Where;
};
constexpr PlaceRow PlaceRows[] = {
    {"after-blank"_L1, ScanRule::Place::AfterBlank},
    {"first"_L1, ScanRule::Place::FirstInLine},
    {"at-line-begin"_L1, ScanRule::Place::LineBegin},
};

/// An option "name=text".
struct TextRow {
    QLatin1StringView Name;
    QString ScanRule::*Text;
};
constexpr TextRow TextRows[] = {
    {"follow"_L1, &ScanRule::Follow},     {"not-follow"_L1, &ScanRule::NotFollow}, {"special"_L1, &ScanRule::Specials},
    {"indented"_L1, &ScanRule::Specials}, {"enter"_L1, &ScanRule::ContextName},
};

/// An option "name=value". False for a value that it can't have.
struct OptionRow {
    QLatin1StringView Name;
    bool (*Set)(ScanRule&, const QString& value);
};
constexpr OptionRow OptionRows[] = {
    {"kind"_L1,
     [](ScanRule& rule, const QString& value) {
         const std::optional<TokenKind> kind = TokenKindNamed(value);
         rule.Paint = kind.value_or(rule.Paint);
         return kind.has_value();
     }},
    {"escape"_L1,
     [](ScanRule& rule, const QString& value) {
         rule.Doubled = value == "double"_L1;
         if (!rule.Doubled)
             rule.Escape = value.front();
         return rule.Doubled || value.size() == 1;
     }},
    {"mark"_L1,
     [](ScanRule& rule, const QString& value) {
         static const QHash<QString, ScanRule::MarkOf> marks{{u"word"_s, ScanRule::MarkOf::Word},
                                                             {u"hash"_s, ScanRule::MarkOf::Hash},
                                                             {u"equals"_s, ScanRule::MarkOf::Equals},
                                                             {u"any"_s, ScanRule::MarkOf::Any}};
         rule.Mark = marks.value(value);
         return marks.contains(value);
     }},
    {"interpolate"_L1,
     [](ScanRule& rule, const QString& value) {
         const qsizetype comma = value.lastIndexOf(u',');
         rule.InterpolationOpen = value.left(comma);
         rule.InterpolationClose = value.mid(comma + 1);
         return comma > 0 && comma + 1 < value.size();
     }},
    {"parts"_L1,
     [](ScanRule& rule, const QString& value) {
         rule.Parts = value == "2"_L1 ? 2 : 1;
         return value == "1"_L1 || value == "2"_L1;
     }},
    {"after"_L1,
     [](ScanRule& rule, const QString& value) {
         rule.After = value.split(u',', Qt::SkipEmptyParts);
         return true;
     }},
};

template <class Row, size_t Count>
const Row* RowNamed(const Row (&rows)[Count], QStringView name)
{
    const Row* row = std::find_if(std::begin(rows), std::end(rows),
                                  [name](const Row& one) { return name == one.Name; });
    return row == std::end(rows) ? nullptr : row;
}

/// True when @p word is an option that the rule has taken.
bool TakeOption(ScanRule& rule, const QString& word)
{
    if (const FlagRow* row = RowNamed(FlagRows, word)) {
        rule.*row->Flag = true;
        return true;
    }
    if (const PlaceRow* row = RowNamed(PlaceRows, word)) {
        rule.Where = row->Where;
        return true;
    }
    const qsizetype equals = word.indexOf(u'=');
    if (equals <= 0 || equals + 1 >= word.size())
        return false;
    const QStringView name = QStringView(word).left(equals);
    const QString value = word.mid(equals + 1);
    if (const TextRow* row = RowNamed(TextRows, name)) {
        rule.*row->Text = value;
        return true;
    }
    const OptionRow* row = RowNamed(OptionRows, name);
    return row && row->Set(rule, value);
}

} // namespace

/// Reads the lines of a text of rules into LanguageRules.
class LanguageRulesReader {
public:
    explicit LanguageRulesReader(LanguageRules& rules) : m_rules(rules) {}

    void Read(const QString& text)
    {
        int number = 0;
        for (const QStringView line : QStringView(text).split(u'\n')) {
            ++number;
            const QStringView trimmed = line.trimmed();
            if (trimmed.isEmpty() || trimmed == u"#" || trimmed.startsWith(u"# "))
                continue;
            if (!ReadLine(trimmed.toString()))
                m_rules.m_problems << u"line %1: '%2' is no rule."_s.arg(number).arg(trimmed.left(80));
        }
    }

    void Finish(const QStringList& keywords, const QStringList& plain)
    {
        for (ScanContext& context : m_rules.m_contexts)
            Include(context, 0);
        const size_t count = m_rules.m_contexts.size();
        for (size_t i = 0; i < count; ++i) {
            ScanContext& context = m_rules.m_contexts[i];
            AddWords(context, i, keywords, plain);
            FinishOpeners(context);
        }
    }

private:
    bool ReadLine(const QString& line)
    {
        const qsizetype colon = line.indexOf(u": "_s);
        if (colon <= 0)
            return false;
        const QString key = line.left(colon);
        const QString value = line.mid(colon + 2).trimmed();
        if (key.startsWith("words "_L1))
            return ReadWords(key.mid(6), value);
        if (key == "context"_L1)
            return BeginContext(value);
        if (key == "match"_L1)
            return ReadMatch(value);
        const auto form = std::find_if(std::begin(FormRows), std::end(FormRows),
                                       [&](const FormRow& row) { return key == row.Key; });
        return form != std::end(FormRows) ? ReadRule(*form, value) : ReadGeneral(key, value);
    }

    bool ReadGeneral(const QString& key, const QString& value)
    {
        if (key == "case"_L1) {
            m_rules.m_folds = value == "fold"_L1;
            return m_rules.m_folds || value == "exact"_L1;
        }
        if (key == "word"_L1 || key == "word-inner"_L1) {
            constexpr quint8 Both = LanguageRules::WordStartBit | LanguageRules::WordPartBit;
            for (const QChar character : value) {
                if (character.unicode() >= m_rules.m_classes.size() || character == u' ')
                    continue;
                quint8& bits = m_rules.m_classes[character.unicode()];
                bits = quint8(bits | (key == "word"_L1 ? Both : LanguageRules::WordPartBit));
            }
            return true;
        }
        if (key == "member"_L1) {
            m_rules.m_members = value.split(u' ', Qt::SkipEmptyParts);
            return true;
        }
        if (key == "number-separator"_L1) {
            m_rules.m_numberSeparators += value;
            return true;
        }
        // For those who choose a language by a file's name, and for texts without other rules.
        return key == "files"_L1 || key == "interpreter"_L1 || key == "spelling"_L1 || key == "sample"_L1
               || key == "tells"_L1;
    }

    bool ReadWords(const QString& kindName, const QString& value)
    {
        const std::optional<TokenKind> kind = TokenKindNamed(kindName);
        if (!kind)
            return false;
        for (const QString& word : value.split(u' ', Qt::SkipEmptyParts))
            Words().emplace_back(word, *kind);
        m_rules.m_paints = true;
        return true;
    }

    std::vector<std::pair<QString, TokenKind>>& Words() { return m_words[m_rules.m_contexts.size() - 1]; }
    std::vector<ScanRule>& Rules() { return m_rules.m_contexts.back().Rules; }

    bool BeginContext(const QString& value)
    {
        const QStringList words = value.split(u' ', Qt::SkipEmptyParts);
        if (words.isEmpty())
            return false;
        ScanContext context;
        context.Name = words[0];
        bool understood = true;
        for (const QString& word : words.mid(1)) {
            if (word == "line"_L1)
                context.UntilLineEnd = true;
            else if (word == "words=none"_L1)
                context.HasWords = false;
            else if (word == "numbers=none"_L1)
                context.HasNumbers = false;
            else if (word.startsWith("continue="_L1) && word.size() == 10)
                context.Continues = word.back();
            else if (word.startsWith("include="_L1))
                context.Includes = word.mid(8);
            else if (const auto kind = word.startsWith("kind="_L1) ? TokenKindNamed(word.mid(5)) : std::nullopt)
                context.Paint = *kind;
            else
                understood = false;
        }
        if (!understood)
            return false;
        // "main" that is named goes on with the context that every language has.
        if (context.Name == "main"_L1 && m_rules.m_contexts.size() == 1) {
            context.Rules = std::move(m_rules.m_contexts[0].Rules);
            m_rules.m_contexts[0] = std::move(context);
            return true;
        }
        m_rules.m_contexts.push_back(std::move(context));
        m_words.emplace_back();
        return true;
    }

    bool ReadMatch(const QString& value)
    {
        ScanRule rule;
        rule.Kind = ScanRule::Form::Match;
        QString rest = value;
        const auto next = [&rest] {
            const qsizetype blank = rest.indexOf(u' ');
            return blank < 0 ? rest : rest.left(blank);
        };
        const auto drop = [&rest](const QString& word) { rest = rest.mid(word.size()).trimmed(); };
        const std::optional<TokenKind> kind = TokenKindNamed(next());
        if (!kind)
            return false;
        rule.Paint = *kind;
        drop(next());
        for (QString word = next(); !rest.isEmpty(); word = next()) {
            if (word.startsWith("at="_L1) && word.size() > 3)
                rule.Open = word.mid(3);
            else if (!TakeOption(rule, word))
                break;
            drop(word);
        }
        if (rest.isEmpty() || (rule.Open.isEmpty() && rule.Where == ScanRule::Place::Anywhere))
            return false;
        rule.Pattern = Expression(rest, m_rules.m_folds ? Expression::Folds : Expression::Exact);
        if (!rule.Pattern.IsValid())
            return false;
        Rules().push_back(std::move(rule));
        m_rules.m_paints = true;
        return true;
    }

    bool ReadRule(const FormRow& form, const QString& value)
    {
        ScanRule rule;
        rule.Kind = form.Form;
        rule.Paint = form.Paint;
        const QStringList words = value.split(u' ', Qt::SkipEmptyParts);
        const qsizetype marks = form.Marks == 0 ? words.size() : form.Marks;
        if (words.size() < marks || words.isEmpty())
            return false;
        QStringList prefixes;
        bool understood = true;
        for (const QString& word : words.mid(marks)) {
            if (word.startsWith("prefix="_L1) || word.startsWith("prefixed="_L1)) {
                prefixes = word.mid(word.indexOf(u'=') + 1).split(u',', Qt::SkipEmptyParts);
                if (word.startsWith("prefix="_L1))
                    prefixes.prepend(QString());
            } else {
                understood = TakeOption(rule, word) && understood;
            }
        }
        if (!understood)
            return false;
        if (prefixes.isEmpty())
            prefixes << QString();
        if (form.Form == ScanRule::Form::NumberPrefix || form.Form == ScanRule::Form::Skip) {
            for (const QString& open : words)
                understood = AddRule(rule, open, {}) && understood;
        } else if (form.Form == ScanRule::Form::Quote) {
            for (const QString& open : words[0].split(u',', Qt::SkipEmptyParts))
                understood = AddRule(rule, open, {}) && understood;
        } else {
            if (form.Form == ScanRule::Form::Enter)
                rule.ContextName = words[1];
            for (const QString& prefix : prefixes)
                understood = AddRule(rule, prefix + words[0], marks > 1 ? words[1] : QString()) && understood;
        }
        m_rules.m_paints = true;
        return understood;
    }

    bool AddRule(ScanRule rule, const QString& open, const QString& close)
    {
        rule.Open = open;
        rule.Close = close;
        if (rule.Kind == ScanRule::Form::Character || rule.Kind == ScanRule::Form::Regex)
            rule.Close = open.back();
        if (rule.Kind == ScanRule::Form::Raw) {
            rule.Open = open.section(u'%', 0, 0);
            rule.OpenTail = open.section(u'%', 1);
            rule.Close = close.section(u'%', 0, 0);
            rule.CloseTail = close.section(u'%', 1);
            if (rule.Open.isEmpty() || (rule.Close + rule.CloseTail).isEmpty())
                return false;
        }
        Rules().push_back(std::move(rule));
        return true;
    }

    // What the rules amount to

    int ContextNamed(const QString& name) const
    {
        if (name == "main"_L1)
            return 0;
        for (size_t i = 0; i < m_rules.m_contexts.size(); ++i) {
            if (m_rules.m_contexts[i].Name == name)
                return int(i);
        }
        return -1;
    }

    void Include(ScanContext& context, int depth)
    {
        constexpr int Deepest = 8;
        if (context.Includes.isEmpty() || depth > Deepest)
            return;
        const int number = ContextNamed(context.Includes);
        const size_t place = size_t(&context - m_rules.m_contexts.data());
        context.Includes.clear();
        if (number < 0 || size_t(number) == place) {
            m_rules.m_problems << u"The context '%1' includes one that is not there."_s.arg(context.Name);
            return;
        }
        ScanContext& included = m_rules.m_contexts[size_t(number)];
        Include(included, depth + 1);
        context.Rules.insert(context.Rules.end(), included.Rules.begin(), included.Rules.end());
        m_words[place].insert(m_words[place].end(), m_words[size_t(number)].begin(), m_words[size_t(number)].end());
    }

    void AddWords(ScanContext& context, size_t number, const QStringList& keywords, const QStringList& plain)
    {
        // A word that is plain is so everywhere: that is how a user takes its colour off.
        for (const QString& word : plain)
            context.Words.Add(word, TokenKind::Text);
        for (const auto& [word, kind] : m_words[number])
            context.Words.Add(word, kind);
        if (context.HasWords) {
            for (const QString& word : keywords)
                context.Words.Add(word, TokenKind::Keyword);
            if (number != 0) {
                for (const auto& [word, kind] : m_words[0])
                    context.Words.Add(word, kind);
            }
        }
        context.Words.Finish(m_rules.m_folds);
    }

    void FinishOpeners(ScanContext& context)
    {
        context.Openers.assign(m_rules.m_classes.size() + 1, {});
        for (size_t i = 0; i < context.Rules.size(); ++i) {
            ScanRule& rule = context.Rules[i];
            if (!rule.ContextName.isEmpty()) {
                rule.Context = ContextNamed(rule.ContextName);
                if (rule.Context < 0)
                    m_rules.m_problems << u"There is no context '%1'."_s.arg(rule.ContextName);
            }
            if (rule.Kind != ScanRule::Form::Match)
                AddOpener(context, rule.Open.front(), int(i));
            else if (rule.Open.isEmpty())
                context.LineMatches.push_back(int(i));
            else
                AddMatch(context, rule, int(i));
        }
        const auto longer = [&context](int left, int right) {
            const auto weight = [&context](int index) { // matches come first, those of words last
                constexpr qsizetype First = 1000;
                const ScanRule& rule = context.Rules[size_t(index)];
                const bool isMatch = rule.Kind == ScanRule::Form::Match;
                return isMatch && rule.Open == "word"_L1 ? 0 : isMatch ? First : rule.Open.size();
            };
            return weight(left) > weight(right);
        };
        for (std::vector<int>& openers : context.Openers)
            std::stable_sort(openers.begin(), openers.end(), longer);
    }

    /// A match is tried only at characters that it can begin with.
    void AddMatch(ScanContext& context, const ScanRule& rule, int number)
    {
        const bool atWords = rule.Open == "word"_L1;
        for (char16_t unit = 0; unit <= m_rules.m_classes.size(); ++unit) {
            const bool isWanted = atWords
                                      ? m_rules.IsWordStart(unit < m_rules.m_classes.size() ? QChar(unit) : QChar(0xe9))
                                      : rule.Open.contains(QChar(unit));
            if (isWanted && rule.Pattern.CanBeginWith(unit))
                AddOpener(context, QChar(unit), number);
        }
        for (const QChar character : rule.Open) {
            if (!atWords && character.unicode() >= m_rules.m_classes.size())
                AddOpener(context, character, number);
        }
    }

    void AddOpener(ScanContext& context, QChar first, int rule)
    {
        const auto add = [&](QChar character) {
            const size_t place = std::min<size_t>(character.unicode(), m_rules.m_classes.size());
            std::vector<int>& openers = context.Openers[place];
            if (std::find(openers.begin(), openers.end(), rule) == openers.end())
                openers.push_back(rule);
        };
        add(first);
        if (m_rules.m_folds) {
            add(first.toLower());
            add(first.toUpper());
        }
    }

    LanguageRules& m_rules;
    std::vector<std::vector<std::pair<QString, TokenKind>>> m_words{1}; ///< by context
};

LanguageRules::LanguageRules(const QString& text, const QStringList& keywords, const QStringList& plain)
{
    for (char16_t unit = 0; unit < m_classes.size(); ++unit) {
        const QChar character(unit);
        if (character.isLetter() || unit == u'_')
            m_classes[unit] = WordStartBit | WordPartBit;
        else if (character.isDigit())
            m_classes[unit] = WordPartBit;
    }
    LanguageRulesReader reader(*this);
    reader.Read(text);
    reader.Finish(keywords, plain);
}

} // namespace qb
