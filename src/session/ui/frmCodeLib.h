#pragma once

#include "finder/FindService.h"
#include "session/Commands.h"
#include "session/DatabaseTools.h"
#include "session/ItemCommands.h"
#include "session/ItemDrag.h"
#include "session/ItemExchange.h"
#include "session/ItemLinking.h"
#include "session/ItemPrinting.h"
#include "session/ItemTree.h"
#include "session/ItemWebPage.h"
#include "session/LibraryList.h"
#include "session/PageDownloads.h"
#include "session/PendingConflicts.h"
#include "session/QuickOpenSession.h"
#include "session/RemovedTools.h"
#include "session/Replicas.h"
#include "session/SessionState.h"
#include "session/Synchronizing.h"
#include "session/WindowLayout.h"
#include "session/ui/BookmarkCommands.h"
#include "session/ui/ClickCounter.h"
#include "session/ui/CommandFaces.h"
#include "session/ui/EditCommands.h"
#include "session/ui/SessionDialogs.h"
#include "session/ui/WindowPlaces.h"
#include "session/ui/WindowShell.h"
#include "session/ui/frmSettings.h"
#include "web/ui/frmDownloads.h"

#include <QMainWindow>
#include <QPointer>
#include <QTimer>

class QAction;
class QMenu;
class QShortcut;
class QSplitter;
class QStackedWidget;
class QToolBar;

namespace qb {

class ApplicationTips;
class BrowserToolbar;
class ctlBookmarks;
class ctlCodeDetails;
class ctlFileDetails;
class CodeToolbar;
class ctlSmartTreeView;
class FilesToolbar;
class FormatToolbar;
class LibraryFind;
class frmQuickOpen;

/// The main window: assembles the session and its panels, and connects them. What the commands
/// do is decided by the collaborators, each in a file of its own.
class frmCodeLib : public QMainWindow {
    Q_OBJECT

public:
    frmCodeLib();
    ~frmCodeLib() override;

    /// Reads the list of libraries, opens the last one and fills the tree; runs before the
    /// window is shown.
    void Form_Load();

    CSettings& Settings() { return *m_session.moSettings; }
    /// Brings the tip window to the front, if it is open.
    void SetTipsFocus();
    /// What was typed and not saved goes where the next start finds it.
    void KeepUnsavedTexts();
    /// Selects the node of a key and opens its item.
    void GoToNode(const QString& key) { m_tree->GoToNode(key); }
    Library* CurrentDatabase() { return m_session.CurrentDatabase.get(); }

    WindowShell& Shell() { return *m_shell; }
    /// The panel of bookmarks and info.
    BookmarkCommands& Bookmarks() { return *m_bookmarks; }

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void EnableMenus(bool enabled);
    void EnableEditing(bool enabled);
    void MakePanels();
    void MakeToolbar();
    void MakeTextToolbars();
    void ConnectPanels();
    void ConnectLinks();
    void ConnectLibraries();
    void MakeQuickOpen();
    QRect RoomOfQuickOpen() const;
    void ShowQuickOpen();
    void ShowStatusOfItem();
    void ShowLibraryState();
    void ConnectDetails();
    void ConnectFiles();
    void ConnectPages();
    void ConnectDownloads();
    void InitializeAutoURLDetection();
    void UninitializeAutoURLDetection();
    void UpdateAskToSaveFileDescChanges();
    void RegisterCommands();
    void ConnectMenus();
    void DoStartUp();
    void SaveLayout();
    void mnuFile_Click();
    void mnuEdit_Click();
    void CurrentViewChanged();
    void ShowTextToolbar();
    void ShowLanguage();
    void moSettings_SettingsUpdated();
    bool Form_QueryUnload();
    void DoUnload();
    void ShowOptions(frmSettings::Page page);
    void StartTips();
    void Form_Unload();

    SessionState m_session;
    Commands m_commands;
    WindowShell* m_shell = nullptr;
    CommandFaces* m_faces = nullptr;
    EditCommands* m_edit = nullptr;
    WindowLayout m_layout;
    std::unique_ptr<WindowPlaces> m_places;
    QSplitter* ctlResizer1 = nullptr;
    QSplitter* ctlResizer2 = nullptr;
    QMenu* mnuFiles = nullptr;
    QToolBar* tlbMain = nullptr;
    QStackedWidget* CoolBar1 = nullptr; ///< the toolbar that fits the tab
    CodeToolbar* tbrCode = nullptr;
    FormatToolbar* tlbTextFormat = nullptr;
    BrowserToolbar* tbrBrowser = nullptr;
    FilesToolbar* tbrFiles = nullptr;
    QWidget* m_formatBand = nullptr; ///< tbrFiles, where files are shown, and tlbTextFormat
    ClickCounter m_saveClicks;
    bool m_editingEnabled = true;
    bool m_toldOfGoneFile = false;
    QShortcut* m_endLinkMode = nullptr; ///< Escape, wherever the focus is, while a link mode lasts
    ctlSmartTreeView* tvCodeItems = nullptr;
    ctlCodeDetails* ctlCodeItemDetails = nullptr;
    ctlFileDetails* m_storedFiles = nullptr;
    ctlBookmarks* ctlBookMarkList = nullptr;
    std::unique_ptr<ItemTree> m_tree;
    std::unique_ptr<ItemCommands> m_items;
    std::unique_ptr<ItemDrag> m_drag;
    std::unique_ptr<ItemLinking> m_linking;
    std::unique_ptr<BookmarkCommands> m_bookmarks;
    std::unique_ptr<ItemWebPage> m_page;
    std::unique_ptr<PageDownloads> m_downloads;
    QPointer<frmDownloads> m_downloadWindow;
    std::unique_ptr<ItemPrinting> m_printing;
    std::unique_ptr<LibraryList> m_libraries;
    FindService m_findService;
    std::unique_ptr<QuickOpenSession> m_quickSession;
    frmQuickOpen* m_quickOpen = nullptr;
    std::unique_ptr<DatabaseTools> m_tools;
    std::unique_ptr<Replicas> m_replicas;
    std::unique_ptr<Synchronizing> m_synchronizing;
    std::unique_ptr<PendingConflicts> m_conflicts;
    std::unique_ptr<RemovedTools> m_removed;
    std::unique_ptr<LibraryFind> m_find;
    std::unique_ptr<ItemExchange> m_exchange;
    std::unique_ptr<SessionDialogs> m_dialogs;
    std::unique_ptr<ApplicationTips> m_oTips; ///< while the tip window is open
};

} // namespace qb
