#pragma once

#include "panels/ItemTreeView.h"
#include "session/CommandRules.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "store/CLinks.h"

#include <functional>
#include <optional>

namespace qb {

/// Making and removing links between items. A link is made in two steps: a mode is started for the
/// current item, and the click that follows names the other one.
class ItemLinking {
public:
    /// Registers the commands that start a mode. Everything must outlive this.
    ItemLinking(SessionState& session, ItemTreeView& view, Commands& commands);

    /// Starts a mode for the current item; the root has none.
    void CreateNewLink(LinkMode mode);
    void EndLinkMode();
    /// The user wants no link after all: the item that is shown is the selected one again.
    void CancelLinkMode();
    /// The keys have gone to @p node, which Enter would link with.
    void LinkTargetChosen(const TreeNode& node);
    /// The second step: links the current item with the selected node's, as the mode says. @p title
    /// is the other item's, or empty for the node's text.
    void AddNewLinkToSelectedItem(const QString& title);
    /// Another item is current, or its links are other ones: shows them.
    void ShowLinks();
    /// Asks how much of a link of the current item is to be removed, which is done when it is saved.
    void DeleteLink(const QString& key);
    /// The same of an item that need not be the current one, but can be changed. True when the link was changed.
    bool DeleteLinkOf(CCodeItem& item, const QString& key);

    /// Asks what is left of a relationship that is to be removed; nothing when cancelled.
    std::function<std::optional<LinkDirection>(LinkDirection direction)> AskRelationshipDelete;
    /// Asks which way a link leads, in the mode that leaves it open; nothing when cancelled.
    std::function<std::optional<LinkDirection>()> AskDirection;
    /// Says what the next step of a mode is; an empty text when no mode lasts.
    std::function<void(const QString& hint)> ShowHint;
    /// The links of the current item were changed.
    std::function<void()> LinksChanged;
    /// The current item has a new link that leads from it.
    std::function<void(const CLink& link)> AddNewLinkToList;
    /// A link of the current item leads another way.
    std::function<void(const CLink& link)> UpdateItemLinkInList;

private:
    std::optional<LinkDirection> WantedDirection() const;
    QString AddLink(CLink& link, LinkDirection direction, const QString& title);
    QString ExtendLink(CLink& link, LinkDirection direction);
    void MarkChanged(CLink& link);

    SessionState& m_session;
    ItemTreeView& m_view;
    Commands& m_commands;
    QString m_source; ///< the key of the item that a mode was started for
};

} // namespace qb
