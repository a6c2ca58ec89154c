#include "session/ItemLinking.h"

#include "platform/system/Prompts.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

QString Hint(const QString& source, LinkMode mode)
{
    return (MakesNewItem(mode) ? u"Link “%1” with a new item: click the item to put it under. Escape ends the mode."_s
                               : u"Link “%1”: click the item to link with. Escape ends the link mode."_s)
        .arg(source);
}

/// The keys have gone to another item, while the one to be linked is still shown.
QString TargetHint(const QString& source, const QString& target, LinkMode mode)
{
    return (MakesNewItem(mode) ? u"“%1” is shown. Enter puts the new item under “%2”; Escape ends the link mode."_s
                               : u"“%1” is shown. Enter links it with “%2”; Escape ends the link mode."_s)
        .arg(source, target);
}

} // namespace

ItemLinking::ItemLinking(SessionState& session, ItemTreeView& view, Commands& commands)
    : m_session(session), m_view(view), m_commands(commands)
{
    static constexpr std::pair<const char*, LinkMode> modes[] = {
        {"mnuAddLinkOneWayFromSelItem", LinkMode::OneWayFrom},
        {"mnuAddLinkToSelectedItem", LinkMode::OneWayTo},
        {"mnuAddLinkOneWayNewFromSelItem", LinkMode::OneWayNewFrom},
        {"mnuAddLinkOneWayNewToSelItem", LinkMode::OneWayNewTo},
        {"mnuAddLinkTwoWayItem", LinkMode::TwoWay},
        {"mnuAddLinkTwoWayNew", LinkMode::TwoWayNew}};
    for (const auto& [name, mode] : modes)
        m_commands.Register(QString::fromLatin1(name), this, &ItemLinking::CreateNewLink, mode);
    m_commands.Register(u"mnuAddLink"_s, [] {}); // opens the menu of these
}

void ItemLinking::CreateNewLink(LinkMode mode)
{
    Guarded(ModuleName, u"CreateNewLink"_s, [&] {
        EndLinkMode();
        const TreeNode* node = m_view.SelectedItem();
        const bool hasItem = m_session.oCodeItem && !m_session.oCodeItem->Key().isEmpty();
        if (!hasItem || !node || IsBarred(ItemChange::Link, StandingOf(m_session, *node)))
            return;
        m_session.Mode = mode;
        m_source = m_session.oCodeItem->Key();
        m_view.SetLinkMode(mode);
        if (ShowHint)
            ShowHint(Hint(m_session.oCodeItem->Title(), mode));
    });
}

void ItemLinking::EndLinkMode()
{
    m_session.Mode = LinkMode::None;
    m_view.SetLinkMode(LinkMode::None);
    if (ShowHint)
        ShowHint({});
}

void ItemLinking::CancelLinkMode()
{
    if (m_session.Mode == LinkMode::None)
        return;
    EndLinkMode();
    if (TreeNode* node = m_view.Nodes().Find(m_source.toLongLong())) {
        m_view.SelectItem(*node);
        m_view.EnsureVisible(*node);
    }
}

void ItemLinking::LinkTargetChosen(const TreeNode& node)
{
    if (m_session.Mode == LinkMode::None || !m_session.oCodeItem || !ShowHint)
        return;
    const QString shown = m_session.oCodeItem->Title();
    const bool isSource = QString::number(node.Id) == m_source;
    ShowHint(isSource ? Hint(shown, m_session.Mode) : TargetHint(shown, node.Text(), m_session.Mode));
}

/// Which way the link of the mode leads; nothing when the user does not say.
std::optional<LinkDirection> ItemLinking::WantedDirection() const
{
    switch (m_session.Mode) {
    case LinkMode::OneWayFrom:
    case LinkMode::OneWayNewFrom:
        return LinkDirection::Left;
    case LinkMode::OneWayTo:
    case LinkMode::OneWayNewTo:
        return LinkDirection::Right;
    case LinkMode::TwoWay:
    case LinkMode::TwoWayNew:
        return LinkDirection::Both;
    case LinkMode::Advanced:
        return AskDirection ? AskDirection() : std::nullopt;
    case LinkMode::None:
        break;
    }
    return std::nullopt;
}

void ItemLinking::MarkChanged(CLink& link)
{
    link.DirtyFlag = true;
    m_session.oCodeItem->SetLinksChanged(true);
}

QString ItemLinking::AddLink(CLink& link, LinkDirection direction, const QString& title)
{
    const TreeNode& node = *m_view.SelectedItem();
    link.Direction = direction;
    link.LinkedItemId = node.Id;
    link.LinkedItemTitle = title.isEmpty() ? node.Text() : title;
    MarkChanged(link);
    if (direction == LinkDirection::Right) // which leads away from the other item, and is that one's to show
        return u"A new link has been successfully created."_s;
    m_view.AddNewLinkToCombo(link);
    if (AddNewLinkToList)
        AddNewLinkToList(link);
    return u"A new link has been successfully created.\r\nNow you can enter a description of the link if you wish."_s;
}

/// Adds the side that a link lacks.
QString ItemLinking::ExtendLink(CLink& link, LinkDirection direction)
{
    if (link.Direction == LinkDirection::Both || link.Direction == direction)
        return u"This link already exists."_s;
    if (link.Direction == LinkDirection::None) { // removed, and not saved yet
        link.Direction = direction;
        MarkChanged(link);
        ShowLinks();
        if (direction != LinkDirection::Right && AddNewLinkToList)
            AddNewLinkToList(link);
        return u"A new link has been successfully created."_s;
    }
    const bool addsLeft = link.Direction == LinkDirection::Right;
    link.Direction = LinkDirection::Both;
    MarkChanged(link);
    m_view.UpdateLinkItemInCombo(link);
    if (UpdateItemLinkInList)
        UpdateItemLinkInList(link);
    return addsLeft ? u"Left side of the link (source to target) has been added."_s
                    : u"Right side or the link (target to source) has been added."_s;
}

void ItemLinking::AddNewLinkToSelectedItem(const QString& title)
{
    Guarded(ModuleName, u"AddNewLinkToSelectedItem"_s, [&] {
        const TreeNode* target = m_view.SelectedItem();
        if (!target || !m_session.oCodeItem)
            return;
        CCodeItem& source = *m_session.oCodeItem;
        QString message;
        if (target->IsRoot() || NodeKey(target->Id) == u'C' + source.Key()) {
            message = u"An item can be linked with another item only."_s;
        } else if (const auto direction = WantedDirection()) {
            const QString key = CLinks::KeyOf(target->Id);
            const std::shared_ptr<CLink> known = source.Links().Item(key);
            message = known ? ExtendLink(*known, *direction) : AddLink(*source.Links().Add(key), *direction, title);
        }
        if (!message.isEmpty())
            Prompts::Current().MsgBox(
                {.Text = message, .Caption = u"New Link Creation"_s, .Icon = MsgBoxIcon::Information});
        if (!m_view.InPermanentLinkMode())
            EndLinkMode();
        if (TreeNode* node = m_view.Nodes().Find(source.Key().toLongLong())) {
            m_view.SelectItem(*node);
            m_view.EnsureVisible(*node);
            m_session.CurrentItemKey = node->Key();
        }
        if (LinksChanged)
            LinksChanged();
    });
}

void ItemLinking::ShowLinks()
{
    // A mode is the current item's; with another one current it is over.
    if (m_session.Mode != LinkMode::None && (!m_session.oCodeItem || m_session.oCodeItem->Key() != m_source))
        EndLinkMode();
    m_view.ClearLinkCombo();
    if (!m_session.oCodeItem)
        return;
    for (const std::shared_ptr<CLink>& link : m_session.oCodeItem->Links().All()) {
        if (link->Direction == LinkDirection::Left || link->Direction == LinkDirection::Both)
            m_view.AddNewLinkToCombo(*link);
    }
}

void ItemLinking::DeleteLink(const QString& key)
{
    Guarded(ModuleName, u"DeleteLink"_s, [&] {
        const std::shared_ptr<CLink> link = m_session.oCodeItem ? m_session.oCodeItem->Links().Item(key) : nullptr;
        if (!link || !m_commands.Get(u"LINK_REMOVE"_s).Enabled || !DeleteLinkOf(*m_session.oCodeItem, key))
            return;
        ShowLinks();
        if (LinksChanged)
            LinksChanged();
    });
}

bool ItemLinking::DeleteLinkOf(CCodeItem& item, const QString& key)
{
    const std::shared_ptr<CLink> link = item.Links().Item(key);
    const std::optional<LinkDirection> left = link && AskRelationshipDelete ? AskRelationshipDelete(link->Direction)
                                                                            : std::nullopt;
    if (!left)
        return false;
    link->Direction = *left;
    link->DirtyFlag = true;
    item.Links().DirtyFlag = true;
    item.SetLinksChanged(true);
    return true;
}

} // namespace qb
