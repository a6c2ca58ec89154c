#include "text/ui/ctlCodeDetails.h"

#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/Addresses.h"
#include "support/ui/Icons.h"
#include "text/FileDetailsView.h"
#include "text/OpenAddress.h"
#include "text/ui/CodeBox.h"
#include "text/ui/ColorizeProgress.h"
#include "text/ui/FindBar.h"
#include "text/ui/FoundMarks.h"
#include "text/ui/PlainLabel.h"
#include "text/ui/RichTextBox.h"
#include "text/ui/WelcomeView.h"
#include "web/LocalPages.h"
#include "web/ui/BrowserView.h"
#include "web/ui/BusyLogo.h"

#include <QKeyEvent>
#include <QLabel>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct TabRow {
    DetailsTab Tab;
    const char* Title;
    const char* Image;      ///< with content
    const char* EmptyImage; ///< without
};
/// In the order in which they are shown.
constexpr TabRow TabRows[] = {
    {DetailsTab::Code, "&Code", "CODE", "DIS_CODE"},         {DetailsTab::Notes, "&Notes", "NOTES", "DIS_NOTES"},
    {DetailsTab::Usage, "&Usage", "USAGE", "DIS_USAGE"},     {DetailsTab::Files, "Fi&les", "FILES", "DIS_FILES"},
    {DetailsTab::Links, "&Web Links", "LINKS", "DIS_LINKS"},
};

int IndexOf(DetailsTab tab)
{
    const auto row = std::find_if(std::begin(TabRows), std::end(TabRows),
                                  [tab](const TabRow& one) { return one.Tab == tab; });
    return row == std::end(TabRows) ? -1 : int(row - std::begin(TabRows));
}

constexpr int Gap = 12;

/// Pages that take the height they get. Asked by each layout around them how high they are for a width, they would wrap
/// all their labels many times whenever an item is shown.
class PagesOfAnyHeight : public QStackedWidget {
public:
    bool hasHeightForWidth() const override { return false; }
};

} // namespace

ctlCodeDetails::ctlCodeDetails(QWidget* parent)
    : DetailsEvents(parent), TextCommands(mFT, *this), m_pages(new PagesOfAnyHeight), m_welcome(new WelcomeView),
      picColorize(nullptr)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
    m_pages->addWidget(m_welcome);
    m_pages->addWidget(MakeItemPage());
    picColorize = new ColorizeProgress(*this);
    ConnectWelcomePage();
    ConnectBoxes();
    ConnectTexts();
    ConnectFormatter();
    ConnectBrowser();
}

// Layout

QWidget* ctlCodeDetails::MakeItemPage()
{
    auto* page = new QWidget;
    m_title = MakePlainLabel(u"lblTitle"_s, 1.35, true);
    m_description = MakePlainLabel(u"lblDescription"_s, 1.0, false);
    m_lockedState = MakePlainLabel(u"lblLockedState"_s, 0.9, false);
    MakeTabs();
    auto* header = new QVBoxLayout;
    header->setContentsMargins(Gap, Gap, Gap, 0);
    header->addWidget(m_title);
    header->addWidget(m_description);
    header->addWidget(m_lockedState);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(header);
    layout->addWidget(m_tabs, 1);
    m_findBar = new FindBar(std::bind_front(&ctlCodeDetails::CurrentBox, this));
    layout->addWidget(m_findBar);
    m_found = std::make_unique<FoundMarks>(std::bind_front(&ctlCodeDetails::CurrentBox, this));
    connect(this, &ctlCodeDetails::CurrentViewChanged, m_findBar, &FindBar::Refresh);
    connect(this, &ctlCodeDetails::CurrentViewChanged, this, [this] { m_found->Refresh(); });
    return page;
}

void ctlCodeDetails::MakeTabs()
{
    m_filePage = new QWidget;
    auto* fileLayout = new QVBoxLayout(m_filePage);
    fileLayout->setContentsMargins(0, 0, 0, 0);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName(u"tbsTabs"_s);
    m_tabs->setDocumentMode(true);
    m_tabs->setCornerWidget(imgLabel);
    const std::array<QWidget*, std::size(TabRows)> pages{rtbCode, rtbNotes, rtbUsage, m_filePage, webLinks};
    for (size_t i = 0; i < pages.size(); ++i)
        m_tabs->addTab(pages[i], QString::fromLatin1(TabRows[i].Title));
    for (const TabRow& row : TabRows)
        SetTabEnabled(row.Tab, false);
    imgLabel->hide();
    connect(m_tabs, &QTabWidget::currentChanged, this, &ctlCodeDetails::CurrentViewChanged);
    connect(this, &ctlCodeDetails::CurrentViewChanged, imgLabel,
            [this] { imgLabel->setVisible(CurrentView() == DetailsTab::Links); });
}

void ctlCodeDetails::resizeEvent(QResizeEvent* event)
{
    DetailsEvents::resizeEvent(event);
    picColorize->Place();
}

// Connections

void ctlCodeDetails::ConnectWelcomePage()
{
    connect(m_welcome, &WelcomeView::DefaultPagesMissing, this, &ctlCodeDetails::DefaultPagesMissing);
    connect(m_welcome, &WelcomeView::AddressActivated, this,
            [this](const QString& address) { OpenAddress(address, std::bind_front(&ctlCodeDetails::Navigate, this)); });
}

void ctlCodeDetails::ConnectBoxes()
{
    ConnectBox(rtbCode);
    ConnectBox(rtbNotes);
    ConnectBox(rtbUsage);
    for (CodeBox* box : {rtbCode, rtbUsage})
        connect(box, &CodeBox::TextTakenBack, this, [this, box] { m_sections.TextTakenBack(*TextOf(box)); });
    connect(rtbNotes, &RichTextBox::LinkActivated, m_welcome, &WelcomeView::AddressActivated);
    ConnectAddresses(rtbNotes);
}

void ctlCodeDetails::ConnectAddresses(RichTextBox* box)
{
    connect(box, &RichTextBox::AddressClicked, this, [this](const QString& address, bool isOutside) {
        const bool isMail = address.startsWith("mailto:"_L1, Qt::CaseInsensitive); // which the tab can't show
        isOutside || isMail ? OpenAddress(address, std::bind_front(&ctlCodeDetails::LinkOver, this))
                            : LinkOver(address);
    });
}

void ctlCodeDetails::SetAutoURLDetect(bool detects)
{
    m_detectsAddresses = detects;
    rtbNotes->SetAutoURLDetect(detects);
    if (m_fileNotes)
        m_fileNotes->SetAutoURLDetect(detects);
}

/// The tab comes first: it shows the item's page when it is gone to.
void ctlCodeDetails::LinkOver(const QString& address)
{
    SetCurrentView(DetailsTab::Links);
    Navigate(address);
}

template <class Box>
void ctlCodeDetails::ConnectBox(Box* box)
{
    box->installEventFilter(this);
    connect(box, &Box::textChanged, this, [this, text = *TextOf(box)] { m_editor.BoxChanged(text); });
    connect(box, &Box::cursorPositionChanged, this, &ctlCodeDetails::EditStateChanged);
    connect(box, &Box::selectionChanged, this, &ctlCodeDetails::EditStateChanged);
    connect(box, &Box::ZoomAsked, this, std::bind_front(&ctlCodeDetails::ZoomBy, this));
}

void ctlCodeDetails::ConnectTexts()
{
    connect(&m_editor, &ItemEditor::TextChanged, this, &ctlCodeDetails::TextEdited);
    connect(&m_editor, &ItemEditor::Saved, this, &ctlCodeDetails::FactsChanged);
    connect(&m_sections, &ItemSections::HeaderMissing, this, &ctlCodeDetails::HeaderMissing);
    connect(&m_sections, &ItemSections::SectionDeleted, this, &ctlCodeDetails::SectionDeleted);
    connect(&m_sections, &ItemSections::SectionsTakenBack, this, &ctlCodeDetails::EditStateChanged);
    m_editor.KeepingDeletedRecord = [this](const QString& id) {
        if (KeepingDeletedRecord)
            KeepingDeletedRecord(id);
    };
    m_editor.TitleTaken = [this](const QString& id, const QString& title) {
        if (TitleTaken)
            TitleTaken(id, title);
    };
}

void ctlCodeDetails::ConnectFormatter()
{
    PointFormatter();
    connect(rtbNotes, &RichTextBox::selectionChanged, this, &ctlCodeDetails::ReadFormat);
    connect(rtbNotes, &RichTextBox::cursorPositionChanged, this, &ctlCodeDetails::ReadFormat);
    connect(this, &ctlCodeDetails::CurrentViewChanged, this, &ctlCodeDetails::PointFormatter);
    connect(&mFT, &CTextFormat::eColorizeProgress, this, [this](int percent) {
        if (percent == 0)
            m_pages->setCurrentIndex(1);
        picColorize->SetPercent(percent);
    });
    connect(&mFT, &CTextFormat::eFontChanged, this, &ctlCodeDetails::eNotesFontChanged);
    connect(&mFT, &CTextFormat::eFontSizeChanged, this, &ctlCodeDetails::eNotesFontSizeChanged);
    connect(&mFT, &CTextFormat::eBoldStateChanged, this, &ctlCodeDetails::eNotesBoldStateChanged);
    connect(&mFT, &CTextFormat::eItalicStateChanged, this, &ctlCodeDetails::eNotesItalicStateChanged);
    connect(&mFT, &CTextFormat::eUnderlineStateChanged, this, &ctlCodeDetails::eNotesUnderlineStateChanged);
    connect(&mFT, &CTextFormat::BulletStateChanged, this, &ctlCodeDetails::NotesBulletStateChanged);
    connect(&mFT, &CTextFormat::AllignmentStateChanged, this, &ctlCodeDetails::NotesAllignmentStateChanged);
}

void ctlCodeDetails::ConnectBrowser()
{
    connect(webLinks, &BrowserView::BeforeNavigate, this, [this](const QUrl& url) {
        const bool isWeb = url.scheme() == u"http"_s || url.scheme() == u"https"_s;
        imgLabel->SetBusy(isWeb);
        Q_EMIT BeforeNavigate(AddressText(url));
    });
    connect(webLinks, &BrowserView::DocumentComplete, imgLabel, [this] { imgLabel->SetBusy(false); });
    connect(webLinks, &BrowserView::CommandStateChange, this, &ctlCodeDetails::BrowserCommandStateChange);
    connect(webLinks, &BrowserView::ProgressChange, this, &ctlCodeDetails::BrowserProgressChange);
    connect(webLinks, &BrowserView::LinkHovered, this, &ctlCodeDetails::BrowserLinkHovered);
    connect(webLinks, &BrowserView::OpenOutside, m_welcome, &WelcomeView::AddressActivated);
    connect(webLinks, &BrowserView::LoadFile, this, &ctlCodeDetails::LoadFile);
    // The browser is in the middle of its decision, and the item's page is to follow.
    connect(webLinks, &BrowserView::ItemAsked, this, &ctlCodeDetails::ItemAsked, Qt::QueuedConnection);
}

void ctlCodeDetails::ShowAsPage(const QUrl& url)
{
    webLinks->ShowAsPage(url, m_htmlFolder);
}

void ctlCodeDetails::SetFileControl(FileDetailsView& files)
{
    ctlFileDetails1 = &files;
    m_filePage->layout()->addWidget(files.Page());
    m_fileNotes = &files.DescriptionTextBox();
    for (const auto signal : {&RichTextBox::selectionChanged, &RichTextBox::cursorPositionChanged}) {
        connect(m_fileNotes, signal, this, &ctlCodeDetails::ReadFormat);
        connect(m_fileNotes, signal, this, &ctlCodeDetails::EditStateChanged);
    }
    files.DescriptionShown = [this] {
        ReadFormat();
        m_findBar->Refresh();
        m_found->Refresh();
    };
    connect(m_fileNotes, &RichTextBox::textChanged, this, &ctlCodeDetails::ReadFormat); // also after undo
    connect(m_fileNotes, &RichTextBox::textChanged, m_findBar, &FindBar::RefreshSoon);
    connect(m_fileNotes, &RichTextBox::ZoomAsked, this, std::bind_front(&ctlCodeDetails::ZoomBy, this));
    connect(m_fileNotes, &RichTextBox::LinkActivated, m_welcome, &WelcomeView::AddressActivated);
    ConnectAddresses(m_fileNotes);
    m_fileNotes->SetAutoURLDetect(m_detectsAddresses);
}

bool ctlCodeDetails::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && (watched == rtbCode || watched == rtbUsage))
        Q_EMIT CodeKeyDown(static_cast<QKeyEvent*>(event));
    return BoxEvent(watched, *event) || DetailsEvents::eventFilter(watched, event);
}

// An item comes and goes

void ctlCodeDetails::Initialise(Library* library, CCodeItem* item)
{
    {
        const QScopedValueRollback comes(m_itemComes, true);
        m_editor.Initialise(library, item);
    }
    m_htmlFolder = library ? library->HTMLFolder() : QString();
    if (!item) {
        if (ctlFileDetails1)
            ctlFileDetails1->Terminate();
        m_welcome->ShowLibrary(library);
        m_pages->setCurrentIndex(0);
        Q_EMIT ItemInitialised(nullptr);
        Q_EMIT CurrentViewChanged();
        return;
    }
    m_readOnly = library->IsReadOnly();
    if (ctlFileDetails1)
        ctlFileDetails1->Initialise(*library, item->Key());
    ShowLockedState();
    DisplayTabWithContent();
    m_pages->setCurrentIndex(1);
    mFT.ReadValues();
    Q_EMIT ItemInitialised(item);
    Q_EMIT CurrentViewChanged();
}

void ctlCodeDetails::TreeReplaced()
{
    m_editor.TreeReplaced();
    if (ctlFileDetails1)
        ctlFileDetails1->Terminate();
    m_pages->setCurrentIndex(0);
    Q_EMIT ItemInitialised(nullptr);
    Q_EMIT CurrentViewChanged();
}

void ctlCodeDetails::Terminate()
{
    TreeReplaced();
    m_editor.Terminate();
}

QString ctlCodeDetails::Description() const
{
    return m_editor.Item() ? m_editor.Item()->Description() : QString();
}

void ctlCodeDetails::SetLocked(bool locked)
{
    m_editor.SetLocked(locked);
    if (ctlFileDetails1)
        ctlFileDetails1->SetLocked(locked);
}

void ctlCodeDetails::ShowFacts(CCodeItem& item)
{
    m_title->setText(item.Title());
    const QString description = item.Description();
    m_description->setText(description);
    m_description->setVisible(!description.isEmpty());
    if (!m_itemComes) // else ItemInitialised tells of them
        Q_EMIT FactsChanged();
}

void ctlCodeDetails::ShowLinks()
{
    Q_EMIT FactsChanged();
}

void ctlCodeDetails::ShowStage(const QString& stage)
{
    picColorize->SetStage(stage);
}

void ctlCodeDetails::ShowLockedState()
{
    const QString reason = m_readOnly              ? u"read-only: the library can't be changed"_s
                           : m_editor.IsTooLarge() ? u"read-only: a text is too large to be changed here"_s
                                                   : u"locked until the next synchronization"_s;
    m_lockedState->setText(Locked() ? reason : QString());
    m_lockedState->setVisible(Locked());
}

bool ctlCodeDetails::SaveFileDescChanges(bool mayAsk)
{
    return !ctlFileDetails1 || ctlFileDetails1->SaveFileDescChanges(mayAsk);
}

void ctlCodeDetails::ForgetFileDescChanges()
{
    if (ctlFileDetails1)
        ctlFileDetails1->ForgetFileDescChanges();
}

// The texts

void ctlCodeDetails::TextEdited(DetailsTab tab)
{
    if (tab == DetailsTab::Notes)
        mFT.ReadValues(); // an undo changes looks and moves nothing
    m_findBar->RefreshSoon();
    m_found->RefreshSoon();
    Q_EMIT TextChanged(tab);
    Q_EMIT EditStateChanged();
}

void ctlCodeDetails::ReadFormat()
{
    if (m_editor.TakesChanges())
        mFT.ReadValues();
}

/// The formatter works on the notes of the item, or of the stored file where files are shown.
void ctlCodeDetails::PointFormatter()
{
    const bool isFiles = CurrentView() == DetailsTab::Files && m_fileNotes;
    mFT.SetRichTextBox(isFiles ? m_fileNotes : rtbNotes);
    ReadFormat();
}

UserTextBox* ctlCodeDetails::CurrentBox() const
{
    const std::optional<DetailsTab> tab = CurrentView();
    if (tab == DetailsTab::Notes)
        return rtbNotes;
    if (tab == DetailsTab::Files && m_fileNotes && m_fileNotes->isEnabled())
        return m_fileNotes;
    return CurrentCodeBox();
}

QString ctlCodeDetails::SelText() const
{
    const UserTextBox* box = CurrentBox();
    return box ? box->SelText() : QString();
}

// Tabs

std::optional<DetailsTab> ctlCodeDetails::CurrentView() const
{
    if (m_pages->currentIndex() == 0)
        return std::nullopt;
    return TabRows[m_tabs->currentIndex()].Tab;
}

void ctlCodeDetails::SetCurrentView(DetailsTab tab)
{
    m_tabs->setCurrentIndex(IndexOf(tab));
}

void ctlCodeDetails::ShowTabEnabled(DetailsTab tab, bool hasContent)
{
    const int index = IndexOf(tab);
    const TabRow& row = TabRows[index];
    const QIcon icon = IconNamed(QString::fromLatin1(hasContent ? row.Image : row.EmptyImage));
    if (m_tabs->tabIcon(index).cacheKey() != icon.cacheKey()) // with any icon all tabs are laid out and painted anew
        m_tabs->setTabIcon(index, icon);
}

void ctlCodeDetails::DisplayTabWithContent()
{
    SetCurrentView(m_editor.TabToShow(TabRows[m_tabs->currentIndex()].Tab));
}

// Pages

void ctlCodeDetails::Navigate(const QString& address)
{
    const QUrl url = UrlOfAddress(address);
    if (IsAddress(url))
        webLinks->Navigate(url, m_htmlFolder);
    else
        webLinks->TellNowhere(address, u"it is none."_s);
}

void ctlCodeDetails::WelcomeBrowserNavigate(const QString& page)
{
    m_welcome->ShowPage(page);
}

} // namespace qb
