#include "session/ItemWebPage.h"

#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "web/LocalPages.h"
#include "web/WebPages.h"

#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString ModuleName = u"MainForm"_s;
} // namespace

ItemWebPage::ItemWebPage(SessionState& session, ItemDetailsView& details, Commands& commands)
    : m_session(session), m_details(details)
{
    commands.Register(u"mnuWebHome"_s, [this] { DisplayDefaultHTMLPage(); });
}

void ItemWebPage::LinksTabShown()
{
    if (!m_session.CurrentDatabase || !m_session.oCodeItem)
        return;
    const QString library = m_session.CurrentDatabase->Name();
    const QString item = m_session.oCodeItem->Key();
    if (library == m_shownLibrary && item == m_shownItem)
        return;
    m_shownLibrary = library;
    m_shownItem = item;
    DisplayDefaultHTMLPage();
}

void ItemWebPage::DisplayDefaultHTMLPage()
{
    Guarded(ModuleName, u"DisplayDefaultHTMLPage"_s, [this] {
        const QString folder = m_session.CurrentHTMLFolder();
        if (DefaultPagesMissing(folder) && !m_session.CurrentDatabase->IsReadOnly())
            CreateDefaultHTMLItems(folder);
        CCodeItem& item = *m_session.oCodeItem;
        const QString page = item.Key() + u".htm"_s;
        if (item.HTMLPage() && QFile::exists(folder + page))
            return m_details.Navigate(LocalPageUrl(page).toString());
        m_details.Navigate(LocalPageUrl(PageTemplate).toString());
        if (item.HTMLPage() && !m_session.CurrentDatabase->IsReadOnly())
            ForgetPage(item);
    });
}

/// The date of the item's last change stays. With texts that are not saved yet the flag is written
/// when they are.
void ItemWebPage::ForgetPage(CCodeItem& item)
{
    item.SetHTMLPage(false);
    m_details.SetLinksEnabled(false);
    if (item.Unsaved())
        return;
    const bool held = item.DontUpdateLastChangedDate();
    item.SetDontUpdateLastChangedDate(true);
    item.SetItemChanged(true);
    item.Commit();
    item.SetDontUpdateLastChangedDate(held);
}

} // namespace qb
