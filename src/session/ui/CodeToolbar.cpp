#include "session/ui/CodeToolbar.h"

#include "store/CCodeItem.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"
#include "text/CodeSections.h"
#include "text/SectionBits.h"
#include "text/ui/ctlCodeDetails.h"

#include <QEvent>
#include <QMenu>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;
const QString Add = u"ADD"_s;
const QString GoTo = u"GOTO"_s;
const QString Delete = u"DELETE"_s;
constexpr const char* Tag = "Tag";

} // namespace

CodeToolbar::CodeToolbar(ctlCodeDetails& details, std::function<CCodeItem*()> item, QWidget* parent)
    : QToolBar(parent), m_details(details), m_item(std::move(item))
{
    setObjectName(u"tbrCode"_s);
    setWindowTitle(u"Code"_s);
    for (const SectionRow& row : SectionTable()) {
        QAction* action = addAction(QString());
        action->setProperty("key", QString::fromLatin1(row.Key));
        action->setProperty(Tag, Add);
        widgetForAction(action)->setProperty("key", QString::fromLatin1(row.Key));
        widgetForAction(action)->installEventFilter(this);
        connect(action, &QAction::triggered, this, [this, &row] { ButtonClick(row); });
        m_buttons.insert(row.Bit, action);
    }
    addSeparator();
    QAction* copy = addAction(IconNamed(u"edit-copy"_s), u"Copy All"_s);
    copy->setToolTip(u"Copy the whole text to the clipboard"_s);
    copy->setProperty("key", u"ALLTOCLIPBOARD"_s);
    widgetForAction(copy)->setProperty("key", u"ALLTOCLIPBOARD"_s);
    connect(copy, &QAction::triggered, this,
            std::bind_front(&ctlCodeDetails::CopyCodeSectionToClipboard, &m_details, 0));
    connect(&m_details, &ctlCodeDetails::HeaderMissing, this, &CodeToolbar::RemoveHeader);
    connect(&m_details, &ctlCodeDetails::SectionDeleted, this, &CodeToolbar::Rebuild);
    connect(&m_details, &ctlCodeDetails::EditStateChanged, this, &CodeToolbar::Rebuild);
    UpdateSectionButtons(0);
}

/// The sections of the text that is shown, as its item has them.
quint8 CodeToolbar::ShownBits() const
{
    CCodeItem* item = m_item();
    if (!item || item->Key().isEmpty())
        return 0;
    return SectionBits(*item, m_details.CurrentView() != DetailsTab::Usage).All();
}

bool CodeToolbar::IsPresent(quint8 header) const
{
    return (ShownBits() & header) != 0;
}

void CodeToolbar::UpdateSectionButtons(quint8 current)
{
    m_shown = {-1, -1};
    for (const SectionRow& row : SectionTable()) {
        QAction* action = m_buttons[row.Bit];
        const bool present = IsPresent(row.Bit);
        const char* tip = !present ? row.AddTip : current == row.Bit ? row.CopyTip : row.GoTip;
        ShowIcon(*action, QString::fromLatin1(present ? row.GoImage : row.AddImage));
        action->setProperty(Tag, present ? GoTo : Add);
        action->setEnabled(present || !m_details.Locked());
        action->setText(QString::fromLatin1(tip));
        action->setToolTip(QString::fromLatin1(tip));
    }
}

void CodeToolbar::showEvent(QShowEvent* event)
{
    UpdateSectionButtons(m_details.CurrentSection());
    QToolBar::showEvent(event);
}

/// Where the section would be put is told when the mouse comes to the button.
bool CodeToolbar::eventFilter(QObject* watched, QEvent* event)
{
    for (const SectionRow& row : SectionTable()) {
        if (event->type() == QEvent::Enter && widgetForAction(m_buttons[row.Bit]) == watched)
            TellPlace(row, *m_buttons[row.Bit]);
    }
    return QToolBar::eventFilter(watched, event);
}

void CodeToolbar::TellPlace(const SectionRow& row, QAction& command) const
{
    const QString place = IsPresent(row.Bit) ? QString() : m_details.PlaceOfNewSection(row.Bit);
    command.setStatusTip(place.isEmpty() ? QString() : u"The section is put %1"_s.arg(place));
}

void CodeToolbar::Rebuild()
{
    if (!isVisible())
        return;
    // With every key and every step of the caret, so only what has changed is shown anew.
    const std::pair state(int(m_details.CurrentSection()), int(ShownBits()));
    if (std::exchange(m_shown, state) != state)
        UpdateSectionButtons(quint8(state.first));
}

void CodeToolbar::RemoveHeader(quint8 header, bool isCode)
{
    if (CCodeItem* item = m_item())
        SectionBits(*item, isCode).Remove(header);
    UpdateSectionButtons(m_details.CurrentSection());
}

void CodeToolbar::ButtonClick(const SectionRow& row)
{
    Guarded(ModuleName, u"tbrCode_ButtonClick"_s, [&] {
        CCodeItem* item = m_item();
        if (!item)
            return;
        if (m_buttons[row.Bit]->property(Tag) == Add)
            m_details.CreateCodeSection(*item, row.Bit, 0);
        else
            GoOrCopy(row.Bit);
        UpdateSectionButtons(m_details.CurrentSection());
    });
}

void CodeToolbar::GoOrCopy(quint8 header)
{
    // A caret that has left the section since would have another one copied.
    if (header != 0 && header == m_lastGo && m_details.CurrentSection() == m_wentTo)
        return m_details.CopyCodeSectionToClipboard(header);
    m_lastGo = m_details.GoToCodeSection(header, false) ? header : quint8(0);
    m_wentTo = m_details.CurrentSection();
}

// The menu

void CodeToolbar::FillMenu(QMenu& menu)
{
    for (const SectionRow& row : SectionTable()) {
        QAction* entry = menu.addAction(QString());
        entry->setObjectName(QString::fromLatin1(row.Menu));
        connect(entry, &QAction::triggered, this, [this, &row] { MenuClick(row); });
        m_entries.insert(row.Bit, entry);
    }
    UpdateMenu();
}

void CodeToolbar::UpdateMenu()
{
    for (const SectionRow& row : SectionTable()) {
        const bool present = IsPresent(row.Bit);
        m_entries[row.Bit]->setText((present ? u"Delete "_s : u"Add "_s) + QString::fromLatin1(row.MenuCaption));
        m_entries[row.Bit]->setProperty(Tag, present ? Delete : Add);
        m_entries[row.Bit]->setEnabled(!m_details.Locked());
        TellPlace(row, *m_entries[row.Bit]);
    }
}

void CodeToolbar::MenuClick(const SectionRow& row)
{
    Guarded(ModuleName, QString::fromLatin1(row.Menu), [&] {
        CCodeItem* item = m_item();
        if (!item)
            return;
        if (m_entries[row.Bit]->property(Tag) == Add)
            m_details.CreateCodeSection(*item, row.Bit, 0);
        else if (m_details.GoToCodeSection(row.Bit, true))
            m_details.DeleteCodeSection(row.Bit);
        UpdateSectionButtons(m_details.CurrentSection());
    });
}

} // namespace qb
