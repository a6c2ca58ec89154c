#include "finder/ReplaceUndo.h"

#include "store/CCodeItem.h"
#include "store/ItemRules.h"

#include <algorithm>
#include <set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct TextRow {
    FindField Field;
    const char* Column;
    void (ItemRow::*Set)(const QString&);
};
constexpr TextRow TextRows[] = {
    {FindField::Title, "Title", &CCodeItem::SetTitle},
    {FindField::Description, "Description", &CCodeItem::SetDescription},
    {FindField::Code, "Code", &CCodeItem::SetCode},
    {FindField::Notes, "Notes", &CCodeItem::SetNotes},
    {FindField::Usage, "Example", &CCodeItem::SetExample},
};

const TextRow& RowOf(FindField field)
{
    return *std::find_if(std::begin(TextRows), std::end(TextRows),
                         [field](const TextRow& row) { return row.Field == field; });
}

QString StoredText(Library& library, qint64 item, FindField field)
{
    return library
        .QueryValue(u"SELECT "_s + QLatin1StringView(RowOf(field).Column) + u" FROM Items WHERE ID = ?"_s, {item})
        .ToText();
}

} // namespace

QString ReplaceUndo::Outcome::Text() const
{
    constexpr qsizetype Most = 15; // that a message has room for
    QString text = Restored == 1 ? u"One text is as it was before."_s
                                 : u"%1 texts are as they were before."_s.arg(Restored);
    if (Kept.isEmpty())
        return text;
    text += u"\n\nNot put back:\n"_s + Kept.first(std::min(Most, Kept.size())).join(u'\n');
    if (Kept.size() > Most)
        text += u"\nand %1 more"_s.arg(Kept.size() - Most);
    return text;
}

void ReplaceUndo::Replace(Library& library, const std::vector<ReplaceChange>& changes)
{
    std::set<std::pair<qint64, FindField>> touched;
    for (const ReplaceChange& change : changes)
        touched.insert({change.Item, change.Field});
    Transaction transaction(library);
    std::vector<Text> texts;
    for (const auto& [item, field] : touched)
        texts.push_back({item, field, StoredText(library, item, field), {}});
    MakeChanges(library, changes);
    for (Text& text : texts)
        text.After = StoredText(library, text.Item, text.Field);
    transaction.Commit();
    if (!texts.empty())
        m_replaced.push_back(std::move(texts));
}

/// The texts of an item go back together or not at all, but for those that somebody has changed.
ReplaceUndo::Outcome ReplaceUndo::Undo(Library& library)
{
    Outcome outcome;
    if (!CanUndo())
        return outcome;
    const std::vector<Text>& texts = m_replaced.back();
    Transaction transaction(library);
    for (auto first = texts.begin(); first != texts.end();) {
        const qint64 id = first->Item;
        const auto last = std::find_if(first, texts.end(), [id](const Text& text) { return text.Item != id; });
        const bool isThere = library.QueryValue(u"SELECT count(*) FROM Items WHERE ID = ?"_s, {id}).ToLong() > 0;
        const QString title = isThere ? StoredText(library, id, FindField::Title) : QString();
        const QString reason = isThere ? SentenceOf(WhatBars(ItemChange::EditUnasked, StandingOf(library, id)))
                                       : u"it is not in the library any more"_s;
        if (!reason.isEmpty()) {
            outcome.Kept << (isThere ? u"“%1”: %2."_s.arg(title, reason) : u"Item %1: %2."_s.arg(id).arg(reason));
            first = last;
            continue;
        }
        CCodeItem item;
        item.Initialise(library, QString::number(id));
        item.SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, StandingOf(library, id)));
        size_t restored = 0;
        for (; first != last; ++first) {
            if (StoredText(library, id, first->Field) != first->After) {
                outcome.Kept << u"“%1”: its %2 was changed since."_s.arg(title, NameOf(first->Field));
                continue;
            }
            (item.*RowOf(first->Field).Set)(first->Before);
            ++restored;
        }
        if (restored == 0)
            continue;
        item.SetItemChanged(true);
        if (!item.Commit())
            throw RuntimeError(ErrorNumber::Engine, u"“%1” could not be written; nothing was changed."_s.arg(title),
                               u"ReplaceUndo::Undo"_s);
        outcome.Restored += restored;
    }
    transaction.Commit();
    m_replaced.pop_back();
    return outcome;
}

} // namespace qb
