#include "find/FindQuery.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct FieldRow {
    FindField Field;
    char16_t Letter;
    QLatin1StringView Name;
};
constexpr FieldRow FieldRows[] = {
    {FindField::Title, u'T', "title"_L1},
    {FindField::Description, u'D', "description"_L1},
    {FindField::Code, u'C', "code"_L1},
    {FindField::Notes, u'N', "notes"_L1},
    {FindField::Usage, u'U', "usage"_L1},
    {FindField::FileNames, u'F', "files"_L1},
    {FindField::FileTexts, u'O', "file-texts"_L1},
    {FindField::Links, u'L', "links"_L1},
    {FindField::WebPage, u'W', "page"_L1},
};
static_assert(std::size(FieldRows) == FindFields);

} // namespace

QChar LetterOf(FindField field)
{
    return FieldRows[size_t(field)].Letter;
}

QString NameOf(FindField field)
{
    return FieldRows[size_t(field)].Name;
}

std::optional<FindField> FindFieldNamed(const QString& name)
{
    const auto* row = std::find_if(std::begin(FieldRows), std::end(FieldRows), [&name](const FieldRow& one) {
        return name.compare(one.Name, Qt::CaseInsensitive) == 0
               || (name.size() == 1 && name.front().toUpper() == QChar(one.Letter));
    });
    return row == std::end(FieldRows) ? std::nullopt : std::optional(row->Field);
}

QString NormalText(const QString& text)
{
    return QString(text).replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n');
}

bool CountsCase(const FindQuery& query)
{
    if (query.Case != FindCase::Smart)
        return query.Case == FindCase::Exact;
    bool escaped = false; // the letter of an escape, such as \S, is no capital
    for (const char32_t character : query.Text.toUcs4()) {
        if (!escaped && (QChar::isUpper(character) || QChar::isTitleCase(character)))
            return true;
        escaped = query.Mode == FindMode::Expression && character == U'\\' && !escaped;
    }
    return false;
}

QStringList NeedlesOf(const FindQuery& query)
{
    const QString text = NormalText(query.Text);
    if (query.Mode != FindMode::AllWords)
        return text.isEmpty() ? QStringList() : QStringList(text);
    QStringList words;
    qsizetype begin = 0;
    for (qsizetype at = 0; at <= text.size(); ++at) {
        if (at < text.size() && !text[at].isSpace())
            continue;
        if (at > begin && !words.contains(text.mid(begin, at - begin)))
            words << text.mid(begin, at - begin);
        begin = at + 1;
    }
    return words;
}

} // namespace qb
