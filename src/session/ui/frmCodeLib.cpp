#include "session/ui/frmCodeLib.h"

#include "components/ui/ApplicationTips.h"
#include "finder/ui/frmQuickOpen.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlFileDetails.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/SettingsStore.h"
#include "platform/system/Trace.h"
#include "session/ExitMaintenance.h"
#include "session/FileDialogs.h"
#include "session/ui/CWaitCursor.h"
#include "session/ui/FormatToolbar.h"
#include "session/ui/HelpCommands.h"
#include "session/ui/LibraryFind.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Appearance.h"
#include "text/ui/ctlCodeDetails.h"
#include "web/WebAccess.h"
#include "web/ui/BrowserView.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLayout>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QWindow>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString ModuleName = u"MainForm"_s;
} // namespace

frmCodeLib::frmCodeLib()
{
    setObjectName(u"frmCodeLib"_s);
    setWindowTitle(ApplicationTitle);
    MakePanels();
    m_places = std::make_unique<WindowPlaces>(
        m_layout, WindowPlaces::Parts{*this, *ctlResizer1, *ctlResizer2, *tvCodeItems, *m_storedFiles});
    m_shell = new WindowShell(*this);
    m_tree = std::make_unique<ItemTree>(m_session, *tvCodeItems, *ctlCodeItemDetails, *m_shell, m_commands);
    m_items = std::make_unique<ItemCommands>(m_session, *tvCodeItems, *ctlCodeItemDetails, *m_shell, m_commands,
                                             *m_tree);
    m_drag = std::make_unique<ItemDrag>(m_session, *tvCodeItems, *m_tree, *m_items);
    m_linking = std::make_unique<ItemLinking>(m_session, *tvCodeItems, m_commands);
    m_bookmarks = std::make_unique<BookmarkCommands>(BookmarkCommands::Parts{*this, m_session, m_commands, *m_tree,
                                                                             tvCodeItems->Nodes(), *m_items, *m_linking,
                                                                             *ctlCodeItemDetails, *ctlBookMarkList});
    m_page = std::make_unique<ItemWebPage>(m_session, *ctlCodeItemDetails, m_commands);
    m_printing = std::make_unique<ItemPrinting>(m_session, m_commands);
    m_libraries = std::make_unique<LibraryList>(m_session, *m_shell, *ctlCodeItemDetails, m_commands, *m_tree);
    m_tools = std::make_unique<DatabaseTools>(m_session, m_commands, *m_libraries, *m_tree);
    m_replicas = std::make_unique<Replicas>(m_session, *m_shell, m_commands, *m_libraries, *m_tree);
    m_synchronizing = std::make_unique<Synchronizing>(m_session, *m_shell, m_commands, *m_libraries, *m_tree,
                                                      *m_replicas);
    m_conflicts = std::make_unique<PendingConflicts>(m_session, m_commands, *m_tree);
    m_removed = std::make_unique<RemovedTools>(m_session, m_commands, *m_libraries, *m_tree);
    m_find = std::make_unique<LibraryFind>(LibraryFind::Parts{*this, m_findService, m_session, m_commands, *m_tree,
                                                              tvCodeItems->Nodes(), *ctlCodeItemDetails, *m_storedFiles,
                                                              *ctlBookMarkList});
    m_exchange = std::make_unique<ItemExchange>(m_session, m_commands, *m_tree, *tvCodeItems, *m_shell);
    m_dialogs = std::make_unique<SessionDialogs>(
        SessionDialogs::Parts{*this, m_session, m_commands, *tvCodeItems, *m_tree, *m_items, *m_libraries, *m_tools,
                              *m_replicas, *m_synchronizing, *m_conflicts, *m_removed, *m_exchange, *m_printing});
    m_edit = new EditCommands(m_commands, *ctlCodeItemDetails, this);
    RegisterCommands();
    RegisterHelpCommands(m_commands, *this);
    RegisterItemMail(m_commands, *this, m_session, std::bind_front(&ItemCommands::SaveItem, m_items.get()));
    m_faces = new CommandFaces(*this, m_commands);
    MakeToolbar();
    MakeTextToolbars();
    m_bookmarks->MakeFaces(*m_faces);
    m_find->MakeFaces(*m_faces);
    ConnectPanels();
    ConnectDetails();
    ConnectFiles();
    ConnectPages();
    ConnectLibraries();
    MakeQuickOpen();
    ConnectMenus();
    constexpr QSize Smallest(5000, 4000); // twips
    setMinimumSize(Smallest / WindowLayout::TwipsPerPixel);
}

/// Quick open and the find work for the session and its panels, which go before the window's widgets.
frmCodeLib::~frmCodeLib()
{
    delete m_quickOpen;
    delete m_downloadWindow;
    m_find.reset();
}

void frmCodeLib::Form_Load()
{
    Guarded(ModuleName, u"Form_Load"_s, [this] {
        m_session.oCodeItem = std::make_unique<CCodeItem>();
        CWaitCursor wait;
        wait.SetCursor(CWaitCursor::Hourglass);
        m_session.moSettings = std::make_unique<CSettings>(std::bind_front(&frmCodeLib::CurrentDatabase, this));
        connect(m_session.moSettings.get(), &CSettings::eShowStatusBar, this, [this](bool show) {
            statusBar()->setVisible(show);
            m_commands.SetChecked(u"mnuViewStatusBar"_s, show);
        });
        connect(m_session.moSettings.get(), &CSettings::SettingsUpdated, this, &frmCodeLib::moSettings_SettingsUpdated);
        m_session.moSettings->Initialise();
        m_libraries->DisplayKeywordDefiner = [this] { ShowOptions(frmSettings::KeywordPage); };
        m_libraries->GetLastDBName();
        m_libraries->CreateDBArray();
        DoStartUp();
        const bool open = m_libraries->SetupDBConnection();
        Trace("library");
        if (open)
            m_tree->FillTree();
        m_bookmarks->Show(m_bookmarks->IsShown() || !open);
        m_libraries->EnableControls(open);
        tlbTextFormat->sbTextTomatToolbarInitialize();
        tlbTextFormat->FillMenu(*m_faces->MenuOf(CommandRow::Place::EditFormat));
        m_libraries->NewHistory();
        m_libraries->LibraryShown = [this] {
            ctlCodeItemDetails->OfferUnsavedTexts(*CurrentDatabase(),
                                                  [this](qint64 item) { m_tree->GoToNode(NodeKey(item)); });
        };
        if (open)
            m_libraries->LibraryShown();
        InitializeAutoURLDetection();
        if (Settings().TipsOnStartup())
            StartTips();
    });
}

void frmCodeLib::ConnectLibraries()
{
    m_find->ShowPanel = std::bind_front(&BookmarkCommands::Show, m_bookmarks.get(), true);
    m_libraries->DatabaseOpened = [this] {
        m_bookmarks->LibraryOpened();
        m_find->LibraryOpened();
    };
    m_libraries->DatabaseClosing = [this] {
        m_quickOpen->Close();
        m_find->LibraryClosing();
        m_bookmarks->LibraryClosing();
    };
    m_libraries->ReplicationRead = std::bind_front(&ctlBookmarks::UpdateReplicationInfo, ctlBookMarkList);
    connect(ctlBookMarkList, &ctlBookmarks::LinkFollowed, m_tree.get(), &ItemTree::FollowLink);
}

void frmCodeLib::StartTips()
{
    m_oTips = std::make_unique<ApplicationTips>(this);
    connect(m_oTips.get(), &ApplicationTips::TipsOnStartupChanged, this, [this](bool wanted) {
        Settings().SetTipsOnStartup(wanted);
        Settings().ApplyOrTakeBack();
    });
    // The window's own signal must not destroy the window that raises it.
    connect(
        m_oTips.get(), &ApplicationTips::TipsFormClosed, this, [this] { m_oTips.reset(); }, Qt::QueuedConnection);
    const QString own = ApplicationFolder() + u"Tips.rtf"_s; // the user's, if there are any
    if (!m_oTips->Start(SettingsApplication, QFile::exists(own) ? own : SharedPath(u"Tips.rtf"_s)))
        m_oTips.reset();
}

void frmCodeLib::SetTipsFocus()
{
    if (m_oTips)
        m_oTips->SetFocus();
}

void frmCodeLib::DoStartUp()
{
    Guarded(ModuleName, u"DoStartUp"_s, [this] {
        m_places->PlaceWindow();
        m_items->SetAutoSaveOn(m_layout.Flag(WindowLayout::AutoSave));
        m_bookmarks->ReadLayout(m_layout);
        m_find->ReadLayout(m_layout);
        moSettings_SettingsUpdated();
        m_edit->ReadTextView(Settings());
        m_storedFiles->ShowPreview(Settings().ViewFilePreview());
        m_commands.SetStanding(StandingOf(m_session)); // with no item: DELETE and BOOKMARK are disabled
        m_tools->MakeStartOfSessionCopy();
    });
}

// Place and layout

/// The browser draws in another way than the rest of the window, so that the toolkit makes the window anew
/// when the first page is shown. It has the state of the one before.
bool frmCodeLib::event(QEvent* event)
{
    if (event->type() == QEvent::WinIdChange && internalWinId() && windowHandle()->windowStates() != windowState())
        windowHandle()->setWindowStates(windowState());
    if (event->type() == QEvent::WindowActivate && m_session.CurrentDatabase)
        QTimer::singleShot(0, this, &frmCodeLib::ShowLibraryState); // it may have gone meanwhile, or come back
    return QMainWindow::event(event);
}

void frmCodeLib::moveEvent(QMoveEvent* event)
{
    QMainWindow::moveEvent(event);
    m_places->RememberPlace();
}

void frmCodeLib::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    m_places->Resized();
    if (m_quickOpen->isVisible())
        m_quickOpen->Place(RoomOfQuickOpen());
}

void frmCodeLib::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    m_places->Shown();
}

void frmCodeLib::SaveLayout()
{
    m_places->Write();
    m_bookmarks->WriteLayout(m_layout);
    m_find->WriteLayout(m_layout);
    m_layout.SetFlag(WindowLayout::AutoSave, m_items->AutoSaveOn());
    m_layout.Save(tvCodeItems->IsShrunk());
}

// Closing

void frmCodeLib::closeEvent(QCloseEvent* event)
{
    if (!Form_QueryUnload())
        return event->ignore();
    Form_Unload();
    event->accept();
}

/// Unsaved changes are saved or asked about, which can't keep the window open. What could not be
/// written and is not to be lost can.
bool frmCodeLib::Form_QueryUnload()
{
    tvCodeItems->EndLabelEdit();
    return m_downloads->MayEnd() && m_items->SaveItem();
}

void frmCodeLib::DoUnload()
{
    if (!Settings().SaveFormLayout())
        return;
    SaveLayout();
    m_edit->SaveTextView(Settings());
}

void frmCodeLib::KeepUnsavedTexts()
{
    ctlCodeItemDetails->KeepUnsavedTexts();
}

void frmCodeLib::moSettings_SettingsUpdated()
{
    const TokenPalette colours = TokenPalette::FromTexts(Settings().RuleColoursLight(), Settings().RuleColoursDark());
    ctlCodeItemDetails->SetPalette(colours);
    m_quickOpen->SetPalette(colours);
    ApplyAppearance(Settings().ColourScheme(), Settings().InterfaceFontName(), Settings().InterfaceFontSize());
    ctlCodeItemDetails->SetDefaultFont({Settings().DefaultFontName(), Settings().DefaultFontSize()});
    tlbTextFormat->ShowColors(Settings());
    WebAccess::SetUnwanted(Settings().KeepWebOut());
    for (BrowserView* view : findChildren<BrowserView*>())
        view->ApplyWebAccess();
    m_downloads->ApplyWebAccess();
    UpdateAskToSaveFileDescChanges();
}

void frmCodeLib::UpdateAskToSaveFileDescChanges()
{
    const bool automatic = Settings().AutoSaveFileDescriptions()
                           && (!Settings().AutoSaveFileDescrIfAutoSaveOn() || m_items->AutoSaveOn());
    m_storedFiles->SetAskToSaveFileDescChanges(!automatic);
}

void frmCodeLib::Form_Unload()
{
    Guarded(ModuleName, u"Form_Unload"_s, [this] {
        UninitializeAutoURLDetection();
        m_tree->ClearTreeView();
        const QString library = m_session.MayWrite() ? m_session.CurrentDatabase->Name() : QString();
        ctlBookMarkList->Terminate();
        ctlCodeItemDetails->Terminate();
        m_libraries->CloseDatabase();
        DoUnload();
        if (!library.isEmpty())
            ExitMaintenance(m_session, *m_shell, *m_tools).RunOn(library);
    });
}

// The state of the library

/// Whether the library can be written, in the title bar and the commands. That its file has gone is told
/// once, and so is what can be done.
void frmCodeLib::ShowLibraryState()
{
    const bool gone = m_session.FileHasGone();
    const bool readOnly = m_session.CurrentDatabase && !m_session.MayWrite();
    const QString state = gone ? u" (read-only, its file has gone)"_s : readOnly ? u" (read-only)"_s : QString();
    setWindowTitle(ApplicationTitle + state);
    m_tree->ShowStanding();
    if (std::exchange(m_toldOfGoneFile, gone) || !gone)
        return;
    const QString text = u"The file of the library, '%1', is not there any more: it was moved, renamed or deleted, "
                         "or its disk is gone. Nothing can be saved until it is back.\n\nWhat you have typed is still "
                         "in the window. To keep it, select it with Ctrl+A, copy it with Ctrl+C and paste it into "
                         "another program."_s;
    const QString file = QDir::toNativeSeparators(m_session.CurrentDatabase->Name());
    Prompts::Current().MsgBox({.Text = text.arg(file), .Caption = ApplicationTitle, .Icon = MsgBoxIcon::Exclamation});
}

/// The title of the item that is shown; with none the library's language, as when it was opened.
void frmCodeLib::ShowStatusOfItem()
{
    if (m_session.oCodeItem && !m_session.oCodeItem->Key().isEmpty())
        m_shell->SetStatusText(m_session.oCodeItem->Title());
    else if (CurrentDatabase())
        m_shell->SetStatusText(CurrentDatabase()->QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText());
}

/// The options, on one of their pages.
void frmCodeLib::ShowOptions(frmSettings::Page page)
{
    frmSettings dialog(this);
    dialog.RequestLanguageDefinitionFileName = [](QString& fileName, bool forExport) {
        fileName = GetFileName(
            forExport, forExport ? u"Export Language Definition To File"_s : u"Import Language Definition From File"_s,
            u"KT Quillbase Language Definition|*.qbl"_s);
    };
    dialog.LanguageDataChanged = [this] {
        ctlCodeItemDetails->FormatingInitialize(*CurrentDatabase());
        m_libraries->UpdateGlobalSynchronizationVariables();
    };
    dialog.InitializeSettings(Settings(), CurrentDatabase());
    dialog.ShowPage(page);
    dialog.exec();
}

} // namespace qb
