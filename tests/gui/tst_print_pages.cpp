#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/RuntimeError.h"
#include "printing/PrintInk.h"
#include "printing/ui/CodeBlock.h"
#include "printing/ui/PdfFile.h"
#include "store/Library.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/GuiRun.h"
#include "support/PdfText.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <QBuffer>
#include <QImage>
#include <QPrinter>
#include <QRegularExpression>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Items that are made, not read.
class MadeItems : public PrintSource {
public:
    size_t Count() const override { return Items.size(); }
    PrintedItem Item(size_t index) override
    {
        ++Asked;
        if (int(index) == Unreadable)
            throw RuntimeError(ErrorNumber::FileNotFound, u"The item can't be read. Nothing was printed."_s, u"test"_s);
        return Items[index];
    }

    std::vector<PrintedItem> Items;
    int Unreadable = -1;
    int Asked = 0;
};

/// Is cancelled when it has advanced, or gone on, so often.
class CancelledWork : public Work {
public:
    explicit CancelledWork(int after) : m_after(after) {}
    void Advance(qint64, qint64) override { --m_after; }
    void Pulse() override { --m_after; }
    bool IsCancelled() override { return m_after < 0; }

private:
    int m_after;
};

PrintedCode Lines(int count, const QString& text = u"line %1 of the code"_s)
{
    PrintedCode code;
    for (int i = 1; i <= count; ++i)
        code.push_back({text.contains(u'%') ? text.arg(i) : text, {}});
    return code;
}

QByteArray Png(QSize size, const QColor& color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

/// Items on pages.
class TestPrintPages : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    MadeItems m_items;
    PrintSetup m_setup;
    QString m_library;

    PrintedItem& Add(const QString& title = u"title"_s)
    {
        PrintedItem& item = m_items.Items.emplace_back();
        item.Id = qint64(m_items.Items.size());
        item.Title = title;
        item.Path = {u"top"_s, u"middle ö"_s};
        return item;
    }
    PagedPrint Print()
    {
        return {m_items, m_setup, {.Title = u"all"_s, .Library = u"Lib ü"_s, .Printed = m_clock->Now()}};
    }
    QString Pdf()
    {
        const QString file = m_home->Path(u"out ö.pdf"_s);
        PagedPrint print = Print();
        const int pages = WritePdf(print, file, m_library);
        if (pages != PdfPages(file))
            QTest::qFail("another number of pages", __FILE__, __LINE__);
        return file;
    }
    static QImage Picture(PagedPrint& print, int page)
    {
        constexpr double Scale = 96.0 / PaperDevice::DotsPerInch;
        QImage image((print.Geometry().Page * Scale).toSize(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.scale(Scale, Scale);
        print.Paint(painter, page);
        return image;
    }
    /// A page for people to look at, in the build folder.
    static void KeepPicture(const QImage& page, const QString& name)
    {
        const QString folder = qEnvironmentVariable("QUILLBASE_PICTURES");
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(page.save(folder + u'/' + name + u".png"_s));
    }
    static int Coloured(const QImage& page)
    {
        int count = 0;
        for (int y = 0; y < page.height(); ++y) {
            for (int x = 0; x < page.width(); ++x)
                count += page.pixelColor(x, y).hslSaturation() > 80 && page.pixelColor(x, y).lightness() < 160 ? 1 : 0;
        }
        return count;
    }
    /// Whether nothing stands in the margins.
    bool MarginsAreWhite(const QImage& page) const
    {
        const double dots = 96 / 25.4;
        const QRect inner(
            QPoint(int(m_setup.Left * dots) - 1, int(m_setup.Top * dots) - 1),
            QPoint(page.width() - int(m_setup.Right * dots) + 2, page.height() - int(m_setup.Bottom * dots) + 2));
        for (int y = 0; y < page.height(); ++y) {
            for (int x = 0; x < page.width(); ++x) {
                if (!inner.contains(x, y) && page.pixelColor(x, y) != Qt::white)
                    return false;
            }
        }
        return true;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_items = {};
        m_setup = {};
        m_library = m_home->Path(u"lib.qbd"_s);
        WriteFile(m_library, "library");
    }
    void cleanup()
    {
        m_clock.reset();
        m_home.reset();
    }

    void page_saysWhereItIsFrom()
    {
        Add(u"the title"_s).Code = Lines(200);
        const QString file = Pdf();
        const int pages = PdfPages(file);
        QVERIFY(pages > 1);
        for (int page = 1; page <= pages; ++page) {
            const QString text = PdfText(file, page);
            QVERIFY(text.contains(u"Page %1 of %2"_s.arg(page).arg(pages)));
            QVERIFY(text.contains(u"top › middle ö › the title"_s));
            QVERIFY(text.contains(u"2 Mar 2026 14:30"_s));
            QVERIFY(text.contains(u"Lib ü"_s));
        }
        QCOMPARE(PdfFact(file, u"Title"_s), u"all"_s);
    }

    void allParts_standOnPaper()
    {
        PrintedItem& item = Add();
        item.Description = u"the description"_s;
        item.Info = u"info one\ninfo two"_s;
        item.Facts = {u"Status own"_s, u"Rating 4.5 of 5"_s};
        item.Code = Lines(3);
        item.Usage = Lines(2, u"usage %1"_s);
        ReadRtf(u"{\\rtf1 noted {\\b bold} text\\par}"_s, item.Notes);
        item.Files = {{u"a.zip"_s, u"1,234"_s, u"about the file"_s, Date::FromParts(2020, 1, 2, 3, 4, 5), {}},
                      {u"empty.txt"_s, {}, {}, {}, m_clock->Now()}};
        item.Links = {{PrintedLink::Leads::There, 2, u"target"_s, u"note of it"_s},
                      {PrintedLink::Leads::BothWays, 3, u"friend"_s, {}}};
        item.PageText = u"what the page says"_s;
        const QString text = PdfText(Pdf());
        for (const QString& part :
             {u"the description"_s, u"info two"_s, u"Status own"_s, u"line 3 of the code"_s, u"usage 2"_s,
              u"noted bold text"_s, u"a.zip"_s, u"1,234"_s, u"about the file"_s, u"2 Jan 2020 03:04"_s, u"empty.txt"_s,
              u"→"_s, u"target"_s, u"note of it"_s, u"↔"_s, u"friend"_s, u"what the page says"_s})
            QVERIFY2(text.contains(part), qPrintable(part));
        qsizetype before = -1;
        for (const QString& heading : {u"Code"_s, u"Usage"_s, u"Notes"_s, u"Files"_s, u"Links"_s, u"Web page"_s}) {
            const qsizetype at = text.indexOf(u'\n' + heading + u'\n');
            QVERIFY2(at > before, qPrintable(heading));
            before = at;
        }
        PagedPrint print = Print();
        print.FindAllPages();
        KeepPicture(Picture(print, 0), u"print-parts"_s);
    }

    void emptyItem_isOnePageWithItsTitle()
    {
        Add(u"nothing in it"_s);
        const QString file = Pdf();
        QCOMPARE(PdfPages(file), 1);
        const QString text = PdfText(file);
        QVERIFY(text.contains(u"nothing in it"_s));
        QVERIFY(!text.contains(u"Code"_s) && !text.contains(u"Files"_s));
    }

    void untitledItem_hasAName()
    {
        Add({});
        QVERIFY(PdfText(Pdf()).contains(u"(untitled)"_s));
    }

    void lines_areAllThereOnceWithTheirNumbers()
    {
        Add().Code = Lines(1000);
        const QString file = Pdf();
        const int pages = PdfPages(file);
        QVERIFY2(pages >= 14 && pages <= 18, qPrintable(QString::number(pages))); // 55 to 70 lines on a page
        static const QRegularExpression line(u"^ *(\\d+) +line (\\d+) of the code$"_s,
                                             QRegularExpression::MultilineOption);
        int next = 1;
        for (auto match = line.globalMatch(PdfText(file)); match.hasNext(); ++next) {
            const QRegularExpressionMatch found = match.next();
            QCOMPARE(found.captured(1).toInt(), next);
            QCOMPARE(found.captured(2).toInt(), next);
        }
        QCOMPARE(next, 1001);
    }

    void lineNumbers_canBeLeftOut()
    {
        Add().Code = Lines(3);
        m_setup.LineNumbers = false;
        const QString text = PdfText(Pdf());
        static const QRegularExpression numbered(u"^ *2 +line 2"_s, QRegularExpression::MultilineOption);
        QVERIFY(text.contains(u"line 2 of the code"_s));
        QVERIFY(!text.contains(numbered));
    }

    void longLine_goesOnBehindAMark_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("without blanks") << u"abcdefghij"_s.repeated(40);
        QTest::newRow("of words") << u"some words, and more; "_s.repeated(20).trimmed();
        QTest::newRow("indented") << QString(12, u' ') + u"if(something){call(it);}"_s.repeated(10);
        QTest::newRow("wide letters") << u"漢字かな"_s.repeated(60);
        QTest::newRow("a mixture") << u"naïve Ω 漢字 тест "_s.repeated(25).trimmed();
    }
    void longLine_goesOnBehindAMark()
    {
        QFETCH(QString, line);
        Add().Code = {{u"short"_s, {}}, {line, {}}, {u"behind"_s, {}}};
        PagedPrint print = Print();
        print.FindAllPages();
        const QImage page = Picture(print, 0);
        QVERIFY(MarginsAreWhite(page));
        QVERIFY(PdfText(Pdf()).count(QChar(CodeBlock::WrapMark)) >= 2);
    }

    void longLine_isReadInThePdf()
    {
        const QString line = u"if(something){call(it);}"_s.repeated(20);
        Add().Code = {{u"short"_s, {}}, {line, {}}, {u"behind"_s, {}}};
        static const QRegularExpression between(u"short(.*)3 +behind"_s,
                                                QRegularExpression::DotMatchesEverythingOption);
        QString whole = between.match(PdfText(Pdf())).captured(1).simplified().remove(u' ');
        QCOMPARE(whole.remove(QChar(CodeBlock::WrapMark)), u'2' + line);
    }

    void rows_holdEachCharacterOnce_data() { longLine_goesOnBehindAMark_data(); }
    void rows_holdEachCharacterOnce()
    {
        QFETCH(QString, line);
        const PrintedCode code{{line, {}}};
        const CodeBlock block(code, {.Width = 6000, .Points = 8, .LineNumbers = true, .Colours = true});
        QVERIFY(block.Rows() > 2);
        QCOMPARE(block.RowTexts().join(QString()), line);
    }

    void narrowPaper_stillHoldsTheCode()
    {
        m_setup.Width = 70;
        m_setup.Height = 90;
        m_setup.CodePoints = 12;
        Add().Code = Lines(5, u"a line of the code that is %1 and long"_s);
        PagedPrint print = Print();
        print.FindAllPages();
        for (int page = 0; page < print.Pages(); ++page)
            QVERIFY(MarginsAreWhite(Picture(print, page)));
        QVERIFY(print.Pages() > 1);
    }

    void colours_areOnPaperUnlessLeftOut()
    {
        PrintedItem& item = Add();
        item.Code = Lines(20);
        for (PrintedLine& line : item.Code)
            line.Spans.push_back({0, 10, InkColors()[size_t(TokenKind::String)], false, false});
        PagedPrint coloured = Print();
        coloured.FindAllPages();
        QVERIFY(Coloured(Picture(coloured, 0)) > 100);
        m_setup.Colours = false;
        PagedPrint black = Print();
        black.FindAllPages();
        QCOMPARE(Coloured(Picture(black, 0)), 0);
    }

    void boldCode_isToldApartWithoutColours()
    {
        m_setup.Colours = false;
        const auto picture = [this](bool isBold, bool isItalic) {
            m_items = {};
            Add().Code = {{u"while some words"_s, {{0, 5, 0, isBold, isItalic}}}};
            PagedPrint print = Print();
            print.FindAllPages();
            return Picture(print, 0);
        };
        const QImage plain = picture(false, false);
        QVERIFY(picture(true, false) != plain);
        QVERIFY(picture(false, true) != plain);
    }

    void paleNotes_areReadOnWhite()
    {
        PrintedItem& item = Add();
        ReadRtf(u"{\\rtf1{\\colortbl;\\red255\\green255\\blue0;}\\cf1 yellow yellow yellow yellow\\par}"_s, item.Notes);
        PagedPrint print = Print();
        print.FindAllPages();
        const QImage page = Picture(print, 0);
        for (int y = 0; y < page.height(); ++y) {
            for (int x = 0; x < page.width(); ++x)
                QVERIFY(page.pixelColor(x, y) != QColor(Qt::yellow));
        }
    }

    void lists_haveTheirMarks()
    {
        PrintedItem& item = Add();
        ReadRtf(u"{\\rtf1 before\\par{\\*\\pn\\pnlvlbody\\pndec\\pnstart3}\\li400 three\\par four\\par}"_s, item.Notes);
        const QString text = PdfText(Pdf());
        QVERIFY2(text.contains(QRegularExpression(u"3\\. +three"_s)), qPrintable(text));
        QVERIFY(text.contains(QRegularExpression(u"4\\. +four"_s)));
    }

    void words_areFoundInThePdf() // letters that a font would join
    {
        PrintedItem& item = Add(u"office file title"_s);
        item.Code = {{u"affix = file;"_s, {}}};
        ReadRtf(u"{\\rtf1 efficient flow of files\\par}"_s, item.Notes);
        const QString text = PdfText(Pdf());
        for (const QString& word : {u"office file title"_s, u"affix = file;"_s, u"efficient flow of files"_s})
            QVERIFY2(text.contains(word), qPrintable(text));
    }

    void pictures_arePrintedWithinTheMargins()
    {
        PrintedItem& item = Add();
        const QByteArray wide = Png({3000, 200}, Qt::red);
        const QByteArray high = Png({100, 5000}, Qt::blue);
        ReadRtf(u"{\\rtf1 before{\\pict\\pngblip "_s + QString::fromLatin1(wide.toHex())
                    + u"}\\par between{\\pict\\pngblip "_s + QString::fromLatin1(high.toHex())
                    + u"}\\par after\\par}"_s,
                item.Notes);
        PagedPrint print = Print();
        print.FindAllPages();
        int red = 0;
        int blue = 0;
        for (int page = 0; page < print.Pages(); ++page) {
            const QImage picture = Picture(print, page);
            QVERIFY(MarginsAreWhite(picture));
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x) {
                    red += picture.pixelColor(x, y) == QColor(Qt::red) ? 1 : 0;
                    blue += picture.pixelColor(x, y) == QColor(Qt::blue) ? 1 : 0;
                }
            }
        }
        QVERIFY(red > 600 * 30); // as wide as the column
        QVERIFY(blue > 800 * 10);
        QVERIFY(PdfText(Pdf()).contains(u"after"_s));
    }

    void hostileNotes_fetchNothing()
    {
        const QString secret = m_home->Path(u"secret.png"_s);
        WriteFile(secret, Png({50, 50}, Qt::red));
        PrintedItem& item = Add();
        const QString url = QUrl::fromLocalFile(secret).toString();
        ReadRtf(u"{\\rtf1 shown {\\field{\\*\\fldinst INCLUDEPICTURE \""_s + url + u"\"}{\\fldrslt <img src=\""_s + url
                    + u"\">}}{\\pict\\pngblip 0badc0de}{\\pict\\pngblip }\\par end\\par}"_s,
                item.Notes);
        item.PageText = u"<img src=\""_s + url + u"\">"_s;
        item.Title = u"<img src=\""_s + url + u"\">"_s;
        PagedPrint print = Print();
        print.FindAllPages();
        QCOMPARE(Coloured(Picture(print, 0)), 0);
        const QString text = PdfText(Pdf());
        QVERIFY(text.contains(u"end"_s));
        QVERIFY(text.contains(u"<img src="_s)); // text is text
    }

    void items_goOnOnThePageUnlessTheyAreToBeginAnew()
    {
        for (int i = 0; i < 5; ++i)
            Add(u"item %1"_s.arg(i)).Code = Lines(3);
        QCOMPARE(PdfPages(Pdf()), 1);
        m_setup.NewPages = true;
        const QString file = Pdf();
        QCOMPARE(PdfPages(file), 5);
        QVERIFY(PdfText(file, 4).contains(u"item 3"_s));
    }

    void headings_neverStandAloneAtTheFoot()
    {
        for (int i = 0; i < 90; ++i) {
            PrintedItem& item = Add(u"item"_s);
            item.Code = Lines(1 + i * 7 % 23);
            item.Usage = Lines(1 + i * 5 % 11, u"usage %1"_s);
        }
        const QString file = Pdf();
        const int pages = PdfPages(file);
        QVERIFY(pages > 20);
        for (int page = 1; page <= pages; ++page) {
            QStringList lines = PdfText(file, page).split(u'\n', Qt::SkipEmptyParts);
            lines.removeIf([](const QString& line) { return line.contains(u"Page "_s) || line == u"\f"_s; });
            const QString last = lines.last().trimmed();
            QVERIFY2(last != u"Code" && last != u"Usage" && last != u"item" && last != u"top › middle ö",
                     qPrintable(last));
        }
    }

    void manyItems_areForgottenAndLaidOutAgain()
    {
        for (int i = 0; i < 6; ++i) {
            PrintedItem& item = Add(u"item %1"_s.arg(i));
            item.Code = Lines(100, u"code %1"_s);
            item.Characters = 5'000'000; // so it says
        }
        const QString file = Pdf();
        QVERIFY(m_items.Asked > 6);
        const QString text = PdfText(file);
        QCOMPARE(text.count(QRegularExpression(u"\\bcode 57\\b"_s)), 6);
        m_items.Asked = 0;
        for (PrintedItem& item : m_items.Items)
            item.Characters = 1000;
        Pdf();
        QCOMPARE(m_items.Asked, 6);
    }

    void firstPage_costsOneItem()
    {
        for (int i = 0; i < 50; ++i)
            Add(u"item %1"_s.arg(i)).Code = Lines(100);
        PagedPrint print = Print();
        QVERIFY(print.FindNextPage());
        QCOMPARE(m_items.Asked, 1);
        QCOMPARE(print.Pages(), 1);
        QVERIFY(!print.AllKnown());
        print.FindAllPages();
        QVERIFY(print.AllKnown() && print.Pages() > 50);
    }

    void paper_isAsItWasSet()
    {
        Add();
        m_setup.Width = 148;
        m_setup.Height = 210;
        m_setup.Landscape = true;
        const QString size = PdfFact(Pdf(), u"Page size"_s);
        QVERIFY2(size.startsWith(u"595 x 420"_s) || size.startsWith(u"595.2"_s), qPrintable(size));
    }

    // Whole or not at all

    void unreadableItem_leavesTheFileAsItWas()
    {
        Add().Code = Lines(100);
        Add();
        m_items.Unreadable = 1;
        const QString file = m_home->Path(u"out.pdf"_s);
        WriteFile(file, "before");
        const auto before = ContentsOf(m_home->Path());
        PagedPrint print = Print();
        QCOMPARE(Raised([&] { WritePdf(print, file, m_library); }),
                 u"%1: The item can't be read. Nothing was printed."_s.arg(ErrorNumber::FileNotFound));
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void fullDisk_leavesTheFileAsItWas()
    {
        for (int i = 0; i < 20; ++i)
            Add().Code = Lines(100);
        const QString file = m_home->Path(u"out.pdf"_s);
        WriteFile(file, "before");
        const auto before = ContentsOf(m_home->Path());
        PagedPrint print = Print();
        QString raised;
        {
            const FileSizeLimit limit(20'000);
            raised = Raised([&] { WritePdf(print, file, m_library); });
        }
        QVERIFY2(raised.startsWith(u"75: "_s) && raised.contains(u"Nothing was printed."_s), qPrintable(raised));
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void cancelledPrint_leavesTheFileAsItWas_data()
    {
        QTest::addColumn<int>("after");
        QTest::newRow("while pages are found") << 1;
        QTest::newRow("while pages are written") << 15;
    }
    void cancelledPrint_leavesTheFileAsItWas()
    {
        QFETCH(int, after);
        Add().Code = Lines(700);
        const QString file = m_home->Path(u"out.pdf"_s);
        const auto before = ContentsOf(m_home->Path());
        PagedPrint print = Print();
        CancelledWork work(after);
        QB_VERIFY_RAISES(WritePdf(print, file, m_library, work), ErrorNumber::Cancelled);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void targetThatIsNoFile_isRefused()
    {
        Add();
        PagedPrint print = Print();
        QB_VERIFY_RAISES(WritePdf(print, m_home->Path(), m_library), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(WritePdf(print, u"/dev/null"_s, m_library), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(WritePdf(print, m_library, m_library), ErrorNumber::DatabaseExists);
        QCOMPARE(ReadFile(m_library), "library"_ba);
    }

    void pdfOfAPrivateLibrary_isPrivate()
    {
        Add();
        QVERIFY(QFile::setPermissions(m_library, QFile::ReadOwner | QFile::WriteOwner));
        const auto others = QFile::ReadGroup | QFile::ReadOther;
        QVERIFY(!(QFile::permissions(Pdf()) & others));
    }

    void printer_getsThePagesThatItWasTold()
    {
        Add().Code = Lines(300);
        QPrinter printer(QPrinter::HighResolution);
        const QString file = m_home->Path(u"printer.pdf"_s);
        ApplyTo(printer, m_setup);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(file);
        printer.setFromTo(2, 3);
        PagedPrint print = Print();
        QCOMPARE(PrintOn(print, printer), 2);
        QCOMPARE(PdfPages(file), 2);
        QVERIFY(PdfText(file, 1).contains(u"Page 2 of"_s));
        QVERIFY(!PdfText(file).contains(u"Page 1 of"_s));
    }

    void pagesThatAreNotThere_areNotPrinted()
    {
        Add().Code = Lines(3);
        QPrinter printer(QPrinter::HighResolution);
        const QString file = m_home->Path(u"printer.pdf"_s);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(file);
        printer.setFromTo(2, 3);
        PagedPrint print = Print();
        QB_VERIFY_RAISES(PrintOn(print, printer), ErrorNumber::ValueNotAllowed);
        QVERIFY(!QFile::exists(file));
    }

    void flush_isWatchedAndCanBeStopped()
    {
        Add();
        RecordedWork work;
        const QString file = m_home->Path(u"out.pdf"_s);
        PagedPrint print = Print();
        WritePdf(print, file, m_library, work);
        QVERIFY(work.Pulses >= 3); // what was made; again before it is put in place, for all who do that; the place
        QVERIFY(QFile::remove(file));
        work.Forget();
        work.Ends = [&work](qint64) { return work.Pulses > 0; };
        QB_VERIFY_RAISES(WritePdf(print, file, m_library, work), ErrorNumber::Cancelled);
        QVERIFY(!QFile::exists(file));
    }

    void progress_countsPages()
    {
        Add().Code = Lines(300);
        RecordedWork work;
        PagedPrint print = Print();
        const int pages = WritePdf(print, m_home->Path(u"out.pdf"_s), m_library, work);
        QVERIFY(pages > 3 && work.Done.size() >= pages);
        QCOMPARE(work.Done.last(), qint64(pages));
        QCOMPARE(work.Totals.last(), qint64(pages));
    }
};

QB_GUI_TEST_MAIN(TestPrintPages)
#include "tst_print_pages.moc"
