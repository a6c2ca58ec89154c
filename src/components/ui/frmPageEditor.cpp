#include "components/ui/frmPageEditor.h"

#include "components/ui/PageFindBar.h"
#include "components/ui/SourceHighlighter.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "store/ShippedLanguages.h"
#include "support/ui/Icons.h"
#include "web/ui/frmInsertPicture.h"

#include <QAction>
#include <QComboBox>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QStackedLayout>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The kinds of blocks that can be chosen, as the editor names them.
struct BlockRow {
    const char* Name;
    const char* Caption;
    const char* Command;
    int Level;
};
constexpr BlockRow Blocks[] = {
    {"paragraph", "Paragraph", "paragraph", 0}, {"h1", "Heading 1", "heading", 1},
    {"h2", "Heading 2", "heading", 2},          {"h3", "Heading 3", "heading", 3},
    {"h4", "Heading 4", "heading", 4},          {"h5", "Heading 5", "heading", 5},
    {"h6", "Heading 6", "heading", 6},          {"code_block", "Code", "code_block", 0},
};

/// Commands of the text that are buttons, with what of the state presses them.
struct TextRow {
    const char* Command;
    const char* Icon;
    const char* Caption; ///< with its keys, which the editor itself listens to
    const char* Mark;    ///< a mark or a list; null: none
};
constexpr TextRow TextRows[] = {
    {"bold", "format-text-bold", "Bold (Ctrl+B)", "strong"},
    {"italic", "format-text-italic", "Italic (Ctrl+I)", "em"},
    {"underline", "format-text-underline", "Underlined (Ctrl+U)", "underline"},
    {"strike", "format-text-strikethrough", "Struck through", "strike"},
    {"inline_code", "format-text-code", "Code in the text (Ctrl+`)", "code"},
    {"clear_format", "edit-clear-all", "Without formats", nullptr},
    {"bullet_list", "format-list-unordered", "List", "bullet_list"},
    {"ordered_list", "format-list-ordered", "Numbered list", "ordered_list"},
    {"outdent", "format-indent-less", "Out of the list (Shift+Tab)", nullptr},
    {"indent", "format-indent-more", "Deeper into the list (Tab)", nullptr},
    {"quote", "format-text-blockquote", "Quotation", "blockquote"},
    {"rule", "insert-horizontal-rule", "Line across", nullptr},
};

struct TableRow {
    const char* Command;
    const char* Caption;
};
constexpr TableRow TableRows[] = {
    {"table", "&Insert Table"},
    {nullptr, nullptr},
    {"row_above", "Row &Above"},
    {"row_below", "Row &Below"},
    {"column_left", "Column &Left"},
    {"column_right", "Column &Right"},
    {nullptr, nullptr},
    {"remove_row", "Remove Ro&w"},
    {"remove_column", "Remove &Column"},
    {"remove_table", "Remove &Table"},
};

} // namespace

frmPageEditor::frmPageEditor(QWidget* parent, const QString& path, PageEditingTools tools, ItemSource items)
    : QDialog(parent, Qt::Window), m_items(std::move(items))
{
    constexpr QSize Proposed(1000, 720);
    setObjectName(u"frmPageEditor"_s);
    setModal(true);
    MakePane(path, std::move(tools));
    m_pane->Start(m_editing->Pictures()); // its process starts while the window is made
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    MakeToolbars();
    layout->addWidget(tlbPage);
    layout->addWidget(tlbFormat);
    m_views = new QStackedLayout;
    m_views->addWidget(m_pane->Widget());
    MakeSource();
    layout->addLayout(m_views, 1);
    m_findBar = new PageFindBar;
    layout->addWidget(m_findBar);
    lblStatus = new QLabel;
    lblStatus->setObjectName(u"lblStatus"_s);
    lblStatus->setTextFormat(Qt::PlainText);
    lblStatus->setContentsMargins(6, 2, 6, 2);
    layout->addWidget(lblStatus);
    Connect();
    ShowTitle();
    resize(Proposed);
}

frmPageEditor::~frmPageEditor()
{
    m_pane.reset(); // before what it calls
}

void frmPageEditor::MakePane(const QString& path, PageEditingTools tools)
{
    QString reason;
    m_pane = MakeEditorPane(reason);
    if (!m_pane)
        throw RuntimeError(
            ErrorNumber::ObjectNotSet,
            u"Web pages can't be edited here: %1\n\nInstall Qt WebEngine (libqt6webenginewidgets6)."_s.arg(reason),
            u"frmPageEditor"_s);
    m_editing = std::make_unique<PageEditing>(path, std::move(tools), std::bind_front(&EditorPane::Call, m_pane.get()));
}

void frmPageEditor::Connect()
{
    m_pane->Told = std::bind_front(&PageEditing::Told, m_editing.get());
    m_pane->Died = [this] {
        m_editing->Died();
        m_pane->Start(m_editing->Pictures());
    };
    m_editing->StateChanged = std::bind_front(&frmPageEditor::ShowState, this);
    m_editing->Said = std::bind_front(&QLabel::setText, lblStatus);
    m_editing->Failed = std::bind_front(&frmPageEditor::Fail, this);
    m_editing->Found = std::bind_front(&PageFindBar::ShowFound, m_findBar);
    m_editing->PictureWanted = std::bind_front(&frmPageEditor::AddPicture, this);
    m_editing->SendMark = std::bind_front(&EditorPane::SendMark, m_pane.get());
    m_editing->Opened = [this] {
        m_pane->Widget()->setFocus();
        Q_EMIT Opened();
    };
    m_editing->OnlySource = [this] {
        m_isOnlySource = true;
        m_sourceAction->setChecked(true);
        m_sourceAction->setEnabled(false);
        lblStatus->setText(u"This page has no body, or one that is too deep; it can be edited as source only."_s);
        Q_EMIT Opened();
    };
    connect(m_findBar, &PageFindBar::FindAsked, this, [this](const QJsonObject& find) {
        if (!IsSourceShown())
            return m_editing->Find(find);
        const auto flags = (find["step"_L1].toInt() < 0 ? QTextDocument::FindBackward : QTextDocument::FindFlags())
                           | (find["matchCase"_L1].toBool() ? QTextDocument::FindCaseSensitively
                                                            : QTextDocument::FindFlags());
        m_findBar->ShowFound(0, txtSource->find(find["text"_L1].toString(), flags) ? 1 : 0);
    });
    connect(m_findBar, &PageFindBar::ReplaceAsked, this, [this](const QJsonObject& replace) {
        if (!IsSourceShown())
            m_editing->Replace(replace);
        else if (txtSource->textCursor().hasSelection())
            txtSource->textCursor().insertText(replace["by"_L1].toString());
    });
    connect(m_findBar, &PageFindBar::Left, this, [this] {
        m_findBar->hide();
        m_views->currentWidget()->setFocus();
    });
    m_pane->Widget()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_pane->Widget(), &QWidget::customContextMenuRequested, this, &frmPageEditor::ShowMenu);
}

QAction* frmPageEditor::AddAction(QToolBar& bar, const char* name, const char* icon, const char* text,
                                  const QKeySequence& key, std::function<void()> run)
{
    auto* action = new QAction(IconNamed(QString::fromLatin1(icon)), QString::fromUtf8(text), this);
    action->setObjectName(QString::fromLatin1(name));
    if (!key.isEmpty()) {
        action->setShortcut(key);
        action->setToolTip(u"%1 (%2)"_s.arg(action->text(), key.toString(QKeySequence::NativeText)));
    }
    connect(action, &QAction::triggered, this, std::move(run));
    bar.addAction(action);
    m_actions.insert(action->objectName(), action);
    return action;
}

void frmPageEditor::MakeToolbars()
{
    tlbPage = new QToolBar;
    tlbFormat = new QToolBar;
    const auto edit = [this](EditorPane::Edit what, void (QPlainTextEdit::*source)()) {
        return [this, what, source] {
            if (IsSourceShown())
                std::mem_fn(source)(txtSource);
            else
                m_pane->Do(what);
        };
    };
    const auto undo = [this](const char* command, void (QPlainTextEdit::*source)()) {
        return [this, command, source] {
            if (IsSourceShown())
                std::mem_fn(source)(txtSource);
            else
                m_editing->Run(QString::fromLatin1(command));
        };
    };
    AddAction(*tlbPage, "save", "document-save", "Save", QKeySequence(u"Ctrl+S"_s), [this] { Save(); });
    tlbPage->addSeparator();
    AddAction(*tlbPage, "undo", "edit-undo", "Undo", {}, undo("undo", &QPlainTextEdit::undo));
    AddAction(*tlbPage, "redo", "edit-redo", "Redo", {}, undo("redo", &QPlainTextEdit::redo));
    tlbPage->addSeparator();
    AddAction(*tlbPage, "cut", "edit-cut", "Cut", {}, edit(EditorPane::Edit::Cut, &QPlainTextEdit::cut));
    AddAction(*tlbPage, "copy", "edit-copy", "Copy", {}, edit(EditorPane::Edit::Copy, &QPlainTextEdit::copy));
    AddAction(*tlbPage, "paste", "edit-paste", "Paste", {}, edit(EditorPane::Edit::Paste, &QPlainTextEdit::paste));
    tlbPage->addSeparator();
    AddAction(*tlbPage, "find", "edit-find-replace", "Find and replace", QKeySequence(u"Ctrl+F"_s),
              [this] { m_findBar->Begin(IsSourceShown() ? txtSource->textCursor().selectedText() : m_state.Text); });
    m_sourceAction = AddAction(*tlbPage, "source", "code-context", "Source", QKeySequence(u"Ctrl+Shift+S"_s), [] {});
    m_sourceAction->setCheckable(true);
    connect(m_sourceAction, &QAction::toggled, this, &frmPageEditor::ShowSource);
    tlbPage->addSeparator();
    AddAction(*tlbPage, "link", "insert-link", "Link", QKeySequence(u"Ctrl+K"_s),
              std::bind_front(&frmPageEditor::AddLink, this));
    AddAction(*tlbPage, "picture", "insert-image", "Picture", {}, std::bind_front(&frmPageEditor::AddPicture, this));
    auto* table = AddAction(*tlbPage, "table_menu", "insert-table", "Table", {},
                            [this] { m_editing->Run(u"table"_s); });
    table->setMenu(TableMenu());
    if (auto* button = qobject_cast<QToolButton*>(tlbPage->widgetForAction(table)))
        button->setPopupMode(QToolButton::InstantPopup);
    MakeTextActions(*tlbFormat);
}

void frmPageEditor::MakeTextActions(QToolBar& bar)
{
    cboBlock = new QComboBox;
    cboBlock->setObjectName(u"cboBlock"_s);
    for (const BlockRow& row : Blocks)
        cboBlock->addItem(QString::fromLatin1(row.Caption), QString::fromLatin1(row.Name));
    connect(cboBlock, &QComboBox::activated, this, &frmPageEditor::ChooseBlock);
    bar.addWidget(cboBlock);
    for (const TextRow& row : TextRows) {
        const QString command = QString::fromLatin1(row.Command);
        QAction* action = AddAction(bar, row.Command, row.Icon, row.Caption, {},
                                    [this, command] { m_editing->Run(command); });
        action->setCheckable(row.Mark != nullptr);
    }
    cboLanguage = new QComboBox;
    cboLanguage->setObjectName(u"cboLanguage"_s);
    cboLanguage->setToolTip(u"The language of the code"_s);
    cboLanguage->addItem(u"(no language)"_s, QString());
    for (const ShippedLanguage& language : ShippedLanguages())
        cboLanguage->addItem(language.Name, language.Key);
    cboLanguage->setMaxVisibleItems(20);
    connect(cboLanguage, &QComboBox::activated, this, &frmPageEditor::ChooseLanguage);
    bar.addWidget(cboLanguage);
}

QMenu* frmPageEditor::TableMenu()
{
    auto* menu = new QMenu(this);
    for (const TableRow& row : TableRows) {
        if (!row.Command) {
            menu->addSeparator();
            continue;
        }
        const QString command = QString::fromLatin1(row.Command);
        QAction* action = menu->addAction(QString::fromLatin1(row.Caption), this,
                                          [this, command] { m_editing->Run(command); });
        action->setObjectName(command);
        m_actions.insert(command, action);
    }
    return menu;
}

void frmPageEditor::MakeSource()
{
    txtSource = new QPlainTextEdit;
    txtSource->setObjectName(u"txtSource"_s);
    txtSource->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txtSource->setFrameShape(QFrame::NoFrame);
    txtSource->setTabChangesFocus(false);
    new SourceHighlighter(*txtSource, u"html"_s);
    m_views->addWidget(txtSource);
}

void frmPageEditor::ShowState(const EditingState& state)
{
    m_state = state;
    const QSignalBlocker noBlock(cboBlock);
    const QSignalBlocker noLanguage(cboLanguage);
    cboBlock->setCurrentIndex(cboBlock->findData(state.Block));
    cboLanguage->setEnabled(state.Block == u"code_block"_s);
    const int language = cboLanguage->findData(state.Language);
    cboLanguage->setCurrentIndex(qMax(language, 0));
    for (const TextRow& row : TextRows) {
        const QString mark = QString::fromLatin1(row.Mark ? row.Mark : "");
        m_actions[QString::fromLatin1(row.Command)]->setChecked(state.On.contains(mark) || state.Lists.contains(mark));
    }
    for (const TableRow& row : TableRows) {
        if (row.Command && QByteArrayView(row.Command) != "table")
            m_actions[QString::fromLatin1(row.Command)]->setEnabled(state.IsTable);
    }
    m_actions[u"undo"_s]->setEnabled(state.CanUndo || IsSourceShown());
    m_actions[u"redo"_s]->setEnabled(state.CanRedo || IsSourceShown());
    ShowTitle();
}

void frmPageEditor::ShowTitle()
{
    setWindowTitle(
        u"%1%2 - Page Editor"_s.arg(IsUnsaved() ? u"*"_s : QString(), m_editing->Pictures().Page + u".htm"_s));
}

void frmPageEditor::ChooseBlock(int index)
{
    const BlockRow& row = Blocks[index];
    m_editing->Run(QString::fromLatin1(row.Command), row.Level > 0 ? QJsonValue(row.Level) : QJsonValue());
}

void frmPageEditor::ChooseLanguage()
{
    m_editing->Run(u"code_language"_s, cboLanguage->currentData().toString());
}

void frmPageEditor::AddPicture()
{
    frmInsertPicture dialog(this, m_editing->Pictures());
    if (dialog.exec() == QDialog::Accepted)
        m_editing->PutPicture(dialog.Chosen().Picture, dialog.Chosen().Width, dialog.Chosen().Height);
}

void frmPageEditor::AddLink()
{
    frmInsertLink dialog(this, {m_state.Link, m_state.Text, {}, {}}, m_items);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const PageLink link = dialog.Link();
    m_editing->Run(u"link"_s, QJsonObject{{u"address"_s, LinkedAddress(link.Address)},
                                          {u"text"_s, link.Text},
                                          {u"before"_s, link.Before},
                                          {u"behind"_s, link.Behind}});
}

void frmPageEditor::ShowMenu(const QPoint& at)
{
    QMenu menu(this);
    for (const char* name : {"cut", "copy", "paste"})
        menu.addAction(m_actions[QString::fromLatin1(name)]);
    menu.addAction(u"Paste Without Formats"_s, this,
                   std::bind_front(&EditorPane::Do, m_pane.get(), EditorPane::Edit::PastePlain));
    menu.addSeparator();
    menu.addAction(u"Select &All"_s, this, [this] { m_editing->Run(u"select_all"_s); });
    menu.addAction(m_actions[u"link"_s]);
    if (!m_state.Link.isEmpty())
        menu.addAction(u"Remove Link"_s, this, [this] { m_editing->Run(u"unlink"_s); });
    if (m_state.IsTable)
        menu.addAction(m_actions[u"table_menu"_s]);
    menu.exec(m_pane->Widget()->mapToGlobal(at));
}

bool frmPageEditor::IsSourceShown() const
{
    return m_views->currentWidget() == txtSource;
}

bool frmPageEditor::IsUnsaved() const
{
    return m_editing->IsUnsaved() || (IsSourceShown() && txtSource->document()->toRawText() != m_sourceGiven);
}

void frmPageEditor::ShowSource(bool shown)
{
    if (!shown) {
        return LeaveSource([this](bool isTaken) {
            if (!isTaken)
                return m_sourceAction->setChecked(true);
            m_views->setCurrentIndex(0);
            tlbFormat->setEnabled(true);
            m_pane->Widget()->setFocus();
        });
    }
    m_editing->AskForSource([this](const QString& text) {
        if (IsSourceShown())
            return;
        txtSource->setPlainText(text);
        m_sourceGiven = txtSource->document()->toRawText();
        m_views->setCurrentWidget(txtSource);
        tlbFormat->setEnabled(false);
        txtSource->setFocus();
    });
}

/// The text that was typed goes to the editor, which stays in the source where it has no body any more.
void frmPageEditor::LeaveSource(const std::function<void(bool)>& then)
{
    QString typed = txtSource->document()->toRawText();
    if (!IsSourceShown() || typed == m_sourceGiven)
        return then(!m_isOnlySource);
    m_sourceGiven = typed;
    m_editing->TakeSource(typed.replace(QChar::ParagraphSeparator, u'\n'), then);
}

void frmPageEditor::AfterKeys(std::function<void()> then)
{
    if (IsSourceShown())
        then();
    else
        m_editing->AfterKeys(std::move(then));
}

void frmPageEditor::Save(const std::function<void(bool)>& then)
{
    AfterKeys([this, then] { LeaveSource([this, then](bool) { Write(then); }); });
}

void frmPageEditor::Write(const std::function<void(bool)>& then)
{
    m_editing->Save([this, then](bool done) {
        ShowTitle();
        Q_EMIT Saved(done);
        if (then)
            then(done);
    });
}

void frmPageEditor::Fail(const QString& text)
{
    lblStatus->setText(text.section(u'\n', 0, 0));
    Prompts::Current().MsgBox({.Text = text, .Caption = ApplicationTitle, .Icon = MsgBoxIcon::Critical});
}

void frmPageEditor::reject()
{
    AfterKeys(std::bind_front(&frmPageEditor::Close, this));
}

/// What a pane that is still at work has not told yet would be lost.
bool frmPageEditor::MayGiveUpPane() const
{
    const Message question{.Text = u"The editor does not answer: it may still be at work on what you did last, which "
                                   "would be lost. Close it all the same?"_s,
                           .Caption = ApplicationTitle,
                           .Buttons = MsgBoxButtons::YesNo,
                           .Icon = MsgBoxIcon::Exclamation,
                           .Default = MsgBoxResult::No};
    return !m_editing->IsSilent() || Prompts::Current().MsgBox(question) == MsgBoxResult::Yes;
}

void frmPageEditor::Close()
{
    if (!MayGiveUpPane())
        return;
    if (!IsUnsaved())
        return QDialog::reject();
    const Message question{.Text = u"The page has changes that are not saved. Save them?"_s,
                           .Caption = ApplicationTitle,
                           .Buttons = MsgBoxButtons::YesNoCancel,
                           .Icon = MsgBoxIcon::Question};
    const MsgBoxResult answer = Prompts::Current().MsgBox(question);
    if (answer == MsgBoxResult::No)
        return QDialog::reject();
    if (answer != MsgBoxResult::Yes)
        return;
    Save([this](bool done) {
        if (done)
            QDialog::reject();
    });
}

} // namespace qb
