#include "text/ui/CodeBox.h"

namespace qb {

CodeBox::CodeBox(const RtfFont& font, QWidget* parent) : RichTextBoxOf(font, parent)
{
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // a width that changes would have every line laid out
    SetTakesForeignLooks(false);
}

} // namespace qb
