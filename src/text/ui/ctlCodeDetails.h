#pragma once

#include "text/CTextFormat.h"
#include "text/ItemDetailsView.h"
#include "text/RecoveryFile.h"
#include "text/ui/UserTextBox.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <array>
#include <chrono>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QStackedWidget;
class QTabWidget;

namespace qb {

class BrowserView;
class BusyLogo;
class CodeBox;
class CodeSections;
class FileDetailsView;
class FindBar;
class LinkNotes;
class LocalPage;
class RichTextBox;

/// The panel that shows and edits the current item: its title and description, and a tab each for
/// code, notes, usage, stored files, the web page and info, whose images tell which of them have
/// content. With no item it shows the welcome page.
class ctlCodeDetails : public QWidget, public ItemDetailsView {
    Q_OBJECT

public:
    explicit ctlCodeDetails(QWidget* parent = nullptr);

    // ItemDetailsView
    void Initialise(Library* library, CCodeItem* item) override;
    void TreeReplaced() override;
    void SetLocked(bool locked) override;
    bool Locked() const override { return m_locked; }
    void FormatingInitialize(Library& library) override;
    void SetCodeEnabled(bool hasContent) override { SetTabEnabled(DetailsTab::Code, hasContent); }
    void SetNotesEnabled(bool hasContent) override { SetTabEnabled(DetailsTab::Notes, hasContent); }
    void SetUsageEnabled(bool hasContent) override { SetTabEnabled(DetailsTab::Usage, hasContent); }
    void SetFilesEnabled(bool hasContent) override { SetTabEnabled(DetailsTab::Files, hasContent); }
    void SetLinksEnabled(bool hasContent) override { SetTabEnabled(DetailsTab::Links, hasContent); }
    void SetCurrentView(DetailsTab tab) override;
    void ColorizeItem() override;
    bool SaveItem(bool keep = false) override;
    bool SetItemChanged(bool automatic) override;
    bool SaveFileDescChanges(bool mayAsk = true) override;
    void ForgetFileDescChanges() override;
    void ResetChangedBooleans() override;
    void Navigate(const QString& address) override;

    /// The list of stored files, whose page is the tab's from now on.
    void SetFileControl(FileDetailsView& files);
    FileDetailsView* FileControl() const { return ctlFileDetails1; }

    /// The tab that is shown; nothing on the welcome page.
    std::optional<DetailsTab> CurrentView() const;
    /// Its number; 0 on the welcome page.
    int CurrentTab() const { return int(CurrentView().value_or(DetailsTab{})); }
    /// Whether a tab's image says that it has content.
    bool TabEnabled(DetailsTab tab) const { return m_hasContent[size_t(tab)]; }
    /// Stays on the tab it is on if that has content, or goes to the first that has.
    void DisplayTabWithContent();
    /// The links of the item are other ones.
    void ShowLinks();
    /// The font of notes that have none of their own.
    void SetDefaultFont(const RtfFont& font);

    // The text of the visible tab

    /// The box of the visible tab; null where there is none.
    UserTextBox* CurrentBox() const;
    RichTextBox* RTBNotesControl() const { return rtbNotes; }
    /// The selected text of the visible box.
    QString SelText() const;
    /// The code as plain text, as it stands in its box.
    QString CodeWindowText() const;

    /// Colours a copy of the text of "Code" or "Usage", which is put back with @p saveBack. Returns
    /// its RTF; empty for an empty text.
    QString fnColorize(const QString& tab, bool saveBack);
    /// The visible box already holds the painted text.
    void SetCodeColorized(bool colorized) { m_texts[CodeText].Colorized = colorized; }
    void SetUsageColorized(bool colorized) { m_texts[UsageText].Colorized = colorized; }
    /// Colours the text of the visible tab.
    void ColorizeVisible();
    /// Whether there is a text on the visible tab that is not shown in colour.
    bool CanColorize() const;
    /// The colours of what is painted by rules.
    void SetPalette(const TokenPalette& palette);
    /// The name of the language that the item's code and usage are written in; empty: the library's.
    QString ItemLanguage() const;
    /// Changes it, which is a change of the item.
    void SetItemLanguage(const QString& name);

    // What is seen of the texts

    void FindInText();
    void FindNextOccurance();
    void FindPreviousOccurance();
    /// Asks for a line of the code and goes there.
    void GoToLine();
    /// In percent; the boxes keep within 50 to 400.
    int Zoom() const { return m_zoom; }
    void SetZoom(int percent);
    void SetLineNumbers(bool shown);
    void SetWordWrap(bool wraps);

    // The browser of the Links tab

    void GoBack();
    void GoForward();
    void BrowserStop();
    void Reload();
    /// Shows a page of the folder of web pages on the welcome page.
    void WelcomeBrowserNavigate(const QString& page);

    // Texts that were not saved before the program ended

    /// Offers the texts that were typed into this library's items and never saved, and shows them
    /// if the user wants. @p goTo selects an item. What is neither shown nor declined is kept: of an item
    /// that is gone in a file, else for the next start.
    void OfferUnsavedTexts(Library& library, const std::function<void(qint64 item)>& goTo);
    /// Writes at once what was typed and not saved; the program may end any moment.
    void KeepUnsavedTexts();

    // The sections of the visible text. On any other tab the user is told so.

    /// Adds a section to the item and its line to the text, or goes to the one that is there.
    void CreateCodeSection(CCodeItem& item, quint8 header, quint32 color);
    /// Where such a section would be put, in words: "before line 3".
    QString PlaceOfNewSection(quint8 header) const;
    bool GoToCodeSection(quint8 header, bool stayOnHeader);
    /// From the caret to the end of its section; with 0 the whole text.
    void CopyCodeSectionToClipboard(quint8 header);
    void DeleteCodeSection(quint8 header);
    /// The section that holds the caret, or 0.
    quint8 CurrentSection() const;

    // The format of the selection in the box for formatted text
    bool Bold() const { return mFT.Bold(); }
    void SetBold(bool on) { mFT.SetBold(on); }
    bool Italic() const { return mFT.Italic(); }
    void SetItalic(bool on) { mFT.SetItalic(on); }
    bool Underline() const { return mFT.Underline(); }
    void SetUnderline(bool on) { mFT.SetUnderline(on); }
    bool Bullets() const { return mFT.Bullets(); }
    void SetBullets(bool on) { mFT.SetBullets(on); }
    int Alignment() const { return mFT.Alignment(); }
    void SetAlignment(int alignment) { mFT.SetAlignment(alignment); }
    void IncreaseIndent() { mFT.IncreaseIndent(); }
    void DecreaseIndent() { mFT.DecreaseIndent(); }
    QString FontName() const { return mFT.Font(); }
    void SetFontName(const QString& name) { mFT.SetFont(name); }
    int FontSize() const { return mFT.Size(); }
    void SetFontSize(int points) { mFT.SetSize(points); }
    void SetFontColor(quint32 color) { mFT.SetColor(color); }
    void NotesSetFocus();
    void FileNotesSetFocus();

Q_SIGNALS:
    /// The text of a tab was changed by the user.
    void TextChanged(qb::DetailsTab tab);
    void CurrentViewChanged();
    /// The caret has moved, or what can be undone has changed.
    void EditStateChanged();

    void ColorizeStateChanged();
    void ItemLanguageChanged();

    /// A header was looked for and is not in the text of Code or (not) of Usage.
    void HeaderMissing(quint8 header, bool isCode);
    void ZoomChanged(int percent);
    /// The folder of web pages lacks a default page; shown is what is there afterwards.
    void DefaultPagesMissing(const QString& folder);
    void SectionDeleted(quint8 header);
    /// The browser goes to an address; @p address is what to show of it.
    void BeforeNavigate(const QString& address);
    void BrowserCommandStateChange(bool back, bool forward);
    void BrowserProgressChange(int percent);
    void BrowserLinkHovered(const QString& address);
    /// A key was pressed in a box for code.
    void CodeKeyDown(QKeyEvent* event);

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
    /// How often unsaved texts are written while there is typing.
    static constexpr std::chrono::milliseconds RecoveryInterval{500};

    /// The texts of an item that are edited here.
    enum Text { CodeText, NotesText, UsageText, TextCount };
    static constexpr std::array<DetailsTab, TextCount> TextTabs{DetailsTab::Code, DetailsTab::Notes, DetailsTab::Usage};
    struct TextState {
        UserTextBox* Box = nullptr;
        bool Changed = false;   ///< edited since the last save
        bool Colorized = false; ///< the box already holds the painted text
        bool Painted = false;   ///< what is shown is in colour, as it was stored or painted since
    };

    QWidget* MakeWelcomePage();
    QWidget* MakeItemPage();
    void MakeTabs();
    void ConnectBrowser();
    void MakeBoxes();
    void MakeProgress();
    template <class Box>
    void ConnectBox(Box* box, Text text);
    void ConnectFormatter();
    void ReadFormat();
    void PointFormatter();
    void ShowText(Text text);
    void ShowHeader();
    void ShowTaken(const std::vector<size_t>& columns);
    void ShowCode(Text text);
    void ConnectColours(CodeBox& box);
    void ShowByLanguage(Text text);
    CodeBox& CodeBoxOf(Text text) const;
    void BoxChanged(Text text);
    void StoreText(Text text);
    void DisplayWelcomePage();
    void OpenAddress(const QString& address);
    void ForgetUnsavedTexts();
    bool Offer(Library& library, const RecoveryFile& file, const UnsavedTexts& unsaved,
               const std::function<void(qint64 item)>& goTo);
    void ShowUnsaved(const UnsavedTexts& unsaved);
    CodeBox* CurrentCodeBox() const;
    CodeSections SectionsOf(CodeBox& box) const;
    void SectionsTakenBack(CodeBox& box);
    bool CodeBoxesKeyDown(CodeBox& box, QKeyEvent& event);
    bool NotesKeyDown(const QKeyEvent& event);
    void TypeNormally(CodeBox& box);
    bool NewLine(CodeBox& box);
    bool HeaderKeyDown(CodeBox& box, int key);
    RichText Painted(const CodeBox& box);
    void PutBack(CodeBox& box, const RichText& painted);
    void ShowColorizeProgress(int percent);
    void SetTabEnabled(DetailsTab tab, bool hasContent);
    bool KeepsDeletedItem() const;
    void ShowLockedState();
    void ShowWelcomeFacts(Library* library);

    CTextFormat mFT;
    QPointer<CCodeItem> m_item;
    Library* m_library = nullptr; ///< that it lies in
    QString m_htmlFolder;         ///< of the open library
    QStackedWidget* m_pages;
    QLabel* m_title = nullptr;
    QLabel* m_description = nullptr;
    QLabel* m_lockedState = nullptr;
    QLabel* m_facts = nullptr;
    LocalPage* webWelcome = nullptr;
    QTabWidget* m_tabs = nullptr;
    CodeBox* rtbCode = nullptr;
    RichTextBox* rtbNotes = nullptr;
    CodeBox* rtbUsage = nullptr;
    QPlainTextEdit* txtInfo = nullptr;
    LinkNotes* m_linkNotes = nullptr;
    QWidget* m_infoPage = nullptr; ///< holds both
    QWidget* m_filePage = nullptr; ///< holds the list of stored files
    FileDetailsView* ctlFileDetails1 = nullptr;
    BrowserView* webLinks = nullptr;
    BusyLogo* imgLabel = nullptr;
    FindBar* m_findBar = nullptr;
    std::optional<RecoveryFile> m_recovery; ///< of the open library
    QTimer m_recoveryTimer;
    Date m_shownState;      ///< LastChanged of the row that is shown
    QString m_itemLanguage; ///< of its code and usage; empty: the library's
    int m_zoom = 100;
    QWidget* picColorize = nullptr;
    QLabel* lblColorize = nullptr;
    QProgressBar* prbColorize = nullptr;
    std::array<TextState, TextCount> m_texts;
    std::array<bool, 7> m_hasContent{}; ///< by the number of the tab
    bool m_userChange = false;          ///< a change of a box is the user's; not while an item is loaded
    bool m_locked = false;
    bool m_readOnly = false; ///< the whole library can only be read
};

} // namespace qb
