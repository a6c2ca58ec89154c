#include "text/ui/RichTextViewOf.h"

#include <QAbstractTextDocumentLayout>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextEdit>

namespace qb {

using namespace Qt::StringLiterals;

template <class Editor>
RichTextViewOf<Editor>::RichTextViewOf(const RtfFont& font, QWidget* parent)
    : Editor(parent), HeldRichText(font), m_font(font), m_page(m_text, *Editor::document()), m_device(*this)
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
void RichTextViewOf<Editor>::Load()
{
    const QScopedValueRollback showing(m_showing, true);
    const QScopedValueRollback loading(m_loading, true);
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
void RichTextViewOf<Editor>::LoadWhenSeen()
{
    m_waits = this->parentWidget() && !this->isVisible();
    if (!m_waits)
        Load();
    Q_EMIT this->textChanged();
}

template <class Editor>
void RichTextViewOf<Editor>::EnsureLoaded()
{
    if (m_waits)
        Load();
}

template <class Editor>
void RichTextViewOf<Editor>::showEvent(QShowEvent* event)
{
    EnsureLoaded();
    Editor::showEvent(event);
}

template <class Editor>
void RichTextViewOf<Editor>::SetText(const QString& text)
{
    m_text = RichText(m_font); // and with it all that earlier texts referred to
    m_text.SetText(text);
    LoadWhenSeen();
}

template <class Editor>
void RichTextViewOf<Editor>::SetTextRTF(const QString& rtf)
{
    m_text = RichText(m_font);
    m_text.SetTextRTF(rtf);
    m_text.Document().Squeeze();
    LoadWhenSeen();
}

template <class Editor>
void RichTextViewOf<Editor>::SetContent(const RichText& content)
{
    m_text = content;
    m_text.Document().Squeeze();
    LoadWhenSeen();
}

template <class Editor>
void RichTextViewOf<Editor>::ShowingColours(const std::function<void()>& show)
{
    const QScopedValueRollback showing(m_showing, true);
    const QScopedValueRollback colours(m_showingColours, true);
    const QSignalBlocker silence(this);
    show();
}

template <class Editor>
void RichTextViewOf<Editor>::SetRepainted(const RichText& painted)
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
void RichTextViewOf<Editor>::SetLocked(bool locked)
{
    this->setReadOnly(locked);
    if (locked) // a caret to read and copy by keyboard
        this->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

// Selection

/// What the user has selected counts here too. A place that is shown as it is told, such as one
/// within a line end, stays.
template <class Editor>
void RichTextViewOf<Editor>::SyncSelection()
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
void RichTextViewOf<Editor>::ShowSelection()
{
    EnsureLoaded();
    const QScopedValueRollback showing(m_showing, true);
    QTextCursor cursor = this->textCursor();
    cursor.setPosition(m_page.ToDocument(m_text.SelStart()));
    cursor.setPosition(m_page.ToDocument(m_text.SelStart() + m_text.SelLength()), QTextCursor::KeepAnchor);
    this->setTextCursor(cursor);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelStart(qsizetype position)
{
    m_text.SetSelStart(position);
    ShowSelection();
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelLength(qsizetype length)
{
    m_text.SetSelLength(length);
    ShowSelection();
}

// Changes: made in the text first, shown then

template <class Editor>
bool RichTextViewOf<Editor>::Replace(bool (RichText::*set)(const QString&), const QString& value)
{
    EnsureLoaded();
    const RichTextDocument& text = m_text.Document();
    const RichTextDocument::Range range = text.WithWholeLineEnds(m_text.SelStart(), m_text.SelLength());
    const qsizetype length = text.Length();
    if (!(m_text.*set)(value))
        return false;
    Show([&] { m_page.ShowReplaced(range.Begin, range.Length, text.Length() - length + range.Length, m_joinsSteps); });
    ShowSelection();
    return true;
}

template <class Editor>
template <class Value, class Given>
void RichTextViewOf<Editor>::ChangeCharacters(void (RichText::*set)(Value), const Given& value)
{
    EnsureLoaded();
    (m_text.*set)(value);
    if (m_text.SelLength() > 0)
        Show([this] { m_page.ShowFormats(m_text.SelStart(), m_text.SelStart() + m_text.SelLength()); });
}

template <class Editor>
template <class Value>
void RichTextViewOf<Editor>::ChangeParagraphs(void (RichText::*set)(Value), Value value)
{
    EnsureLoaded();
    (m_text.*set)(value);
    ShowParagraphs();
}

template <class Editor>
void RichTextViewOf<Editor>::ShowParagraphs()
{
    Show([this] { m_page.ShowParagraphs(m_text.SelStart(), m_text.SelStart() + m_text.SelLength()); });
}

/// A change by code is a step without a name.
template <class Editor>
template <class Change>
void RichTextViewOf<Editor>::Show(Change&& change)
{
    const QScopedValueRollback showing(m_showing, true);
    const int before = this->document()->availableUndoSteps();
    change();
    if (!m_named)
        m_undoNames.Note(before, this->document()->availableUndoSteps(), UndoType::Unknown);
}

template <class Editor>
void RichTextViewOf<Editor>::InOneStep(const std::function<void()>& changes)
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
bool RichTextViewOf<Editor>::SetSelText(const QString& text)
{
    return Replace(&RichText::SetSelText, text);
}

template <class Editor>
bool RichTextViewOf<Editor>::SetSelRTF(const QString& rtf)
{
    return Replace(&RichText::SetSelRTF, rtf);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelColor(quint32 color)
{
    ChangeCharacters(&RichText::SetSelColor, color);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelBold(bool on)
{
    ChangeCharacters(&RichText::SetSelBold, on);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelItalic(bool on)
{
    ChangeCharacters(&RichText::SetSelItalic, on);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelUnderline(bool on)
{
    ChangeCharacters(&RichText::SetSelUnderline, on);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelProtected(bool on)
{
    ChangeCharacters(&RichText::SetSelProtected, on);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelFontName(const QString& name)
{
    ChangeCharacters(&RichText::SetSelFontName, name);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelFontSize(double points)
{
    ChangeCharacters(&RichText::SetSelFontSize, points);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelBullet(bool on)
{
    ChangeParagraphs(&RichText::SetSelBullet, on);
}

template <class Editor>
void RichTextViewOf<Editor>::SetBulletIndent(int twips)
{
    ChangeParagraphs(&RichText::SetBulletIndent, twips);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelAlignment(TextAlignment alignment)
{
    ChangeParagraphs(&RichText::SetSelAlignment, alignment);
}

template <class Editor>
void RichTextViewOf<Editor>::SetSelIndent(int twips)
{
    ChangeParagraphs(&RichText::SetSelIndent, twips);
}

// Looks

template <class Editor>
void RichTextViewOf<Editor>::SetZoom(double factor)
{
    const QScopedValueRollback showing(m_showing, true);
    m_device.SetZoom(factor);
    this->document()->documentLayout()->setPaintDevice(&m_device);
    this->document()->markContentsDirty(0, this->document()->characterCount());
    this->viewport()->update();
}

template <class Editor>
QTextEdit::ExtraSelection RichTextViewOf<Editor>::MarkOf(qsizetype begin, qsizetype length, const QColor& color) const
{
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(this->document());
    mark.cursor.setPosition(m_page.ToDocument(begin));
    mark.cursor.setPosition(m_page.ToDocument(begin + length), QTextCursor::KeepAnchor);
    mark.format.setBackground(color);
    return mark;
}

template <class Editor>
void RichTextViewOf<Editor>::MarkPlaces(const QList<qsizetype>& begins, qsizetype length)
{
    EnsureLoaded();
    constexpr int Veil = 70;
    QColor color = this->palette().color(QPalette::Highlight);
    color.setAlpha(Veil);
    m_places.clear();
    for (const qsizetype begin : begins)
        m_places << MarkOf(begin, length, color);
    this->setExtraSelections(m_found + m_places);
}

template <class Editor>
void RichTextViewOf<Editor>::MarkFound(const std::vector<TextRange>& places)
{
    if (places.empty() && m_found.isEmpty())
        return;
    EnsureLoaded();
    const QColor color(240, 170, 0, 90); // amber, through which a text is read on light and dark
    m_found.clear();
    for (const TextRange& place : places)
        m_found << MarkOf(place.Begin, place.Length, color);
    this->setExtraSelections(m_found + m_places);
}

template <class Editor>
void RichTextViewOf<Editor>::changeEvent(QEvent* event)
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

template class RichTextViewOf<QTextEdit>;
template class RichTextViewOf<QPlainTextEdit>;

} // namespace qb
