#pragma once

#include "text/ItemDetailsView.h"

#include <QUrl>
#include <QWidget>

class QKeyEvent;

namespace qb {

/// What the panel of the current item tells.
class DetailsEvents : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

Q_SIGNALS:
    /// Another item is shown, or, with null, none.
    void ItemInitialised(qb::CCodeItem* item);
    /// What is known of the item beside its texts may be another: it was saved, or another program has written to it.
    void FactsChanged();
    /// The text of a tab was changed by the user.
    void TextChanged(qb::DetailsTab tab);
    void CurrentViewChanged();
    /// The caret has moved, or what can be undone has changed.
    void EditStateChanged();

    /// A header was looked for and is not in the text of Code or (not) of Usage.
    void HeaderMissing(quint8 header, bool isCode);
    void SectionDeleted(quint8 header);
    /// A key was pressed in a box for code.
    void CodeKeyDown(QKeyEvent* event);

    /// The folder of web pages lacks a default page; shown is what is there afterwards.
    void DefaultPagesMissing(const QString& folder);
    /// The browser goes to an address; @p address is what to show of it.
    void BeforeNavigate(const QString& address);
    void BrowserCommandStateChange(bool back, bool forward);
    void BrowserProgressChange(int percent);
    void BrowserLinkHovered(const QString& address);
    /// A link of a page to an item was clicked.
    void ItemAsked(qint64 item);
    /// The browser has come to a file, which is no page.
    void LoadFile(const QUrl& url);

    // The state of the selection in the notes differs from what was told last
    void eNotesFontChanged(const QString& font);
    void eNotesFontSizeChanged(int size);
    void eNotesBoldStateChanged(bool on);
    void eNotesItalicStateChanged(bool on);
    void eNotesUnderlineStateChanged(bool on);
    void NotesBulletStateChanged(bool on);
    void NotesAllignmentStateChanged(int alignment);
};

} // namespace qb
