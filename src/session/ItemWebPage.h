#pragma once

#include "session/Commands.h"
#include "session/SessionState.h"
#include "text/ItemDetailsView.h"

#include <QString>

namespace qb {

/// The web page of the current item, on the Links tab.
class ItemWebPage {
public:
    /// Registers the command for the item's own page. Session and panel must outlive this.
    ItemWebPage(SessionState& session, ItemDetailsView& details, Commands& commands);

    /// The Links tab is in sight: shows the current item's page, unless it has been shown and the
    /// user has gone on from there.
    void LinksTabShown();
    /// Shows the item's page, or the template where it has none. An item whose page file is gone
    /// has none from then on.
    void DisplayDefaultHTMLPage();
    /// Goes to what was typed or chosen as an address.
    void NavigateFromCombo(const QString& text) { m_details.Navigate(text.trimmed()); }

private:
    void ForgetPage(CCodeItem& item);

    SessionState& m_session;
    ItemDetailsView& m_details;
    QString m_shownLibrary;
    QString m_shownItem; ///< the key of the item whose page was shown last
};

} // namespace qb
