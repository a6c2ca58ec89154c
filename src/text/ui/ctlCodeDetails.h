#pragma once

#include "text/FormatCommands.h"
#include "text/ui/BrowserCommands.h"
#include "text/ui/DetailsEvents.h"
#include "text/ui/StoredFileCommands.h"
#include "text/ui/TextCommands.h"

class QLabel;
class QStackedWidget;
class QTabWidget;

namespace qb {

class ColorizeProgress;
class WelcomeView;

/// The panel that shows and edits the current item: its title and description, and a tab each for
/// code, notes, usage, stored files and the web page, whose images tell which of them have
/// content. With no item it shows the welcome page. It lays out and forwards: what becomes of the texts is
/// decided by ItemEditor, ItemSections and CodeKeys.
class ctlCodeDetails : public DetailsEvents,
                       public ItemDetailsView,
                       private ItemEditorView,
                       public FormatCommands,
                       public TextCommands,
                       public BrowserCommands,
                       public StoredFileCommands {
    Q_OBJECT

public:
    explicit ctlCodeDetails(QWidget* parent = nullptr);

    // ItemDetailsView
    void Initialise(Library* library, CCodeItem* item) override;
    void TreeReplaced() override;
    void SetLocked(bool locked) override;
    bool Locked() const override { return m_editor.Locked(); }
    void FormatingInitialize(Library& library) override { m_editor.FormatingInitialize(library); }
    void SetTabEnabled(DetailsTab tab, bool hasContent) override { m_editor.SetTabEnabled(tab, hasContent); }
    void SetCurrentView(DetailsTab tab) override;
    void ColorizeItem() override { m_editor.ColorizeItem(); }
    bool SaveItem(bool keep = false) override { return m_editor.SaveItem(keep); }
    bool SetItemChanged(bool automatic) override { return m_editor.SetItemChanged(automatic); }
    bool SaveFileDescChanges(bool mayAsk = true) override;
    void ForgetFileDescChanges() override;
    void ResetChangedBooleans() override { m_editor.ResetChangedBooleans(); }
    void Navigate(const QString& address) override;

    /// The list of stored files, whose page is the tab's from now on.
    void SetFileControl(FileDetailsView& files);
    /// What was typed and is not saved.
    std::optional<UnsavedTexts> Unsaved() const { return m_editor.Unsaved(); }
    /// Nothing of the library or its item is held any more, as before it is closed.
    void Terminate();
    /// The description of the item that is shown; empty on the welcome page.
    QString Description() const;

    /// The tab that is shown; nothing on the welcome page.
    std::optional<DetailsTab> CurrentView() const override;
    /// Its number; 0 on the welcome page.
    int CurrentTab() const { return int(CurrentView().value_or(DetailsTab{})); }
    /// Stays on the tab it is on if that has content, or goes to the first that has.
    void DisplayTabWithContent() override;
    /// The box of the visible tab; null where there is none.
    UserTextBox* CurrentBox() const;
    /// The selected text of the visible box.
    QString SelText() const;
    /// Addresses in the notes, of the item and of its files, can be clicked.
    void SetAutoURLDetect(bool detects);
    /// An address was clicked: goes to the Links tab and there.
    void LinkOver(const QString& address);
    /// An address that looks like that of a file is one of a page: shows it.
    void ShowAsPage(const QUrl& url);
    /// Shows a page of the folder of web pages on the welcome page.
    void WelcomeBrowserNavigate(const QString& page);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // ItemEditorView
    void ShowFacts(CCodeItem& item) override;
    void ShowLinks() override;
    void ShowTabEnabled(DetailsTab tab, bool hasContent) override;
    void ShowStage(const QString& stage) override;

    QWidget* MakeItemPage();
    void MakeTabs();
    void ConnectWelcomePage();
    void ConnectBoxes();
    template <class Box>
    void ConnectBox(Box* box);
    void ConnectTexts();
    void ConnectFormatter();
    void ConnectBrowser();
    void ConnectAddresses(RichTextBox* box);
    void TextEdited(DetailsTab tab);
    void ReadFormat();
    void PointFormatter();
    void ShowLockedState();

    QStackedWidget* m_pages;
    WelcomeView* m_welcome;
    ColorizeProgress* picColorize;
    QLabel* m_title = nullptr;
    QLabel* m_description = nullptr;
    QLabel* m_lockedState = nullptr;
    QTabWidget* m_tabs = nullptr;
    QWidget* m_filePage = nullptr; ///< holds the list of stored files
    QString m_htmlFolder;          ///< of the open library
    bool m_detectsAddresses = false;
    bool m_itemComes = false;
    bool m_readOnly = false; ///< the whole library can only be read
};

} // namespace qb
