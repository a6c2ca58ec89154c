#include "config/Remembered.h"
#include "platform/richtext/TextFormats.h"
#include "platform/system/RuntimeError.h"
#include "printing/PrintHelperJob.h"
#include "printing/PrintInk.h"
#include "printing/PrintSetup.h"
#include "printing/PrintTarget.h"
#include "support/TestRun.h"

#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// How pages look, in which ink, and where they go.
class TestPrintSetup : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;

    static PrintSetup Unusual()
    {
        PrintSetup setup;
        setup.Width = 148;
        setup.Height = 210.5;
        setup.Landscape = true;
        setup.Left = 11;
        setup.Top = 12;
        setup.Right = 13;
        setup.Bottom = 14;
        setup.CodePoints = 7.5;
        setup.LineNumbers = setup.Colours = false;
        setup.NewPages = true;
        setup.Parts = PrintPart::Notes | PrintPart::Links;
        return setup;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
    }
    void cleanup() { m_home.reset(); }

    void setup_isRememberedWhole()
    {
        QCOMPARE(PrintSetup::Last(), PrintSetup::Default());
        Unusual().Keep();
        QCOMPARE(PrintSetup::Last(), Unusual());
        QVERIFY(Unusual() != PrintSetup::Default());
    }

    void noPart_isRememberedToo()
    {
        PrintSetup setup;
        setup.Parts = {};
        QCOMPARE(PrintSetup::FromText(setup.ToText()), setup);
    }

    void damagedText_givesWhatCanBe_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << u""_s;
        QTest::newRow("no setup") << u"= == a=b width=much landscape"_s;
        QTest::newRow("paper of no size") << u"width=0 height=-3"_s;
        QTest::newRow("endless paper") << u"width=1e300 height=inf"_s;
        QTest::newRow("no number") << u"left=nan points=nan"_s;
        QTest::newRow("margins over the paper") << u"left=120 right=120"_s;
        QTest::newRow("margins over the other side") << u"top=200 bottom=200"_s;
        QTest::newRow("huge letters") << u"points=500"_s;
    }
    void damagedText_givesWhatCanBe()
    {
        QFETCH(QString, text);
        QCOMPARE(PrintSetup::FromText(text), PrintSetup::Default());
    }

    void sideways_turnsThePaper()
    {
        PrintSetup setup;
        QCOMPARE(setup.PageWidth(), setup.Width);
        setup.Landscape = true;
        QCOMPARE(setup.PageWidth(), setup.Height);
        QCOMPARE(setup.PageHeight(), setup.Width);
    }

    void inks_areReadOnWhite()
    {
        for (const TokenKindRow& row : TokenKindRows) {
            const quint32 ink = InkColors()[size_t(row.Kind)];
            QVERIFY2(InkContrast(ink) >= 7, row.Name);
            QCOMPARE(InkFor(ink), ink);
        }
        QCOMPARE(InkContrast(0), 21.0);
        QCOMPARE(InkContrast(0xffffff), 1.0);
    }

    void keywordsAndComments_areToldApartWithoutColours()
    {
        QVERIFY(IsBoldInk(TokenKind::Keyword) && !IsBoldInk(TokenKind::Text));
        QVERIFY(IsItalicInk(TokenKind::Comment) && !IsItalicInk(TokenKind::Text));
    }

    void paleColours_becomeDarker_data()
    {
        QTest::addColumn<quint32>("color");
        QTest::newRow("white") << 0xffffffu;
        QTest::newRow("yellow") << 0x00ffffu;
        QTest::newRow("of a dark screen") << 0xb0c94eu;
        QTest::newRow("grey") << 0xc0c0c0u;
    }
    void paleColours_becomeDarker()
    {
        QFETCH(quint32, color);
        QVERIFY(InkContrast(color) < LeastInkContrast);
        QVERIFY(InkContrast(InkFor(color)) >= LeastInkContrast);
    }

    void automaticColour_isBlack() { QCOMPARE(InkFor(AutomaticColor), 0u); }

    void target_isAFileOrAPrinter_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isFile");
        QTest::newRow("pdf") << u"out.pdf"_s << true;
        QTest::newRow("PDF") << u"OUT.PDF"_s << true;
        QTest::newRow("folder") << u"./out"_s << true;
        QTest::newRow("printer") << u"Laser_2nd_floor"_s << false;
        QTest::newRow("none") << u""_s << false;
    }
    void target_isAFileOrAPrinter()
    {
        QFETCH(QString, name);
        QFETCH(bool, isFile);
        const PrintTarget target = PrintTargetNamed(name);
        QCOMPARE(target.File, isFile ? name : QString());
        QCOMPARE(target.Printer, isFile ? QString() : name);
    }

    void noFile_isRefused()
    {
        const auto refused = [](const QString& file) {
            try {
                RequirePrintableFile(file);
            } catch (const RuntimeError& error) {
                return error.Number() == ErrorNumber::PathAccess
                       && error.Description().endsWith(u"Nothing was printed."_s);
            }
            return false;
        };
        const QString pipe = m_home->Path(u"pipe.pdf"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(refused(m_home->Path()));
        QVERIFY(refused(u"/dev/null"_s));
        QVERIFY(refused(pipe));
        QVERIFY(refused(m_home->Path(u"missing/out.pdf"_s)));
        QVERIFY(refused(m_home->Path() + u'/'));
        RequirePrintableFile(m_home->Path(u"out ö.pdf"_s));
        WriteFile(m_home->Path(u"there.pdf"_s), "x");
        RequirePrintableFile(m_home->Path(u"there.pdf"_s));
    }

    void job_comesAcrossWhole()
    {
        const PrintHelperJob job{.Library = u"/a b/ö.qbd"_s,
                                 .Item = 123456789012,
                                 .Branch = true,
                                 .File = u"line\nend.pdf"_s,
                                 .Printer = u"P"_s};
        QCOMPARE(PrintHelperJob::FromLine(job.ToLine()), job);
        QCOMPARE(job.ToLine().count('\n'), 1);
        QB_VERIFY_RAISES(PrintHelperJob::FromLine("{}"), ErrorNumber::InvalidCall);
        QB_VERIFY_RAISES(PrintHelperJob::FromLine("rubbish"), ErrorNumber::InvalidCall);
    }

    void answer_comesAcrossWhole()
    {
        for (const auto kind : {PrintHelperAnswer::Progress, PrintHelperAnswer::Done, PrintHelperAnswer::Failed}) {
            const PrintHelperAnswer answer{
                .What = kind, .Pages = 3, .Of = 70000, .Printer = u"P"_s, .Error = 75, .Reason = u"ö\n\"x\""_s};
            QCOMPARE(PrintHelperAnswer::FromLine(answer.ToLine()), answer);
        }
        QCOMPARE(PrintHelperAnswer::FromLine("a warning").What, PrintHelperAnswer::Nothing);
    }
};

QB_TEST_MAIN(TestPrintSetup)
#include "tst_print_setup.moc"
