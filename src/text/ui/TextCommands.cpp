#include "text/ui/TextCommands.h"

#include "platform/system/Prompts.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "text/ui/CodeBox.h"
#include "text/ui/FindBar.h"
#include "text/ui/FoundMarks.h"
#include "text/ui/RichTextBox.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlCodeDetails"_s;
constexpr int ZoomStep = 10; // percent

template <class Box>
Box* MakeBox(const QString& name)
{
    auto* box = new Box;
    box->setObjectName(name);
    return box;
}

} // namespace

TextCommands::TextCommands(CTextFormat& formatter, ItemEditorView& view)
    : rtbCode(MakeBox<CodeBox>(u"rtbCode"_s)), rtbNotes(MakeBox<RichTextBox>(u"rtbNotes"_s)),
      rtbUsage(MakeBox<CodeBox>(u"rtbUsage"_s)), m_editor(formatter, {rtbCode, rtbNotes, rtbUsage}, view),
      m_sections(m_editor), m_keys(m_editor, m_sections)
{
}

TextCommands::~TextCommands() = default;

CodeBox* TextCommands::CurrentCodeBox() const
{
    const std::optional<ItemText> text = m_editor.ShownCode();
    return !text ? nullptr : text == ItemText::Code ? rtbCode : rtbUsage;
}

QString TextCommands::CodeWindowText() const
{
    return rtbCode->Text();
}

void TextCommands::NotesSetFocus()
{
    rtbNotes->setFocus();
}

// Sections

void TextCommands::CreateCodeSection(CCodeItem& item, quint8 header, quint32 color)
{
    m_sections.CreateCodeSection(item, header, color);
}

bool TextCommands::GoToCodeSection(quint8 header, bool stayOnHeader)
{
    return m_sections.GoToCodeSection(header, stayOnHeader);
}

void TextCommands::CopyCodeSectionToClipboard(quint8 header)
{
    Guarded(ModuleName, u"CopyCodeSectionToClipboard"_s, [&] {
        QString text = m_sections.TextToCopy(header);
        if (!text.isEmpty())
            QGuiApplication::clipboard()->setText(text.replace("\r\n"_L1, "\n"_L1));
    });
}

// Keys

std::optional<ItemText> TextCommands::TextOf(const QObject* box) const
{
    if (box == rtbNotes)
        return ItemText::Notes;
    return box == rtbCode    ? std::optional(ItemText::Code)
           : box == rtbUsage ? std::optional(ItemText::Usage)
                             : std::nullopt;
}

bool TextCommands::BoxEvent(const QObject* box, QEvent& event)
{
    const std::optional<ItemText> text = TextOf(box);
    if (!text)
        return false;
    if (event.type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(event);
        return m_keys.KeyDown(*text, {.Key = key.key(), .Modifiers = key.modifiers(), .Text = key.text()});
    }
    if (text != ItemText::Notes && event.type() == QEvent::InputMethod
        && !static_cast<const QInputMethodEvent&>(event).commitString().isEmpty())
        m_keys.TypeNormally(*text);
    return false;
}

// Finding

void TextCommands::FindInText()
{
    m_findBar->Open();
}

void TextCommands::FindNextOccurance()
{
    m_findBar->FindNext();
}

void TextCommands::FindPreviousOccurance()
{
    m_findBar->FindPrevious();
}

void TextCommands::GoToLine()
{
    CodeBox* box = CurrentCodeBox();
    if (!box)
        return;
    const std::optional<QString> answer = Prompts::Current().InputBox(
        u"Line (1 to %1):"_s.arg(box->LineCount()), u"Go to Line"_s, QString::number(box->LineOfCaret()));
    bool isNumber = false;
    const int line = answer.value_or(QString()).trimmed().toInt(&isNumber);
    isNumber ? GoToLine(line) : box->setFocus();
}

void TextCommands::GoToLine(int line)
{
    CodeBox* box = CurrentCodeBox();
    if (!box)
        return;
    box->GoToLine(line);
    box->setFocus();
}

// Looks

void TextCommands::ZoomBy(int steps)
{
    SetZoom(m_zoom + steps * ZoomStep);
}

void TextCommands::SetZoom(int percent)
{
    constexpr int Smallest = 50;
    constexpr int Largest = 400;
    constexpr double Whole = 100;
    const int zoom = std::clamp(percent, Smallest, Largest);
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    m_editor.Unnoticed([this] {
        for (UserTextBox* box : std::initializer_list<UserTextBox*>{rtbCode, rtbNotes, rtbUsage, m_fileNotes}) {
            if (box)
                box->SetZoom(m_zoom / Whole);
        }
    });
}

void TextCommands::SetLineNumbers(bool shown)
{
    rtbCode->SetLineNumbers(shown);
    rtbUsage->SetLineNumbers(shown);
}

void TextCommands::SetWordWrap(bool wraps)
{
    rtbCode->SetWordWrap(wraps);
    rtbUsage->SetWordWrap(wraps);
}

void TextCommands::SetPalette(const TokenPalette& palette)
{
    m_editor.Formatter().SetPalette(palette);
    rtbCode->SetPalette(palette);
    rtbUsage->SetPalette(palette);
}

void TextCommands::SetDefaultFont(const RtfFont& font)
{
    rtbNotes->SetDefaultFont(font);
    if (m_fileNotes)
        m_fileNotes->SetDefaultFont(font);
}

// Unsaved texts

void TextCommands::OfferUnsavedTexts(Library& library, const std::function<void(qint64 item)>& goTo)
{
    Guarded(ModuleName, u"OfferUnsavedTexts"_s,
            [&] { qb::OfferUnsavedTexts(library, goTo, std::bind_front(&ItemEditor::ShowUnsaved, &m_editor)); });
}

} // namespace qb
