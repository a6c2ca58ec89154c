#include "session/Commands.h"

#include "session/CommandRules.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Place = CommandRow::Place;

constexpr CommandRow Rows[] = {
    {Place::File, "mnuNewDatabase", "&New Library...", "library-new", "Ctrl+Shift+N", "Make a new library"},
    {Place::File, "mnuOpenDatabase", "Add &Existing Library...", "library-open", "Ctrl+O",
     "Open a library that is not in the list yet"},
    {Place::File, "mnuFileDatabaseSelect", "&Select Library", "library", "", "Change to another library of the list"},
    {Place::File, "mnuDatabaseListItem", "&Connected Libraries...", "", "",
     "Show the list of libraries with their places"},
    {Place::File, "", "", "", "", ""},
    {Place::File, "mnuNewAliasItem", "Change &Alias...", "library-alias", "",
     "Give the open library another name in the list"},
    {Place::File, "mnuRemoveDBItem", "&Remove Library...", "library-remove", "",
     "Take the open library off the list, or delete it"},
    {Place::File, "", "", "", "", ""},
    {Place::File, "mnuFilePrint", "&Print...", "document-print", "Ctrl+Alt+P", "Print the item"},
    {Place::File, "", "", "", "", ""},
    {Place::File, "mnuExit", "E&xit", "application-exit", "Ctrl+Q", "Leave the program"},

    {Place::Edit, "mnuUndo", "&Undo", "edit-undo", "", "Take back the last edit"},
    {Place::Edit, "mnuRedo", "&Redo", "edit-redo", "", "Do again what was taken back"},
    {Place::Edit, "", "", "", "", ""},
    {Place::Edit, "mnuCut", "Cu&t", "edit-cut", "", "Move the selected text to the clipboard"},
    {Place::Edit, "mnuCopy", "&Copy", "edit-copy", "", "Copy the selected text to the clipboard"},
    {Place::Edit, "mnuPaste", "&Paste", "edit-paste", "", "Insert what is on the clipboard"},
    {Place::Edit, "mnuClear", "&Delete", "edit-delete", "", "Delete the selected text"},
    {Place::Edit, "", "", "", "", ""},
    {Place::Edit, "mnuFindInText", "&Find in Text...", "edit-find", "Ctrl+F", "Find in the text that is shown"},
    {Place::Edit, "mnuFindNext", "Find &Next", "go-down", "F3", "Go to the next place that was found"},
    {Place::Edit, "mnuFindPrevious", "Find Pre&vious", "go-up", "Shift+F3", "Go to the place before"},
    {Place::Edit, "mnuQuickOpen", "&Quick Open...", "", "Ctrl+P",
     "Go to an item by some letters of its title; > runs a command, # finds a text, : goes to a line"},
    {Place::Edit, "mnuFullTextFind", "Find in Li&brary...", "edit-find", "Ctrl+Shift+F",
     "Find in all texts of all items"},
    {Place::Edit, "mnuFindNextOccurance", "Next &Occurrence", "DOWN", "F4",
     "Go to the next place that was found in the library"},
    {Place::Edit, "mnuFindPreviousOccurance", "Pr&evious Occurrence", "UP", "Shift+F4",
     "Go to the place before that was found in the library"},
    {Place::Edit, "mnuUndoReplace", "Undo Replace in Library", "edit-undo", "",
     "Put back all texts that the last replacement in the library has changed"},
    {Place::Edit, "mnuFilterTree", "Fi&lter Tree...", "view-filter", "Ctrl+Shift+L",
     "Narrow the tree to the titles that hold a text"},
    {Place::Edit, "mnuGoToLine", "&Go to Line...", "", "Ctrl+G", "Go to a line of the code by its number"},
    {Place::Edit, "", "", "", "", ""},
    {Place::EditCode, "mnuColorize", "&Colorize", "colorize", "F8",
     "Paint the text by the rules of the library's language"},
    {Place::EditCode, "", "", "", "", ""},
    {Place::EditCode, "mnuCopyAsPlain", "Copy as &Plain Text", "edit-copy", "",
     "Copy the code, or what is selected of it, without looks"},
    {Place::EditCode, "mnuCopyAsRtf", "Copy as &RTF", "", "", "Copy the code in colour for a word processor"},
    {Place::EditCode, "mnuCopyAsHtml", "Copy as &HTML", "", "", "Copy the code in colour for a page"},
    {Place::EditCode, "mnuCopyAsMarkdown", "Copy as &Markdown", "", "",
     "Copy the code as a block with the name of its language"},

    {Place::Item, "mnuKeepItem", "&KEEP ITEM", "", "", "Keep the item that was deleted in a child library"},
    {Place::Item, "mnuResolveItem", "RESOLVE CONF&LICT", "", "", "Decide between the two versions of the item"},
    {Place::Item, "mnuItemSeparator1", "", "", "", ""},
    {Place::Item, "mnuAddCode", "&Add New Child Item", "document-new", "Ctrl+N",
     "Add a new item below the selected one"},
    {Place::Item, "mnuNewSiblingItem", "Add New &Sibling Item", "", "Ctrl+Alt+N",
     "Add a new item beside the selected one"},
    {Place::Item, "mnuRename", "&Rename Item", "edit-rename", "F2", "Give the selected item another title"},
    {Place::Item, "mnuDeleteCode", "&Delete Item", "edit-delete", "", "Delete the selected item and all below it"},
    {Place::Item, "mnuExport", "&Export...", "", "",
     "Write the item and all below it into one file for another library"},
    {Place::Item, "mnuExportForReaders", "Export for Rea&ders", "", "",
     "Write the item and all below it for readers without the program"},
    {Place::Item, "mnuImport", "&Import...", "", "", "Take in items from a file"},
    {Place::Item, "mnuMailItem", "&Mail Item...", "mail-send", "",
     "Open a new mail with an export of the item and all below it"},
    {Place::Item, "mnuBookMark", "&Bookmark...", "bookmark-new", "Ctrl+D", "Bookmark the item"},
    {Place::Item, "mnuAddLink", "Add &Link", "", "", "Lead from this item to another"},
    {Place::Item, "", "", "", "", ""},
    {Place::Item, "mnuSaveItem", "&Save Item", "document-save", "Ctrl+S", "Save the item now"},
    {Place::Item, "mnuAutoSaveItem", "Perform &AutoSave", "", "", "Save each item when it is left, without a question"},
    {Place::Item, "", "", "", "", ""},
    {Place::Item, "mnuPreviousItem", "&Previous Item", "walk-up", "Alt+Up", "Go to the item before the selected one"},
    {Place::Item, "mnuNextItem", "&Next Item", "walk-down", "Alt+Down", "Go to the item behind the selected one"},
    {Place::Item, "", "", "", "", ""},
    {Place::Item, "mnuBackItem", "&Back", "go-previous", "Ctrl+Left", "Go back to the item visited before"},
    {Place::Item, "mnuForwardItem", "&Forward", "go-next", "Ctrl+Right", "Go forward again"},

    {Place::Tools, "mnuConflictSolver", "&Conflict Solver...", "", "", "Decide about all items in conflict"},
    {Place::Tools, "mnuRemoveDeletedItems", "&Remove All Deleted Items", "", "",
     "Remove the items that a child library has deleted"},

    {Place::Tools, "", "", "", "", ""},
    {Place::Tools, "mnuDBToolsBackupItem", "&Back Up Library...", "", "",
     "Pack the library with its files and pages into one file"},
    {Place::Tools, "mnuDBToolsRestoreItem", "&Restore Library...", "", "", "Unpack a backup to a library"},
    {Place::Tools, "mnuBackupsItem", "B&ackups...", "", "", "List the backups, check them, bring single items back"},
    {Place::Tools, "mnuRemovedItems", "Re&moved Items...", "", "", "List what was removed, and bring it back"},
    {Place::Tools, "mnuUndoThisSessionChanges", "&Undo All Changes of This Session", "", "",
     "Bring the database back to the start of the session"},
    {Place::Tools, "mnuToolDatabaseRepair", "&Database Repair Tool", "", "", "Nothing is done"},
    {Place::Tools, "", "", "", "", ""},
    {Place::Tools, "mnuHTMLDefaultItem", "Create &HTML Default File", "", "",
     "Write the welcome page and the template of new pages to a file, from which new libraries get theirs"},
    {Place::Tools, "", "", "", "", ""},
    {Place::Tools, "mnuOptionsItem", "&Options...", "configure", "Ctrl+,",
     "Settings of the program and the open library, and its language"},

    {Place::Replication, "mnuDBToolsCreateReplicaItem", "&Create Replica...", "", "",
     "Give out a child of this library"},
    {Place::Replication, "mnuDBToolsExportChangesItem", "&Export Changes...", "", "",
     "Write the changes for the mother library"},
    {Place::Replication, "mnuExportAgainItem", "Export Changes &Again...", "", "",
     "Write the changes once more, where the file of the last export was lost"},
    {Place::Replication, "mnuDBToolsSynchronizeItem", "&Synchronize...", "", "", "Take in a synchronization file"},
    {Place::Replication, "mnuSynchronizationReportsItem", "&Reports...", "", "", "What the last synchronizations did"},
    {Place::Replication, "mnuHandOutAgainItem", "&Hand Out Again...", "", "",
     "Write the last answer to a child once more, where its file was lost"},
    {Place::Replication, "mnuUndoSynchronization", "&Undo Last Synchronization", "", "",
     "Bring the library back to what it was before the last synchronization"},
    {Place::Replication, "mnuDBToolsForgetReplicaItem", "&Forget Replica...", "", "", "Strike a child off"},

    {Place::View, "mnuViewTreeItem", "&Tree", "", "", "Show or hide the tree"},
    {Place::View, "mnuViewBookmarks", "&Bookmarks", "", "Ctrl+Shift+B", "Show or hide bookmarks and info"},
    {Place::View, "mnuViewStatusBar", "&Status Bar", "", "", "Show or hide the status bar"},
    {Place::View, "mnuViewLineNumbers", "&Line Numbers", "", "", "Show or hide the numbers of lines of code"},
    {Place::View, "mnuViewWordWrap", "&Word Wrap", "", "", "Break long lines of code at the window's edge"},
    {Place::View, "mnuViewZoomIn", "Zoom &In", "zoom-in", "Ctrl++", "Show texts larger"},
    {Place::View, "mnuViewZoomOut", "Zoom &Out", "zoom-out", "Ctrl+-", "Show texts smaller"},
    {Place::View, "mnuViewZoomReset", "&Actual Size", "zoom-original", "Ctrl+0", "Show texts in their own size"},
    {Place::View, "", "", "", "", ""},
    {Place::View, "mnuViewRefresh", "&Reload Tree", "view-refresh", "F5", "Read the items anew"},
    {Place::View, "mnuCollapseBranchesItem", "&Collapse Branches", "collapse-all", "",
     "Close all branches of the tree"},

    {Place::Help, "mnuHelpItem", "&Handbook", "help-contents", "", "Open the first page of the handbook"},
    {Place::Help, "mnuHelpOnThisItem", "Help on &This", "", "F1", "Open the page of what has the focus"},
    {Place::Help, "", "", "", "", ""},
    {Place::Help, "mnuHelpOnlineItem", "Handbook &on the Web", "", "", "Open the handbook in the browser"},
    {Place::Help, "mnuOnlineItem", "KT Quillbase on the &Web", "", "", "Open the pages of the program in the browser"},
    {Place::Help, "mnuHomePageItem", "Home &Page", "", "", "Open the home page of its makers in the browser"},
    {Place::Help, "mnuFeedbackFormItem", "&Feedback Form", "", "", "Open the form for feedback in the browser"},
    {Place::Help, "mnuBugFormItem", "Bug Report For&m", "", "", "Open the form for bug reports in the browser"},
    {Place::Help, "mnuWishFormItem", "Wish Fo&rm", "", "", "Open the form for wishes in the browser"},
    {Place::Help, "", "", "", "", ""},
    {Place::Help, "mnuMailWishItem", "Mail a W&ish...", "", "", "Write a mail with a wish to the makers"},
    {Place::Help, "mnuMailFeedbackItem", "Mail Feedbac&k...", "", "", "Write a mail to the makers"},
    {Place::Help, "mnuViewErrorLog", "View Error &Log", "text-x-generic", "", "Open the log of errors"},
    {Place::Help, "mnuBugReportItem", "Report a &Bug...", "tools-report-bug", "",
     "Write a mail with the error log attached"},
    {Place::Help, "", "", "", "", ""},
    {Place::Help, "mnuAboutItem", "&About KT Quillbase", "quillbase", "", "Version and licence"},

    {Place::Toolbar, "NEW", "New", "document-new", "", "Add a new item below the selected one"},
    {Place::Toolbar, "SAVE", "Save", "document-save", "", "Save the item; a double click switches auto-save"},
    {Place::Toolbar, "DELETE", "Delete", "edit-delete", "", "Delete the selected item"},
    {Place::Toolbar, "PRINT", "Print", "document-print", "", "Print the item"},
    {Place::Toolbar, "BACK", "Back", "go-previous", "", "Back"},
    {Place::Toolbar, "FORWARD", "Forward", "go-next", "", "Forward"},
    {Place::Toolbar, "PREVIOUS", "Previous", "UP", "", "Previous Tree Item"},
    {Place::Toolbar, "NEXT", "Next", "DOWN", "", "Next Tree Item"},
    {Place::Toolbar, "BOOKMARK", "Bookmark", "bookmark-new", "", "Bookmark the item"},
    {Place::Toolbar, "VIEWBOOKMARKS", "Bookmarks", "bookmarks", "", "Show or hide the bookmarks"},
    {Place::Toolbar, "FIND", "Find", "edit-find", "", "Find in the library"},

    {Place::AddLink, "mnuAddLinkOneWayFromSelItem", "One Way - FROM Selected Item...", "LINK_ONEWAY_TARGET", "",
     "Lead from this item to another; click that one"},
    {Place::AddLink, "mnuAddLinkToSelectedItem", "One Way - TO Selected Item...", "LINK_ONEWAY_SOURCE", "",
     "Lead from another item to this one; click that one"},
    {Place::AddLink, "mnuAddLinkOneWayNewFromSelItem", "One Way New - FROM Selected Item...", "LINK_ONEWAY_NEW_TARGET",
     "", "Lead from this item to a new one; click its parent"},
    {Place::AddLink, "mnuAddLinkOneWayNewToSelItem", "One Way New - TO Selected Item...", "LINK_ONEWAY_NEW_SOURCE", "",
     "Lead from a new item to this one; click its parent"},
    {Place::AddLink, "mnuAddLinkTwoWayItem", "Two Way...", "LINK_TWOWAY", "",
     "Link this item with another, both ways; click that one"},
    {Place::AddLink, "mnuAddLinkTwoWayNew", "Two Way New...", "LINK_TWOWAY_NEW", "",
     "Link this item with a new one, both ways; click its parent"},

    {Place::ExportForReaders, "mnuExportHtml", "As &Web Page...", "", "",
     "Write one page with the tree, a find box and coloured code"},
    {Place::ExportForReaders, "mnuExportMarkdown", "As &Markdown...", "", "",
     "Write a folder of Markdown texts with the stored files beside"},
    {Place::ExportForReaders, "mnuExportFiles", "As &Files...", "", "",
     "Write a folder of the code texts under their titles"},

    {Place::WebLinks, "mnuWebEditPage", "&Edit Page...", "document-edit", "Ctrl+E",
     "Edit the item's web page; it is made where there is none"},
    {Place::WebLinks, "mnuWebInsertPicture", "Insert &Picture...", "insert-image", "",
     "Put a picture at the end of the item's page"},
    {Place::WebLinks, "mnuWebInsertLink", "Insert &Link...", "insert-link", "",
     "Put a link at the end of the item's page"},
    {Place::WebLinks, "mnuWebDeletePage", "&Delete Page", "edit-delete", "",
     "Delete the item's page with its pictures"},
    {Place::WebLinks, "", "", "", "", ""},
    {Place::WebLinks, "mnuWebGoBack", "&Back", "go-previous", "Alt+Left", "Go back to the page before"},
    {Place::WebLinks, "mnuWebGoForward", "&Forward", "go-next", "Alt+Right", "Go forward again"},
    {Place::WebLinks, "mnuWebStop", "&Stop", "process-stop", "", "Stop loading the page"},
    {Place::WebLinks, "mnuWebReload", "&Reload", "view-refresh", "Ctrl+R", "Load the page again"},
    {Place::WebLinks, "mnuWebHome", "&Home", "go-home", "Alt+Home", "Go to the item's own page"},
    {Place::WebLinks, "", "", "", "", ""},
    {Place::WebLinks, "mnuWebOpenedBrowsers", "&Opened Browsers", "internet-web-browser", "",
     "Go to a page that is open in a browser of yours"},

    {Place::CodeToolbar, "COLORIZE", "Colorize", "colorize", "", "Colorize"},

    {Place::TreeToolbar, "LINK_MODE", "Link Mode", "", "", "Link with another item"},
    {Place::TreeToolbar, "LINK_REMOVE", "Remove Link", "", "", "Remove the link"},

    {Place::BookmarkToolbar, "SINGLE_CLICK", "Single Click", "SINGLE_CLICK", "",
     "Open a bookmark by a single click, or by a double click"},
    {Place::BookmarkToolbar, "mnuRemoveBookMark", "&Remove Bookmark", "edit-delete", "",
     "Remove the selected bookmark"},
    {Place::BookmarkToolbar, "mnuRemoveAllItem", "Remove &All Bookmarks...", "edit-clear-all", "",
     "Remove all bookmarks"},

    {Place::BookmarkMenu, "mnuOpenBookMark", "&Open Item", "LINK_GOTO", "", "Go to the bookmarked item"},
    {Place::BookmarkMenu, "mnuEditBookMark", "&Edit Bookmark...", "edit-rename", "",
     "Change the description and the group of the bookmark"},
    {Place::BookmarkMenu, "mnuRenameGroup", "Rename &Group...", "", "", "Give the group another name"},
    {Place::BookmarkMenu, "mnuRemoveGroup", "Remove G&roup...", "", "", "Remove the group with its bookmarks"},

    {Place::InfoToolbar, "LOCK", "Lock", "UNLOCKED", "", "Keep the page at this item while others are shown"},

    {Place::SearchToolbar, "QUICK_LIST", "Quick List", "QUICK_LIST", "", "Show the results as plain rows"},
    {Place::SearchToolbar, "DETAIL_LIST", "Detail List", "DETAIL_LIST", "",
     "Show the results with a column for each text"},

    {Place::SearchMenu, "mnuOpenFindResult", "&Open Item", "LINK_GOTO", "", "Go to the item that was found"},
    {Place::SearchMenu, "mnuFindSingleClick", "Open by a &Single Click", "", "",
     "Open a result by a single click, or by a double click"},
    {Place::SearchMenu, "mnuClearFindResults", "&Clear Results", "edit-clear-all", "",
     "Empty the list, and take the marks off the texts"},
};

} // namespace

Commands::Commands()
{
    for (const CommandRow& row : Rows) {
        if (*row.Name)
            m_states.insert(QString::fromLatin1(row.Name), {.Caption = QString::fromLatin1(row.Caption),
                                                            .Icon = QString::fromLatin1(row.Icon),
                                                            .Tip = QString::fromLatin1(row.Tip)});
    }
    // Shown for items in a state that asks for them.
    for (const QString& name : {u"mnuKeepItem"_s, u"mnuResolveItem"_s, u"mnuItemSeparator1"_s})
        m_states[name].Visible = false;
}

std::span<const CommandRow> Commands::Table()
{
    return Rows;
}

const Commands::State& Commands::Get(const QString& name) const
{
    static const State unknown;
    const auto found = m_states.constFind(name);
    return found == m_states.constEnd() ? unknown : *found;
}

template <class Value>
void Commands::Update(const QString& name, Value State::*part, const Value& value)
{
    Q_ASSERT(m_states.contains(name));
    m_states[name].*part = value;
    Q_EMIT Changed(name);
}

void Commands::Register(const QString& name, std::function<void()> procedure)
{
    Q_ASSERT(m_states.contains(name));
    m_procedures.insert(name, std::move(procedure));
    Q_EMIT Changed(name);
}

void Commands::Run(const QString& name)
{
    const std::function<void()> procedure = m_procedures.value(name);
    if (procedure && Get(name).Enabled)
        Guarded(u"MainForm"_s, name, procedure);
}

/// What is wanted and not barred.
void Commands::ShowEnabled(const QString& name)
{
    const bool enabled = m_wanted.value(name, true) && CommandRules::Allows(name, m_standing);
    if (enabled != Get(name).Enabled)
        Update(name, &State::Enabled, enabled);
}

void Commands::SetEnabled(const QString& name, bool enabled)
{
    m_wanted[name] = enabled;
    ShowEnabled(name);
}

void Commands::SetVisible(const QString& name, bool visible)
{
    Update(name, &State::Visible, visible);
}

void Commands::SetChecked(const QString& name, bool checked)
{
    Update(name, &State::Checked, checked);
}

void Commands::SetCaption(const QString& name, const QString& caption)
{
    Update(name, &State::Caption, caption);
}

void Commands::SetImage(const QString& name, const QString& icon, const QString& tip)
{
    m_states[name].Icon = icon;
    Update(name, &State::Tip, tip);
}

void Commands::EnableMainToolbar(bool enabled)
{
    for (const CommandRow& row : Rows) {
        if (row.Where == Place::Toolbar)
            SetEnabled(QString::fromLatin1(row.Name), enabled);
    }
}

void Commands::SetStanding(const ItemStanding& standing)
{
    m_standing = standing;
    for (const QString& name : CommandRules::Names())
        ShowEnabled(name);
    const std::pair<const char*, bool> shown[] = {{"mnuKeepItem", standing.Deleted},
                                                  {"mnuResolveItem", standing.Conflict},
                                                  {"mnuItemSeparator1", standing.Deleted || standing.Conflict},
                                                  {"mnuCollapseBranchesItem", standing.Root}};
    for (const auto& [name, visible] : shown) {
        if (visible != Get(QLatin1StringView(name)).Visible)
            SetVisible(QLatin1StringView(name), visible);
    }
    SetEnabled(u"mnuCollapseBranchesItem"_s, standing.Root);
}

void Commands::DoToolBarLogic(bool rootSelected)
{
    ItemStanding standing = m_standing;
    standing.Root = rootSelected;
    SetStanding(standing);
}

void Commands::HideItemMenuItems(bool keep, bool resolve)
{
    ItemStanding standing = m_standing;
    standing.Deleted = standing.Marked = keep;
    standing.Conflict = resolve;
    SetStanding(standing);
}

} // namespace qb
