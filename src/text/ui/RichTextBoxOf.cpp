#include "text/ui/RichTextBoxOf.h"

#include "support/ui/Icons.h"
#include "text/ui/RichTextMime.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QInputMethod>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextEdit>
#include <QWheelEvent>

namespace qb {

using namespace Qt::StringLiterals;

template <class Editor>
RichTextBoxOf<Editor>::RichTextBoxOf(const RtfFont& font, QWidget* parent)
    : Editor(parent), m_font(font), m_text(font), m_page(m_text, *Editor::document()), m_device(*this)
{
    constexpr int Margin = 8;
    this->document()->setDocumentMargin(Margin);
    this->setFrameShape(QFrame::NoFrame);
    const auto sync = [this] {
        if (!m_showing)
            SyncSelection();
    };
    this->connect(this, &Editor::cursorPositionChanged, this, sync);
    this->connect(this, &Editor::selectionChanged, this, sync);
    this->connect(this->document(), &QTextDocument::contentsChange, this, [this](int position, int, int added) {
        if (m_showing || m_waits)
            return;
        m_page.TakeBack(position, added);
        m_changeEnd = position + added;
    });
    Load();
}

template <class Editor>
void RichTextBoxOf<Editor>::Load()
{
    const QScopedValueRollback showing(m_showing, true);
    const QSignalBlocker silence(this); // the text is the same, however it is shown
    m_waits = false;
    m_undoNames.Clear();
    m_background = this->palette().color(QPalette::Base);
    // Until the caret, which new text pushes to its end, is back: then only what is seen is laid out.
    this->document()->setLayoutEnabled(false);
    m_page.Load(this->palette(), this->logicalDpiY());
    this->setTextCursor(QTextCursor(this->document()));
    this->document()->setLayoutEnabled(true);
    ShowSelection();
    Loaded();
}

/// A box on a tab that is not seen takes the time to show its text when it is.
template <class Editor>
void RichTextBoxOf<Editor>::LoadWhenSeen()
{
    m_waits = this->parentWidget() && !this->isVisible();
    if (!m_waits)
        Load();
    Q_EMIT this->textChanged();
}

template <class Editor>
void RichTextBoxOf<Editor>::EnsureLoaded()
{
    if (m_waits)
        Load();
}

template <class Editor>
void RichTextBoxOf<Editor>::showEvent(QShowEvent* event)
{
    EnsureLoaded();
    Editor::showEvent(event);
}

template <class Editor>
void RichTextBoxOf<Editor>::SetText(const QString& text)
{
    m_text = RichText(m_font); // and with it all that earlier texts referred to
    m_text.SetText(text);
    LoadWhenSeen();
}

template <class Editor>
void RichTextBoxOf<Editor>::SetTextRTF(const QString& rtf)
{
    m_text = RichText(m_font);
    m_text.SetTextRTF(rtf);
    m_text.Document().Squeeze();
    LoadWhenSeen();
}

template <class Editor>
void RichTextBoxOf<Editor>::SetRepainted(const RichText& painted)
{
    if (m_waits) {
        m_text = painted;
        return LoadWhenSeen();
    }
    const QScopedValueRollback showing(m_showing, true);
    const int before = this->document()->availableUndoSteps();
    const RichTextDocument old = m_text.Document();
    const qsizetype start = m_text.SelStart();
    const qsizetype length = m_text.SelLength();
    m_text = painted;
    m_text.SetSelStart(start);
    m_text.SetSelLength(length);
    m_page.ShowRepainted(old);
    m_undoNames.Note(before, this->document()->availableUndoSteps(), UndoType::Unknown);
}

template <class Editor>
void RichTextBoxOf<Editor>::SetLocked(bool locked)
{
    this->setReadOnly(locked);
    if (locked) // a caret to read and copy by keyboard
        this->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

// Selection

/// What the user has selected counts here too. A place that is shown as it is told, such as one
/// within a line end, stays.
template <class Editor>
void RichTextBoxOf<Editor>::SyncSelection()
{
    if (m_waits)
        return; // what is shown is of the text before
    const QTextCursor cursor = this->textCursor();
    const qsizetype start = m_text.SelStart();
    if (start + m_text.SelLength() <= m_text.Document().Length() && m_page.ToDocument(start) == cursor.selectionStart()
        && m_page.ToDocument(start + m_text.SelLength()) == cursor.selectionEnd())
        return;
    const qsizetype begin = m_page.FromDocument(cursor.selectionStart());
    m_text.SetSelStart(begin);
    m_text.SetSelLength(m_page.FromDocument(cursor.selectionEnd()) - begin);
}

template <class Editor>
void RichTextBoxOf<Editor>::ShowSelection()
{
    EnsureLoaded();
    const QScopedValueRollback showing(m_showing, true);
    QTextCursor cursor = this->textCursor();
    cursor.setPosition(m_page.ToDocument(m_text.SelStart()));
    cursor.setPosition(m_page.ToDocument(m_text.SelStart() + m_text.SelLength()), QTextCursor::KeepAnchor);
    this->setTextCursor(cursor);
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelStart(qsizetype position)
{
    m_text.SetSelStart(position);
    ShowSelection();
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelLength(qsizetype length)
{
    m_text.SetSelLength(length);
    ShowSelection();
}

// Changes: made in the text first, shown then

template <class Editor>
template <class Change>
bool RichTextBoxOf<Editor>::Replace(Change&& change)
{
    EnsureLoaded();
    const RichTextDocument& text = m_text.Document();
    const RichTextDocument::Range range = text.WithWholeLineEnds(m_text.SelStart(), m_text.SelLength());
    const qsizetype length = text.Length();
    if (!change())
        return false;
    Show([&] { m_page.ShowReplaced(range.Begin, range.Length, text.Length() - length + range.Length, m_joinsSteps); });
    ShowSelection();
    return true;
}

template <class Editor>
template <class Change>
void RichTextBoxOf<Editor>::ChangeCharacters(Change&& change)
{
    EnsureLoaded();
    change();
    if (m_text.SelLength() > 0)
        Show([this] { m_page.ShowFormats(m_text.SelStart(), m_text.SelStart() + m_text.SelLength()); });
}

template <class Editor>
template <class Change>
void RichTextBoxOf<Editor>::ChangeParagraphs(Change&& change)
{
    EnsureLoaded();
    change();
    Show([this] { m_page.ShowParagraphs(m_text.SelStart(), m_text.SelStart() + m_text.SelLength()); });
}

/// A change by code is a step without a name.
template <class Editor>
template <class Change>
void RichTextBoxOf<Editor>::Show(Change&& change)
{
    const QScopedValueRollback showing(m_showing, true);
    const int before = this->document()->availableUndoSteps();
    change();
    if (!m_named)
        m_undoNames.Note(before, this->document()->availableUndoSteps(), UndoType::Unknown);
}

template <class Editor>
void RichTextBoxOf<Editor>::InOneStep(const std::function<void()>& changes)
{
    EnsureLoaded();
    Show([&] {
        const QScopedValueRollback named(m_named, true);
        QTextCursor step(this->document());
        step.beginEditBlock();
        changes();
        step.endEditBlock();
    });
    ShowSelection();
}

template <class Editor>
bool RichTextBoxOf<Editor>::SetSelText(const QString& text)
{
    return Replace([&] { return m_text.SetSelText(text); });
}

template <class Editor>
bool RichTextBoxOf<Editor>::SetSelRTF(const QString& rtf)
{
    return Replace([&] { return m_text.SetSelRTF(rtf); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelColor(quint32 color)
{
    ChangeCharacters([&] { m_text.SetSelColor(color); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelBold(bool on)
{
    ChangeCharacters([&] { m_text.SetSelBold(on); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelItalic(bool on)
{
    ChangeCharacters([&] { m_text.SetSelItalic(on); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelUnderline(bool on)
{
    ChangeCharacters([&] { m_text.SetSelUnderline(on); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelProtected(bool on)
{
    ChangeCharacters([&] { m_text.SetSelProtected(on); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelFontName(const QString& name)
{
    ChangeCharacters([&] { m_text.SetSelFontName(name); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelFontSize(double points)
{
    ChangeCharacters([&] { m_text.SetSelFontSize(points); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelBullet(bool on)
{
    ChangeParagraphs([&] { m_text.SetSelBullet(on); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetBulletIndent(int twips)
{
    ChangeParagraphs([&] { m_text.SetBulletIndent(twips); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelAlignment(TextAlignment alignment)
{
    ChangeParagraphs([&] { m_text.SetSelAlignment(alignment); });
}

template <class Editor>
void RichTextBoxOf<Editor>::SetSelIndent(int twips)
{
    ChangeParagraphs([&] { m_text.SetSelIndent(twips); });
}

// What the user does

template <class Editor>
template <class Edit>
bool RichTextBoxOf<Editor>::UserEdit(UndoType type, Edit&& edit)
{
    if (this->isReadOnly())
        return false;
    const int before = this->document()->availableUndoSteps();
    const QScopedValueRollback named(m_named, true);
    const QScopedValueRollback joins(m_joinsSteps, type == UndoType::Typing || type == UndoType::Delete);
    if (!edit()) {
        QApplication::beep();
        return false;
    }
    m_undoNames.Note(before, this->document()->availableUndoSteps(), type);
    this->ensureCursorVisible();
    return true;
}

template <class Editor>
void RichTextBoxOf<Editor>::Undo()
{
    if (!CanUndo())
        return;
    this->document()->undo();
    StandBehindChange();
}

template <class Editor>
void RichTextBoxOf<Editor>::Redo()
{
    if (!CanRedo())
        return;
    this->document()->redo();
    StandBehindChange();
}

/// The caret stands behind what was undone or redone.
template <class Editor>
void RichTextBoxOf<Editor>::StandBehindChange()
{
    QTextCursor cursor(this->document());
    cursor.setPosition(std::min(m_changeEnd, this->document()->characterCount() - 1));
    this->setTextCursor(cursor);
    SyncSelection();
}

template <class Editor>
void RichTextBoxOf<Editor>::Cut()
{
    if (m_text.SelLength() == 0 || this->isReadOnly())
        return;
    if (!HoldsProtected())
        this->copy();
    UserEdit(UndoType::Cut, [this] { return SetSelText({}); });
}

template <class Editor>
void RichTextBoxOf<Editor>::Clear()
{
    if (m_text.SelLength() > 0)
        UserEdit(UndoType::Delete, [this] { return SetSelText({}); });
}

template <class Editor>
void RichTextBoxOf<Editor>::PastePlainText()
{
    const QString text = QGuiApplication::clipboard()->text();
    if (!text.isEmpty())
        UserEdit(UndoType::Paste, [&] { return SetSelText(text); });
}

template <class Editor>
QMimeData* RichTextBoxOf<Editor>::createMimeDataFromSelection() const
{
    return MimeOfRichText(m_text.Document().Part(m_text.SelStart(), m_text.SelLength())).release();
}

template <class Editor>
bool RichTextBoxOf<Editor>::canInsertFromMimeData(const QMimeData* source) const
{
    return source->hasText() || (m_takesForeignLooks && (source->hasImage() || source->hasHtml()))
        || !RtfOfMime(*source, false).isEmpty();
}

template <class Editor>
void RichTextBoxOf<Editor>::insertFromMimeData(const QMimeData* source)
{
    SyncSelection(); // a click with the middle button has moved the caret without a word
    Insert(*source, UndoType::Paste);
}

template <class Editor>
bool RichTextBoxOf<Editor>::Insert(const QMimeData& source, UndoType type)
{
    const QString rtf = RtfOfMime(source, m_takesForeignLooks);
    if (rtf.isEmpty() && !source.hasText())
        return false;
    return UserEdit(type, [&] { return rtf.isEmpty() ? SetSelText(source.text()) : SetSelRTF(rtf); });
}

template <class Editor>
bool RichTextBoxOf<Editor>::DeleteTo(QTextCursor::MoveOperation operation)
{
    QTextCursor cursor = this->textCursor();
    if (!cursor.hasSelection() && !cursor.movePosition(operation, QTextCursor::KeepAnchor) && operation == QTextCursor::EndOfBlock)
        cursor.movePosition(QTextCursor::Right, QTextCursor::KeepAnchor); // at the end of its line already
    if (!cursor.hasSelection())
        return true;
    const qsizetype caret = m_text.SelStart();
    const qsizetype begin = m_page.FromDocument(cursor.selectionStart());
    m_text.SetSelStart(begin);
    m_text.SetSelLength(m_page.FromDocument(cursor.selectionEnd()) - begin);
    const bool done = UserEdit(UndoType::Delete, [this] { return SetSelText({}); });
    if (!done && m_text.SelLength() > 0 && this->textCursor().selectionStart() == this->textCursor().selectionEnd())
        SetSelStart(caret); // nothing has moved
    return done;
}

/// A list ends at an empty item, or by Backspace before an item.
template <class Editor>
bool RichTextBoxOf<Editor>::EndList()
{
    const QTextCursor cursor = this->textCursor();
    const ParagraphFormat& paragraph = m_page.ParagraphOf(cursor.block());
    if (paragraph.List == ListKind::None || cursor.hasSelection() || !cursor.atBlockStart())
        return false;
    return UserEdit(UndoType::Delete, [this] {
        ChangeParagraphs([this] {
            m_text.Document().ChangeParagraphs(m_text.SelStart(), m_text.SelStart(), [](ParagraphFormat& format) {
                format.List = ListKind::None;
                format.LeftIndent += format.FirstIndent;
                format.FirstIndent = 0;
            });
        });
        return true;
    });
}

template <class Editor>
bool RichTextBoxOf<Editor>::TypeText(const QString& text)
{
    return UserEdit(text.isEmpty() ? UndoType::Delete : UndoType::Typing, [&] { return SetSelText(text); });
}

template <class Editor>
void RichTextBoxOf<Editor>::Enter()
{
    if (this->textCursor().block().length() == 1 && EndList())
        return;
    TypeText(u"\r\n"_s);
}

template <class Editor>
void RichTextBoxOf<Editor>::Backspace()
{
    if (!EndList())
        DeleteTo(QTextCursor::PreviousCharacter);
}

/// What a key does to the text; true when it is for that.
template <class Editor>
bool RichTextBoxOf<Editor>::EditByKey(const QKeyEvent& event)
{
    struct Row {
        QKeySequence::StandardKey Key;
        void (*Run)(RichTextBoxOf&);
    };
    static constexpr Row rows[] = {
        {QKeySequence::Undo, [](RichTextBoxOf& box) { box.Undo(); }},
        {QKeySequence::Redo, [](RichTextBoxOf& box) { box.Redo(); }},
        {QKeySequence::Cut, [](RichTextBoxOf& box) { box.Cut(); }},
        {QKeySequence::Paste, [](RichTextBoxOf& box) { box.Paste(); }},
        {QKeySequence::Delete, [](RichTextBoxOf& box) { box.DeleteTo(QTextCursor::NextCharacter); }},
        {QKeySequence::DeleteEndOfWord, [](RichTextBoxOf& box) { box.DeleteTo(QTextCursor::NextWord); }},
        {QKeySequence::DeleteStartOfWord, [](RichTextBoxOf& box) { box.DeleteTo(QTextCursor::PreviousWord); }},
        {QKeySequence::DeleteEndOfLine, [](RichTextBoxOf& box) { box.DeleteTo(QTextCursor::EndOfBlock); }},
        {QKeySequence::InsertParagraphSeparator, [](RichTextBoxOf& box) { box.Enter(); }},
        {QKeySequence::InsertLineSeparator, [](RichTextBoxOf& box) { box.Enter(); }},
    };
    for (const Row& row : rows) {
        if (event.matches(row.Key)) {
            row.Run(*this);
            return true;
        }
    }
    const Qt::KeyboardModifiers noCommand = Qt::ShiftModifier | Qt::KeypadModifier | Qt::GroupSwitchModifier;
    if (event.key() == Qt::Key_Backspace && !(event.modifiers() & ~noCommand)) { // no standard key everywhere
        Backspace();
        return true;
    }
    const QString text = event.text();
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~noCommand;
    const bool isCommand = modifiers == Qt::ControlModifier || modifiers == Qt::AltModifier || (modifiers & Qt::MetaModifier);
    if (text.isEmpty() || isCommand || (!text[0].isPrint() && text[0] != u'\t' && text[0].category() != QChar::Other_Format
                                        && !text[0].isSurrogate()))
        return false;
    TypeText(text);
    return true;
}

template <class Editor>
void RichTextBoxOf<Editor>::keyPressEvent(QKeyEvent* event)
{
    EnsureLoaded();
    if (!this->isReadOnly() && EditByKey(*event))
        return event->accept();
    // The editor moves the caret, selects and copies. What else it would do to the text it is not asked for.
    static constexpr int edits[] = {Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Direction_L, Qt::Key_Direction_R};
    const bool isSafe = event->matches(QKeySequence::Copy) || event->matches(QKeySequence::SelectAll)
        || (event->text().isEmpty() && std::find(std::begin(edits), std::end(edits), event->key()) == std::end(edits));
    if (this->isReadOnly() || isSafe)
        Editor::keyPressEvent(event);
    else
        event->ignore();
}

template <class Editor>
void RichTextBoxOf<Editor>::inputMethodEvent(QInputMethodEvent* event)
{
    if (this->isReadOnly())
        return event->ignore();
    const bool composes = !event->preeditString().isEmpty();
    if (event->replacementLength() > 0) {
        SetSelStart(m_text.SelStart() + event->replacementStart());
        SetSelLength(event->replacementLength());
    }
    if (!event->commitString().isEmpty())
        UserEdit(UndoType::Typing, [&] { return SetSelText(event->commitString()); });
    else if ((composes && m_text.SelLength() > 0) || event->replacementLength() > 0)
        Clear();
    if (composes && HoldsProtected())
        return QGuiApplication::inputMethod()->reset();
    // What is left changes nothing yet, it only shows.
    QInputMethodEvent composition(event->preeditString(), event->attributes());
    Editor::inputMethodEvent(&composition);
}

// Mouse

template <class Editor>
void RichTextBoxOf<Editor>::mousePressEvent(QMouseEvent* event)
{
    // A protected selection can't be dragged away: a press on it begins anew.
    const QTextCursor pressed = this->cursorForPosition(event->position().toPoint());
    const QTextCursor selection = this->textCursor();
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier && m_text.SelLength() > 0 && HoldsProtected()
        && pressed.position() >= selection.selectionStart() && pressed.position() <= selection.selectionEnd())
        this->setTextCursor(pressed);
    Editor::mousePressEvent(event);
}

template <class Editor>
void RichTextBoxOf<Editor>::mouseReleaseEvent(QMouseEvent* event)
{
    Editor::mouseReleaseEvent(event);
    const QString target = this->anchorAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && !target.isEmpty() && (this->isReadOnly() || event->modifiers() == Qt::ControlModifier))
        ActivateLink(target);
}

template <class Editor>
void RichTextBoxOf<Editor>::dropEvent(QDropEvent* event)
{
    QDragLeaveEvent left; // takes the drop's caret away
    Editor::dragLeaveEvent(&left);
    const QMimeData* source = event->mimeData();
    if (this->isReadOnly() || !canInsertFromMimeData(source))
        return event->ignore();
    qsizetype target = m_page.FromDocument(this->cursorForPosition(event->position().toPoint()).position());
    const bool moves = event->source() == this->viewport() && event->dropAction() == Qt::MoveAction;
    const qsizetype start = m_text.SelStart();
    const qsizetype length = m_text.SelLength();
    if (moves && target >= start && target <= start + length)
        return event->ignore(); // onto itself
    if (m_text.IsProtected(target, 0) || (moves && HoldsProtected())) {
        QApplication::beep();
        return event->ignore();
    }
    const QScopedValueRollback showing(m_showing, true);
    QTextCursor step(this->document());
    step.beginEditBlock();
    UserEdit(UndoType::DragDrop, [&] {
        if (moves) {
            SetSelText({});
            target -= target > start ? length : 0;
        }
        SetSelStart(target);
        return Insert(*source, UndoType::DragDrop);
    });
    step.endEditBlock();
    event->setDropAction(moves ? Qt::MoveAction : event->dropAction());
    event->accept();
    this->setFocus();
}

template <class Editor>
void RichTextBoxOf<Editor>::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    const auto add = [&](const char* name, const char* icon, const QString& caption, QKeySequence::StandardKey key, bool enabled,
                         auto run) {
        QAction* action = menu.addAction(IconNamed(QLatin1StringView(icon)), caption);
        action->setObjectName(QLatin1StringView(name));
        action->setShortcut(key);
        action->setEnabled(enabled);
        this->connect(action, &QAction::triggered, this, run);
    };
    const bool selected = m_text.SelLength() > 0;
    const QString target = this->anchorAt(event->pos());
    if (!target.isEmpty()) {
        add("mnuOpenLink", "internet-web-browser", u"&Open Link"_s, QKeySequence::UnknownKey, true,
            [this, target] { ActivateLink(target); });
        menu.addSeparator();
    }
    add("mnuUndo", "edit-undo", u"&Undo"_s, QKeySequence::Undo, CanUndo(), [this] { Undo(); });
    add("mnuRedo", "edit-redo", u"&Redo"_s, QKeySequence::Redo, CanRedo(), [this] { Redo(); });
    menu.addSeparator();
    add("mnuCut", "edit-cut", u"Cu&t"_s, QKeySequence::Cut, selected && !this->isReadOnly(), [this] { Cut(); });
    add("mnuCopy", "edit-copy", u"&Copy"_s, QKeySequence::Copy, selected, [this] { Copy(); });
    add("mnuPaste", "edit-paste", u"&Paste"_s, QKeySequence::Paste, CanPaste(), [this] { Paste(); });
    add("mnuPastePlain", "", u"Paste Plain &Text"_s, QKeySequence::UnknownKey, CanPaste(), [this] { PastePlainText(); });
    add("mnuClear", "edit-delete", u"&Delete"_s, QKeySequence::Delete, selected && !this->isReadOnly(), [this] { Clear(); });
    menu.addSeparator();
    add("mnuSelectAll", "edit-select-all", u"Select &All"_s, QKeySequence::SelectAll, !IsEmpty(), [this] { this->selectAll(); });
    menu.exec(event->globalPos());
}

template <class Editor>
void RichTextBoxOf<Editor>::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier))
        return Editor::wheelEvent(event);
    if (event->angleDelta().y() != 0)
        ZoomWanted(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

// Looks

template <class Editor>
void RichTextBoxOf<Editor>::SetZoom(double factor)
{
    const QScopedValueRollback showing(m_showing, true);
    m_device.SetZoom(factor);
    this->document()->documentLayout()->setPaintDevice(&m_device);
    this->document()->markContentsDirty(0, this->document()->characterCount());
    this->viewport()->update();
}

template <class Editor>
void RichTextBoxOf<Editor>::MarkPlaces(const QList<qsizetype>& begins, qsizetype length)
{
    EnsureLoaded();
    QList<QTextEdit::ExtraSelection> marks;
    for (const qsizetype begin : begins) {
        QTextEdit::ExtraSelection mark;
        mark.cursor = QTextCursor(this->document());
        mark.cursor.setPosition(m_page.ToDocument(begin));
        mark.cursor.setPosition(m_page.ToDocument(begin + length), QTextCursor::KeepAnchor);
        QColor color = this->palette().color(QPalette::Highlight);
        constexpr int Veil = 70;
        color.setAlpha(Veil);
        mark.format.setBackground(color);
        marks << mark;
    }
    this->setExtraSelections(marks);
}

template <class Editor>
void RichTextBoxOf<Editor>::changeEvent(QEvent* event)
{
    Editor::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || this->palette().color(QPalette::Base) == m_background)
        return;
    if (m_waits)
        return; // it is loaded for the background that is there then
    const int scrolled = this->verticalScrollBar()->value();
    Load(); // colours are chosen for the background
    this->verticalScrollBar()->setValue(scrolled);
}

template class RichTextBoxOf<QTextEdit>;
template class RichTextBoxOf<QPlainTextEdit>;

} // namespace qb
