// The colours of the code and usage texts, and the language that they are painted by.

#include "platform/richtext/Rtf.h"
#include "platform/system/Prompts.h"
#include "store/CCodeItem.h"
#include "store/Library.h"
#include "text/CodeSections.h"
#include "text/ui/CodeBox.h"
#include "text/ui/ctlCodeDetails.h"

#include <QCoreApplication>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

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
void ctlCodeDetails::ShowCode(Text text)
{
    const QString code = m_item->Code();
    const QString usage = m_item->Example();
    m_itemLanguage = LanguageInRtf(code);
    if (m_itemLanguage.isEmpty())
        m_itemLanguage = LanguageInRtf(usage);
    mFT.SetItemLanguage(m_itemLanguage);
    CodeBox& box = CodeBoxOf(text);
    RichText content;
    content.SetTextRTF(text == CodeText ? code : usage);
    m_texts[text].Painted = HasColours(content.Document());
    if (mFT.Rules())
        TakePaintOff(content);
    ConnectColours(box);
    box.SetContent(content);
}

void ctlCodeDetails::ConnectColours(CodeBox& box)
{
    box.SetColouring(mFT.Rules(), [this](RichText& copy) {
        const QSignalBlocker noProgress(&mFT);
        mFT.ColorizeCode(copy);
    });
}

CodeBox& ctlCodeDetails::CodeBoxOf(Text text) const
{
    return text == CodeText ? *rtbCode : *rtbUsage;
}

void ctlCodeDetails::FormatingInitialize(Library& library)
{
    mFT.ColorizeInit(library);
    for (const Text text : {CodeText, UsageText})
        ShowByLanguage(text);
}

/// The text in a box is shown by another language.
void ctlCodeDetails::ShowByLanguage(Text text)
{
    const QScopedValueRollback userChange(m_userChange, false);
    CodeBox& box = CodeBoxOf(text);
    const bool wasOn = box.ColoursByRules();
    ConnectColours(box);
    if (wasOn == box.ColoursByRules() || box.IsEmpty())
        return;
    RichText content = box.Content();
    TakePaintOff(content);
    const qsizetype caret = box.SelStart();
    box.SetContent(content); // an undo must not bring back the looks of another language
    box.SetSelStart(caret);
    m_texts[text].Painted = m_texts[text].Colorized = false;
}

void ctlCodeDetails::SetPalette(const TokenPalette& palette)
{
    mFT.SetPalette(palette);
    rtbCode->SetPalette(palette);
    rtbUsage->SetPalette(palette);
}

// Colouring

QString ctlCodeDetails::fnColorize(const QString& tab, bool saveBack)
{
    CodeBox* box = tab == u"Code"_s ? rtbCode : tab == u"Usage"_s ? rtbUsage : nullptr;
    if (!box) {
        Prompts::Current().MsgBox({.Text = u"Unknown tab."_s, .Caption = u"Error"_s, .Icon = MsgBoxIcon::Critical});
        return {};
    }
    const RichText rtbFormat = Painted(*box);
    if (saveBack)
        PutBack(*box, rtbFormat);
    return rtbFormat.Text().isEmpty() ? QString() : rtbFormat.TextRTF();
}

/// A copy in colour: caret, selection and undo of the box stay as they are.
RichText ctlCodeDetails::Painted(const CodeBox& box)
{
    RichText copy = box.Content();
    mFT.ColorizeCode(copy);
    return copy;
}

/// A box that colours by rules shows the colours already.
void ctlCodeDetails::PutBack(CodeBox& box, const RichText& painted)
{
    if (box.ColoursByRules())
        return;
    const QScopedValueRollback userChange(m_userChange, false);
    box.SetRepainted(painted);
}

bool ctlCodeDetails::CanColorize() const
{
    const std::optional<DetailsTab> tab = CurrentView();
    if (!m_item || m_locked || (tab != DetailsTab::Code && tab != DetailsTab::Usage))
        return false;
    const TextState& state = m_texts[tab == DetailsTab::Code ? CodeText : UsageText];
    return !CurrentCodeBox()->ColoursByRules() && !state.Painted && !state.Box->IsEmpty();
}

void ctlCodeDetails::ColorizeVisible()
{
    if (!CanColorize())
        return;
    CodeBox& box = *CurrentCodeBox();
    TextState& state = m_texts[&box == rtbCode ? CodeText : UsageText];
    PutBack(box, Painted(box));
    state.Colorized = state.Painted = true;
    m_item->SetItemChanged(true);
    Q_EMIT ColorizeStateChanged();
}

/// What rules paint is no change of an item: it is seen in colour, and stored as it is.
void ctlCodeDetails::ColorizeItem()
{
    if (!m_item || mFT.Rules())
        return;
    for (const Text text : {CodeText, UsageText}) {
        CodeBox& box = CodeBoxOf(text);
        PutBack(box, Painted(box));
        m_texts[text].Colorized = m_texts[text].Painted = true;
    }
    m_item->SetItemChanged(true);
    Q_EMIT ColorizeStateChanged();
}

// The item's own language

QString ctlCodeDetails::ItemLanguage() const
{
    return m_item ? m_itemLanguage : QString();
}

void ctlCodeDetails::SetItemLanguage(const QString& name)
{
    if (!m_item || m_locked || name == ItemLanguage())
        return;
    const QScopedValueRollback userChange(m_userChange, false);
    const QString formerComment = mFT.CommentIdentifier();
    m_itemLanguage = name;
    mFT.SetItemLanguage(name);
    for (const Text text : {CodeText, UsageText}) {
        CodeBox& box = CodeBoxOf(text);
        SectionsOf(box).TakeOverHeaders(formerComment);
        box.SetLanguage(name);
        ShowByLanguage(text);
        m_texts[text].Colorized = false;
        m_texts[text].Changed = m_texts[text].Changed || !box.IsEmpty();
    }
    m_item->SetItemChanged(true);
    Q_EMIT ColorizeStateChanged();
    Q_EMIT ItemLanguageChanged();
}

// Progress

void ctlCodeDetails::ShowColorizeProgress(int percent)
{
    constexpr int Done = 100;
    constexpr int NarrowestWithBar = 1000 / 15; // pixels; a bar in less would tell nothing
    if (percent >= Done)
        return picColorize->hide();
    prbColorize->setValue(percent);
    if (percent > 0)
        return;
    m_pages->setCurrentIndex(1);
    if (width() < NarrowestWithBar)
        return;
    picColorize->show();
    picColorize->raise();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace qb
