// The sections of the code and usage texts, and the keys that mind them.

#include "platform/system/Prompts.h"
#include "store/CCodeItem.h"
#include "support/ErrorRoutine.h"
#include "text/CodeSections.h"
#include "text/LineIndent.h"
#include "text/SectionBits.h"
#include "text/ui/CodeBox.h"
#include "text/ui/RichTextBox.h"
#include "text/ui/ctlCodeDetails.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlCodeDetails"_s;

bool MovesTheCaret(int key)
{
    return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down
           || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
}

bool IsModifier(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_AltGr
           || key == Qt::Key_Meta;
}

} // namespace

CodeBox* ctlCodeDetails::CurrentCodeBox() const
{
    const std::optional<DetailsTab> tab = CurrentView();
    if (tab == DetailsTab::Code)
        return rtbCode;
    return tab == DetailsTab::Usage ? rtbUsage : nullptr;
}

CodeSections ctlCodeDetails::SectionsOf(CodeBox& box) const
{
    CodeSections sections(box, mFT.CommentIdentifier());
    sections.HeaderMissing = [this, &box](quint8 header) {
        if (!m_locked)
            Q_EMIT const_cast<ctlCodeDetails*>(this)->HeaderMissing(header, &box == rtbCode);
    };
    return sections;
}

void ctlCodeDetails::CreateCodeSection(CCodeItem& item, quint8 header, quint32 color)
{
    Guarded(ModuleName, u"CreateCodeSection"_s, [&] {
        CodeBox* box = CurrentCodeBox();
        if (!box || m_locked)
            return;
        SectionBits bits(item, box == rtbCode);
        if (bits.Has(header)) {
            GoToCodeSection(header, false);
            return;
        }
        const quint8 before = bits.All();
        bits.Add(header);
        const bool isActive = box->hasFocus();
        box->setFocus();
        bool written = false;
        box->InOneStep([&] { written = SectionsOf(*box).Create(header, color, !isActive); });
        if (!written)
            bits.SetAll(before);
    });
}

bool ctlCodeDetails::GoToCodeSection(quint8 header, bool stayOnHeader)
{
    return Guarded(
        ModuleName, u"GoToCodeSection"_s,
        [&] {
            CodeBox* box = CurrentCodeBox();
            if (!box) {
                Prompts::Current().MsgBox(
                    {.Text = u"Error. No appropriate tab selected."_s, .Caption = ApplicationTitle});
                return false;
            }
            box->setFocus();
            return SectionsOf(*box).GoTo(header, stayOnHeader);
        },
        false);
}

void ctlCodeDetails::CopyCodeSectionToClipboard(quint8 header)
{
    Guarded(ModuleName, u"CopyCodeSectionToClipboard"_s, [&] {
        CodeBox* box = CurrentCodeBox();
        const QString text = box ? SectionsOf(*box).TextToCopy(header) : QString();
        if (!text.isEmpty())
            QGuiApplication::clipboard()->setText(QString(text).replace("\r\n"_L1, "\n"_L1));
    });
}

void ctlCodeDetails::DeleteCodeSection(quint8 header)
{
    Guarded(ModuleName, u"DeleteCodeSection"_s, [&] {
        CodeBox* box = CurrentCodeBox();
        if (!box) {
            Prompts::Current().MsgBox(
                {.Text = u"DeleteCodeSection procedure called while no appropriate tab is selected."_s,
                 .Caption = u"Error"_s,
                 .Icon = MsgBoxIcon::Exclamation});
            return;
        }
        if (m_locked)
            return;
        box->InOneStep([&] { SectionsOf(*box).Delete(); });
        Q_EMIT SectionDeleted(header);
    });
}

QString ctlCodeDetails::PlaceOfNewSection(quint8 header) const
{
    CodeBox* box = CurrentCodeBox();
    if (!box)
        return {};
    return box->hasFocus() ? u"before line %1"_s.arg(box->LineOfCaret()) : SectionsOf(*box).ChosenPlace(header);
}

/// Undo and redo take header lines away and bring them back; the item's bits go with them.
void ctlCodeDetails::SectionsTakenBack(CodeBox& box)
{
    if (!m_item || m_locked)
        return;
    SectionBits bits(*m_item, &box == rtbCode);
    const quint8 borneOut = SectionsOf(box).BorneOut(bits.All());
    if (borneOut == bits.All())
        return;
    bits.SetAll(borneOut);
    Q_EMIT EditStateChanged();
}

quint8 ctlCodeDetails::CurrentSection() const
{
    CodeBox* box = CurrentCodeBox();
    return box ? SectionsOf(*box).Current() : quint8(0);
}

// Keys

bool ctlCodeDetails::eventFilter(QObject* watched, QEvent* event)
{
    auto* box = watched == rtbCode ? rtbCode : watched == rtbUsage ? rtbUsage : nullptr;
    if (box && event->type() == QEvent::KeyPress && CodeBoxesKeyDown(*box, *static_cast<QKeyEvent*>(event)))
        return true;
    if (watched == rtbNotes && event->type() == QEvent::KeyPress && NotesKeyDown(*static_cast<QKeyEvent*>(event)))
        return true;
    if (box && event->type() == QEvent::InputMethod
        && !static_cast<QInputMethodEvent*>(event)->commitString().isEmpty())
        TypeNormally(*box);
    return QWidget::eventFilter(watched, event);
}

/// What a key means in a box for code, before the box sees it; true when that is all.
bool ctlCodeDetails::CodeBoxesKeyDown(CodeBox& box, QKeyEvent& event)
{
    const QString& indent = LineIndent();
    Q_EMIT CodeKeyDown(&event);
    const int key = event.key();
    const bool commands = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (m_locked || IsModifier(key))
        return false;
    const bool deletes = !commands && (key == Qt::Key_Backspace || key == Qt::Key_Delete);
    if (deletes && SectionsOf(box).WidenToHeader() == CodeSections::Touched::RestOfHeader) {
        box.InOneStep([&] { SectionsOf(box).DeleteRestOfHeader(); });
        return true;
    }
    if (SectionsOf(box).IsOnHeader() && !commands && !MovesTheCaret(key) && key != Qt::Key_Home && key != Qt::Key_End)
        return HeaderKeyDown(box, key);
    if (MovesTheCaret(key) || commands)
        return false;
    const bool shifted = event.modifiers() & Qt::ShiftModifier;
    if (key == Qt::Key_Backtab || (key == Qt::Key_Tab && (shifted || box.SelLength() > 0))) {
        box.InOneStep([&] { key == Qt::Key_Backtab || shifted ? UnindentLines(box) : IndentLines(box); });
        return true;
    }
    if (key == Qt::Key_Tab && event.modifiers() == Qt::NoModifier) {
        box.TypeText(indent);
        return true;
    }
    const qsizetype caret = box.SelStart();
    const bool behindIndent = box.SelLength() == 0 && caret >= indent.size()
                              && box.Text().sliced(caret - indent.size(), indent.size()) == indent;
    if (key == Qt::Key_Backspace && behindIndent) { // one press takes back one indent
        box.SetSelStart(caret - indent.size());
        box.SetSelLength(indent.size());
        if (!box.TypeText({}))
            box.SetSelStart(caret);
        return true;
    }
    if (key == Qt::Key_Return && event.modifiers() == Qt::NoModifier && caret > 0 && box.SelLength() == 0)
        return NewLine(box);
    if (!event.text().isEmpty())
        TypeNormally(box);
    return false;
}

/// Tab over a selection indents its paragraphs, as the command does, and Shift takes it back.
bool ctlCodeDetails::NotesKeyDown(const QKeyEvent& event)
{
    const bool back = event.key() == Qt::Key_Backtab;
    const bool commands = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (m_locked || commands || (event.key() != Qt::Key_Tab && !back) || rtbNotes->SelLength() == 0)
        return false;
    rtbNotes->InOneStep([&] { back ? DecreaseIndent() : IncreaseIndent(); });
    return true;
}

/// What is typed beside a header is no part of it.
void ctlCodeDetails::TypeNormally(CodeBox& box)
{
    if (m_locked || box.SelLength() > 0)
        return;
    box.SetSelProtected(false);
    box.SetSelBold(false);
    box.SetSelColor(box.ColoursByRules() ? AutomaticColor : 0);
}

/// A line that is indented is followed by one that is.
bool ctlCodeDetails::NewLine(CodeBox& box)
{
    const QString text = box.Text();
    const qsizetype begin = text.lastIndexOf(u'\n', box.SelStart() - 1) + 1;
    qsizetype end = begin;
    while (end < box.SelStart() && (text[end] == u' ' || text[end] == u'\t'))
        ++end;
    return end > begin && box.TypeText(u"\r\n"_s + text.sliced(begin, end - begin));
}

bool ctlCodeDetails::HeaderKeyDown(CodeBox& box, int key)
{
    if (key != Qt::Key_Backspace && key != Qt::Key_Delete)
        return true;
    const MsgBoxResult answer = Prompts::Current().MsgBox(
        {.Text = u"Do you wish to delete the whole section?\r\n\r\nIf you select no, just header will be deleted."_s,
         .Caption = u"Section Delete"_s,
         .Buttons = MsgBoxButtons::YesNoCancel,
         .Icon = MsgBoxIcon::Question});
    if (answer == MsgBoxResult::Cancel)
        return true;
    const quint8 header = CurrentSection();
    if (answer == MsgBoxResult::Yes) {
        DeleteCodeSection(header);
        return true;
    }
    box.InOneStep([&] { SectionsOf(box).DeleteSelectedHeader(); });
    Q_EMIT SectionDeleted(header);
    return true;
}

} // namespace qb
