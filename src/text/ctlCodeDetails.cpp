#include "text/ctlCodeDetails.h"

#include "platform/dao/Database.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "support/ui/Icons.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct TabRow {
    const char* Title;
    const char* Box;
    const char* Image;      ///< with content
    const char* EmptyImage; ///< without
    bool IsCode;
};
constexpr TabRow TabRows[] = {
    {"&Code", "rtbCode", "CODE", "DIS_CODE", true},
    {"&Notes", "rtbNotes", "NOTES", "DIS_NOTES", false},
    {"&Usage", "rtbUsage", "USAGE", "DIS_USAGE", true},
    {"&Info", "txtInfo", "INFO", "DIS_INFO", false},
};

constexpr int Gap = 12;

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
}

QWidget* ctlCodeDetails::MakeWelcomePage()
{
    constexpr int IconSize = 96;
    auto* page = new QWidget;
    page->setObjectName(u"webWelcome"_s);
    auto* icon = new QLabel;
    icon->setPixmap(IconNamed(u"quillbase"_s).pixmap(IconSize));
    QLabel* title = MakeLabel(u"Label1"_s, 1.6, true);
    title->setText(u"Welcome to the KT Quillbase Code Library"_s);
    m_facts = MakeLabel(u"lblLibraryFacts"_s, 1.0, false);
    m_hint = MakeLabel(u"lblWelcomeHint"_s, 1.0, false);
    m_hint->setText(u"Choose an item in the tree on the left to read it. Alt+Down and Alt+Up walk from item to item, "
                  "Ctrl+Left and Ctrl+Right go back and forward to the items that you have visited."_s);
    auto* layout = new QVBoxLayout(page);
    layout->addStretch(2);
    for (QLabel* label : {icon, title, m_facts, m_hint}) {
        label->setAlignment(Qt::AlignHCenter);
        layout->addWidget(label);
        layout->addSpacing(Gap);
    }
    layout->addStretch(3);
    return page;
}

QWidget* ctlCodeDetails::MakeItemPage()
{
    auto* page = new QWidget;
    m_title = MakeLabel(u"lblTitle"_s, 1.35, true);
    m_description = MakeLabel(u"lblDescription"_s, 1.0, false);
    m_attachments = MakeLabel(u"lblAttachments"_s, 0.9, false);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName(u"tbsTabs"_s);
    m_tabs->setDocumentMode(true);
    for (size_t i = 0; i < TabCount; ++i) {
        const TabRow& row = TabRows[i];
        m_boxes[i] = MakeBox(QString::fromLatin1(row.Box), row.IsCode);
        m_tabs->addTab(m_boxes[i], QString::fromLatin1(row.Title));
    }
    auto* header = new QVBoxLayout;
    header->setContentsMargins(Gap, Gap, Gap, 0);
    header->addWidget(m_title);
    header->addWidget(m_description);
    header->addWidget(m_attachments);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(header);
    layout->addWidget(m_tabs, 1);
    return page;
}

QPlainTextEdit* ctlCodeDetails::MakeBox(const QString& name, bool isCode)
{
    constexpr int TabWidth = 4; // characters
    auto* box = new QPlainTextEdit;
    box->setObjectName(name);
    box->setReadOnly(true);
    box->setUndoRedoEnabled(false);
    box->setFrameShape(QFrame::NoFrame);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    if (isCode) {
        box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        box->setLineWrapMode(QPlainTextEdit::NoWrap);
        box->setTabStopDistance(TabWidth * QFontMetricsF(box->font()).horizontalAdvance(u' '));
    }
    return box;
}

void ctlCodeDetails::Initialise(Database* database, CCodeItem* item)
{
    if (!item) {
        ShowWelcomeFacts(database);
        m_pages->setCurrentIndex(0);
        return;
    }
    m_title->setText(item->Title());
    const QString description = item->Description();
    m_description->setText(description);
    m_description->setVisible(!description.isEmpty());
    const std::array<QString, TabCount> texts{PlainTextFromRtf(item->Code()), PlainTextFromRtf(item->Notes()),
                                              PlainTextFromRtf(item->Example()), item->Info()};
    for (size_t i = 0; i < TabCount; ++i)
        m_boxes[i]->setPlainText(texts[i]);
    SetTabEnabled(InfoTab, !texts[InfoTab].isEmpty());
    ShowAttachments();
    DisplayTabWithContent();
    m_pages->setCurrentIndex(1);
}

void ctlCodeDetails::ShowWelcomeFacts(Database* database)
{
    m_hint->setVisible(database);
    if (!database) {
        m_facts->setText(u"No library is open. The File menu makes a new one or adds an existing one."_s);
        return;
    }
    const qint64 items = database->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong();
    m_facts->setText(u"%1\n%2 items, %3"_s.arg(QDir::toNativeSeparators(database->Name()), QLocale().toString(items),
                                              QLocale().formattedDataSize(QFileInfo(database->Name()).size())));
}

void ctlCodeDetails::TreeReplaced()
{
    m_pages->setCurrentIndex(0);
}

void ctlCodeDetails::SetLocked(bool locked)
{
    m_locked = locked;
}

void ctlCodeDetails::SetTabEnabled(Tab tab, bool hasContent)
{
    m_hasContent[size_t(tab)] = hasContent;
    const TabRow& row = TabRows[tab];
    m_tabs->setTabIcon(tab, IconNamed(QString::fromLatin1(hasContent ? row.Image : row.EmptyImage)));
}

void ctlCodeDetails::SetCodeEnabled(bool hasContent)
{
    SetTabEnabled(CodeTab, hasContent);
}

void ctlCodeDetails::SetNotesEnabled(bool hasContent)
{
    SetTabEnabled(NotesTab, hasContent);
}

void ctlCodeDetails::SetUsageEnabled(bool hasContent)
{
    SetTabEnabled(UsageTab, hasContent);
}

void ctlCodeDetails::SetFilesEnabled(bool hasContent)
{
    m_hasFiles = hasContent;
}

void ctlCodeDetails::SetLinksEnabled(bool hasContent)
{
    m_hasPage = hasContent;
}

void ctlCodeDetails::ShowAttachments()
{
    QStringList parts;
    if (m_hasFiles)
        parts << u"has stored files"_s;
    if (m_hasPage)
        parts << u"has a web page"_s;
    if (m_locked)
        parts << u"locked until the next synchronization"_s;
    m_attachments->setText(parts.join(u", "_s));
    m_attachments->setVisible(!parts.isEmpty());
}

void ctlCodeDetails::DisplayTabWithContent()
{
    if (m_hasContent[size_t(m_tabs->currentIndex())])
        return;
    const auto first = std::find(m_hasContent.begin(), m_hasContent.end(), true);
    if (first != m_hasContent.end())
        m_tabs->setCurrentIndex(int(first - m_hasContent.begin()));
}

} // namespace qb
