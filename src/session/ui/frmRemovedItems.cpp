#include "session/ui/frmRemovedItems.h"

#include "panels/ui/ElidedLabel.h"
#include "platform/system/Prompts.h"
#include "support/ErrorRoutine.h"
#include "support/ui/WorkProgress.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TitleColumn = 2;
constexpr int PathColumn = 3;

QPushButton* AddButton(QDialogButtonBox& box, const QString& name, const QString& caption)
{
    QPushButton* button = box.addButton(caption, QDialogButtonBox::ActionRole);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

} // namespace

frmRemovedItems::frmRemovedItems(QWidget* parent, Library& library, bool mayWrite)
    : QDialog(parent), m_library(library), m_mayWrite(mayWrite), m_browser(std::make_unique<RemovedBrowser>(library))
{
    setObjectName(u"frmRemovedItems"_s);
    setWindowTitle(u"Removed Items"_s);
    txtSearch = new QLineEdit;
    txtSearch->setObjectName(u"txtSearch"_s);
    txtSearch->setPlaceholderText(u"Words of the title or of the place"_s);
    txtSearch->setAccessibleName(u"Search removed items"_s);
    txtSearch->setClearButtonEnabled(true);
    MakeList();
    txtPreview = new QPlainTextEdit;
    txtPreview->setObjectName(u"txtPreview"_s);
    txtPreview->setAccessibleName(u"What was removed"_s);
    txtPreview->setReadOnly(true);
    txtPreview->setLineWrapMode(QPlainTextEdit::NoWrap);
    txtPreview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* splitter = new QSplitter;
    splitter->addWidget(m_pages);
    splitter->addWidget(txtPreview);
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    lblDone = new ElidedLabel(u"lblDone"_s);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    cmdShow = AddButton(*buttons, u"cmdShow"_s, u"&Show"_s);
    cmdBringBack = AddButton(*buttons, u"cmdBringBack"_s, u"&Bring Back"_s);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(txtSearch);
    layout->addWidget(splitter, 1);
    layout->addWidget(lblDone);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(txtSearch, &QLineEdit::textChanged, this, &frmRemovedItems::Fill);
    connect(lvRemoved, &QTreeWidget::itemSelectionChanged, this, &frmRemovedItems::ShowEntry);
    connect(lvRemoved, &QTreeWidget::itemActivated, cmdBringBack, &QPushButton::click);
    connect(cmdBringBack, &QPushButton::clicked, this, &frmRemovedItems::cmdBringBack_Click);
    connect(cmdShow, &QPushButton::clicked, this, [this] {
        accept();
        Show(m_broughtBack);
    });
    Fill();
    lblDone->setText(m_browser->Summary());
    resize(980, 520);
}

void frmRemovedItems::MakeList()
{
    constexpr int Gap = 24;
    lvRemoved = new QTreeWidget;
    lvRemoved->setObjectName(u"lvRemoved"_s);
    lvRemoved->setAccessibleName(u"Removed items"_s);
    lvRemoved->setRootIsDecorated(false);
    lvRemoved->setAllColumnsShowFocus(true);
    lvRemoved->setUniformRowHeights(true);
    lvRemoved->setHeaderLabels({u"Removed"_s, u"How"_s, u"Title"_s, u"Stood in"_s, u"Size"_s});
    lblNotice = new QLabel;
    lblNotice->setObjectName(u"lblNotice"_s);
    lblNotice->setTextFormat(Qt::PlainText);
    lblNotice->setAlignment(Qt::AlignCenter);
    lblNotice->setWordWrap(true);
    lblNotice->setMargin(Gap);
    lblNotice->setBackgroundRole(QPalette::Base);
    lblNotice->setAutoFillBackground(true);
    m_pages = new QStackedWidget;
    m_pages->addWidget(lvRemoved);
    m_pages->addWidget(lblNotice);
}

void frmRemovedItems::Fill()
{
    constexpr int WidestText = 260;
    lvRemoved->clear();
    QList<QTreeWidgetItem*> items;
    for (const RemovedLine& line : m_browser->Lines(txtSearch->text())) {
        auto* item = new QTreeWidgetItem({line.When, line.Kind, line.Title, line.Path, line.Size});
        item->setData(0, Qt::UserRole, line.Id);
        item->setToolTip(TitleColumn, line.Title);
        item->setToolTip(PathColumn, line.Path);
        items << item;
    }
    lvRemoved->addTopLevelItems(items);
    for (int i = 0; i < lvRemoved->columnCount(); ++i) {
        lvRemoved->resizeColumnToContents(i);
        lvRemoved->setColumnWidth(i, qMin(lvRemoved->columnWidth(i), WidestText));
    }
    lvRemoved->setCurrentItem(items.value(0));
    lblNotice->setText(m_browser->Notice(txtSearch->text()));
    m_pages->setCurrentWidget(items.isEmpty() ? static_cast<QWidget*>(lblNotice) : lvRemoved);
    ShowEntry();
}

QString frmRemovedItems::Chosen() const
{
    const QList<QTreeWidgetItem*> items = lvRemoved->selectedItems();
    return items.isEmpty() ? QString() : items.first()->data(0, Qt::UserRole).toString();
}

void frmRemovedItems::ShowEntry()
{
    const QString id = Chosen();
    txtPreview->setPlainText(id.isEmpty() ? QString() : m_browser->Preview(id));
    cmdBringBack->setEnabled(!id.isEmpty() && m_mayWrite);
    cmdBringBack->setToolTip(m_mayWrite ? QString() : u"The open library can't be written."_s);
    cmdShow->setEnabled(m_broughtBack != 0);
}

void frmRemovedItems::cmdBringBack_Click()
{
    Guarded(u"frmRemovedItems"_s, u"cmdBringBack_Click"_s, [this] {
        const QString id = Chosen();
        if (id.isEmpty())
            return;
        const QString title = lvRemoved->selectedItems().first()->text(TitleColumn);
        const qint64 parent = m_browser->NeedsPlace(id) ? AskPlace() : -1;
        if (parent < 0 && m_browser->NeedsPlace(id))
            return;
        try {
            WorkProgress progress(this, u"Bring Back"_s);
            const ReturnResult result = m_browser->BringBack(id, parent, progress);
            m_broughtBack = result.Item;
            lblDone->setText(RemovedBrowser::DoneText(title, result));
        } catch (const RuntimeError& error) {
            HandleError(error.Number(), error.Description(), u"frmRemovedItems"_s, u"cmdBringBack_Click"_s,
                        error.Source(), false);
            Prompts::Current().MsgBox(
                {.Text = error.Description(), .Caption = u"Removed Items"_s, .Icon = MsgBoxIcon::Exclamation});
            return;
        }
        cmdShow->setEnabled(true);
        BroughtBack(m_broughtBack);
    });
}

} // namespace qb
