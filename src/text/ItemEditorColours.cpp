// The colours of the code and usage texts, and the language that they are painted by.

#include "platform/richtext/Rtf.h"
#include "platform/system/Prompts.h"
#include "store/Library.h"
#include "text/CodeSections.h"
#include "text/ItemEditor.h"

#include <QScopedValueRollback>
#include <QSignalBlocker>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr ItemText CodeTexts[] = {ItemText::Code, ItemText::Usage};

/// Whether any of the text has a colour.
bool HasColours(const RichTextDocument& document)
{
    for (auto run = document.Runs().RunAt(0); run != document.Runs().End(); ++run) {
        if (document.Format(run->second).Color != AutomaticColor && !document.Format(run->second).Bold)
            return true;
    }
    return false;
}

} // namespace

// The texts come into their boxes

/// By rules, what is seen is coloured while it is seen, and the box holds a text without colours;
/// else the box holds the text as it was stored.
void ItemEditor::ShowCode(ItemText text)
{
    const QString code = m_item->Code();
    const QString usage = m_item->Example();
    m_itemLanguage = LanguageInRtf(code);
    if (m_itemLanguage.isEmpty())
        m_itemLanguage = LanguageInRtf(usage);
    mFT.SetItemLanguage(m_itemLanguage);
    RichText content;
    content.SetTextRTF(text == ItemText::Code ? code : usage);
    State(text).Painted = HasColours(content.Document());
    if (mFT.Rules())
        TakePaintOff(content);
    ConnectColours(Box(text));
    if (m_shownKey.isEmpty() || !Holds(text, content.TextRTF())) // writing a long text takes its time
        Box(text).SetContent(content);
}

void ItemEditor::ConnectColours(ItemTextBox& box)
{
    box.SetColouring(mFT.Rules(), [this](RichText& copy) {
        const QSignalBlocker noProgress(&mFT);
        mFT.ColorizeCode(copy);
    });
}

void ItemEditor::FormatingInitialize(Library& library)
{
    mFT.ColorizeInit(library);
    for (const ItemText text : CodeTexts) {
        if (!State(text).TooLarge)
            ShowByLanguage(text);
    }
}

/// The text in a box is shown by another language.
void ItemEditor::ShowByLanguage(ItemText text)
{
    const QScopedValueRollback userChange(m_userChange, false);
    ItemTextBox& box = Box(text);
    const bool wasOn = box.ColoursByRules();
    ConnectColours(box);
    if (wasOn == box.ColoursByRules() || box.IsEmpty())
        return;
    RichText content = box.Content();
    TakePaintOff(content);
    const qsizetype caret = box.TextBox().SelStart();
    box.SetContent(content); // an undo must not bring back the looks of another language
    box.TextBox().SetSelStart(caret);
    State(text).Painted = State(text).Colorized = false;
}

// Colouring

QString ItemEditor::fnColorize(const QString& tab, bool saveBack)
{
    if (tab != u"Code" && tab != u"Usage") {
        Prompts::Current().MsgBox({.Text = u"Unknown tab."_s, .Caption = u"Error"_s, .Icon = MsgBoxIcon::Critical});
        return {};
    }
    ItemTextBox& box = Box(tab == u"Code" ? ItemText::Code : ItemText::Usage);
    const RichText rtbFormat = Painted(box);
    if (saveBack)
        PutBack(box, rtbFormat);
    return rtbFormat.Text().isEmpty() ? QString() : rtbFormat.TextRTF();
}

/// A copy in colour: caret, selection and undo of the box stay as they are.
RichText ItemEditor::Painted(const ItemTextBox& box)
{
    RichText copy = box.Content();
    mFT.ColorizeCode(copy);
    return copy;
}

/// A box that colours by rules shows the colours already.
void ItemEditor::PutBack(ItemTextBox& box, const RichText& painted)
{
    if (box.ColoursByRules())
        return;
    const QScopedValueRollback userChange(m_userChange, false);
    box.SetRepainted(painted);
}

bool ItemEditor::CanColorize() const
{
    const std::optional<ItemText> text = ShownCode();
    if (!m_item || Locked() || !text)
        return false;
    return !Box(*text).ColoursByRules() && !m_texts[size_t(*text)].Painted && !Box(*text).IsEmpty();
}

void ItemEditor::ColorizeVisible()
{
    if (!CanColorize())
        return;
    const ItemText text = *ShownCode();
    PutBack(Box(text), Painted(Box(text)));
    State(text).Colorized = State(text).Painted = true;
    m_item->SetItemChanged(true);
    Q_EMIT ColorizeStateChanged();
}

/// What rules paint is no change of an item: it is seen in colour, and stored as it is.
void ItemEditor::ColorizeItem()
{
    if (!m_item || IsTooLarge() || mFT.Rules())
        return;
    for (const ItemText text : CodeTexts) {
        PutBack(Box(text), Painted(Box(text)));
        State(text).Colorized = State(text).Painted = true;
    }
    m_item->SetItemChanged(true);
    Q_EMIT ColorizeStateChanged();
}

// The item's own language

void ItemEditor::SetItemLanguage(const QString& name)
{
    if (!m_item || Locked() || name == ItemLanguage())
        return;
    const QScopedValueRollback userChange(m_userChange, false);
    const QString formerComment = mFT.CommentIdentifier();
    m_itemLanguage = name;
    mFT.SetItemLanguage(name);
    for (const ItemText text : CodeTexts) {
        ItemTextBox& box = Box(text);
        CodeSections(box.TextBox(), mFT.CommentIdentifier()).TakeOverHeaders(formerComment);
        box.SetLanguage(name);
        ShowByLanguage(text);
        State(text).Colorized = false;
        State(text).Changed = State(text).Changed || !box.IsEmpty();
    }
    m_item->SetItemChanged(true);
    Q_EMIT ColorizeStateChanged();
    Q_EMIT ItemLanguageChanged();
}

} // namespace qb
