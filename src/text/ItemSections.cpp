#include "text/ItemSections.h"

#include "platform/system/Prompts.h"
#include "support/ErrorRoutine.h"
#include "text/SectionBits.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlCodeDetails"_s;

/// The number of the line that holds the caret, from 1.
qsizetype LineOfCaret(const IRichTextBox& box)
{
    return QStringView(box.Text()).first(box.SelStart()).count(u'\n') + 1;
}

} // namespace

CodeSections ItemSections::SectionsOf(ItemText text) const
{
    CodeSections sections(m_editor.Box(text).TextBox(), m_editor.Formatter().CommentIdentifier());
    sections.HeaderMissing = [this, text](quint8 header) {
        if (!m_editor.Locked())
            Q_EMIT const_cast<ItemSections*>(this)->HeaderMissing(header, text == ItemText::Code);
    };
    return sections;
}

void ItemSections::CreateCodeSection(CCodeItem& item, quint8 header, quint32 color)
{
    Guarded(ModuleName, u"CreateCodeSection"_s, [&] {
        const std::optional<ItemText> text = m_editor.ShownCode();
        if (!text || m_editor.Locked())
            return;
        SectionBits bits(item, text == ItemText::Code);
        if (bits.Has(header)) {
            GoToCodeSection(header, false);
            return;
        }
        const quint8 before = bits.All();
        bits.Add(header);
        ItemTextBox& box = m_editor.Box(*text);
        const bool isActive = box.HasFocus();
        box.TakeFocus();
        bool written = false;
        box.InOneStep([&] { written = SectionsOf(*text).Create(header, color, !isActive); });
        if (!written)
            bits.SetAll(before);
    });
}

bool ItemSections::GoToCodeSection(quint8 header, bool stayOnHeader)
{
    return Guarded(
        ModuleName, u"GoToCodeSection"_s,
        [&] {
            const std::optional<ItemText> text = m_editor.ShownCode();
            if (!text) {
                Prompts::Current().MsgBox(
                    {.Text = u"Error. No appropriate tab selected."_s, .Caption = ApplicationTitle});
                return false;
            }
            m_editor.Box(*text).TakeFocus();
            return SectionsOf(*text).GoTo(header, stayOnHeader);
        },
        false);
}

QString ItemSections::TextToCopy(quint8 header) const
{
    const std::optional<ItemText> text = m_editor.ShownCode();
    return text ? SectionsOf(*text).TextToCopy(header) : QString();
}

void ItemSections::DeleteCodeSection(quint8 header)
{
    Guarded(ModuleName, u"DeleteCodeSection"_s, [&] {
        const std::optional<ItemText> text = m_editor.ShownCode();
        if (!text) {
            Prompts::Current().MsgBox(
                {.Text = u"DeleteCodeSection procedure called while no appropriate tab is selected."_s,
                 .Caption = u"Error"_s,
                 .Icon = MsgBoxIcon::Exclamation});
            return;
        }
        if (m_editor.Locked())
            return;
        m_editor.Box(*text).InOneStep([&] { SectionsOf(*text).Delete(); });
        Q_EMIT SectionDeleted(header);
    });
}

void ItemSections::DeleteSelectedHeader(quint8 header)
{
    const std::optional<ItemText> text = m_editor.ShownCode();
    if (!text || m_editor.Locked())
        return;
    m_editor.Box(*text).InOneStep([&] { SectionsOf(*text).DeleteSelectedHeader(); });
    Q_EMIT SectionDeleted(header);
}

QString ItemSections::PlaceOfNewSection(quint8 header) const
{
    const std::optional<ItemText> text = m_editor.ShownCode();
    if (!text)
        return {};
    ItemTextBox& box = m_editor.Box(*text);
    return box.HasFocus() ? u"before line %1"_s.arg(LineOfCaret(box.TextBox())) : SectionsOf(*text).ChosenPlace(header);
}

void ItemSections::TextTakenBack(ItemText text)
{
    if (!m_editor.Item() || m_editor.Locked())
        return;
    SectionBits bits(*m_editor.Item(), text == ItemText::Code);
    const quint8 borneOut = SectionsOf(text).BorneOut(bits.All());
    if (borneOut == bits.All())
        return;
    bits.SetAll(borneOut);
    Q_EMIT SectionsTakenBack();
}

quint8 ItemSections::CurrentSection() const
{
    const std::optional<ItemText> text = m_editor.ShownCode();
    return text ? SectionsOf(*text).Current() : quint8(0);
}

} // namespace qb
