#include "text/ItemEditor.h"

#include "platform/richtext/Rtf.h"
#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "store/ItemMerge.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "text/CodeSections.h"
#include "text/SectionBits.h"
#include "text/TextBurden.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlCodeDetails"_s; // the errors of the texts are told as the panel's

/// A text of an item: where it is shown and where it is kept.
struct TextRow {
    ItemText Text;
    DetailsTab Tab;
    CCodeItem::Column Column;
    void (ItemRow::*Set)(const QString&);
    std::optional<QString> UnsavedTexts::*Unsaved;
};
constexpr TextRow TextRows[] = {
    {ItemText::Code, DetailsTab::Code, CCodeItem::CodeColumn, &CCodeItem::SetCode, &UnsavedTexts::Code},
    {ItemText::Notes, DetailsTab::Notes, CCodeItem::NotesColumn, &CCodeItem::SetNotes, &UnsavedTexts::Notes},
    {ItemText::Usage, DetailsTab::Usage, CCodeItem::ExampleColumn, &CCodeItem::SetExample, &UnsavedTexts::Usage},
};
const TextRow& RowOf(ItemText text)
{
    return TextRows[size_t(text)];
}

/// In the order in which they are looked at for one with content.
constexpr DetailsTab TabOrder[] = {DetailsTab::Code, DetailsTab::Notes, DetailsTab::Usage, DetailsTab::Files,
                                   DetailsTab::Links};

/// Whether an item that waits for removal or for the mother is to become a regular one.
bool KeepsDeletedItem(bool isChildReplica)
{
    Message question{
        .Text = u"The item you have just updated is marked for deletion. \r\n"
                "By saving your changes of this item you will reset this item's 'Deleted' status which is the same "
                "as if you selected 'KEEP ITEM' option from the pop-up menu or the 'Item' menu. If you decide to "
                "continue the item will appear as a 'regular' item from that point. \r\nDo you wish to continue?"_s,
        .Caption = u"Update this item and reset its 'Deleted' status?"_s,
        .Buttons = MsgBoxButtons::YesNo,
        .Icon = MsgBoxIcon::Question,
        .MustAnswer = true};
    if (isChildReplica) {
        question.Caption = u"Update this item and reset its 'Conflicting' status?"_s;
        question.Text =
            u"The item you have just updated is currently in conflict with its copy in mother database. \r\n"
            "By saving your changes of this item you will cause another conflict on next synchronization with main "
            "database. If you decide to continue, this item's 'Conflicting' status will be reset and the item will "
            "appear as a 'regular' item from that point. \r\nDo you wish to continue?"_s;
    }
    return Prompts::Current().MsgBox(question) == MsgBoxResult::Yes;
}

} // namespace

ItemEditor::ItemEditor(CTextFormat& formatter, const Boxes& boxes, ItemEditorView& view)
    : mFT(formatter), m_view(view), m_recovery(std::bind_front(&ItemEditor::Unsaved, this))
{
    for (size_t i = 0; i < boxes.size(); ++i)
        m_texts[i].Box = boxes[i];
}

// The item comes and goes

void ItemEditor::Initialise(Library* library, CCodeItem* item)
{
    m_userChange = false;
    ResetChangedBooleans();
    m_item = item;
    for (TextState& text : m_texts)
        text.TooLarge = false;
    if (!item || library != m_library || item->Key() != m_shownKey)
        m_shownKey.clear();
    if (!item)
        return ShowLocks();
    item->ReadWhole(); // what is shown is the row of one moment
    m_recovery.SetLibrary(library->Name());
    m_shownState = item->LastChanged();
    m_library = library;
    m_view.ShowFacts(*item);
    for (const TextRow& row : TextRows)
        ShowText(row.Text);
    m_shownKey = item->Key();
    ShowLocks();
    m_userChange = true;
}

void ItemEditor::TreeReplaced()
{
    m_userChange = false;
    m_item = nullptr;
    m_shownKey.clear();
}

void ItemEditor::Terminate()
{
    TreeReplaced();
    m_library = nullptr;
}

void ItemEditor::SetLocked(bool locked)
{
    m_locked = locked;
    ShowLocks();
}

void ItemEditor::ShowLocks()
{
    for (const TextState& text : m_texts)
        text.Box->SetLocked(Locked());
}

bool ItemEditor::IsTooLarge() const
{
    return std::any_of(m_texts.begin(), m_texts.end(), [](const TextState& text) { return text.TooLarge; });
}

void ItemEditor::Unnoticed(const std::function<void()>& change)
{
    const QScopedValueRollback userChange(m_userChange, false);
    change();
}

std::optional<ItemText> ItemEditor::ShownCode() const
{
    const std::optional<DetailsTab> tab = m_view.CurrentView();
    if (tab == DetailsTab::Code)
        return ItemText::Code;
    return tab == DetailsTab::Usage ? std::optional(ItemText::Usage) : std::nullopt;
}

QString ItemEditor::StoredText(ItemText text) const
{
    return text == ItemText::Notes ? m_item->Notes() : text == ItemText::Code ? m_item->Code() : m_item->Example();
}

void ItemEditor::ShowText(ItemText text)
{
    const QString stored = StoredText(text);
    const QString reason = WhyTooLarge(BurdenOf(stored),
                                       text == ItemText::Notes ? TextForm::Formatted : TextForm::Code);
    State(text).TooLarge = !reason.isEmpty();
    if (State(text).TooLarge) {
        State(text).Painted = true;   // there is nothing to be painted
        if (text == ItemText::Code) { // nor is it read for the language that it names
            m_itemLanguage.clear();
            mFT.SetItemLanguage({});
        }
        Box(text).SetColouring(nullptr, {});
        Box(text).TextBox().SetText(PlainBegin(stored, reason));
    } else if (text == ItemText::Notes) {
        if (!Holds(text, stored))
            Box(text).TextBox().SetTextRTF(stored);
    } else {
        ShowCode(text);
    }
}

/// An item that is shown again, as after its title was changed, keeps the caret and what can be undone of those texts
/// that are the same.
bool ItemEditor::Holds(ItemText text, const QString& rtf)
{
    return !m_shownKey.isEmpty() && Box(text).TextBox().TextRTF() == rtf;
}

// Tabs

void ItemEditor::SetTabEnabled(DetailsTab tab, bool hasContent)
{
    m_hasContent[size_t(tab)] = hasContent;
    m_view.ShowTabEnabled(tab, hasContent);
}

DetailsTab ItemEditor::TabToShow(DetailsTab current) const
{
    if (TabEnabled(current))
        return current;
    const auto* first = std::find_if(std::begin(TabOrder), std::end(TabOrder),
                                     [this](DetailsTab tab) { return TabEnabled(tab); });
    return first == std::end(TabOrder) ? current : *first;
}

// Changes

void ItemEditor::BoxChanged(ItemText text)
{
    if (Locked() || !m_userChange || !m_item)
        return;
    m_item->SetItemChanged(true);
    TextState& state = State(text);
    state.Changed = true;
    state.Colorized = state.Painted = false;
    SetTabEnabled(RowOf(text).Tab, !state.Box->IsEmpty());
    m_recovery.Typed();
    Q_EMIT TextChanged(RowOf(text).Tab);
}

void ItemEditor::ResetChangedBooleans()
{
    for (TextState& text : m_texts)
        text.Changed = text.Colorized = false;
    m_recovery.Forget();
}

// Saving

/// Code and usage go into the library painted.
void ItemEditor::StoreText(ItemText text)
{
    const TextState& state = State(text);
    if (state.TooLarge || (!state.Changed && !state.Colorized))
        return;
    QString rtf;
    if (text != ItemText::Notes && state.Changed && !state.Colorized)
        rtf = fnColorize(text == ItemText::Code ? u"Code"_s : u"Usage"_s, false);
    else if (!state.Box->IsEmpty())
        rtf = state.Box->TextBox().TextRTF();
    (m_item->*RowOf(text).Set)(rtf);
}

bool ItemEditor::SaveItem(bool keep)
{
    return Guarded(
        ModuleName, u"SaveItem"_s, [&] { return !m_item || !m_item->Unsaved() || StoreAndCommit(keep); }, false);
}

bool ItemEditor::StoreAndCommit(bool keep)
{
    const bool itemChanged = m_item->ItemChanged();
    const bool linksChanged = m_item->LinksChanged();
    m_view.ShowStage(u"Saving Item"_s);
    for (const TextRow& row : TextRows) {
        if (itemChanged)
            StoreText(row.Text);
    }
    m_view.ShowStage(u"Colorizing"_s);
    if (itemChanged && !m_item->DontUpdateLastChangedDate())
        m_item->SetLastChanged(m_library->NextStamp());
    const MergedSave save = SaveMerged(*m_item, *m_library);
    ShowTaken(save.Taken);
    if (!save.Saved)
        return false;
    if (linksChanged) {
        m_item->LoadLinks();
        m_view.ShowLinks();
    }
    m_shownState = m_item->LastChanged();
    ResetChangedBooleans();
    Q_EMIT Saved();
    if (keep && KeepingDeletedRecord)
        KeepingDeletedRecord(m_item->Key());
    return true;
}

/// What another program had written to the item, as it stands in it now.
void ItemEditor::ShowTaken(const std::vector<size_t>& columns)
{
    const QScopedValueRollback userChange(m_userChange, false);
    const auto isTaken = [&columns](CCodeItem::Column column) {
        return std::find(columns.begin(), columns.end(), size_t(column)) != columns.end();
    };
    for (const TextRow& row : TextRows) {
        if (!isTaken(row.Column))
            continue;
        State(row.Text).Changed = State(row.Text).Colorized = false;
        ShowText(row.Text);
        SetTabEnabled(row.Tab, !Box(row.Text).IsEmpty());
    }
    ShowLocks();
    if (!columns.empty())
        m_view.ShowFacts(*m_item);
    if (isTaken(CCodeItem::TitleColumn) && TitleTaken)
        TitleTaken(m_item->Key(), m_item->Title());
}

bool ItemEditor::SetItemChanged(bool automatic)
{
    return Guarded(
        ModuleName, u"<<Let>> ItemChanged"_s,
        [&] {
            bool saved = true;
            if (m_item && m_item->Unsaved()) {
                const bool marked = m_item->ItemChanged() && m_item->ItemMarkedForDelete();
                if (!marked || automatic || KeepsDeletedItem(m_library->IsChildReplica()))
                    saved = SaveItem(marked);
            }
            return m_view.SaveFileDescChanges(true) && saved; // in every case
        },
        false);
}

// Texts that survive the program

std::optional<UnsavedTexts> ItemEditor::Unsaved() const
{
    if (!m_item)
        return std::nullopt;
    UnsavedTexts unsaved{
        .Item = m_item->Key().toLongLong(), .LastChanged = m_shownState, .Code = {}, .Notes = {}, .Usage = {}};
    bool any = false;
    for (const TextRow& row : TextRows) {
        if (!Changed(row.Text))
            continue;
        unsaved.*row.Unsaved = Box(row.Text).IsEmpty() ? QString() : Box(row.Text).TextBox().TextRTF();
        any = true;
    }
    const Value& info = m_item->OwnValue(CCodeItem::InfoColumn);
    if (m_item->ItemChanged() && !(info == m_item->ReadValue(CCodeItem::InfoColumn))) {
        unsaved.Info = info.ToText();
        any = true;
    }
    return any ? std::optional(unsaved) : std::nullopt;
}

void ItemEditor::InfoTyped()
{
    if (m_item && !m_locked)
        m_recovery.Typed();
}

bool ItemEditor::ShowUnsaved(const UnsavedTexts& unsaved)
{
    if (!m_item || m_item->Key().toLongLong() != unsaved.Item || Locked())
        return false;
    const QString code = unsaved.Code.value_or(unsaved.Usage.value_or(QString()));
    if (!code.isEmpty()) // a language that was chosen is unsaved, too
        SetItemLanguage(LanguageInRtf(code));
    for (const TextRow& row : TextRows) {
        if (const std::optional<QString>& rtf = unsaved.*row.Unsaved)
            Box(row.Text).TextBox().SetTextRTF(*rtf); // as if typed: it counts as a change
    }
    // Sections that were added or deleted meanwhile
    for (const ItemText text : {ItemText::Code, ItemText::Usage}) {
        if (unsaved.*RowOf(text).Unsaved)
            SectionBits(*m_item, text == ItemText::Code)
                .SetAll(CodeSections(Box(text).TextBox(), mFT.CommentIdentifier()).Present());
    }
    if (unsaved.Info) {
        m_item->SetInfo(*unsaved.Info);
        m_item->SetItemChanged(true);
        m_view.ShowFacts(*m_item);
    }
    m_view.DisplayTabWithContent();
    KeepUnsavedTexts();
    return true;
}

} // namespace qb
