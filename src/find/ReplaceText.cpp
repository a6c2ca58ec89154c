#include "find/ReplaceText.h"

#include "platform/richtext/RichText.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestTitle = 255; // the description has the same bound

/// A text of an item that can be replaced in.
struct TextRow {
    FindField Field;
    QString (ItemRow::*Get)();
    void (ItemRow::*Set)(const QString&);
    enum { Plain, Formatted } Form;
};
constexpr TextRow TextRows[] = {
    {FindField::Title, &CCodeItem::Title, &CCodeItem::SetTitle, TextRow::Plain},
    {FindField::Description, &CCodeItem::Description, &CCodeItem::SetDescription, TextRow::Plain},
    {FindField::Code, &CCodeItem::Code, &CCodeItem::SetCode, TextRow::Formatted},
    {FindField::Notes, &CCodeItem::Notes, &CCodeItem::SetNotes, TextRow::Formatted},
    {FindField::Usage, &CCodeItem::Example, &CCodeItem::SetExample, TextRow::Formatted},
};

[[noreturn]] void Refuse(long number, qint64 item, const QString& sentence)
{
    throw RuntimeError(number, u"Item %1: %2; nothing was changed."_s.arg(item).arg(sentence), u"ReplaceText"_s);
}

void OpenItem(Library& library, qint64 id, CCodeItem& item)
{
    RequireItem(library, id);
    item.Initialise(library, QString::number(id));
    item.Title();
    if (item.ReadFailed())
        Refuse(ErrorNumber::NoCurrentRecord, id, u"it can't be read"_s);
}

/// The replacement of one match of an expression.
QString Expanded(const QString& replacement, QByteArrayView text, const FindExpression::Matcher& match)
{
    QString expanded;
    for (qsizetype at = 0; at < replacement.size(); ++at) {
        const bool isEscape = replacement[at] == u'\\' && at + 1 < replacement.size();
        const QChar next = isEscape ? replacement[at + 1] : QChar();
        if (isEscape && next >= u'0' && next <= u'9') {
            const FindExpression::Matcher::Match group = match.Group(next.digitValue());
            expanded += QString::fromUtf8(text.sliced(group.Begin, group.End - group.Begin));
            ++at;
        } else if (isEscape && (next == u'\\' || next == u'n' || next == u't')) {
            expanded += next == u'\\' ? u'\\' : next == u'n' ? u'\n' : u'\t';
            ++at;
        } else {
            expanded += replacement[at];
        }
    }
    return expanded;
}

/// One for each match, in their order.
QStringList Replacements(const QString& text, const FindMatcher& matcher, const QString& replacement, size_t count)
{
    if (!matcher.Expression())
        return QStringList(qsizetype(count), replacement);
    const QByteArray searched = NormalText(text).toUtf8();
    FindExpression::Matcher expression(*matcher.Expression());
    QStringList replacements;
    qsizetype at = 0;
    while (const auto match = expression.Next(searched, at, IsAscii(searched))) {
        replacements << Expanded(replacement, searched, expression);
        at = match->End;
    }
    return replacements;
}

QString LinesAround(const QString& text, qsizetype begin, qsizetype end)
{
    const qsizetype first = begin == 0 ? 0 : text.lastIndexOf(u'\n', begin - 1) + 1;
    qsizetype last = text.indexOf(u'\n', end);
    last = last < 0 ? text.size() : last;
    return text.mid(first, last - first).remove(u'\r');
}

void AddChanges(qint64 item, const TextRow& row, const QString& stored, const FindMatcher& matcher,
                const QString& replacement, std::vector<ReplaceChange>& changes)
{
    RichText box;
    if (row.Form == TextRow::Formatted)
        box.SetTextRTF(stored);
    const QString text = row.Form == TextRow::Formatted ? box.Text() : stored;
    const std::vector<TextRange> ranges = RangesIn(text, matcher, SIZE_MAX);
    const QStringList replacements = Replacements(text, matcher, replacement, ranges.size());
    qsizetype behind = 0;
    for (size_t i = 0; i < ranges.size() && qsizetype(i) < replacements.size(); ++i) {
        const TextRange& range = ranges[i];
        const qsizetype end = range.Begin + range.Length;
        // One word within another goes with it; headers of sections are not to be written to.
        if (range.Begin < behind || (row.Form == TextRow::Formatted && box.IsProtected(range.Begin, range.Length)))
            continue;
        behind = end;
        const QString& own = replacements[qsizetype(i)];
        const QString after = text.left(range.Begin) + own + text.mid(end);
        changes.push_back({.Item = item,
                           .Field = row.Field,
                           .Range = range,
                           .Found = text.mid(range.Begin, range.Length),
                           .Replacement = own,
                           .Line = 1 + int(QStringView(text).left(range.Begin).count(u'\n')),
                           .Before = LinesAround(text, range.Begin, end),
                           .After = LinesAround(after, range.Begin, range.Begin + own.size())});
    }
}

using Changes = std::vector<const ReplaceChange*>; ///< of one text, in its order

void RequireSame(qint64 item, const QString& text, const Changes& changes)
{
    for (const ReplaceChange* change : changes) {
        if (text.mid(change->Range.Begin, change->Range.Length) != change->Found)
            Refuse(ErrorNumber::ValueNotAllowed, item,
                   u"its %1 has been changed by somebody else meanwhile"_s.arg(NameOf(change->Field)));
    }
}

QString ReplacedPlain(qint64 item, QString text, const Changes& changes)
{
    RequireSame(item, text, changes);
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        text.replace((*change)->Range.Begin, (*change)->Range.Length, (*change)->Replacement);
    return text;
}

QString ReplacedFormatted(qint64 item, const QString& stored, const Changes& changes)
{
    RichText box;
    box.SetTextRTF(stored);
    RequireSame(item, box.Text(), changes);
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
        const TextRange& range = (*change)->Range;
        // What comes in looks as what goes does, not as what stands before it.
        const CharFormat format = box.Document().FormatAt(range.Begin);
        if (box.IsProtected(range.Begin, range.Length))
            Refuse(ErrorNumber::ValueNotAllowed, item,
                   u"a part of its %1 is protected"_s.arg(NameOf((*change)->Field)));
        box.Document().Replace(range.Begin, range.Length, (*change)->Replacement, format);
    }
    return box.Text().isEmpty() ? QString() : box.TextRTF();
}

void RequireTitle(qint64 id, CCodeItem& item)
{
    if (item.Title().trimmed().isEmpty())
        Refuse(ErrorNumber::ZeroLengthNotAllowed, id, u"no title would be left"_s);
    RefuseReservedTitle(item.Title(), item.ParentKey().toLongLong());
}

void ChangeItem(Library& library, qint64 id, const Changes& changes)
{
    RequireChange(library, id, {ItemChange::EditUnasked});
    CCodeItem item;
    OpenItem(library, id, item);
    item.SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, StandingOf(library, id)));
    for (const TextRow& row : TextRows) {
        Changes own;
        std::copy_if(changes.begin(), changes.end(), std::back_inserter(own),
                     [&row](const ReplaceChange* change) { return change->Field == row.Field; });
        if (own.empty())
            continue;
        std::sort(own.begin(), own.end(),
                  [](const ReplaceChange* a, const ReplaceChange* b) { return a->Range.Begin < b->Range.Begin; });
        const QString stored = (item.*row.Get)();
        const QString text = row.Form == TextRow::Plain ? ReplacedPlain(id, stored, own)
                                                        : ReplacedFormatted(id, stored, own);
        if (row.Form == TextRow::Plain && text.size() > LongestTitle)
            Refuse(ErrorNumber::TooLong, id,
                   u"its %1 would be longer than %2 characters"_s.arg(NameOf(row.Field)).arg(LongestTitle));
        (item.*row.Set)(text);
        if (row.Field == FindField::Title) {
            RequireChange(library, id, {ItemChange::Rename});
            RequireTitle(id, item);
        }
    }
    item.SetItemChanged(true);
    if (!item.Commit())
        Refuse(ErrorNumber::Engine, id, u"it could not be written"_s);
}

} // namespace

std::vector<ReplaceChange> ChangesIn(Library& library, qint64 item, const FindMatcher& matcher,
                                     const QString& replacement)
{
    CCodeItem row;
    OpenItem(library, item, row);
    std::vector<ReplaceChange> changes;
    for (const TextRow& text : TextRows) {
        if (matcher.Query().Fields & BitOf(text.Field))
            AddChanges(item, text, (row.*text.Get)(), matcher, replacement, changes);
    }
    return changes;
}

void MakeChanges(Library& library, const std::vector<ReplaceChange>& changes)
{
    Changes ordered;
    for (const ReplaceChange& change : changes)
        ordered.push_back(&change);
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const ReplaceChange* a, const ReplaceChange* b) { return a->Item < b->Item; });
    Transaction transaction(library);
    for (auto first = ordered.begin(); first != ordered.end();) {
        const qint64 item = (*first)->Item;
        const auto last = std::find_if(first, ordered.end(),
                                       [item](const ReplaceChange* change) { return change->Item != item; });
        ChangeItem(library, item, Changes(first, last));
        first = last;
    }
    transaction.Commit();
}

} // namespace qb
