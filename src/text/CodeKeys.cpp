#include "text/CodeKeys.h"

#include "platform/system/Prompts.h"
#include "text/LineIndent.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

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

bool IsCommand(const KeyPress& press)
{
    return press.Modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
}

} // namespace

bool CodeKeys::KeyDown(ItemText text, const KeyPress& press)
{
    if (text == ItemText::Notes)
        return NotesKeyDown(press);
    const int key = press.Key;
    const bool commands = IsCommand(press);
    if (m_editor.Locked() || IsModifier(key))
        return false;
    ItemTextBox& box = m_editor.Box(text);
    CodeSections sections = m_sections.SectionsOf(text);
    const bool deletes = !commands && (key == Qt::Key_Backspace || key == Qt::Key_Delete);
    if (deletes && sections.WidenToHeader() == CodeSections::Touched::RestOfHeader) {
        box.InOneStep([&] { sections.DeleteRestOfHeader(); });
        return true;
    }
    if (sections.IsOnHeader() && !commands && !MovesTheCaret(key) && key != Qt::Key_Home && key != Qt::Key_End)
        return HeaderKeyDown(key);
    if (MovesTheCaret(key) || commands)
        return false;
    if (IndentKeyDown(box, press) || (key == Qt::Key_Backspace && DeletesIndent(box)))
        return true;
    if (key == Qt::Key_Return && press.Modifiers == Qt::NoModifier && box.TextBox().SelStart() > 0
        && box.TextBox().SelLength() == 0)
        return NewLine(box);
    if (!press.Text.isEmpty())
        TypeNormally(text);
    return false;
}

/// Tab over a selection indents its lines, and Shift takes it back; at a caret it types blanks.
bool CodeKeys::IndentKeyDown(ItemTextBox& box, const KeyPress& press)
{
    const bool back = press.Key == Qt::Key_Backtab;
    if (press.Key != Qt::Key_Tab && !back)
        return false;
    const bool shifted = press.Modifiers & Qt::ShiftModifier;
    if (back || shifted || box.TextBox().SelLength() > 0) {
        box.InOneStep([&] { back || shifted ? UnindentLines(box.TextBox()) : IndentLines(box.TextBox()); });
        return true;
    }
    if (press.Modifiers != Qt::NoModifier)
        return false;
    box.TypeText(LineIndent());
    return true;
}

/// One press of Backspace takes back one indent.
bool CodeKeys::DeletesIndent(ItemTextBox& box)
{
    const QString& indent = LineIndent();
    IRichTextBox& text = box.TextBox();
    const qsizetype caret = text.SelStart();
    if (text.SelLength() > 0 || caret < indent.size()
        || text.Text().sliced(caret - indent.size(), indent.size()) != indent)
        return false;
    text.SetSelStart(caret - indent.size());
    text.SetSelLength(indent.size());
    if (!box.TypeText({}))
        text.SetSelStart(caret);
    return true;
}

/// Tab over a selection indents its paragraphs, as the command does, and Shift takes it back.
bool CodeKeys::NotesKeyDown(const KeyPress& press)
{
    const bool back = press.Key == Qt::Key_Backtab;
    ItemTextBox& box = m_editor.Box(ItemText::Notes);
    if (m_editor.Locked() || IsCommand(press) || (press.Key != Qt::Key_Tab && !back) || box.TextBox().SelLength() == 0)
        return false;
    CTextFormat& format = m_editor.Formatter();
    box.InOneStep([&] { back ? format.DecreaseIndent() : format.IncreaseIndent(); });
    return true;
}

void CodeKeys::TypeNormally(ItemText text)
{
    ItemTextBox& box = m_editor.Box(text);
    if (m_editor.Locked() || box.TextBox().SelLength() > 0)
        return;
    box.TextBox().SetSelProtected(false);
    box.TextBox().SetSelBold(false);
    box.TextBox().SetSelColor(box.ColoursByRules() ? AutomaticColor : 0);
}

/// A line that is indented is followed by one that is.
bool CodeKeys::NewLine(ItemTextBox& box)
{
    const QString text = box.TextBox().Text();
    const qsizetype caret = box.TextBox().SelStart();
    const qsizetype begin = text.lastIndexOf(u'\n', caret - 1) + 1;
    qsizetype end = begin;
    while (end < caret && (text[end] == u' ' || text[end] == u'\t'))
        ++end;
    return end > begin && box.TypeText(u"\r\n"_s + text.sliced(begin, end - begin));
}

bool CodeKeys::HeaderKeyDown(int key)
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
    const quint8 header = m_sections.CurrentSection();
    answer == MsgBoxResult::Yes ? m_sections.DeleteCodeSection(header) : m_sections.DeleteSelectedHeader(header);
    return true;
}

} // namespace qb
