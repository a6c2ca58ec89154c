#include "text/ui/LinkNotes.h"

#include "store/CCodeItem.h"
#include "support/ui/Icons.h"

#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QTextDocument>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
constexpr int KeyRole = Qt::UserRole;
} // namespace

LinkNotes::LinkNotes(QWidget* parent)
    : QWidget(parent), m_caption(new QLabel(u"Links && Selected Link Description:"_s)), lvLinks(new QTreeWidget),
      txtLinkNote(new QPlainTextEdit)
{
    constexpr int NoteLines = 4;
    constexpr int Gap = 6;
    lvLinks->setObjectName(u"lvLinks"_s);
    lvLinks->setAccessibleName(u"Links of the item"_s);
    lvLinks->setHeaderLabels({u"Linked Item"_s, u"Changed"_s});
    lvLinks->setRootIsDecorated(false);
    lvLinks->setUniformRowHeights(true);
    txtLinkNote->setObjectName(u"txtLinkNote"_s);
    txtLinkNote->setAccessibleName(u"Description of the selected link"_s);
    txtLinkNote->setTabChangesFocus(true);
    txtLinkNote->setFixedHeight(txtLinkNote->fontMetrics().lineSpacing() * (NoteLines + 1));
    m_caption->setBuddy(lvLinks);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Gap, Gap, Gap, Gap);
    layout->addWidget(m_caption);
    layout->addWidget(lvLinks, 1);
    layout->addWidget(txtLinkNote);
    connect(lvLinks, &QTreeWidget::currentItemChanged, this, &LinkNotes::ShowNote);
    connect(txtLinkNote, &QPlainTextEdit::textChanged, this, &LinkNotes::NoteTyped);
    ShowLinks(nullptr);
}

void LinkNotes::ShowLinks(CCodeItem* item)
{
    const QString selected = item == m_item ? SelectedKey() : QString();
    const int before = item == m_item ? lvLinks->topLevelItemCount() : 0;
    m_item = item;
    FillList();
    const int count = lvLinks->topLevelItemCount();
    QTreeWidgetItem* current = lvLinks->topLevelItem(before > 0 && count > before ? count - 1 : 0);
    for (int i = 0; i < count && count <= before; ++i) {
        if (lvLinks->topLevelItem(i)->data(0, KeyRole).toString() == selected)
            current = lvLinks->topLevelItem(i);
    }
    lvLinks->setCurrentItem(current);
    ShowNote();
}

void LinkNotes::FillList()
{
    const QSignalBlocker silence(lvLinks);
    lvLinks->clear();
    if (!m_item)
        return;
    for (const std::shared_ptr<CLink>& link : m_item->Links().All()) {
        if (link->Direction != LinkDirection::Left && link->Direction != LinkDirection::Both)
            continue;
        const bool isDeleted = link->LinkedItemTitle.isEmpty();
        const QString title = isDeleted ? u"(deleted item %1)"_s.arg(link->LinkedItemId) : link->LinkedItemTitle;
        const Date date = link->DateChanged;
        const QString changed = date.IsNone() ? QString() : QLocale().toString(date.Day(), QLocale::ShortFormat);
        const bool isTwoWay = link->Direction == LinkDirection::Both;
        auto* row = new QTreeWidgetItem(lvLinks, {title, changed});
        row->setIcon(0, IconNamed(isTwoWay ? u"LINK_TWOWAY_SMALL"_s : u"LINK_ONEWAY_SMALL"_s));
        row->setData(0, KeyRole, CLinks::KeyOf(link->LinkedItemId));
    }
    lvLinks->resizeColumnToContents(0);
}

QString LinkNotes::SelectedKey() const
{
    const QTreeWidgetItem* row = lvLinks->currentItem();
    return row ? row->data(0, KeyRole).toString() : QString();
}

void LinkNotes::ShowNote()
{
    const QScopedValueRollback showing(m_showing, true);
    const std::shared_ptr<CLink> link = m_item ? m_item->Links().Item(SelectedKey()) : nullptr;
    const QString note = link ? link->Note : QString();
    if (txtLinkNote->toPlainText() != note) // else caret and undo stay
        txtLinkNote->setPlainText(note);
    txtLinkNote->setEnabled(link != nullptr);
    txtLinkNote->setReadOnly(m_locked);
    txtLinkNote->setPlaceholderText(link ? u"Why it is linked"_s : u"This item has no links"_s);
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
}

void LinkNotes::SetLocked(bool locked)
{
    m_locked = locked;
    txtLinkNote->setReadOnly(locked);
}

} // namespace qb
