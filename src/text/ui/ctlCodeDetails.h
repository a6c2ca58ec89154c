#pragma once

#include "text/FormatCommands.h"
#include "text/ItemDetailsView.h"
#include "text/ui/BrowserCommands.h"
#include "text/ui/TextCommands.h"

#include <QWidget>

class QLabel;
class QStackedWidget;
class QTabWidget;

namespace qb {

class ColorizeProgress;
class FileDetailsView;
class WelcomeView;

/// The panel that shows and edits the current item: its title and description, and a tab each for
/// code, notes, usage, stored files and the web page, whose images tell which of them have
/// content. With no item it shows the welcome page. It lays out and forwards: what becomes of the texts is
/// decided by ItemEditor, ItemSections and CodeKeys.
class ctlCodeDetails : public QWidget,
                       public ItemDetailsView,
                       private ItemEditorView,
                       public FormatCommands,
                       public TextCommands,
                       public BrowserCommands {
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
    FileDetailsView* FileControl() const { return ctlFileDetails1; }
    /// What was typed and is not saved.
    std::optional<UnsavedTexts> Unsaved() const { return m_editor.Unsaved(); }
    /// Nothing of the library or its item is held any more, as before it is closed.
    void Terminate();
    /// The description of the item that is shown; empty on the welcome page.
    QString Description() const;

    // What is done with the stored files, by their list
    void AddFile();
    void DeleteFile();
    void ExportFile();
    void UnzipToDirectory();

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
    void FileNotesSetFocus();
    /// Addresses in the notes, of the item and of its files, can be clicked.
    void SetAutoURLDetect(bool detects);
    /// An address was clicked: goes to the Links tab and there.
    void LinkOver(const QString& address);
    /// An address that looks like that of a file is one of a page: shows it.
    void ShowAsPage(const QUrl& url);
    /// Shows a page of the folder of web pages on the welcome page.
    void WelcomeBrowserNavigate(const QString& page);

Q_SIGNALS:
    /// Another item is shown, or, with null, none.
    void ItemInitialised(qb::CCodeItem* item);
    /// What is known of the item beside its texts may be another: it was saved, or another program has written to it.
    void FactsChanged();
    /// The text of a tab was changed by the user.
    void TextChanged(qb::DetailsTab tab);
    void CurrentViewChanged();
    /// The caret has moved, or what can be undone has changed.
    void EditStateChanged();

    /// A header was looked for and is not in the text of Code or (not) of Usage.
    void HeaderMissing(quint8 header, bool isCode);
    void SectionDeleted(quint8 header);
    /// A key was pressed in a box for code.
    void CodeKeyDown(QKeyEvent* event);

    /// The folder of web pages lacks a default page; shown is what is there afterwards.
    void DefaultPagesMissing(const QString& folder);
    /// The browser goes to an address; @p address is what to show of it.
    void BeforeNavigate(const QString& address);
    void BrowserCommandStateChange(bool back, bool forward);
    void BrowserProgressChange(int percent);
    void BrowserLinkHovered(const QString& address);
    /// A link of a page to an item was clicked.
    void ItemAsked(qint64 item);
    /// The browser has come to a file, which is no page.
    void LoadFile(const QUrl& url);

    // The state of the selection in the notes differs from what was told last
    void eNotesFontChanged(const QString& font);
    void eNotesFontSizeChanged(int size);
    void eNotesBoldStateChanged(bool on);
    void eNotesItalicStateChanged(bool on);
    void eNotesUnderlineStateChanged(bool on);
    void NotesBulletStateChanged(bool on);
    void NotesAllignmentStateChanged(int alignment);

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
    FileDetailsView* ctlFileDetails1 = nullptr;
    QString m_htmlFolder; ///< of the open library
    bool m_detectsAddresses = false;
    bool m_readOnly = false; ///< the whole library can only be read
};

} // namespace qb
