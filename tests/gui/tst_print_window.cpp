#include "config/Remembered.h"
#include "printing/PrintSetup.h"
#include "printing/ui/PrintPreview.h"
#include "printing/ui/frmPageSetup.h"
#include "printing/ui/frmPrint.h"
#include "printing/ui/frmPrintItems.h"
#include "store/CCodeItem.h"
#include "support/EditingWindow.h"
#include "support/PdfText.h"
#include "support/ui/WorkProgress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QPrinter>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QToolButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;

/// The window that shows pages before they are printed.
class TestPrintWindow : public QObject, private EditingWindow {
    Q_OBJECT

    /// Runs the command, and @p act in the window that it opens.
    void InWindow(const std::function<void(frmPrint&)>& act)
    {
        bool ran = false;
        QTimer::singleShot(0, m_window.get(), [&] {
            auto* window = qobject_cast<frmPrint*>(QApplication::activeModalWidget());
            QVERIFY(window);
            ran = true;
            act(*window);
            if (window->isVisible())
                window->reject();
        });
        Action(u"mnuFilePrint"_s)->trigger();
        QVERIFY(ran);
    }
    static PrintPreview* PreviewOf(frmPrint& window) { return window.findChild<PrintPreview*>(); }
    template <class Widget>
    static Widget* In(QWidget& window, const char* name)
    {
        return window.findChild<Widget*>(QLatin1StringView(name));
    }
    static void Click(QWidget& window, const char* name)
    {
        auto* button = window.findChild<QAbstractButton*>(QLatin1StringView(name));
        QVERIFY(button && button->isEnabled());
        button->click();
    }
    QString Pdf() const { return m_home->Path(u"out ö.pdf"_s); }
    /// What is to be printed.
    static void Choose(frmPrint& window, int reach)
    {
        auto* box = In<QComboBox>(window, "cboReach");
        box->setCurrentIndex(reach);
        Q_EMIT box->activated(reach);
    }
    /// Saves what is shown as a PDF, which closes the window.
    void Save(frmPrint& window)
    {
        m_prompts->ExpectFileName(u"Save as PDF"_s, Pdf());
        m_prompts->ExpectMsgBox(u"Operation Successful"_s);
        Click(window, "cmdPdf");
        QVERIFY(!window.isVisible());
    }
    static QString Code(int lines)
    {
        QString code;
        for (int i = 1; i <= lines; ++i)
            code += u"Dim a%1 As String ' comment\r\n"_s.arg(i);
        return RtfFromPlainText(code, CodeFont);
    }
    static void AllFound(PrintPreview* preview) { QTRY_VERIFY(preview->AllKnown()); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void command_isThereForItems()
    {
        Open();
        QVERIFY(Action(u"mnuFilePrint"_s));
        QVERIFY(!Action(u"mnuFilePrint"_s)->isEnabled());
        ClickOn(0);
        QVERIFY(Action(u"mnuFilePrint"_s)->isEnabled());
        QVERIFY(ToolbarButton(u"tlbMain"_s, u"PRINT"_s)->isEnabled());
        QCOMPARE(Action(u"mnuFilePrint"_s)->text(), u"&Print..."_s);
        Tree()->setCurrentIndex(Root());
        QTRY_VERIFY(!Action(u"mnuFilePrint"_s)->isEnabled());
        QVERIFY(!ToolbarButton(u"tlbMain"_s, u"PRINT"_s)->isEnabled());
    }

    void pages_areShownAndGoneThrough()
    {
        Write(u"Code"_s, Code(300));
        Write(u"Description"_s, u"An item with a description"_s);
        Open();
        ClickOn(0);
        InWindow([](frmPrint& window) {
            PrintPreview* preview = PreviewOf(window);
            QVERIFY(preview->Pages() >= 1);
            AllFound(preview);
            const int pages = preview->Pages();
            QVERIFY(pages >= 4);
            QCOMPARE(In<QLabel>(window, "lblPage")->text(), u"Page 1 of %1"_s.arg(pages));
            QVERIFY(!In<QToolButton>(window, "cmdPrevious")->isEnabled());
            Click(window, "cmdNext");
            QCOMPARE(preview->CurrentPage(), 1);
            QTest::keyClick(preview, Qt::Key_End);
            QCOMPARE(preview->CurrentPage(), pages - 1);
            QVERIFY(!In<QToolButton>(window, "cmdNext")->isEnabled());
            QTest::keyClick(preview, Qt::Key_Home);
            TakePicture(window, u"print"_s);
            In<QComboBox>(window, "cboZoom")->setCurrentIndex(1);
            QVERIFY(preview->verticalScrollBar()->maximum() > 0);
            TakePicture(window, u"print-width"_s);
            constexpr QSize Narrow(640, 480);
            window.resize(Narrow);
            TakePicture(window, u"print-narrow"_s);
        });
    }

    void darkScheme_leavesPaperWhite()
    {
        Write(u"Code"_s, Code(30));
        Open();
        const QPalette before = QApplication::palette();
        QApplication::setPalette(DarkPalette());
        ClickOn(0);
        InWindow([](frmPrint& window) {
            TakePicture(window, u"print-dark"_s);
            const QImage shown = PreviewOf(window)->viewport()->grab().toImage();
            QCOMPARE(shown.pixelColor(shown.width() / 2, shown.height() - 40), QColor(Qt::white));
        });
        QApplication::setPalette(before);
    }

    void choices_changeThePagesAndAreRemembered()
    {
        Write(u"Code"_s, Code(100));
        Write(u"Notes"_s, RtfFromPlainText(u"noted"_s, CodeFont));
        Open();
        ClickOn(0);
        InWindow([](frmPrint& window) {
            PrintPreview* preview = PreviewOf(window);
            AllFound(preview);
            QCOMPARE(preview->Pages(), 2);
            In<QCheckBox>(window, "chk_code")->setChecked(false);
            AllFound(preview);
            QCOMPARE(preview->Pages(), 1);
            In<QCheckBox>(window, "chkLineNumbers")->setChecked(false);
            In<QDoubleSpinBox>(window, "txtPoints")->setValue(6);
        });
        QVERIFY(!PrintSetup::Last().Parts.testFlag(PrintPart::Code)
                && PrintSetup::Last().Parts.testFlag(PrintPart::Notes));
        QVERIFY(!PrintSetup::Last().LineNumbers);
        QCOMPARE(PrintSetup::Last().CodePoints, 6.0);
        InWindow([](frmPrint& window) {
            QVERIFY(!In<QCheckBox>(window, "chk_code")->isChecked());
            QVERIFY(In<QCheckBox>(window, "chk_notes")->isChecked());
            QCOMPARE(In<QDoubleSpinBox>(window, "txtPoints")->value(), 6.0);
        });
    }

    void branch_isPrintedWithWhatStandsBelow()
    {
        AddItem(*m_database, m_item, u"below"_s, u"code below"_s);
        Open();
        ClickOn(0);
        InWindow([this](frmPrint& window) {
            QVERIFY(!In<QCheckBox>(window, "chkNewPages")->isEnabled());
            Choose(window, 1);
            QVERIFY(In<QCheckBox>(window, "chkNewPages")->isEnabled());
            Save(window);
        });
        const QString text = PdfText(Pdf());
        QVERIFY(text.contains(u"code below"_s));
        QVERIFY(!text.contains(u"other"_s));
    }

    void itemsOfABranch_areChosen()
    {
        const qint64 first = AddItem(*m_database, m_item, u"first"_s, u"code of first"_s);
        AddItem(*m_database, first, u"below first"_s, u"code below first"_s);
        AddItem(*m_database, m_item, u"second"_s, u"code of second"_s);
        Open();
        ClickOn(0);
        InWindow([this](frmPrint& window) {
            QTimer::singleShot(0, &window, [] {
                auto* items = qobject_cast<frmPrintItems*>(QApplication::activeModalWidget());
                QVERIFY(items);
                QCOMPARE(items->Chosen().size(), size_t(4));
                items->reject();
            });
            Choose(window, 2);
            QCOMPARE(In<QComboBox>(window, "cboReach")->currentIndex(), 0); // it was not chosen
            QTimer::singleShot(0, &window, [] {
                auto* items = qobject_cast<frmPrintItems*>(QApplication::activeModalWidget());
                QVERIFY(items);
                auto* tree = In<QTreeWidget>(*items, "tvwItems");
                tree->topLevelItem(0)->child(0)->setCheckState(0, Qt::Unchecked); // and what is below it
                QCOMPARE(In<QLabel>(*items, "lblCount")->text(), u"2 of 4 items"_s);
                TakePicture(*items, u"print-items"_s);
                Click(*items, "cmdNone");
                auto* ok = items->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
                QVERIFY(!ok->isEnabled());
                tree->topLevelItem(0)->child(1)->setCheckState(0, Qt::Checked);
                QVERIFY(ok->isEnabled());
                items->accept();
            });
            Choose(window, 2);
            Save(window);
        });
        const QString text = PdfText(Pdf());
        QVERIFY(text.contains(u"code of second"_s));
        QVERIFY(!text.contains(u"code of first"_s) && !text.contains(u"code below first"_s));
    }

    void typedText_isPrintedAndStaysUnsaved()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(EditingWindow::Code(), u"Typed_just_now"_s);
        InWindow([this](frmPrint& window) { Save(window); });
        QVERIFY(PdfText(Pdf()).contains(u"Typed_just_now"_s));
        QCOMPARE(Read(u"Code"_s), QString());
        QCOMPARE(EditingWindow::Code()->Text(), u"Typed_just_now"_s);
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(Read(u"Code"_s).contains(u"Typed_just_now"_s));
    }

    void pdf_isProposedByTheTitleWhereTheLastFileWent()
    {
        Write(u"Title"_s, u"..a/b:c\td?"_s);
        Open();
        ClickOn(0);
        InWindow([this](frmPrint& window) { Save(window); });
        QCOMPARE(m_prompts->Questions.last().Name, u"a_b_c_d_.pdf"_s);
        InWindow([this](frmPrint& window) { Save(window); });
        QCOMPARE(m_prompts->Questions.last().Folder, QFileInfo(Pdf()).absolutePath());
    }

    void preview_showsTheNumberOfPagesOnceItIsKnown()
    {
        Write(u"Code"_s, Code(5000));
        Open();
        ClickOn(0);
        InWindow([](frmPrint& window) {
            PrintPreview* preview = PreviewOf(window);
            preview->viewport()->grab();
            QVERIFY(!preview->AllKnown());
            AllFound(preview);
            const QImage shown = preview->viewport()->grab().toImage();
            preview->SetZoom(PrintPreview::Fit::Page, 1); // which paints all anew
            QCOMPARE(preview->viewport()->grab().toImage(), shown);
        });
    }

    void pdfThatCantBeWritten_leavesTheWindowOpen()
    {
        Open();
        ClickOn(0);
        InWindow([this](frmPrint& window) {
            m_prompts->ExpectFileName(u"Save as PDF"_s, m_home->Path(u"missing/out.pdf"_s));
            m_prompts->ExpectMsgBox(ApplicationTitle);
            Click(window, "cmdPdf");
            QVERIFY(window.isVisible());
            QVERIFY(m_prompts->Messages.last().Text.contains(u"Nothing was printed."_s));
            m_prompts->ExpectFileName(u"Save as PDF"_s, {}); // cancelled
            Click(window, "cmdPdf");
            QVERIFY(window.isVisible());
        });
    }

    void printDialog_decides()
    {
        Write(u"Code"_s, Code(300));
        Open();
        ClickOn(0);
        InWindow([this](frmPrint& window) {
            window.AskForPrinter = [](QPrinter&) { return false; };
            Click(window, "cmdPrint");
            QVERIFY(window.isVisible());
            QVERIFY(!QFile::exists(Pdf()));
            window.AskForPrinter = [this](QPrinter& printer) {
                printer.setOutputFormat(QPrinter::PdfFormat);
                printer.setOutputFileName(Pdf());
                return true;
            };
            m_prompts->ExpectMsgBox(u"Operation Successful"_s);
            Click(window, "cmdPrint");
            QVERIFY(!window.isVisible());
        });
        QVERIFY(PdfPages(Pdf()) >= 4);
    }

    void pageSetup_isChosenAndRemembered()
    {
        Open();
        ClickOn(0);
        InWindow([this](frmPrint& window) {
            QTimer::singleShot(0, &window, [] {
                auto* setup = qobject_cast<frmPageSetup*>(QApplication::activeModalWidget());
                QVERIFY(setup);
                In<QComboBox>(*setup, "cboPaper")->setCurrentText(u"A5"_s);
                In<QComboBox>(*setup, "cboOrientation")->setCurrentIndex(1);
                In<QDoubleSpinBox>(*setup, "txtLeft")->setValue(25);
                TakePicture(*setup, u"print-setup"_s);
                setup->accept();
            });
            Click(window, "cmdPageSetup");
            Save(window);
        });
        const PrintSetup setup = PrintSetup::Last();
        QCOMPARE(setup.Width, 148.0);
        QVERIFY(setup.Landscape);
        QCOMPARE(setup.Left, 25.0);
        QCOMPARE(setup.Top, PrintSetup::Default().Top);
        QVERIFY(PdfFact(Pdf(), u"Page size"_s).startsWith(u"595"_s));
    }

    void marginsThatLeaveNoRoom_cantBeChosen()
    {
        PrintSetup setup;
        setup.Width = 148;
        setup.Height = 210;
        frmPageSetup dialog(nullptr, setup);
        auto* ok = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
        QVERIFY(ok->isEnabled());
        In<QDoubleSpinBox>(dialog, "txtLeft")->setValue(70);
        In<QDoubleSpinBox>(dialog, "txtRight")->setValue(70);
        QVERIFY(!ok->isEnabled());
        QVERIFY(In<QLabel>(dialog, "lblRoom")->text().contains(u"no room"_s));
    }

    void unusualPaper_staysWhatItIs()
    {
        PrintSetup setup;
        setup.Width = 123;
        setup.Height = 321;
        QCOMPARE(frmPageSetup(nullptr, setup).Chosen(), setup);
    }

    void itemThatCantBeRead_isSaidInThePlaceOfPages()
    {
        const qint64 below = AddItem(*m_database, m_item, u"below"_s);
        Write(u"Code"_s, Code(5000)); // the item below is not reached at once
        Open();
        ClickOn(0);
        InWindow([this, below](frmPrint& window) {
            Choose(window, 1);
            m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {below});
            PrintPreview* preview = PreviewOf(window);
            QTRY_VERIFY(!preview->Print());
            QVERIFY(!In<QPushButton>(window, "cmdPrint")->isEnabled());
            QVERIFY(!In<QPushButton>(window, "cmdPdf")->isEnabled());
            TakePicture(window, u"print-unreadable"_s);
        });
    }

    void itemThatCantBeRead_isMetWhileThePdfIsSaved()
    {
        const auto delay = std::exchange(WorkProgress::Delay, std::chrono::milliseconds(0)); // events come through
        const auto back = qScopeGuard([delay] { WorkProgress::Delay = delay; });
        const qint64 below = AddItem(*m_database, m_item, u"below"_s);
        Write(u"Code"_s, Code(5000));
        Open();
        ClickOn(0);
        InWindow([this, below](frmPrint& window) {
            Choose(window, 1);
            m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {below});
            m_prompts->ExpectFileName(u"Save as PDF"_s, Pdf());
            m_prompts->ExpectMsgBox(ApplicationTitle);
            Click(window, "cmdPdf");
            QVERIFY(m_prompts->Messages.last().Text.contains(QString::number(below)));
            QVERIFY(window.isVisible());
            QVERIFY(!QFile::exists(Pdf()));
        });
    }
};

QB_GUI_TEST_MAIN(TestPrintWindow)
#include "tst_print_window.moc"
