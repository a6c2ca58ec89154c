#pragma once

#include "platform/system/Hook.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "text/ItemDetailsView.h"
#include "web/PageComponents.h"

#include <QString>
#include <memory>

namespace qb {

/// The web page of the current item, on the Links tab: showing, making, editing and deleting it.
class ItemWebPage {
public:
    /// Registers the commands for the item's own page. Session, panel and commands must outlive this.
    ItemWebPage(SessionState& session, ItemDetailsView& details, Commands& commands);

    /// What edits pages, from now on: the commands that need it are there then.
    void SetComponents(std::unique_ptr<PageComponents> components);

    // Asked of the window
    /// What the address box says.
    Hook<QString()> Address;
    /// Loads the page anew that is shown.
    Hook<void()> Reload;
    /// The row of the current item is another one: its dates, and whether it has a page.
    Hook<void()> RowChanged;

    /// The Links tab is in sight: shows the current item's page, unless it has been shown and the
    /// user has gone on from there.
    void LinksTabShown();
    /// Shows the item's page, or the template where it has none. An item whose page file is gone
    /// has none from then on.
    void DisplayDefaultHTMLPage();
    /// Goes to what was typed or chosen as an address.
    void NavigateFromCombo(const QString& text) { m_details.Navigate(text.trimmed()); }
    /// The commands on the item's page are enabled as the item stands.
    void ShowCommands();

private:
    void Run(const QString& procedure, void (ItemWebPage::*body)(Library& library, qint64 item));
    void EditPage(Library& library, qint64 item);
    void InsertPicture(Library& library, qint64 item);
    void InsertLink(Library& library, qint64 item);
    void DeletePageAsked(Library& library, qint64 item);
    void CreateDefaultFile();
    void EnsurePage(Library& library, qint64 item);
    void PageInserted();
    void TakeRow();
    bool ShowsLocal() const;
    void ForgetPage(CCodeItem& item);

    SessionState& m_session;
    ItemDetailsView& m_details;
    Commands& m_commands;
    std::unique_ptr<PageComponents> m_components;
    QString m_shownLibrary;
    QString m_shownItem; ///< the key of the item whose page was shown last
};

} // namespace qb
