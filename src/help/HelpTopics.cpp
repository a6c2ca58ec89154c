#include "help/HelpTopics.h"

#include "help/Handbook.h"

namespace qb {

namespace {

constexpr HelpTopicRow Rows[] = {
    // Parts of the window
    {"txtFilter", "items#filter-the-tree"},
    {"tvwFound", "items#filter-the-tree"},
    {"cboLinkedItems", "links#links-between-items"},
    {"tvCodeItems", "items"},
    {"cboDatabase", "libraries"},
    {"cboItemLanguage", "code#which-language-an-item-has"},
    {"findBar", "find#in-a-text"},
    {"rtbNotes", "items#notes"},
    {"rtbCode", "code"},
    {"rtbUsage", "code"},
    {"ctlFileDetails1", "files"},
    {"webLinks", "pages"},
    {"ItemInfoPage", "links#the-info-page"},
    {"ctlBookMarkList", "links#bookmarks"},
    {"ctlCodeItemDetails", "items#what-an-item-has"},
    {"tbrCode", "code#sections"},
    {"tlbTextFormat", "items#notes"},
    {"tbrFiles", "files"},
    {"tbrBrowser", "pages#visit-the-web"},
    {"tbrSearch", "find#in-the-whole-library"},

    // Dialogs
    {"tabLanguage", "code#the-language-of-a-library"},
    {"frmSettings", "libraries#settings-of-a-library"},
    {"frmNewDatabase", "libraries#make-one"},
    {"frmDatabaseList", "libraries#open-one"},
    {"frmFind", "find#in-the-whole-library"},
    {"frmReplace", "find#replace-in-the-library"},
    {"frmQuickOpen", "find#quick-open"},
    {"frmDownloads", "pages#load-a-file"},
    {"frmPrint", "printing"},
    {"frmPrintItems", "printing"},
    {"frmPageSetup", "printing"},
    {"frmBackups", "backups#look-at-them"},
    {"frmConflicts", "replication#solve-conflicts"},
    {"frmRemovedItems", "removed#bring-something-back"},
    {"frmReplicaList", "replication#the-list-of-replicas"},
    {"frmBackupItem", "backups#look-at-them"},
    {"frmImportType", "files#store-files"},
    {"frmUnzip", "files#unzip"},
    {"frmAddBookmark", "links#bookmarks"},
    {"frmRelationshipDelete", "links#the-info-page"},
    {"frmError", "troubleshooting#messages"},
    {"frmSystemDateAlert", "replication#when-the-clock-is-wrong"},

    // Commands
    {"mnuNewDatabase", "libraries#make-one"},
    {"mnuOpenDatabase", "libraries#open-one"},
    {"mnuFileDatabaseSelect", "libraries#open-one"},
    {"mnuDatabaseListItem", "libraries#open-one"},
    {"mnuNewAliasItem", "libraries#name-and-remove"},
    {"mnuRemoveDBItem", "libraries#name-and-remove"},
    {"mnuFilePrint", "printing"},
    {"mnuQuickOpen", "find#quick-open"},
    {"mnuFullTextFind", "find#in-the-whole-library"},
    {"mnuFindNextOccurance", "find#in-the-whole-library"},
    {"mnuFindPreviousOccurance", "find#in-the-whole-library"},
    {"mnuFindInText", "find#in-a-text"},
    {"mnuFindNext", "find#in-a-text"},
    {"mnuFindPrevious", "find#in-a-text"},
    {"mnuFilterTree", "items#filter-the-tree"},
    {"mnuColorize", "code#the-language-of-a-library"},
    {"mnuKeepItem", "items#marks-in-the-tree"},
    {"mnuResolveItem", "replication#solve-conflicts"},
    {"mnuConflictSolver", "replication#solve-conflicts"},
    {"mnuAddCode", "items#add-items"},
    {"mnuNewSiblingItem", "items#add-items"},
    {"mnuRename", "items#rename-and-delete"},
    {"mnuDeleteCode", "items#rename-and-delete"},
    {"mnuBookMark", "links#bookmarks"},
    {"mnuAddLink", "links#links-between-items"},
    {"mnuSaveItem", "items#save"},
    {"mnuAutoSaveItem", "items#save"},
    {"mnuPreviousItem", "items#walk"},
    {"mnuNextItem", "items#walk"},
    {"mnuBackItem", "items#walk"},
    {"mnuForwardItem", "items#walk"},
    {"mnuImport", "branches#export-and-import"},
    {"mnuMailItem", "branches#mail-an-item"},
    {"mnuDBToolsBackupItem", "backups#by-hand"},
    {"mnuDBToolsRestoreItem", "backups#restore-a-library"},
    {"mnuBackupsItem", "backups#look-at-them"},
    {"mnuDBToolsCreateReplicaItem", "replication#give-out-a-replica"},
    {"mnuDBToolsExportChangesItem", "replication#export-changes"},
    {"mnuExportAgainItem", "replication#export-changes"},
    {"mnuDBToolsSynchronizeItem", "replication#synchronize"},
    {"mnuSynchronizationReportsItem", "replication#synchronize"},
    {"mnuHandOutAgainItem", "replication#synchronize"},
    {"mnuDBToolsForgetReplicaItem", "replication#the-list-of-replicas"},
    {"mnuReplication", "replication"},
    {"mnuRemovedItems", "removed"},
    {"mnuUndoSynchronization", "removed#undo-a-synchronization"},
    {"mnuUndoThisSessionChanges", "backups#undo-a-session"},
    {"mnuToolDatabaseRepair", "replication#when-the-clock-is-wrong"},
    {"mnuRemoveDeletedItems", "items#marks-in-the-tree"},
    {"mnuOptionsItem", "libraries#settings-of-a-library"},
    {"mnuViewBookmarks", "links#bookmarks"},
    {"mnuViewLineNumbers", "code#write-code"},
    {"mnuViewWordWrap", "code#write-code"},
    {"mnuViewErrorLog", "troubleshooting#messages"},
    {"mnuBugReportItem", "branches#write-to-the-makers"},
    {"mnuHTMLDefaultItem", "pages#the-pages-that-a-new-library-begins-with"},
    {"mnuWebEditPage", "pages#the-page-of-an-item"},
    {"mnuWebInsertPicture", "pages#the-page-of-an-item"},
    {"mnuWebInsertLink", "pages#the-page-of-an-item"},
    {"mnuWebDeletePage", "pages#the-page-of-an-item"},
    {"mnuMailWishItem", "branches#write-to-the-makers"},
    {"mnuMailFeedbackItem", "branches#write-to-the-makers"},

    // Menus, for those of their commands that have no row
    {"mnuFile", "libraries"},
    {"mnuFormat", "items#notes"},
    {"mnuEditCode", "code#sections"},
    {"mnuWebLinks", "pages#visit-the-web"},
    {"mnuFiles", "files"},
    {"mnuEdit", "code#write-code"},
    {"mnuItem", "items"},
    {"mnuTools", "backups"},
    {"mnuView", "getting-started#the-window"},
};

} // namespace

std::span<const HelpTopicRow> HelpTopicTable()
{
    return Rows;
}

QString TopicOf(const QStringList& names)
{
    for (const QString& name : names) {
        for (const HelpTopicRow& row : Rows) {
            if (name == QLatin1StringView(row.Name))
                return QString::fromLatin1(row.Topic);
        }
    }
    return Handbook::HomeTopic();
}

} // namespace qb
