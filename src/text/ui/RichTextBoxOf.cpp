#include "text/ui/RichTextBoxOf.h"

#include "support/ui/Icons.h"
#include "text/ui/RichTextMime.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QInputMethod>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QTextBlock>
#include <QTextEdit>
#include <QWheelEvent>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

/// @p edit returns whether it was done. False, with a beep, when it refused; false without one in a locked box.
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

/// Replaces the selection, as an edit of the user's.
template <class Editor>
bool RichTextBoxOf<Editor>::TypeOver(UndoType type, const QString& text)
{
    return UserEdit(type, [&] { return this->SetSelText(text); });
}

/// The text document undoes; what it changes is read back into the text by its signal.
template <class Editor>
void RichTextBoxOf<Editor>::Undo()
{
    if (!CanUndo())
        return;
    this->document()->undo();
    StandBehindChange();
}

/// Nothing where nothing was undone last, and in a locked box.
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
    this->SyncSelection();
    TakenBack();
}

/// A selection that holds protected text is refused, and does not go to the clipboard.
template <class Editor>
void RichTextBoxOf<Editor>::Cut()
{
    if (m_text.SelLength() == 0 || this->isReadOnly())
        return;
    if (!HoldsProtected())
        this->copy();
    TypeOver(UndoType::Cut, {});
}

/// Deletes the selection, not the whole text.
template <class Editor>
void RichTextBoxOf<Editor>::Clear()
{
    if (m_text.SelLength() > 0)
        TypeOver(UndoType::Delete, {});
}

/// The text takes the look of the place that it comes to.
template <class Editor>
void RichTextBoxOf<Editor>::PastePlainText()
{
    const QMimeData* source = QGuiApplication::clipboard()->mimeData();
    const QString text = source ? TextOfMime(*source) : QString();
    if (!text.isEmpty())
        TypeOver(UndoType::Paste, text);
}

/// What is copied or dragged away, as RTF, HTML and plain text; the caller owns it.
template <class Editor>
QMimeData* RichTextBoxOf<Editor>::createMimeDataFromSelection() const
{
    return MimeOfRichText(m_text.Document().Part(m_text.SelStart(), m_text.SelLength())).release();
}

/// A picture alone is for boxes that take in foreign looks.
template <class Editor>
bool RichTextBoxOf<Editor>::canInsertFromMimeData(const QMimeData* source) const
{
    return source->hasText() || source->hasHtml() || (m_takesForeignLooks && source->hasImage())
           || !RtfOfMime(*source, false).isEmpty();
}

template <class Editor>
void RichTextBoxOf<Editor>::insertFromMimeData(const QMimeData* source)
{
    this->SyncSelection(); // a click with the middle button has moved the caret without a word
    Insert(*source, UndoType::Paste);
}

/// Replaces the selection by what is pasted or dropped. False when it holds nothing for the box, or was refused.
template <class Editor>
bool RichTextBoxOf<Editor>::Insert(const QMimeData& source, UndoType type)
{
    const QString rtf = TakenIn(RtfOfMime(source, m_takesForeignLooks));
    if (rtf.isEmpty() && !source.hasText() && !source.hasHtml())
        return false;
    return UserEdit(type, [&] { return rtf.isEmpty() ? this->SetSelText(TextOfMime(source)) : this->SetSelRTF(rtf); });
}

template <class Editor>
bool RichTextBoxOf<Editor>::DeleteTo(QTextCursor::MoveOperation operation)
{
    QTextCursor cursor = this->textCursor();
    if (!cursor.hasSelection() && !cursor.movePosition(operation, QTextCursor::KeepAnchor)
        && operation == QTextCursor::EndOfBlock)
        cursor.movePosition(QTextCursor::Right, QTextCursor::KeepAnchor); // at the end of its line already
    if (!cursor.hasSelection())
        return true;
    const qsizetype caret = m_text.SelStart();
    const qsizetype begin = this->Page().FromDocument(cursor.selectionStart());
    m_text.SetSelStart(begin);
    m_text.SetSelLength(this->Page().FromDocument(cursor.selectionEnd()) - begin);
    const bool done = TypeOver(UndoType::Delete, {});
    if (!done && m_text.SelLength() > 0 && this->textCursor().selectionStart() == this->textCursor().selectionEnd())
        this->SetSelStart(caret); // nothing has moved
    return done;
}

/// A list ends at an empty item, or by Backspace before an item.
template <class Editor>
bool RichTextBoxOf<Editor>::EndList()
{
    const QTextCursor cursor = this->textCursor();
    const ParagraphFormat& paragraph = this->Page().ParagraphOf(cursor.block());
    if (paragraph.List == ListKind::None || cursor.hasSelection() || !cursor.atBlockStart())
        return false;
    return UserEdit(UndoType::Delete, [this] {
        m_text.Document().ChangeParagraphs(m_text.SelStart(), m_text.SelStart(), [](ParagraphFormat& format) {
            format.List = ListKind::None;
            format.LeftIndent += format.FirstIndent;
            format.FirstIndent = 0;
        });
        this->ShowParagraphs();
        return true;
    });
}

/// Replaces the selection as if the user had typed; an empty text deletes it.
template <class Editor>
bool RichTextBoxOf<Editor>::TypeText(const QString& text)
{
    return TypeOver(text.isEmpty() ? UndoType::Delete : UndoType::Typing, text);
}

/// In an empty item of a list it ends the list there, and begins no new line.
template <class Editor>
void RichTextBoxOf<Editor>::Enter()
{
    if (this->textCursor().block().length() == 1 && EndList())
        return;
    TypeText(u"\r\n"_s);
}

/// At the begin of an item of a list it takes the item out of the list, and deletes nothing.
template <class Editor>
void RichTextBoxOf<Editor>::Backspace()
{
    if (!EndList())
        DeleteTo(QTextCursor::PreviousCharacter);
}

/// What a key of the desktop's does to the text; true when it is for that.
template <class Editor>
bool RichTextBoxOf<Editor>::EditByStandardKey(const QKeyEvent& event)
{
    struct Row {
        QKeySequence::StandardKey Key;
        void (RichTextBoxOf::*Run)();
    };
    static constexpr Row rows[] = {{QKeySequence::Undo, &RichTextBoxOf::Undo},
                                   {QKeySequence::Redo, &RichTextBoxOf::Redo},
                                   {QKeySequence::Cut, &RichTextBoxOf::Cut},
                                   {QKeySequence::Paste, &RichTextBoxOf::Paste},
                                   {QKeySequence::InsertParagraphSeparator, &RichTextBoxOf::Enter},
                                   {QKeySequence::InsertLineSeparator, &RichTextBoxOf::Enter}};
    struct Deletion {
        QKeySequence::StandardKey Key;
        QTextCursor::MoveOperation To;
    };
    static constexpr Deletion deletions[] = {{QKeySequence::Delete, QTextCursor::NextCharacter},
                                             {QKeySequence::DeleteEndOfWord, QTextCursor::NextWord},
                                             {QKeySequence::DeleteStartOfWord, QTextCursor::PreviousWord},
                                             {QKeySequence::DeleteEndOfLine, QTextCursor::EndOfBlock}};
    for (const Row& row : rows) {
        if (event.matches(row.Key)) {
            (this->*row.Run)();
            return true;
        }
    }
    for (const Deletion& row : deletions) {
        if (event.matches(row.Key)) {
            DeleteTo(row.To);
            return true;
        }
    }
    return false;
}

/// What a key does to the text; true when it is for that.
template <class Editor>
bool RichTextBoxOf<Editor>::EditByKey(const QKeyEvent& event)
{
    if (EditByStandardKey(event))
        return true;
    const Qt::KeyboardModifiers noCommand = Qt::ShiftModifier | Qt::KeypadModifier | Qt::GroupSwitchModifier;
    if (event.key() == Qt::Key_Backspace && !(event.modifiers() & ~noCommand)) { // no standard key everywhere
        Backspace();
        return true;
    }
    const QString text = event.text();
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~noCommand;
    const bool isCommand = modifiers == Qt::ControlModifier || modifiers == Qt::AltModifier
                           || (modifiers & Qt::MetaModifier);
    if (text.isEmpty() || isCommand
        || (!text[0].isPrint() && text[0] != u'\t' && text[0].category() != QChar::Other_Format
            && !text[0].isSurrogate()))
        return false;
    TypeText(text);
    return true;
}

template <class Editor>
void RichTextBoxOf<Editor>::keyPressEvent(QKeyEvent* event)
{
    this->EnsureLoaded();
    if (!this->isReadOnly() && EditByKey(*event))
        return event->accept();
    // The editor moves the caret, selects and copies. What else it would do to the text it is not asked for.
    static constexpr int edits[] = {Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Direction_L, Qt::Key_Direction_R};
    const bool isSafe = event->matches(QKeySequence::Copy) || event->matches(QKeySequence::SelectAll)
                        || (event->text().isEmpty()
                            && std::find(std::begin(edits), std::end(edits), event->key()) == std::end(edits));
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
        this->SetSelStart(m_text.SelStart() + event->replacementStart());
        this->SetSelLength(event->replacementLength());
    }
    if (!event->commitString().isEmpty())
        TypeOver(UndoType::Typing, event->commitString());
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
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier && m_text.SelLength() > 0
        && HoldsProtected() && pressed.position() >= selection.selectionStart()
        && pressed.position() <= selection.selectionEnd())
        this->setTextCursor(pressed);
    Editor::mousePressEvent(event);
}

/// A link is activated by a click with Ctrl; in a locked box, where no caret is placed to type, without it.
template <class Editor>
void RichTextBoxOf<Editor>::mouseReleaseEvent(QMouseEvent* event)
{
    Editor::mouseReleaseEvent(event);
    const QString target = this->anchorAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && !target.isEmpty()
        && (this->isReadOnly() || event->modifiers() == Qt::ControlModifier))
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
    qsizetype target = this->Page().FromDocument(this->cursorForPosition(event->position().toPoint()).position());
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
            this->SetSelText({});
            target -= target > start ? length : 0;
        }
        this->SetSelStart(target);
        return Insert(*source, UndoType::DragDrop);
    });
    step.endEditBlock();
    event->setDropAction(moves ? Qt::MoveAction : event->dropAction());
    event->accept();
    this->setFocus();
}

/// Over a link the menu opens it, also in a box that can be edited. What can't be done is greyed.
template <class Editor>
void RichTextBoxOf<Editor>::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    const auto add = [&](const char* name, const char* icon, const QString& caption, QKeySequence::StandardKey key,
                         bool enabled, auto run) {
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
            std::bind_front(&RichTextBoxOf::ActivateLink, this, target));
        menu.addSeparator();
    }
    add("mnuUndo", "edit-undo", u"&Undo"_s, QKeySequence::Undo, CanUndo(), &RichTextBoxOf::Undo);
    add("mnuRedo", "edit-redo", u"&Redo"_s, QKeySequence::Redo, CanRedo(), &RichTextBoxOf::Redo);
    menu.addSeparator();
    add("mnuCut", "edit-cut", u"Cu&t"_s, QKeySequence::Cut, selected && !this->isReadOnly(), &RichTextBoxOf::Cut);
    add("mnuCopy", "edit-copy", u"&Copy"_s, QKeySequence::Copy, selected, &RichTextBoxOf::Copy);
    add("mnuPaste", "edit-paste", u"&Paste"_s, QKeySequence::Paste, CanPaste(), &RichTextBoxOf::Paste);
    add("mnuPastePlain", "", u"Paste Plain &Text"_s, QKeySequence::UnknownKey, CanPaste(),
        &RichTextBoxOf::PastePlainText);
    add("mnuClear", "edit-delete", u"&Delete"_s, QKeySequence::Delete, selected && !this->isReadOnly(),
        &RichTextBoxOf::Clear);
    menu.addSeparator();
    add("mnuSelectAll", "edit-select-all", u"Select &All"_s, QKeySequence::SelectAll, !this->IsEmpty(),
        &Editor::selectAll);
    menu.exec(event->globalPos());
}

/// With Ctrl it asks for another zoom, one step for each event, and does not scroll.
template <class Editor>
void RichTextBoxOf<Editor>::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier))
        return Editor::wheelEvent(event);
    if (event->angleDelta().y() != 0)
        ZoomWanted(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

template class RichTextBoxOf<QTextEdit>;
template class RichTextBoxOf<QPlainTextEdit>;

} // namespace qb
