#include "store/ItemMerge.h"

#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Prompts.h"
#include "store/Library.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A text of which two versions can't be put together.
struct TextRow {
    CCodeItem::Column Column;
    const char* Name; ///< as users call it
    enum { Plain, Formatted, Coloured } Form;
};
constexpr TextRow TextRows[] = {
    {CCodeItem::TitleColumn, "title", TextRow::Plain},
    {CCodeItem::DescriptionColumn, "description", TextRow::Plain},
    {CCodeItem::InfoColumn, "info", TextRow::Plain},
    {CCodeItem::CodeColumn, "code", TextRow::Coloured},
    {CCodeItem::ExampleColumn, "usage", TextRow::Coloured},
    {CCodeItem::NotesColumn, "notes", TextRow::Formatted},
};

/// What a column says of a text goes with the text.
struct Companion {
    CCodeItem::Column Text;
    CCodeItem::Column Of;
};
constexpr Companion Companions[] = {{CCodeItem::CodeColumn, CCodeItem::CodeHeadersColumn},
                                    {CCodeItem::ExampleColumn, CCodeItem::UsageHeadersColumn}};

const TextRow* TextOf(size_t column)
{
    const auto row = std::find_if(std::begin(TextRows), std::end(TextRows),
                                  [column](const TextRow& one) { return one.Column == column; });
    return row == std::end(TextRows) ? nullptr : row;
}

QString Shown(const TextRow& row, const Value& text)
{
    return row.Form == TextRow::Plain ? text.ToText() : PlainTextFromRtf(text.ToText());
}

enum class Side { Own, Theirs, Asked };

Side SideOf(const CCodeItem& item, const RowObject::ForeignChange& change)
{
    if (!change.OwnChanged)
        return Side::Theirs;
    const TextRow* row = TextOf(change.Column);
    if (!row)
        return Side::Own;
    if (row->Form != TextRow::Coloured)
        return Side::Asked;
    const QString read = Shown(*row, item.ReadValue(change.Column));
    const QString own = Shown(*row, item.OwnValue(change.Column));
    const QString theirs = Shown(*row, change.Theirs);
    if (own == read)
        return Side::Theirs;
    return theirs == read || theirs == own ? Side::Own : Side::Asked;
}

class Merge {
public:
    Merge(CCodeItem& item, Library& library) : m_item(item), m_database(library) {}

    MergedSave Run()
    {
        // Nobody is kept waiting while a question is open; by its answer the row may be another one.
        for (;;) {
            const std::vector<RowObject::ForeignChange> open = SaveOrFindQuestions();
            if (open.empty()
                || !std::all_of(open.begin(), open.end(), [this](const auto& change) { return Ask(change); }))
                return std::move(m_result);
        }
    }

private:
    std::vector<RowObject::ForeignChange> SaveOrFindQuestions()
    {
        std::vector<RowObject::ForeignChange> open;
        Transaction transaction(m_database);
        for (const RowObject::ForeignChange& change : m_item.ForeignChanges()) {
            switch (SideOf(m_item, change)) {
            case Side::Own:
                m_item.KeepOwn(change);
                break;
            case Side::Theirs:
                Take(change);
                break;
            case Side::Asked:
                open.push_back(change);
                break;
            }
        }
        if (open.empty()) {
            m_result.Saved = m_item.Commit();
            if (!m_item.ItemChanged()) // the row was written, if not the links
                transaction.Commit();
        }
        return open;
    }

    bool Ask(const RowObject::ForeignChange& change)
    {
        const TextRow& row = *TextOf(change.Column);
        const ChosenText chosen = Prompts::Current().ChooseText(
            {.Caption = u"Changed Twice"_s,
             .Text = u"The %1 of the item '%2' was changed here, and by another program. Which one is to stay?"_s.arg(
                 QString::fromLatin1(row.Name), m_item.ReadValue(CCodeItem::TitleColumn).ToText()),
             .Own = Shown(row, m_item.OwnValue(change.Column)),
             .Theirs = Shown(row, change.Theirs)});
        if (chosen == ChosenText::Own)
            m_item.KeepOwn(change);
        else if (chosen == ChosenText::Theirs)
            Take(change);
        return chosen != ChosenText::Cancel;
    }

    void Take(const RowObject::ForeignChange& change)
    {
        m_item.TakeTheirs(change);
        m_result.Taken.push_back(change.Column);
        for (const Companion& companion : Companions) {
            if (companion.Text == change.Column)
                m_item.Discard(companion.Of);
        }
    }

    CCodeItem& m_item;
    Database& m_database;
    MergedSave m_result;
};

} // namespace

MergedSave SaveMerged(CCodeItem& item, Library& library)
{
    if (!item.ItemChanged() || item.ReadFailed())
        return {.Saved = item.Commit(), .Taken = {}};
    return Merge(item, library).Run();
}

} // namespace qb
