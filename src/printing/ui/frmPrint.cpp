#include "printing/ui/frmPrint.h"

#include "config/Remembered.h"
#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "printing/PrintOrder.h"
#include "printing/ui/PdfFile.h"
#include "printing/ui/PrintPreview.h"
#include "printing/ui/frmPageSetup.h"
#include "printing/ui/frmPrintItems.h"
#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/ui/Icons.h"
#include "support/ui/WorkProgress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The entries of cboReach.
enum { ReachItem, ReachBranch };

struct ZoomRow {
    const char* Caption;
    PrintPreview::Fit Fit;
    double Factor;
};
constexpr ZoomRow Zooms[] = {
    {"Whole page", PrintPreview::Fit::Page, 1}, {"Page width", PrintPreview::Fit::Width, 1},
    {"50 %", PrintPreview::Fit::None, 0.5},     {"100 %", PrintPreview::Fit::None, 1},
    {"150 %", PrintPreview::Fit::None, 1.5},    {"200 %", PrintPreview::Fit::None, 2},
};

bool AskBySystem(QWidget* parent, QPrinter& printer)
{
    QPrintDialog dialog(&printer, parent);
    dialog.setOption(QAbstractPrintDialog::PrintPageRange);
    return dialog.exec() == QDialog::Accepted;
}

/// A file's name out of a title, which may hold anything.
QString FileNameOf(QString title)
{
    constexpr qsizetype Longest = 80;
    for (QChar& character : title) {
        if (character < u' ' || QStringView(u"/\\:*?\"<>|").contains(character))
            character = u'_';
    }
    title = title.left(Longest).trimmed();
    while (title.startsWith(u'.'))
        title.remove(0, 1);
    return (title.isEmpty() ? u"item"_s : title) + u".pdf"_s;
}

} // namespace

frmPrint::frmPrint(QWidget* parent) : QDialog(parent)
{
    setObjectName(u"frmPrint"_s);
    setWindowTitle(u"Print"_s);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    AskForPrinter = [this](QPrinter& printer) { return AskBySystem(this, printer); };
    auto* all = new QHBoxLayout(this);
    all->addLayout(MakeOptions());
    all->addLayout(MakePreview(), 1);
    constexpr QSize Usual(960, 720);
    resize(Usual);
}

frmPrint::~frmPrint()
{
    ctlPreview->SetPrint(nullptr); // before the source of its pages
}

QVBoxLayout* frmPrint::MakeOptions()
{
    auto* options = new QVBoxLayout;
    auto* caption = new QLabel(u"P&rint:"_s);
    cboReach = new QComboBox;
    cboReach->setObjectName(u"cboReach"_s);
    cboReach->addItems({u"This item"_s, u"This item and all below it"_s, u"Chosen items below it..."_s});
    caption->setBuddy(cboReach);
    options->addWidget(caption);
    options->addWidget(cboReach);
    connect(cboReach, &QComboBox::activated, this, &frmPrint::cboReach_Click);
    MakeSwitches(*options);
    options->addStretch(1);
    MakeButtons(*options);
    return options;
}

void frmPrint::MakeSwitches(QVBoxLayout& options)
{
    const auto add = [this](QVBoxLayout* layout, const QString& name, const QString& text) {
        auto* box = new QCheckBox(text);
        box->setObjectName(name);
        layout->addWidget(box);
        connect(box, &QCheckBox::toggled, this, [this] {
            ReadSetup();
            ShowPages();
        });
        return box;
    };
    auto* parts = new QGroupBox(u"Parts"_s);
    auto* partsLayout = new QVBoxLayout(parts);
    for (const PrintPartRow& row : PrintPartRows)
        m_parts.insert(int(row.Part),
                       add(partsLayout, u"chk_"_s + QLatin1StringView(row.Name), QString::fromLatin1(row.Caption)));
    options.addWidget(parts);
    auto* look = new QGroupBox(u"Look"_s);
    auto* lookLayout = new QVBoxLayout(look);
    chkLineNumbers = add(lookLayout, u"chkLineNumbers"_s, u"Line nu&mbers"_s);
    chkColours = add(lookLayout, u"chkColours"_s, u"C&olours of code"_s);
    chkNewPages = add(lookLayout, u"chkNewPages"_s, u"&Each item on a new page"_s);
    auto* points = new QHBoxLayout;
    auto* caption = new QLabel(u"Code in"_s);
    txtPoints = new QDoubleSpinBox;
    txtPoints->setObjectName(u"txtPoints"_s);
    txtPoints->setRange(5, 16);
    txtPoints->setSingleStep(0.5);
    txtPoints->setDecimals(1);
    txtPoints->setSuffix(u" pt"_s);
    caption->setBuddy(txtPoints);
    points->addWidget(caption);
    points->addWidget(txtPoints, 1);
    lookLayout->addLayout(points);
    connect(txtPoints, &QDoubleSpinBox::valueChanged, this, [this] {
        ReadSetup();
        ShowPages();
    });
    options.addWidget(look);
}

void frmPrint::MakeButtons(QVBoxLayout& options)
{
    const auto add = [this, &options](const QString& name, const QString& text, void (frmPrint::*run)()) {
        auto* button = new QPushButton(text);
        button->setObjectName(name);
        button->setAutoDefault(false);
        options.addWidget(button);
        connect(button, &QPushButton::clicked, this, run);
        return button;
    };
    add(u"cmdPageSetup"_s, u"Page &Setup..."_s, &frmPrint::cmdPageSetup_Click);
    cmdPdf = add(u"cmdPdf"_s, u"Save as P&DF..."_s, &frmPrint::cmdPdf_Click);
    cmdPrint = add(u"cmdPrint"_s, u"&Print..."_s, &frmPrint::cmdPrint_Click);
    cmdPrint->setDefault(true);
    auto* close = new QPushButton(u"Close"_s);
    close->setObjectName(u"cmdClose"_s);
    close->setAutoDefault(false);
    options.addWidget(close);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
}

QVBoxLayout* frmPrint::MakePreview()
{
    const auto tool = [](const QString& name, const QString& icon, const QString& tip) {
        auto* button = new QToolButton;
        button->setObjectName(name);
        button->setIcon(IconNamed(icon));
        button->setToolTip(tip);
        button->setAccessibleName(tip);
        button->setAutoRaise(true);
        return button;
    };
    ctlPreview = new PrintPreview;
    auto* bar = new QHBoxLayout;
    cmdPrevious = tool(u"cmdPrevious"_s, u"go-up"_s, u"Page before"_s);
    cmdNext = tool(u"cmdNext"_s, u"go-down"_s, u"Next page"_s);
    lblPage = new QLabel;
    lblPage->setObjectName(u"lblPage"_s);
    cboZoom = new QComboBox;
    cboZoom->setObjectName(u"cboZoom"_s);
    cboZoom->setAccessibleName(u"Zoom"_s);
    for (const ZoomRow& row : Zooms)
        cboZoom->addItem(QString::fromLatin1(row.Caption));
    bar->addWidget(cmdPrevious);
    bar->addWidget(cmdNext);
    bar->addWidget(lblPage, 1);
    bar->addWidget(cboZoom);
    connect(cmdPrevious, &QToolButton::clicked, this, [this] { ctlPreview->GoToPage(ctlPreview->CurrentPage() - 1); });
    connect(cmdNext, &QToolButton::clicked, this, [this] { ctlPreview->GoToPage(ctlPreview->CurrentPage() + 1); });
    connect(cboZoom, &QComboBox::currentIndexChanged, this, &frmPrint::cboZoom_Click);
    connect(ctlPreview, &PrintPreview::PagesChanged, this, &frmPrint::ShowPageNumber);
    auto* preview = new QVBoxLayout;
    preview->addWidget(ctlPreview, 1);
    preview->addLayout(bar);
    return preview;
}

// The request

void frmPrint::Print(const PrintRequest& request)
{
    Initialize(request);
    exec();
    ctlPreview->SetPrint(nullptr);
    m_source.reset();
    m_request = nullptr;
}

void frmPrint::Initialize(const PrintRequest& request)
{
    m_setup = PrintSetup::Last();
    setWindowTitle(u"Print - %1"_s.arg(request.Item.Title()));
    ShowSetup();
    m_request = &request;
    cboReach_Click(cboReach->currentIndex());
}

/// What is to be printed is another choice; one that was not made leaves the former.
void frmPrint::cboReach_Click(int index)
{
    const qint64 item = m_request->Item.Key().toLongLong();
    if (index == ReachItem)
        m_items = {item};
    else if (index == ReachBranch)
        m_items = PrintOrder(m_request->Database, item);
    else if (frmPrintItems dialog(this, PrintOutline(m_request->Database, item)); dialog.exec() == Accepted)
        m_items = dialog.Chosen();
    else
        return cboReach->setCurrentIndex(m_reach);
    m_reach = index;
    ShowPages();
}

void frmPrint::ShowSetup()
{
    const auto set = [](QCheckBox* box, bool on) {
        const QSignalBlocker quiet(box);
        box->setChecked(on);
    };
    for (const PrintPartRow& row : PrintPartRows)
        set(m_parts[int(row.Part)], m_setup.Parts.testFlag(row.Part));
    set(chkLineNumbers, m_setup.LineNumbers);
    set(chkColours, m_setup.Colours);
    set(chkNewPages, m_setup.NewPages);
    const QSignalBlocker quiet(txtPoints);
    txtPoints->setValue(m_setup.CodePoints);
}

void frmPrint::ReadSetup()
{
    for (const PrintPartRow& row : PrintPartRows)
        m_setup.Parts.setFlag(row.Part, m_parts[int(row.Part)]->isChecked());
    m_setup.LineNumbers = chkLineNumbers->isChecked();
    m_setup.Colours = chkColours->isChecked();
    m_setup.NewPages = chkNewPages->isChecked();
    m_setup.CodePoints = txtPoints->value();
    m_setup.Keep();
}

std::unique_ptr<PagedPrint> frmPrint::MakePrint(PrintSource& source) const
{
    return std::make_unique<PagedPrint>(source, m_setup,
                                        PagedPrint::Labels{.Title = m_request->Item.Title(),
                                                           .Library = m_request->LibraryName,
                                                           .Printed = Clock::Now()});
}

void frmPrint::ShowPages()
{
    if (!IsShown())
        return;
    ctlPreview->SetPrint(nullptr);
    chkNewPages->setEnabled(m_items.size() > 1);
    try {
        m_source = std::make_unique<RequestSource>(*m_request, m_items, m_setup.Parts);
        ctlPreview->SetPrint(MakePrint(*m_source));
    } catch (const RuntimeError& error) {
        ctlPreview->SetMessage(error.Description());
    }
    ShowPageNumber();
}

void frmPrint::ShowPageNumber()
{
    const int pages = ctlPreview->Pages();
    const int page = ctlPreview->CurrentPage();
    const bool hasPages = ctlPreview->Print() && pages > 0;
    lblPage->setText(!hasPages                ? QString()
                     : ctlPreview->AllKnown() ? u"Page %1 of %2"_s.arg(page + 1).arg(pages)
                                              : u"Page %1 of %2 and more"_s.arg(page + 1).arg(pages));
    cmdPrevious->setEnabled(hasPages && page > 0);
    cmdNext->setEnabled(hasPages && page + 1 < pages);
    cmdPrint->setEnabled(hasPages);
    cmdPdf->setEnabled(hasPages);
}

void frmPrint::cboZoom_Click(int index)
{
    const ZoomRow& row = Zooms[size_t(std::max(0, index))];
    ctlPreview->SetZoom(row.Fit, row.Factor);
}

// Commands

/// An error is told, and the dialog stays. False then.
bool frmPrint::Report(const std::function<void()>& body)
{
    try {
        body();
        return true;
    } catch (const RuntimeError& error) {
        if (error.Number() != ErrorNumber::Cancelled)
            Prompts::Current().MsgBox(
                {.Text = error.Description(), .Caption = ApplicationTitle, .Icon = MsgBoxIcon::Exclamation});
        return false;
    }
}

void frmPrint::cmdPageSetup_Click()
{
    frmPageSetup dialog(this, m_setup);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_setup = dialog.Chosen();
    m_setup.Keep();
    ShowPages();
}

void frmPrint::cmdPdf_Click()
{
    const QString folder = Remembered(Memory::InitDir);
    const QString file = Prompts::Current()
                             .FileName({.Save = true,
                                        .Title = u"Save as PDF"_s,
                                        .Filter = u"PDF files|*.pdf"_s,
                                        .Folder = QFileInfo(folder).isDir() ? folder : QDir::homePath(),
                                        .Name = FileNameOf(m_request->Item.Title())})
                             .section(QChar(u'\0'), 0, 0);
    if (file.isEmpty())
        return;
    Remember(Memory::InitDir, QFileInfo(file).absolutePath());
    if (SavePdf(file))
        accept();
}

bool frmPrint::SavePdf(const QString& file)
{
    return Report([this, &file] {
        int pages = 0;
        {
            WorkProgress progress(this, u"Saving the PDF"_s);
            const std::shared_ptr<PagedPrint> print = ctlPreview->Print();
            pages = WritePdf(*print, file, m_request->Database.Name(), progress);
        }
        Prompts::Current().OperationSuccessful(u"%1 pages were saved to '%2'."_s.arg(pages).arg(file), file);
    });
}

void frmPrint::cmdPrint_Click()
{
    QPrinter printer(QPrinter::HighResolution);
    if (const QString name = Remembered(Memory::Printer); !name.isEmpty())
        printer.setPrinterName(name);
    ApplyTo(printer, m_setup);
    if (!AskForPrinter(printer))
        return;
    if (const QString file = printer.outputFileName(); !file.isEmpty()) { // the system's dialog can ask for one
        if (SavePdf(file))
            accept();
        return;
    }
    Remember(Memory::Printer, printer.printerName());
    const bool done = Report([&] {
        WorkProgress progress(this, u"Printing"_s);
        const std::shared_ptr<PagedPrint> print = ctlPreview->Print();
        PrintOn(*print, printer, progress);
    });
    if (done)
        accept();
}

} // namespace qb
