#include "text/ui/ctlCodeDetails.h"

#include "platform/dao/Database.h"
#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "platform/system/Shell.h"
#include "store/CCodeItem.h"
#include "store/ItemMerge.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"
#include "text/FileDetailsView.h"
#include "text/ui/CodeBox.h"
#include "text/ui/FindBar.h"
#include "text/ui/LinkNotes.h"
#include "text/ui/RichTextBox.h"
#include "web/WebPages.h"
#include "web/ui/BrowserView.h"
#include "web/ui/BusyLogo.h"
#include "web/ui/LocalPage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

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
    {DetailsTab::Links, "&Web Links", "LINKS", "DIS_LINKS"}, {DetailsTab::Info, "Inf&o", "INFO", "DIS_INFO"},
};

int IndexOf(DetailsTab tab)
{
    const auto row = std::find_if(std::begin(TabRows), std::end(TabRows),
                                  [tab](const TabRow& one) { return one.Tab == tab; });
    return row == std::end(TabRows) ? -1 : int(row - std::begin(TabRows));
}

const QString ModuleName = u"ctlCodeDetails"_s;
constexpr int Gap = 12;
constexpr int ZoomStep = 10; // percent

QLabel* MakeLabel(const QString& name, double scale, bool bold)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(bold);
    label->setFont(font);
    return label;
}

} // namespace

ctlCodeDetails::ctlCodeDetails(QWidget* parent) : QWidget(parent), m_pages(new QStackedWidget)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
    m_pages->addWidget(MakeWelcomePage());
    m_pages->addWidget(MakeItemPage());
    MakeProgress();
    ConnectFormatter();
    m_recoveryTimer.setSingleShot(true);
    m_recoveryTimer.setInterval(RecoveryInterval);
    connect(&m_recoveryTimer, &QTimer::timeout, this, &ctlCodeDetails::KeepUnsavedTexts);
}

QWidget* ctlCodeDetails::MakeWelcomePage()
{
    constexpr int IconSize = 64;
    auto* page = new QWidget;
    page->setObjectName(u"welcome"_s);
    auto* icon = new QLabel;
    icon->setPixmap(IconNamed(u"quillbase"_s).pixmap(IconSize));
    QLabel* title = MakeLabel(u"Label1"_s, 1.5, true);
    title->setText(u"Welcome to the KT Quillbase Code Library"_s);
    m_facts = MakeLabel(u"lblLibraryFacts"_s, 0.9, false);
    webWelcome = new LocalPage;
    webWelcome->setObjectName(u"webWelcome"_s);
    webWelcome->document()->setDocumentMargin(Gap);
    connect(webWelcome, &LocalPage::AddressActivated, this, &ctlCodeDetails::OpenAddress);
    auto* words = new QVBoxLayout;
    words->addWidget(title);
    words->addWidget(m_facts);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(Gap, Gap, Gap, Gap);
    header->setSpacing(Gap);
    header->addWidget(icon);
    header->addLayout(words, 1);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(header);
    layout->addWidget(webWelcome, 1);
    return page;
}

QWidget* ctlCodeDetails::MakeItemPage()
{
    auto* page = new QWidget;
    m_title = MakeLabel(u"lblTitle"_s, 1.35, true);
    m_description = MakeLabel(u"lblDescription"_s, 1.0, false);
    m_lockedState = MakeLabel(u"lblLockedState"_s, 0.9, false);
    MakeBoxes();
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
    m_findBar = new FindBar([this] { return CurrentBox(); });
    layout->addWidget(m_findBar);
    connect(this, &ctlCodeDetails::CurrentViewChanged, m_findBar, &FindBar::Refresh);
    return page;
}

void ctlCodeDetails::MakeTabs()
{
    m_filePage = new QWidget;
    auto* fileLayout = new QVBoxLayout(m_filePage);
    fileLayout->setContentsMargins(0, 0, 0, 0);
    webLinks = new BrowserView;
    webLinks->setObjectName(u"webLinks"_s);
    imgLabel = new BusyLogo;
    imgLabel->setObjectName(u"imgLabel"_s);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName(u"tbsTabs"_s);
    m_tabs->setDocumentMode(true);
    m_tabs->setCornerWidget(imgLabel);
    const std::array<QWidget*, std::size(TabRows)> pages{rtbCode, rtbNotes, rtbUsage, m_filePage, webLinks, m_infoPage};
    for (size_t i = 0; i < pages.size(); ++i)
        m_tabs->addTab(pages[i], QString::fromLatin1(TabRows[i].Title));
    for (const TabRow& row : TabRows)
        SetTabEnabled(row.Tab, false);
    imgLabel->hide();
    connect(m_tabs, &QTabWidget::currentChanged, this, &ctlCodeDetails::CurrentViewChanged);
    connect(this, &ctlCodeDetails::CurrentViewChanged, imgLabel,
            [this] { imgLabel->setVisible(CurrentView() == DetailsTab::Links); });
    ConnectBrowser();
}

void ctlCodeDetails::MakeBoxes()
{
    rtbCode = new CodeBox;
    rtbCode->setObjectName(u"rtbCode"_s);
    rtbNotes = new RichTextBox;
    rtbNotes->setObjectName(u"rtbNotes"_s);
    rtbUsage = new CodeBox;
    rtbUsage->setObjectName(u"rtbUsage"_s);
    txtInfo = new QPlainTextEdit;
    txtInfo->setObjectName(u"txtInfo"_s);
    txtInfo->setReadOnly(true);
    txtInfo->setFrameShape(QFrame::NoFrame);
    m_linkNotes = new LinkNotes;
    m_infoPage = new QWidget;
    auto* infoLayout = new QVBoxLayout(m_infoPage);
    infoLayout->setContentsMargins(0, 0, 0, 0);
    infoLayout->setSpacing(0);
    infoLayout->addWidget(txtInfo, 1);
    infoLayout->addWidget(m_linkNotes, 1);
    rtbNotes->installEventFilter(this);
    rtbCode->installEventFilter(this);
    rtbUsage->installEventFilter(this);
    for (CodeBox* box : {rtbCode, rtbUsage}) {
        connect(box, &CodeBox::ZoomAsked, this, [this](int steps) { SetZoom(m_zoom + steps * ZoomStep); });
        connect(box, &CodeBox::TextTakenBack, this, [this, box] { SectionsTakenBack(*box); });
    }
    connect(rtbNotes, &RichTextBox::ZoomAsked, this, [this](int steps) { SetZoom(m_zoom + steps * ZoomStep); });
    ConnectBox(rtbCode, CodeText);
    ConnectBox(rtbNotes, NotesText);
    ConnectBox(rtbUsage, UsageText);
    connect(rtbNotes, &RichTextBox::LinkActivated, this, &ctlCodeDetails::OpenAddress);
}

template <class Box>
void ctlCodeDetails::ConnectBox(Box* box, Text text)
{
    m_texts[text].Box = box;
    connect(box, &Box::textChanged, this, [this, text] { BoxChanged(text); });
    connect(box, &Box::cursorPositionChanged, this, &ctlCodeDetails::EditStateChanged);
    connect(box, &Box::selectionChanged, this, &ctlCodeDetails::EditStateChanged);
}

void ctlCodeDetails::ConnectFormatter()
{
    PointFormatter();
    connect(rtbNotes, &RichTextBox::selectionChanged, this, &ctlCodeDetails::ReadFormat);
    connect(rtbNotes, &RichTextBox::cursorPositionChanged, this, &ctlCodeDetails::ReadFormat);
    connect(this, &ctlCodeDetails::CurrentViewChanged, this, &ctlCodeDetails::PointFormatter);
    connect(&mFT, &CTextFormat::eColorizeProgress, this, &ctlCodeDetails::ShowColorizeProgress);
    connect(&mFT, &CTextFormat::eFontChanged, this, &ctlCodeDetails::eNotesFontChanged);
    connect(&mFT, &CTextFormat::eFontSizeChanged, this, &ctlCodeDetails::eNotesFontSizeChanged);
    connect(&mFT, &CTextFormat::eBoldStateChanged, this, &ctlCodeDetails::eNotesBoldStateChanged);
    connect(&mFT, &CTextFormat::eItalicStateChanged, this, &ctlCodeDetails::eNotesItalicStateChanged);
    connect(&mFT, &CTextFormat::eUnderlineStateChanged, this, &ctlCodeDetails::eNotesUnderlineStateChanged);
    connect(&mFT, &CTextFormat::BulletStateChanged, this, &ctlCodeDetails::NotesBulletStateChanged);
    connect(&mFT, &CTextFormat::AllignmentStateChanged, this, &ctlCodeDetails::NotesAllignmentStateChanged);
}

void ctlCodeDetails::ReadFormat()
{
    if (m_userChange)
        mFT.ReadValues();
}

/// The formatter works on the notes of the item, or of the stored file where files are shown.
void ctlCodeDetails::PointFormatter()
{
    const bool isFiles = CurrentView() == DetailsTab::Files && ctlFileDetails1;
    mFT.SetRichTextBox(isFiles ? &ctlFileDetails1->DescriptionTextBox() : rtbNotes);
    ReadFormat();
}

void ctlCodeDetails::MakeProgress()
{
    auto* frame = new QFrame(this);
    picColorize = frame;
    picColorize->setObjectName(u"picColorize"_s);
    frame->setFrameShape(QFrame::StyledPanel);
    picColorize->setAutoFillBackground(true);
    lblColorize = new QLabel(u"Colorizing"_s);
    lblColorize->setObjectName(u"lblColorize"_s);
    prbColorize = new QProgressBar;
    prbColorize->setObjectName(u"prbColorize"_s);
    auto* layout = new QHBoxLayout(picColorize);
    layout->addWidget(lblColorize);
    layout->addWidget(prbColorize, 1);
    picColorize->hide();
}

void ctlCodeDetails::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    constexpr int Widest = 420;
    const int width = std::min(Widest, this->width());
    const int height = picColorize->sizeHint().height();
    picColorize->setGeometry((this->width() - width) / 2, (this->height() - height) / 3, width, height);
}

// An item comes and goes

void ctlCodeDetails::Initialise(Library* library, CCodeItem* item)
{
    m_userChange = false;
    ResetChangedBooleans();
    m_item = item;
    m_library = library;
    m_htmlFolder = library ? library->HTMLFolder() : QString();
    if (!item) {
        if (ctlFileDetails1)
            ctlFileDetails1->Terminate();
        ShowWelcomeFacts(library);
        m_pages->setCurrentIndex(0);
        Q_EMIT CurrentViewChanged();
        return;
    }
    m_recovery.emplace(library->Name());
    m_readOnly = library->IsReadOnly();
    m_shownState = item->LastChanged();
    ShowHeader();
    for (const Text text : {CodeText, NotesText, UsageText})
        ShowText(text);
    if (ctlFileDetails1)
        ctlFileDetails1->Initialise(*library, item->Key());
    ShowLockedState();
    DisplayTabWithContent();
    m_pages->setCurrentIndex(1);
    m_userChange = true;
    mFT.ReadValues();
    Q_EMIT CurrentViewChanged();
}

void ctlCodeDetails::ShowText(Text text)
{
    if (text == NotesText)
        rtbNotes->SetTextRTF(m_item->Notes());
    else
        ShowCode(text);
}

/// What is shown of the item beside its texts.
void ctlCodeDetails::ShowHeader()
{
    m_title->setText(m_item->Title());
    const QString description = m_item->Description();
    m_description->setText(description);
    m_description->setVisible(!description.isEmpty());
    txtInfo->setPlainText(m_item->Info());
    SetTabEnabled(DetailsTab::Info, !m_item->Info().isEmpty());
    ShowLinks();
}

void ctlCodeDetails::ShowLinks()
{
    m_linkNotes->ShowLinks(m_item);
}

void ctlCodeDetails::TreeReplaced()
{
    m_userChange = false;
    m_item = nullptr;
    if (ctlFileDetails1)
        ctlFileDetails1->Terminate();
    m_pages->setCurrentIndex(0);
    Q_EMIT CurrentViewChanged();
}

void ctlCodeDetails::SetLocked(bool locked)
{
    m_locked = locked;
    for (const TextState& text : m_texts)
        text.Box->SetLocked(locked);
    m_linkNotes->SetLocked(locked);
    if (ctlFileDetails1)
        ctlFileDetails1->SetLocked(locked);
}

void ctlCodeDetails::SetFileControl(FileDetailsView& files)
{
    ctlFileDetails1 = &files;
    m_filePage->layout()->addWidget(files.Page());
    RichTextBox* box = &files.DescriptionTextBox();
    for (const auto signal : {&RichTextBox::selectionChanged, &RichTextBox::cursorPositionChanged}) {
        connect(box, signal, this, &ctlCodeDetails::ReadFormat);
        connect(box, signal, this, &ctlCodeDetails::EditStateChanged);
    }
    files.DescriptionShown = [this] {
        ReadFormat();
        m_findBar->Refresh();
    };
    connect(box, &RichTextBox::textChanged, this, &ctlCodeDetails::ReadFormat); // also after undo
    connect(box, &RichTextBox::textChanged, m_findBar, &FindBar::RefreshSoon);
    connect(box, &RichTextBox::ZoomAsked, this, [this](int steps) { SetZoom(m_zoom + steps * ZoomStep); });
    connect(box, &RichTextBox::LinkActivated, this, &ctlCodeDetails::OpenAddress);
}

void ctlCodeDetails::SetDefaultFont(const RtfFont& font)
{
    rtbNotes->SetDefaultFont(font);
    if (ctlFileDetails1)
        ctlFileDetails1->DescriptionTextBox().SetDefaultFont(font);
}

// Changes

void ctlCodeDetails::BoxChanged(Text text)
{
    if (m_locked || !m_userChange || !m_item)
        return;
    m_item->SetItemChanged(true);
    m_texts[text].Changed = true;
    m_texts[text].Colorized = m_texts[text].Painted = false;
    SetTabEnabled(TextTabs[text], !m_texts[text].Box->IsEmpty());
    if (!m_recoveryTimer.isActive())
        m_recoveryTimer.start();
    if (text == NotesText)
        mFT.ReadValues(); // an undo changes looks and moves nothing
    m_findBar->RefreshSoon();
    Q_EMIT TextChanged(TextTabs[text]);
    Q_EMIT EditStateChanged();
}

void ctlCodeDetails::ResetChangedBooleans()
{
    for (TextState& text : m_texts)
        text.Changed = text.Colorized = false;
    ForgetUnsavedTexts();
}

/// Code and usage go into the library painted.
void ctlCodeDetails::StoreText(Text text)
{
    const TextState& state = m_texts[text];
    if (!state.Changed && !state.Colorized)
        return;
    QString rtf;
    if (text != NotesText && state.Changed && !state.Colorized)
        rtf = fnColorize(text == CodeText ? u"Code"_s : u"Usage"_s, false);
    else if (!state.Box->IsEmpty())
        rtf = state.Box->TextRTF();
    static constexpr std::array<void (CCodeItem::*)(const QString&), TextCount> setters{
        &CCodeItem::SetCode, &CCodeItem::SetNotes, &CCodeItem::SetExample};
    (m_item->*setters[text])(rtf);
}

bool ctlCodeDetails::SaveItem(bool keep)
{
    return Guarded(
        ModuleName, u"SaveItem"_s,
        [&] {
            if (!m_item || !m_item->Unsaved())
                return true;
            const bool itemChanged = m_item->ItemChanged();
            const bool linksChanged = m_item->LinksChanged();
            lblColorize->setText(u"Saving Item"_s);
            for (const Text text : {CodeText, NotesText, UsageText}) {
                if (itemChanged)
                    StoreText(text);
            }
            lblColorize->setText(u"Colorizing"_s);
            if (itemChanged && !m_item->DontUpdateLastChangedDate())
                m_item->SetLastChanged(Clock::Now());
            const MergedSave save = SaveMerged(*m_item, *m_library);
            ShowTaken(save.Taken);
            if (!save.Saved)
                return false;
            if (linksChanged) {
                m_item->ReloadLinks();
                ShowLinks();
            }
            m_shownState = m_item->LastChanged();
            ResetChangedBooleans();
            if (keep && KeepingDeletedRecord)
                KeepingDeletedRecord(m_item->Key());
            return true;
        },
        false);
}

/// What another program had written to the item, as it stands in it now.
void ctlCodeDetails::ShowTaken(const std::vector<size_t>& columns)
{
    const QScopedValueRollback userChange(m_userChange, false);
    const auto isTaken = [&columns](CCodeItem::Column column) {
        return std::find(columns.begin(), columns.end(), size_t(column)) != columns.end();
    };
    static constexpr std::array<CCodeItem::Column, TextCount> textColumns{CCodeItem::CodeColumn, CCodeItem::NotesColumn,
                                                                          CCodeItem::ExampleColumn};
    for (const Text text : {CodeText, NotesText, UsageText}) {
        if (!isTaken(textColumns[text]))
            continue;
        m_texts[text].Changed = m_texts[text].Colorized = false;
        ShowText(text);
        SetTabEnabled(TextTabs[text], !m_texts[text].Box->IsEmpty());
    }
    if (!columns.empty())
        ShowHeader();
    if (isTaken(CCodeItem::TitleColumn) && TitleTaken)
        TitleTaken(m_item->Key(), m_item->Title());
}

bool ctlCodeDetails::SetItemChanged(bool automatic)
{
    return Guarded(
        ModuleName, u"<<Let>> ItemChanged"_s,
        [&] {
            bool saved = true;
            if (m_item && m_item->Unsaved()) {
                const bool marked = m_item->ItemChanged() && m_item->ItemMarkedForDelete();
                if (!marked || automatic || KeepsDeletedItem())
                    saved = SaveItem(marked);
            }
            return SaveFileDescChanges() && saved; // in every case
        },
        false);
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

/// Whether an item that waits for removal or for the mother is to become a regular one.
bool ctlCodeDetails::KeepsDeletedItem() const
{
    Message question{
        .Text = u"The item you have just updated is marked for deletion. \r\n"
                "By saving your changes of this item you will reset this item's 'Deleted' status which is the same "
                "as if you selected 'KEEP ITEM' option from the pop-up menu or the 'Item' menu. If you decide to "
                "continue the item will appear as a 'regular' item from that point. \r\nDo you wish to continue?"_s,
        .Caption = u"Update this item and reset its 'Deleted' status?"_s,
        .Buttons = MsgBoxButtons::YesNo,
        .Icon = MsgBoxIcon::Question,
        .MustAnswer = true};
    if (m_library->IsChildReplica()) {
        question.Caption = u"Update this item and reset its 'Conflicting' status?"_s;
        question.Text =
            u"The item you have just updated is currently in conflict with its copy in mother database. \r\n"
            "By saving your changes of this item you will cause another conflict on next synchronization with main "
            "database. If you decide to continue, this item's 'Conflicting' status will be reset and the item will "
            "appear as a 'regular' item from that point. \r\nDo you wish to continue?"_s;
    }
    return Prompts::Current().MsgBox(question) == MsgBoxResult::Yes;
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

UserTextBox* ctlCodeDetails::CurrentBox() const
{
    const std::optional<DetailsTab> tab = CurrentView();
    if (tab == DetailsTab::Code)
        return rtbCode;
    if (tab == DetailsTab::Notes)
        return rtbNotes;
    if (tab == DetailsTab::Files && ctlFileDetails1 && ctlFileDetails1->DescriptionTextBox().isEnabled())
        return &ctlFileDetails1->DescriptionTextBox();
    return tab == DetailsTab::Usage ? rtbUsage : nullptr;
}

QString ctlCodeDetails::SelText() const
{
    const UserTextBox* box = CurrentBox();
    return box ? box->SelText() : QString();
}

QString ctlCodeDetails::CodeWindowText() const
{
    return rtbCode->Text();
}

void ctlCodeDetails::NotesSetFocus()
{
    rtbNotes->setFocus();
}

void ctlCodeDetails::FileNotesSetFocus()
{
    if (ctlFileDetails1)
        ctlFileDetails1->NotesSetFocus();
}

void ctlCodeDetails::SetTabEnabled(DetailsTab tab, bool hasContent)
{
    m_hasContent[size_t(tab)] = hasContent;
    const int index = IndexOf(tab);
    const TabRow& row = TabRows[index];
    m_tabs->setTabIcon(index, IconNamed(QString::fromLatin1(hasContent ? row.Image : row.EmptyImage)));
}

void ctlCodeDetails::DisplayTabWithContent()
{
    if (m_hasContent[size_t(TabRows[m_tabs->currentIndex()].Tab)])
        return;
    const auto first = std::find_if(std::begin(TabRows), std::end(TabRows),
                                    [this](const TabRow& row) { return m_hasContent[size_t(row.Tab)]; });
    if (first != std::end(TabRows))
        SetCurrentView(first->Tab);
}

void ctlCodeDetails::ShowLockedState()
{
    const QString reason = m_readOnly ? u"read-only: the library can't be changed"_s
                                      : u"locked until the next synchronization"_s;
    m_lockedState->setText(m_locked ? reason : QString());
    m_lockedState->setVisible(m_locked);
}

} // namespace qb
