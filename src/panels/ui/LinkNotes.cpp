#include "panels/ui/LinkNotes.h"

#include "panels/PanelCaption.h"
#include "store/CCodeItem.h"
#include "support/ui/Icons.h"

#include <QAction>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QTextDocument>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int KeyRole = Qt::UserRole;
constexpr int ImageRole = Qt::UserRole + 1;

bool IsListed(const CLink& link)
{
    return link.Direction == LinkDirection::Left || link.Direction == LinkDirection::Both;
}

} // namespace

LinkNotes::LinkNotes(QWidget* parent)
    : QWidget(parent), m_caption(new QLabel), m_splitter(new QSplitter), lvLinks(new QTreeWidget),
      txtLinkNote(new QPlainTextEdit)
{
    constexpr int Gap = 4;
    m_caption->setObjectName(u"lblLinks"_s);
    m_caption->setBuddy(lvLinks);
    m_caption->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    lvLinks->setObjectName(u"lvLinks"_s);
    lvLinks->setAccessibleName(u"Links of the item"_s);
    lvLinks->setHeaderLabels({u"Linked Item"_s, u"Changed"_s});
    lvLinks->setRootIsDecorated(false);
    lvLinks->setUniformRowHeights(true);
    lvLinks->setAllColumnsShowFocus(true);
    lvLinks->header()->setStretchLastSection(false);
    lvLinks->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    lvLinks->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    lvLinks->installEventFilter(this);
    lvLinks->viewport()->installEventFilter(this);
    txtLinkNote->setObjectName(u"txtLinkNote"_s);
    txtLinkNote->setAccessibleName(u"Description of the selected link"_s);
    txtLinkNote->setTabChangesFocus(true);
    m_splitter->setObjectName(u"LinkResizer"_s);
    m_splitter->addWidget(lvLinks);
    m_splitter->addWidget(txtLinkNote);
    m_splitter->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Gap);
    layout->addWidget(m_caption);
    layout->addWidget(m_splitter, 1);
    MakeActions();
    connect(lvLinks, &QTreeWidget::currentItemChanged, this, &LinkNotes::ShowNote);
    connect(lvLinks, &QTreeWidget::itemDoubleClicked, m_goto, &QAction::trigger);
    connect(txtLinkNote, &QPlainTextEdit::textChanged, this, &LinkNotes::NoteTyped);
    ShowLinks(nullptr);
}

void LinkNotes::MakeActions()
{
    m_goto = new QAction(IconNamed(u"LINK_GOTO"_s), u"&Go to Linked Item"_s, this);
    m_goto->setObjectName(u"mnuGotoLinkItem"_s);
    m_goto->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    m_remove = new QAction(IconNamed(u"edit-delete"_s), u"&Remove Link..."_s, this);
    m_remove->setObjectName(u"mnuRemoveLinkItem"_s);
    m_remove->setShortcut(Qt::Key_Delete);
    for (QAction* action : {m_goto, m_remove})
        action->setShortcutContext(Qt::WidgetShortcut);
    lvLinks->addActions({m_goto, m_remove});
    lvLinks->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(m_goto, &QAction::triggered, this, [this] {
        if (const auto link = m_item ? m_item->Links().Item(SelectedKey()) : nullptr)
            Q_EMIT LinkFollowed(link->LinkedItemId);
    });
    connect(m_remove, &QAction::triggered, this, [this] { Q_EMIT LinkRemoveAsked(SelectedKey()); });
}

// The list

void LinkNotes::ShowLinks(CCodeItem* item)
{
    const QString selected = item == m_item ? SelectedKey() : QString();
    m_item = item;
    FillList();
    QTreeWidgetItem* row = RowOf(selected);
    lvLinks->setCurrentItem(row ? row : lvLinks->topLevelItem(0));
    ShowNote();
}

void LinkNotes::FillList()
{
    const QSignalBlocker silence(lvLinks);
    lvLinks->clear();
    if (!m_item)
        return;
    for (const std::shared_ptr<CLink>& link : m_item->Links().All()) {
        if (IsListed(*link))
            ShowLink(*new QTreeWidgetItem(lvLinks), *link);
    }
}

QTreeWidgetItem* LinkNotes::RowOf(const QString& key) const
{
    for (int i = 0; i < lvLinks->topLevelItemCount(); ++i) {
        if (lvLinks->topLevelItem(i)->data(0, KeyRole).toString() == key)
            return lvLinks->topLevelItem(i);
    }
    return nullptr;
}

/// The image of the second column tells that a link waits to be saved.
void LinkNotes::ShowLink(QTreeWidgetItem& row, const CLink& link)
{
    const bool isDeleted = link.LinkedItemTitle.isEmpty();
    const QString image = link.Direction == LinkDirection::Both ? u"TWO_WAY"_s : u"ONE_WAY"_s;
    row.setText(0, isDeleted ? u"(deleted item %1)"_s.arg(link.LinkedItemId) : link.LinkedItemTitle);
    row.setIcon(0, IconNamed(image));
    row.setData(0, ImageRole, image);
    row.setData(0, KeyRole, CLinks::KeyOf(link.LinkedItemId));
    row.setToolTip(0, link.Direction == LinkDirection::Both ? u"The items lead to each other"_s
                                                            : u"This item leads to the linked one"_s);
    row.setText(1, link.DateChanged.IsNone() ? QString()
                                             : QLocale().toString(link.DateChanged.Day(), QLocale::ShortFormat));
    row.setIcon(1, link.DirtyFlag ? IconNamed(u"UPDATED"_s) : QIcon());
    row.setData(1, ImageRole, link.DirtyFlag ? u"UPDATED"_s : QString());
    row.setToolTip(1, link.DirtyFlag ? u"Changed, and written when the item is saved"_s : QString());
}

void LinkNotes::AddNewLinkToList(const CLink& link)
{
    if (!IsListed(link))
        return;
    QTreeWidgetItem* row = RowOf(CLinks::KeyOf(link.LinkedItemId));
    row = row ? row : new QTreeWidgetItem(lvLinks);
    ShowLink(*row, link);
    lvLinks->setCurrentItem(row);
    ShowNote();
}

void LinkNotes::UpdateItemLinkInList(const CLink& link)
{
    if (QTreeWidgetItem* row = RowOf(CLinks::KeyOf(link.LinkedItemId)))
        ShowLink(*row, link);
}

QString LinkNotes::SelectedKey() const
{
    const QTreeWidgetItem* row = lvLinks->currentItem();
    return row ? row->data(0, KeyRole).toString() : QString();
}

// The description

void LinkNotes::ShowNote()
{
    const QScopedValueRollback showing(m_showing, true);
    const std::shared_ptr<CLink> link = m_item ? m_item->Links().Item(SelectedKey()) : nullptr;
    const QString note = link ? link->Note : QString();
    if (txtLinkNote->toPlainText() != QString(note).replace(u"\r\n"_s, u"\n"_s)) // else caret and undo stay
        txtLinkNote->setPlainText(note);
    txtLinkNote->setEnabled(link != nullptr);
    txtLinkNote->setPlaceholderText(link ? u"Why it is linked"_s : QString());
    ShowActions();
}

/// What is shown is what will be stored.
void LinkNotes::NoteTyped()
{
    if (m_showing || m_locked || !m_item)
        return;
    const QScopedValueRollback showing(m_showing, true);
    const QTextDocument& text = *txtLinkNote->document();
    for (QTextCursor found = text.find(u"'"_s); !found.isNull(); found = text.find(u"'"_s, found))
        found.insertText(CCodeItem::WritableNote(found.selectedText()));
    m_item->ChangeLinkNote(SelectedKey(), txtLinkNote->toPlainText());
    if (const auto link = m_item->Links().Item(SelectedKey()))
        UpdateItemLinkInList(*link);
}

void LinkNotes::SetLocked(bool locked)
{
    m_locked = locked;
    ShowActions();
}

void LinkNotes::ShowActions()
{
    const bool any = !SelectedKey().isEmpty();
    m_goto->setEnabled(any);
    m_remove->setEnabled(any && !m_locked);
    txtLinkNote->setReadOnly(m_locked);
}

// Looks

/// The captions are told with a doubled ampersand, which a label with a buddy shows as one.
void LinkNotes::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    const auto widthOf = [this](QString caption) {
        return m_caption->fontMetrics().horizontalAdvance(caption.replace(u"&&"_s, u"&"_s));
    };
    m_caption->setText(LinksCaption(width(), widthOf));
    constexpr int Beside = 320; // wide enough for list and description side by side
    m_splitter->setOrientation(width() >= Beside ? Qt::Horizontal : Qt::Vertical);
}

/// An empty list says so, and what to do about it.
bool LinkNotes::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lvLinks->viewport() && event->type() == QEvent::Paint && lvLinks->topLevelItemCount() == 0
        && isEnabled()) {
        QPainter painter(lvLinks->viewport());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        const QString text = m_item ? u"This item has no links."_s : QString();
        painter.drawText(lvLinks->viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, text);
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace qb
