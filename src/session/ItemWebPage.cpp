#include "session/ItemWebPage.h"

#include "help/Links.h"
#include "platform/system/Prompts.h"
#include "session/FileDialogs.h"
#include "store/Library.h"
#include "store/PageChanges.h"
#include "support/ErrorRoutine.h"
#include "web/DefaultPages.h"
#include "web/ItemPages.h"
#include "web/LocalPages.h"
#include "web/WebPages.h"

#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

/// The page has no place for what was to be inserted; it was not changed.
void TellWrongFormat()
{
    const QString address = GetLink(u"Quillbase BugReport"_s);
    Prompts::Current().MsgBox({.Text = u"The link could not be created. Please contact Brindleton Software"_s
                                       + (address.isEmpty() ? QString() : u" on "_s + address),
                               .Caption = WrongPageFormat,
                               .Icon = MsgBoxIcon::Critical});
}

/// Inserts by @p insert; false for a page that takes nothing, of which the user has been told.
bool Inserted(const std::function<void()>& insert)
{
    try {
        insert();
        return true;
    } catch (const RuntimeError& error) {
        if (error.Number() != WrongPageFormatError)
            throw;
        TellWrongFormat();
        return false;
    }
}

} // namespace

ItemWebPage::ItemWebPage(SessionState& session, ItemDetailsView& details, Commands& commands)
    : m_session(session), m_details(details), m_commands(commands)
{
    commands.Register(u"mnuWebHome"_s, this, &ItemWebPage::DisplayDefaultHTMLPage);
    commands.Register(u"mnuWebDeletePage"_s, [this] { Run(u"DeletePage"_s, &ItemWebPage::DeletePageAsked); });
    commands.Register(u"mnuHTMLDefaultItem"_s, this, &ItemWebPage::CreateDefaultFile);
}

void ItemWebPage::SetComponents(std::unique_ptr<PageComponents> components)
{
    m_components = std::move(components);
    m_commands.Register(u"mnuWebEditPage"_s, [this] { Run(u"EditPage"_s, &ItemWebPage::EditPage); });
    m_commands.Register(u"mnuWebInsertPicture"_s, [this] { Run(u"InsertPicture"_s, &ItemWebPage::InsertPicture); });
    m_commands.Register(u"mnuWebInsertLink"_s, [this] { Run(u"InsertLink"_s, &ItemWebPage::InsertLink); });
}

void ItemWebPage::Run(const QString& procedure, void (ItemWebPage::*body)(Library& library, qint64 item))
{
    Guarded(ModuleName, procedure, [&] {
        const CCodeItem* item = m_session.oCodeItem.get();
        if (m_session.CurrentDatabase && item && !item->Key().isEmpty())
            (this->*body)(*m_session.CurrentDatabase, item->Key().toLongLong());
    });
}

void ItemWebPage::ShowCommands()
{
    const bool hasItem = m_session.CurrentDatabase && m_session.oCodeItem && !m_session.oCodeItem->Key().isEmpty();
    m_commands.SetEnabled(u"mnuWebDeletePage"_s, hasItem && m_session.oCodeItem->HTMLPage());
    m_commands.SetEnabled(u"mnuHTMLDefaultItem"_s, m_session.CurrentDatabase != nullptr);
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
        Library& library = *m_session.CurrentDatabase;
        const QString folder = library.HTMLFolder();
        if (DefaultPagesMissing(folder) && !library.IsReadOnly())
            CreateDefaultHTMLItems(folder);
        CCodeItem& item = *m_session.oCodeItem;
        const QString page = item.Key() + u".htm"_s;
        if (item.HTMLPage() && !QFile::exists(folder + page) && !library.IsReadOnly())
            SettlePage(library, item.Key().toLongLong()); // it may only be on its way
        if (item.HTMLPage() && QFile::exists(folder + page))
            return m_details.Navigate(LocalPageUrl(page).toString());
        m_details.Navigate(LocalPageUrl(PageTemplate).toString());
        if (item.HTMLPage() && !library.IsReadOnly())
            ForgetPage(item);
    });
}

/// The date of the item's last change stays. With texts that are not saved yet the flag is written
/// when they are.
void ItemWebPage::ForgetPage(CCodeItem& item)
{
    item.SetHTMLPage(false);
    m_details.SetLinksEnabled(false);
    ShowCommands();
    if (item.Unsaved())
        return;
    const bool held = item.DontUpdateLastChangedDate();
    item.SetDontUpdateLastChangedDate(true);
    item.SetItemChanged(true);
    item.Commit();
    item.SetDontUpdateLastChangedDate(held);
}

// Changing it. Each change writes the row by itself, so that texts that are not saved yet stay as they are.

void ItemWebPage::EnsurePage(Library& library, qint64 item)
{
    if (!EnsureHTMLFileExists(library, item))
        return;
    TakeRow();
    if (ShowsLocal() || Address().isEmpty())
        DisplayDefaultHTMLPage();
}

void ItemWebPage::EditPage(Library& library, qint64 item)
{
    EnsurePage(library, item);
    const QByteArray before = ReadPage(library, item);
    const PageOutcome outcome = m_components->Edit(PageFileOf(library, item));
    if (outcome.IsEmptied)
        DeletePageAsked(library, item);
    // One that was emptied and is to stay all the same was changed.
    const bool isChanged = outcome.IsChanged && QFile::exists(PageFileOf(library, item));
    if (!isChanged)
        return;
    NotePageChanged(library, item, before);
    TakeRow();
    if (ShowsLocal())
        Reload();
}

void ItemWebPage::DeletePageAsked(Library& library, qint64 item)
{
    const QString question =
        u"Delete the web page of this item, with its pictures? The removed items keep it for a while."_s;
    if (Prompts::Current().MsgBox({.Text = question,
                                   .Caption = u"Delete Web Page"_s,
                                   .Buttons = MsgBoxButtons::YesNo,
                                   .Icon = MsgBoxIcon::Question,
                                   .Default = MsgBoxResult::No})
        != MsgBoxResult::Yes)
        return;
    DeletePage(library, item);
    TakeRow();
    DisplayDefaultHTMLPage();
}

void ItemWebPage::InsertPicture(Library& library, qint64 item)
{
    EnsurePage(library, item);
    const PicturePlace place{library.HTMLFolder(), QString::number(item)};
    const std::optional<ChosenPicture> chosen = m_components->ChoosePicture(place);
    if (!chosen)
        return;
    try {
        if (Inserted([&] {
                qb::InsertPicture(library, item, {chosen->Picture.Source, chosen->Width, chosen->Height});
            }))
            return PageInserted();
    } catch (const RuntimeError&) {
        TakeBackPicture(place, chosen->Picture);
        throw;
    }
    TakeBackPicture(place, chosen->Picture);
}

void ItemWebPage::InsertLink(Library& library, qint64 item)
{
    EnsurePage(library, item);
    const std::optional<PageLink> link = m_components->ChooseLink(ShowsLocal() ? QString() : Address());
    if (link && Inserted([&] { qb::InsertLink(library, item, *link); }))
        PageInserted();
}

void ItemWebPage::PageInserted()
{
    TakeRow();
    if (ShowsLocal())
        DisplayDefaultHTMLPage();
}

/// What of the row has to do with the page is read anew; what was changed of the item here, and is not saved, stays.
void ItemWebPage::TakeRow()
{
    CCodeItem& item = *m_session.oCodeItem;
    for (const RowObject::ForeignChange& change : item.ForeignChanges()) {
        const bool isPages = change.Column == CCodeItem::HTMLPageColumn
                             || change.Column == CCodeItem::HTMLLastUpdatedColumn;
        if (isPages || (change.Column == CCodeItem::LastChangedColumn && !item.Unsaved()))
            item.TakeTheirs(change);
    }
    m_details.SetLinksEnabled(item.HTMLPage());
    ShowCommands();
    RowChanged();
}

/// Whether the browser shows a page of the library.
bool ItemWebPage::ShowsLocal() const
{
    return Address().startsWith(u"local"_s);
}

void ItemWebPage::CreateDefaultFile()
{
    Guarded(ModuleName, u"mnuHTMLDefaultItem_Click"_s, [this] {
        if (!m_session.CurrentDatabase)
            return;
        const QString file = GetFileName(true, u"Enter file name"_s, u"Quillbase HTML Defaults|*.qhd"_s,
                                         DefaultPagesFile);
        if (file.isEmpty())
            return;
        const QString folder = m_session.CurrentHTMLFolder();
        if (DefaultPagesMissing(folder) && !m_session.IsReadOnly())
            CreateDefaultHTMLItems(folder);
        WriteDefaultPages(folder, file);
    });
}

} // namespace qb
