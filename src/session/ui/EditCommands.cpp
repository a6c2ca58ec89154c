#include "session/ui/EditCommands.h"

#include "config/CSettings.h"
#include "publishing/CopyForms.h"
#include "text/ui/CTextEdit.h"
#include "text/ui/ctlCodeDetails.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr std::pair<const char*, CopyForm> Copies[] = {{"mnuCopyAsPlain", CopyForm::Plain},
                                                       {"mnuCopyAsRtf", CopyForm::Rtf},
                                                       {"mnuCopyAsHtml", CopyForm::Html},
                                                       {"mnuCopyAsMarkdown", CopyForm::Markdown}};

/// The box with the code that is shown and has a text; null for anything else.
ItemTextBox* ShownCodeOf(const ItemEditor& editor)
{
    const std::optional<ItemText> text = editor.Item() ? editor.ShownCode() : std::nullopt;
    return text && !editor.Box(*text).IsEmpty() ? &editor.Box(*text) : nullptr;
}

} // namespace

EditCommands::EditCommands(Commands& commands, ctlCodeDetails& details, QObject* parent)
    : QObject(parent), m_commands(commands), m_details(details)
{
    RegisterText();
    RegisterCopies();
    RegisterView();
    RegisterWeb();
    connect(&details, &ctlCodeDetails::TextChanged, this, &EditCommands::ShowColorizeState);
    connect(&details.Editor(), &ItemEditor::ColorizeStateChanged, this, &EditCommands::ShowColorizeState);
}

void EditCommands::RegisterText()
{
    static constexpr std::pair<const char*, void (CTextEdit::*)()> edits[] = {
        {"mnuUndo", &CTextEdit::Undo}, {"mnuRedo", &CTextEdit::Redo},   {"mnuCut", &CTextEdit::Cut},
        {"mnuCopy", &CTextEdit::Copy}, {"mnuPaste", &CTextEdit::Paste}, {"mnuClear", &CTextEdit::Clear}};
    for (const auto& [name, edit] : edits)
        m_commands.Register(QString::fromLatin1(name), this, &EditCommands::EditCurrentBox, edit);
    m_commands.Register(u"mnuFindInText"_s, &m_details, &ctlCodeDetails::FindInText);
    m_commands.Register(u"mnuFindNext"_s, &m_details, &ctlCodeDetails::FindNextOccurance);
    m_commands.Register(u"mnuFindPrevious"_s, &m_details, &ctlCodeDetails::FindPreviousOccurance);
    m_commands.Register(u"mnuGoToLine"_s, [this] { m_details.GoToLine(); });
    for (const QString& name : {u"COLORIZE"_s, u"mnuColorize"_s})
        m_commands.Register(name, &m_details, &ctlCodeDetails::ColorizeVisible);
}

void EditCommands::RegisterCopies()
{
    for (const auto& [name, form] : Copies)
        m_commands.Register(QString::fromLatin1(name), this, &EditCommands::CopyAs, form);
}

void EditCommands::CopyAs(CopyForm form)
{
    const ItemEditor& editor = m_details.Editor();
    ItemTextBox* box = ShownCodeOf(editor);
    if (!box)
        return;
    const QString own = editor.ItemLanguage();
    const CopiedRange range{box->TextBox().SelStart(), box->TextBox().SelLength()};
    const CopiedText copied = CopyOf(box->Content().Document(), range, editor.Formatter(),
                                     own.isEmpty() ? LibraryLanguage() : own, form);
    auto mime = std::make_unique<QMimeData>();
    mime->setText(copied.Plain);
    for (const CopiedText::Form& one : copied.Forms)
        mime->setData(one.Type, one.Bytes);
    QGuiApplication::clipboard()->setMimeData(mime.release());
}

void EditCommands::RegisterView()
{
    constexpr int ZoomStep = 10;
    constexpr int ActualSize = 100;
    m_commands.Register(u"mnuViewZoomIn"_s, [this] { m_details.SetZoom(m_details.Zoom() + ZoomStep); });
    m_commands.Register(u"mnuViewZoomOut"_s, [this] { m_details.SetZoom(m_details.Zoom() - ZoomStep); });
    m_commands.Register(u"mnuViewZoomReset"_s, [this] { m_details.SetZoom(ActualSize); });
    m_commands.Register(u"mnuViewLineNumbers"_s,
                        [this] { m_details.SetLineNumbers(Switched(u"mnuViewLineNumbers"_s)); });
    m_commands.Register(u"mnuViewWordWrap"_s, [this] { m_details.SetWordWrap(Switched(u"mnuViewWordWrap"_s)); });
}

void EditCommands::RegisterWeb()
{
    m_commands.Register(u"mnuWebGoBack"_s, &m_details, &ctlCodeDetails::GoBack);
    m_commands.Register(u"mnuWebGoForward"_s, &m_details, &ctlCodeDetails::GoForward);
    m_commands.Register(u"mnuWebStop"_s, &m_details, &ctlCodeDetails::BrowserStop);
    m_commands.Register(u"mnuWebReload"_s, &m_details, &ctlCodeDetails::Reload);
    const auto enable = [this](bool back, bool forward) {
        m_commands.SetEnabled(u"mnuWebGoBack"_s, back);
        m_commands.SetEnabled(u"mnuWebGoForward"_s, forward);
    };
    enable(false, false);
    connect(&m_details, &ctlCodeDetails::BrowserCommandStateChange, this, enable);
}

void EditCommands::EditCurrentBox(void (CTextEdit::*edit)())
{
    UserTextBox* box = m_details.CurrentBox();
    if (!box)
        return;
    CTextEdit commands;
    commands.Initialize(*box);
    (commands.*edit)();
}

void EditCommands::ShowState()
{
    UserTextBox* box = m_details.CurrentBox();
    CTextEdit edit;
    if (box)
        edit.Initialize(*box);
    const bool selected = box && edit.CanCopy();
    const bool changeable = box && !box->Locked();
    const bool undoes = box && edit.CanUndo();
    const bool redoes = box && edit.CanRedo();
    const std::pair<const char*, bool> entries[] = {
        {"mnuUndo", undoes},
        {"mnuRedo", redoes},
        {"mnuCopy", selected},
        {"mnuCut", selected && changeable},
        {"mnuClear", selected && changeable},
        {"mnuPaste", changeable && edit.CanPaste()},
        {"mnuFindInText", box != nullptr},
        {"mnuFindNext", box != nullptr},
        {"mnuFindPrevious", box != nullptr},
        {"mnuGoToLine", box != nullptr},
    };
    for (const auto& [name, form] : Copies)
        m_commands.SetEnabled(QLatin1StringView(name), ShownCodeOf(m_details.Editor()) != nullptr);
    for (const auto& [name, enabled] : entries)
        m_commands.SetEnabled(QLatin1StringView(name), enabled);
    m_commands.SetCaption(u"mnuUndo"_s, u"&Undo "_s + (undoes ? edit.TranslatedUndoType() : QString()));
    m_commands.SetCaption(u"mnuRedo"_s, u"&Redo "_s + (redoes ? edit.TranslatedRedoType() : QString()));
}

void EditCommands::ShowColorizeState()
{
    for (const QString& name : {u"COLORIZE"_s, u"mnuColorize"_s})
        m_commands.SetEnabled(name, m_details.CanColorize());
}

bool EditCommands::Switched(const QString& entry)
{
    const bool on = !m_commands.Get(entry).Checked;
    m_commands.SetChecked(entry, on);
    return on;
}

void EditCommands::ReadTextView(const CSettings& settings)
{
    m_details.SetLineNumbers(settings.ViewLineNumbers());
    m_details.SetWordWrap(settings.ViewWordWrap());
    m_details.SetZoom(settings.ViewZoom());
    m_commands.SetChecked(u"mnuViewLineNumbers"_s, settings.ViewLineNumbers());
    m_commands.SetChecked(u"mnuViewWordWrap"_s, settings.ViewWordWrap());
}

void EditCommands::SaveTextView(CSettings& settings)
{
    const bool numbers = m_commands.Get(u"mnuViewLineNumbers"_s).Checked;
    const bool wraps = m_commands.Get(u"mnuViewWordWrap"_s).Checked;
    const int zoom = m_details.Zoom();
    if (numbers == settings.ViewLineNumbers() && wraps == settings.ViewWordWrap() && zoom == settings.ViewZoom())
        return;
    settings.SetViewLineNumbers(numbers);
    settings.SetViewWordWrap(wraps);
    settings.SetViewZoom(zoom);
    settings.Apply();
}

} // namespace qb
