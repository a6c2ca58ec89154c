#pragma once

#include "session/Commands.h"
#include "session/ItemCommands.h"
#include "session/ItemDrag.h"
#include "session/ItemLinking.h"
#include "session/ItemTree.h"
#include "session/ItemWebPage.h"
#include "session/LibraryList.h"
#include "session/SessionState.h"
#include "session/ShellView.h"
#include "session/WindowLayout.h"
#include "session/ui/CommandFaces.h"
#include "session/ui/EditCommands.h"
#include "session/ui/frmSettings.h"

#include <QMainWindow>
#include <QTimer>

class QComboBox;
class QLabel;
class QMenu;
class QProgressBar;
class QShortcut;
class QSplitter;
class QStackedWidget;
class QToolBar;

namespace qb {

class ApplicationTips;
class BrowserToolbar;
class ctlCodeDetails;
class ctlFileDetails;
class CodeToolbar;
class ctlSmartTreeView;
class FormatToolbar;
class LanguageButton;

/// The main window: assembles the session and its panels, and connects them. What the commands
/// do is decided by the collaborators, each in a file of its own.
class frmCodeLib : public QMainWindow, public ShellView {
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
    /// Selects the node of a key and opens its item.
    /// What was typed and not saved goes where the next start finds it.
    void KeepUnsavedTexts();
    void GoToNode(const QString& key) { m_tree->GoToNode(key); }
    Library* CurrentDatabase() { return m_session.CurrentDatabase.get(); }

    // ShellView
    void SetStatusText(const QString& text) override;
    void SetItemDate(const QString& text, const QString& tip) override;
    int ComboCount() const override;
    int ComboIndex() const override;
    void SetComboIndex(int index) override;
    QString ComboText() const override;
    void SetComboText(const QString& text) override;
    void InsertComboEntry(int index, const QString& alias) override;
    void RemoveComboEntry(int index) override;
    void SetComboToolTip(const QString& tip) override;
    LanguageChoice AskForLanguage() override;
    void EnableMenus(bool enabled) override;
    void ShowProgressStatusBar(int value, int maximum) override;
    std::shared_ptr<void> WaitCursor() override;
    void EnableEditing(bool enabled) override;

    /// Shows progress in the status bar; a percent below 1, or of 100 and above, hides the bar.
    void ShowProgress(const QString& text, int percent);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void MakePanels();
    void MakeToolbar();
    void MakeTextToolbars();
    void MakeFilesToolbar();
    void MakeStatusBar();
    void ConnectPanels();
    void ConnectLinks();
    void FollowLink(qint64 item);
    void ShowStatusOfItem();
    void ShowLinkHint(const QString& hint);
    void ShowLibraryState();
    std::optional<LinkDirection> AskLinkDirection();
    void tvCodeItems_Shrinking(bool shrinks);
    void ConnectDetails();
    void ConnectFiles();
    void UpdateAskToSaveFileDescChanges();
    void RegisterCommands();
    void ConnectMenus();
    void DoStartUp();
    void MakeStartOfSessionCopy();
    void PlaceWindow();
    void ReadSeparatorPositions();
    void SaveLayout();
    void RememberPlace();
    void mnuFile_Click();
    void mnuEdit_Click();
    void SaveButtonClicked();
    void tmrStartTimer_Timer();
    void CurrentViewChanged();
    void ShowTextToolbar();
    void ShowLanguage();
    void moSettings_SettingsUpdated();
    bool Form_QueryUnload();
    void DoUnload();
    void ShowDatabaseList();
    void ShowOptions(frmSettings::Page page);
    void SetShowStatusBar(bool show);
    void StartTips();
    void Form_Unload();

    SessionState m_session;
    Commands m_commands;
    CommandFaces* m_faces = nullptr;
    EditCommands* m_edit = nullptr;
    WindowLayout m_layout;
    bool m_layoutRead = false; ///< the separators are asked for once, when the window is shown
    QSplitter* ctlResizer1 = nullptr;
    int m_treeWidth = 0;       ///< of the tree before it was shrunk
    bool m_treeShrunk = false; ///< the splitter is fixed at its small width
    QMenu* mnuFiles = nullptr;
    QToolBar* tlbMain = nullptr;
    QStackedWidget* CoolBar1 = nullptr; ///< the toolbar that fits the tab
    CodeToolbar* tbrCode = nullptr;
    FormatToolbar* tlbTextFormat = nullptr;
    BrowserToolbar* tbrBrowser = nullptr;
    QToolBar* tbrFiles = nullptr;
    QWidget* m_formatBand = nullptr; ///< tbrFiles, where files are shown, and tlbTextFormat
    QTimer tmrStartTimer;            ///< tells a single click on SAVE from a double click
    int m_saveClickCount = 0;
    bool m_editingEnabled = true;
    bool m_toldOfGoneFile = false;
    QComboBox* cboDatabase = nullptr;
    QLabel* m_statusText = nullptr;
    LanguageButton* m_language = nullptr; ///< of the item's code
    QString m_status;                     ///< what the first panel shows when no link mode lasts
    QString m_linkHint;                   ///< what it shows while one does
    QShortcut* m_endLinkMode = nullptr;
    QLabel* m_itemDate = nullptr;
    QString m_shownDate; ///< of the item, whatever progress has made of its panel
    QProgressBar* prgStatus = nullptr;
    ctlSmartTreeView* tvCodeItems = nullptr;
    ctlCodeDetails* ctlCodeItemDetails = nullptr;
    ctlFileDetails* m_storedFiles = nullptr;
    std::unique_ptr<ItemTree> m_tree;
    std::unique_ptr<ItemCommands> m_items;
    std::unique_ptr<ItemDrag> m_drag;
    std::unique_ptr<ItemLinking> m_linking;
    std::unique_ptr<ItemWebPage> m_page;
    std::unique_ptr<LibraryList> m_libraries;
    std::unique_ptr<ApplicationTips> m_oTips; ///< while the tip window is open
};

} // namespace qb
