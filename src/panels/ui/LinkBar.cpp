#include "panels/ui/LinkBar.h"

#include "panels/ui/TreeBar.h"
#include "support/ui/Icons.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QStyle>
#include <QTextDocument>
#include <QToolButton>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct ModeRow {
    const char* Key;
    const char* Image;
    LinkMode Mode;
    const char* Caption;
};
constexpr ModeRow ModeRows[] = {
    {"ONE_WAY_TARGET", "LINK_ONEWAY_TARGET", LinkMode::OneWayFrom, "One Way - FROM Selected Item..."},
    {"ONE_WAY_SOURCE", "LINK_ONEWAY_SOURCE", LinkMode::OneWayTo, "One Way - TO Selected Item..."},
    {"ONEWAY_NEW_TARGET", "LINK_ONEWAY_NEW_TARGET", LinkMode::OneWayNewFrom, "One Way New - FROM Selected Item..."},
    {"ONE_WAY_NEW_SOURCE", "LINK_ONEWAY_NEW_SOURCE", LinkMode::OneWayNewTo, "One Way New - TO Selected Item..."},
    {"TWO_WAY", "LINK_TWOWAY", LinkMode::TwoWay, "Two Way..."},
    {"TWOWAY_NEW", "LINK_TWOWAY_NEW", LinkMode::TwoWayNew, "Two Way New..."},
    {"ADVANCED", "LINK_ADVANCED", LinkMode::Advanced, "Ask for the Direction..."},
};

const ModeRow& RowOf(LinkMode mode)
{
    return *std::find_if(std::begin(ModeRows), std::end(ModeRows),
                         [mode](const ModeRow& row) { return row.Mode == mode; });
}

QString ComboKey(qint64 item)
{
    return QString::number(item) + u'C';
}

QIcon ImageOf(const CLink& link)
{
    return IconNamed(link.Direction == LinkDirection::Both ? u"LINK_TWOWAY_SMALL"_s : u"LINK_ONEWAY_SMALL"_s);
}

} // namespace

LinkBar::LinkBar(QWidget* parent) : QToolBar(parent)
{
    setObjectName(u"tbrLinks"_s);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    setIconSize({size, size});
    MakeModeMenu();
    MakeLinkBox();
    ClearLinks();
    ShowMode();
}

void LinkBar::MakeLinkBox()
{
    cboLinkedItems = new QComboBox;
    cboLinkedItems->setObjectName(u"cboLinkedItems"_s);
    cboLinkedItems->setAccessibleName(u"Linked items"_s);
    cboLinkedItems->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    constexpr int LeastLetters = 8;
    cboLinkedItems->setMinimumContentsLength(LeastLetters);
    cboLinkedItems->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_linkBox = addWidget(cboLinkedItems);
    m_linkGoto = AddLinkButton(u"LINK_GOTO"_s, u"LINK_GOTO"_s, u"Go to the linked item"_s, &LinkBar::LinkFollowed);
    m_linkRemove = AddLinkButton(u"LINK_REMOVE"_s, u"edit-delete"_s, u"Remove the link"_s, &LinkBar::LinkRemoveAsked);
    connect(cboLinkedItems, &QComboBox::currentIndexChanged, this, &LinkBar::UpdateCombo);
}

/// A button that asks for something with the link that is shown.
QAction* LinkBar::AddLinkButton(const QString& key, const QString& image, const QString& tip,
                                void (LinkBar::*asked)(qint64))
{
    QAction* action = AddButton(*this, key);
    action->setIcon(IconNamed(image));
    action->setToolTip(tip);
    connect(action, &QAction::triggered, this, [this, asked] {
        if (ComboItem() != 0)
            Q_EMIT(this->*asked)(ComboItem());
    });
    return action;
}

void LinkBar::MakeModeMenu()
{
    m_linkMode = new QToolButton;
    m_linkMode->setObjectName(u"LINK_MODE"_s);
    m_linkMode->setProperty("key", u"LINK_MODE"_s);
    m_linkMode->setCheckable(true);
    m_linkMode->setPopupMode(QToolButton::MenuButtonPopup);
    auto* menu = new QMenu(m_linkMode);
    menu->setObjectName(u"mnuLinkMode"_s);
    for (const ModeRow& row : ModeRows) {
        QAction* entry = menu->addAction(IconNamed(QString::fromLatin1(row.Image)), QString::fromLatin1(row.Caption));
        entry->setProperty("key", QString::fromLatin1(row.Key));
        connect(entry, &QAction::triggered, this, std::bind_front(&LinkBar::ChooseMode, this, row.Mode));
    }
    menu->addSeparator();
    QAction* permanent = menu->addAction(u"Stay in the Mode After a Link"_s);
    permanent->setProperty("key", u"PERMANENT"_s);
    permanent->setCheckable(true);
    connect(permanent, &QAction::toggled, this, &LinkBar::SetPermanent);
    m_linkMode->setMenu(menu);
    m_linkModeAction = addWidget(m_linkMode);
    connect(m_linkMode, &QToolButton::clicked, this, [this](bool down) {
        if (down)
            Q_EMIT ModeStarted(m_chosenMode);
        else
            Q_EMIT ModeEnded();
        ShowMode();
    });
}

void LinkBar::ChooseMode(qb::LinkMode mode)
{
    m_chosenMode = mode;
    m_linkMode->setChecked(false);
    ShowMode();
    m_linkMode->click();
}

void LinkBar::SetMode(qb::LinkMode mode)
{
    m_mode = mode;
    if (mode != qb::LinkMode::None)
        m_chosenMode = mode;
    ShowMode();
}

void LinkBar::ShowMode()
{
    const ModeRow& row = RowOf(m_chosenMode);
    const bool on = m_mode != qb::LinkMode::None;
    m_linkMode->setChecked(on);
    m_linkMode->setIcon(IconNamed(QString::fromLatin1(row.Image)));
    QString caption = QString::fromLatin1(row.Caption);
    caption.chop(3); // the dots
    m_linkMode->setToolTip(on ? u"Click the item to link with; Escape ends it (%1)"_s.arg(caption)
                              : u"Link with another item: %1"_s.arg(caption));
}

void LinkBar::ClearLinks()
{
    if (cboLinkedItems->count() != 1) { // one stands there for none
        cboLinkedItems->clear();
        cboLinkedItems->addItem(IconNamed(u"NO_ITEMS"_s), u"No Linked Items"_s, QString());
    }
    UpdateCombo();
}

void LinkBar::AddLink(const CLink& link)
{
    if (cboLinkedItems->count() == 1) {
        cboLinkedItems->setItemIcon(0, IconNamed(u"LINK_GOTO"_s));
        cboLinkedItems->setItemText(0, u"Linked Items"_s);
    }
    const QString title = link.LinkedItemTitle.isEmpty() ? u"(deleted item %1)"_s.arg(link.LinkedItemId)
                                                         : link.LinkedItemTitle;
    cboLinkedItems->addItem(ImageOf(link), title, ComboKey(link.LinkedItemId));
    const QString tip = Qt::convertFromPlainText(link.Note.left(400), Qt::WhiteSpaceNormal);
    cboLinkedItems->setItemData(cboLinkedItems->count() - 1, tip, Qt::ToolTipRole);
    UpdateCombo();
}

void LinkBar::UpdateLink(const CLink& link)
{
    const int index = cboLinkedItems->findData(ComboKey(link.LinkedItemId));
    if (index < 0)
        return AddLink(link);
    cboLinkedItems->setItemIcon(index, ImageOf(link));
}

void LinkBar::UpdateCombo()
{
    const bool any = cboLinkedItems->count() > 1;
    m_linkBox->setEnabled(any);
    cboLinkedItems->setToolTip(any ? u"%1 linked items"_s.arg(cboLinkedItems->count() - 1)
                                   : u"There are no item links to the currently selected item."_s);
    if (m_linkGoto)
        m_linkGoto->setEnabled(ComboItem() != 0);
    if (m_linkRemove)
        m_linkRemove->setEnabled(ComboItem() != 0 && m_removesLinks);
}

void LinkBar::EnableLinking(bool adding, bool removing)
{
    m_removesLinks = removing;
    m_linkModeAction->setEnabled(adding);
    UpdateCombo();
}

/// The item of the entry that is shown; 0 for none.
qint64 LinkBar::ComboItem() const
{
    return cboLinkedItems->currentData().toString().chopped(cboLinkedItems->currentIndex() > 0 ? 1 : 0).toLongLong();
}

} // namespace qb
