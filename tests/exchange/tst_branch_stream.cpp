#include "exchange/BranchStream.h"
#include "exchange/PageNames.h"
#include "platform/system/RuntimeError.h"
#include "store/PageReferences.h"
#include "support/FolderContents.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The stream of an export, byte by byte.
class TestBranchStream : public QObject {
    Q_OBJECT

    TemporaryHome m_home;

    QString Path() const { return m_home.Path(u"ströme.qbt"_s); }
    QByteArray Written() const { return ReadFile(Path()); }
    void Lay(const QByteArray& bytes) const { WriteFile(Path(), bytes); }

    static QByteArray Text(const QByteArray& bytes)
    {
        return QByteArray(1, char(bytes.size() & 255)) + char(bytes.size() >> 8) + bytes;
    }
    static QByteArray Long(qint32 number)
    {
        QByteArray bytes;
        for (int byte = 0; byte < 4; ++byte)
            bytes += char((quint32(number) >> (8 * byte)) & 255);
        return bytes;
    }
    /// 2.5 is noon of New Year's Day of 1900.
    static QByteArray Noon() { return QByteArray("\0\0\0\0\0\0\x04\x40", 8); }

    /// One item with a file of three bytes and a page of one, as the form has them.
    static QByteArray Example(const QByteArray& mark, const QByteArray& title)
    {
        return mark + Long(1) + Text(title) + Text("17") + Text("4") + Text("") + Text("4C") + Text("what")
               + Text("info") + Text("me") + Long(2) + Long(-3) + Text("code") + '\x05' + Text("notes") + Text("usage")
               + '\xFF' + "\xFF\xFF" + Noon() + Long(1) + Text("a.txt") + Noon() + Noon() + Long(3) + Text("words")
               + "abc" + Long(1) + Text("17.htm") + Noon() + Long(17) + Long(1) + "p";
    }
    static QByteArray Trailer() { return "QBX+" + Long(1) + Text("17") + Text("18") + Text("why") + Long(0); }

    BranchItem ReadExample() const
    {
        BranchReader reader(Path());
        BranchItem item;
        reader.Read(item);
        BranchFile file;
        BranchPage page;
        if (reader.ReadCount() == 1)
            reader.Read(file);
        reader.ReadContents(nullptr, file.Size, NoWork());
        if (reader.ReadCount() == 1)
            reader.Read(page);
        reader.ReadContents(nullptr, page.Size, NoWork());
        reader.ReadTrailer();
        return item;
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void values_standInTheFormThatOthersRead()
    {
        QFile three(m_home.Path(u"three"_s));
        WriteFile(three.fileName(), "abcd");
        QVERIFY(three.open(QIODevice::ReadOnly));
        const Date noon = Date::FromDayCount(2.5);
        BranchWriter writer(Path(), 1);
        writer.Write(BranchItem{u"größe"_s,
                                u"17"_s,
                                u"4"_s,
                                {},
                                u"4C"_s,
                                u"what"_s,
                                u"info"_s,
                                u"me"_s,
                                2,
                                -3,
                                u"code"_s,
                                5,
                                u"notes"_s,
                                u"usage"_s,
                                255,
                                true,
                                noon});
        writer.WriteCount(1);
        writer.Write(BranchFile{u"a.txt"_s, noon, noon, 3, u"words"_s});
        writer.WriteContents(three, 3, NoWork());
        writer.WriteCount(1);
        writer.Write(BranchPage{u"17.htm"_s, noon, 17, 1});
        three.seek(0);
        WriteFile(m_home.Path(u"one"_s), "p");
        QFile one(m_home.Path(u"one"_s));
        QVERIFY(one.open(QIODevice::ReadOnly));
        writer.WriteContents(one, 1, NoWork());
        writer.Write(BranchTrailer{{{u"17"_s, u"18"_s, u"why"_s}}, {}});
        writer.Close();
        QCOMPARE(Written(), Example("\xEF\xBB\xBF", "gr\xC3\xB6\xC3\x9F"
                                                    "e")
                                + Trailer());
    }

    void streamWithoutTheMark_isOfTheWindowsCodePage()
    {
        Lay(Example({}, "gr\xF6\xDF"
                        "e \x80"));
        const BranchItem item = ReadExample();
        QCOMPARE(item.Title, u"größe €"_s);
        QCOMPARE(item.ItemStatus, 2);
        QCOMPARE(item.ItemRating, -3);
        QCOMPARE(int(item.CodeHeaders), 5);
        QCOMPARE(int(item.UsageHeaders), 255);
        QCOMPARE(item.HTMLPage, true);
        QCOMPARE(item.HTMLLastUpdated, Date::FromParts(1900, 1, 1, 12));
    }

    void longText_isNotCut_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<QByteArray>("prefix");
        QTest::newRow("the last short one") << 65'534 << "\xFE\xFF"_ba;
        QTest::newRow("the first long one") << 65'535 << "\xFF\xFF\xFF\xFF"_ba + QByteArray(2, '\0');
        QTest::newRow("a long one") << 300'000 << "\xFF\xFF\xE0\x93\x04"_ba + QByteArray(1, '\0');
    }
    void longText_isNotCut()
    {
        QFETCH(int, length);
        QFETCH(QByteArray, prefix);
        const QString text(length, u'x');
        BranchItem written;
        written.Title = text;
        written.Key = u"after"_s;
        BranchWriter writer(Path(), 1);
        writer.Write(written);
        writer.Close();
        QVERIFY(Written().mid(3 + 4).startsWith(prefix + 'x'));
        BranchReader reader(Path());
        BranchItem item;
        reader.Read(item);
        QCOMPARE(item.Title, text);
        QCOMPARE(item.Key, u"after"_s);
    }

    void shortLengthOfAnOldStream_hasNoLongForm()
    {
        Lay(Long(1) + "\xFF\xFF" + QByteArray(65'535, 'x') + Text("17"));
        BranchReader reader(Path());
        BranchItem item;
        QVERIFY(!Raised([&] { reader.Read(item); }).isEmpty()); // it is cut behind the key
        QCOMPARE(item.Title, QString(65'535, u'x'));
        QCOMPARE(item.Key, u"17"_s);
    }

    void streamThatIsCutAnywhere_isRefused()
    {
        const QByteArray whole = Example("\xEF\xBB\xBF", "title") + Trailer();
        for (qsizetype length = 0; length < whole.size(); ++length) {
            Lay(whole.left(length));
            const QString raised = Raised([this] { ReadExample(); });
            QVERIFY2(raised.startsWith(u"3049: The export can't be read: "_s), qPrintable(QString::number(length)));
        }
        Lay(whole);
        QCOMPARE(Raised([this] { ReadExample(); }), QString());
    }

    void lies_areRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray mark = "\xEF\xBB\xBF";
        const QByteArray whole = Example(mark, "title") + Trailer();
        const auto with = [&whole](const QByteArray& was, const QByteArray& is) {
            return QByteArray(whole).replace(whole.indexOf(was), was.size(), is);
        };
        QTest::newRow("a count below 0") << mark + Long(-1);
        QTest::newRow("a text of 4 GB") << mark + Long(1) + "\xFF\xFF\xFF\xFF\xFF\xFF";
        QTest::newRow("a file of 2 GB") << with(Long(3) + Text("words"), Long(0x7FFFFFFE) + Text("words"));
        QTest::newRow("a file of many GB") << with(Long(3) + Text("words"), Long(0x7FFFFFFF) + QByteArray(8, '\x70'));
        QTest::newRow("a file of less than nothing") << with(Long(3) + Text("words"), Long(-3) + Text("words"));
        QTest::newRow("a date that is no number") << with(Noon(), QByteArray(6, '\0') + "\xF8\x7F");
        QTest::newRow("a date beyond all years") << with(Noon(), QByteArray(6, '\0') + "\x50\x41");
        QTest::newRow("a text that is no UTF-8") << with("title", "ti\xFFle");
        QTest::newRow("another end") << with("QBX+", "QBX-");
        QTest::newRow("many links") << with(Long(1) + Text("17") + Text("18"),
                                            Long(0x7FFFFFFF) + Text("17") + Text("18"));
    }
    void lies_areRefused()
    {
        QFETCH(QByteArray, bytes);
        Lay(bytes);
        QVERIFY(Raised([this] { ReadExample(); }).startsWith(u"3049: "_s));
    }

    void missingFile_isNamed()
    {
        QVERIFY(Raised([this] { BranchReader reader(m_home.Path(u"nowhere.qbt"_s)); }).contains(u"nowhere.qbt"_s));
    }

    void contents_showThatTheyGoOnAndCanBeCancelled()
    {
        WriteFile(m_home.Path(u"large"_s), QByteArray(600'000, 'l'));
        RecordedWork work;
        {
            BranchWriter writer(Path(), 0);
            QFile source(m_home.Path(u"large"_s));
            QVERIFY(source.open(QIODevice::ReadOnly));
            writer.WriteContents(source, 600'000, work);
            QVERIFY(work.Pulses >= 1);
            QVERIFY(source.seek(0));
            work.Ends = [](qint64) { return true; };
            QB_VERIFY_RAISES(writer.WriteContents(source, 600'000, work), 3059);
        }
        work.Forget();
        BranchReader reader(Path());
        reader.ReadContents(nullptr, 300'000, work);
        QVERIFY(work.Pulses >= 1);
        work.Ends = [](qint64) { return true; };
        QB_VERIFY_RAISES(reader.ReadContents(nullptr, 300'000, work), 3059);
    }

    // Names of pages

    void nameOfAPage_staysInItsFolder_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("first");
        QTest::addColumn<QString>("place"); // "-" for none
        QTest::newRow("the page") << u"17.htm"_s << true << QString();
        QTest::newRow("the page in capitals") << u"17.HTM"_s << true << QString();
        QTest::newRow("its like in the folder") << u"17.htm"_s << false << u"17.htm"_s;
        QTest::newRow("in folders") << u"a\\b/ç.png"_s << false << u"a/b/ç.png"_s;
        QTest::newRow("no name") << QString() << false << u"-"_s;
        QTest::newRow("up") << u"..\\18.htm"_s << false << u"-"_s;
        QTest::newRow("up in the middle") << u"a/../../18.htm"_s << false << u"-"_s;
        QTest::newRow("absolute") << u"/etc/passwd"_s << false << u"-"_s;
        QTest::newRow("a folder") << u"a\\"_s << false << u"-"_s;
        QTest::newRow("itself") << u"."_s << true << u"-"_s;
        QTest::newRow("ends early") << u"a"_s + QChar::Null + u".png"_s << false << u"-"_s;
        QTest::newRow("too long") << QString(256, u'x') << false << u"-"_s;
    }
    void nameOfAPage_staysInItsFolder()
    {
        QFETCH(QString, name);
        QFETCH(bool, first);
        const std::optional<QString> place = PlaceOfPage(name, u"17"_s, first);
        QTEST(place ? *place : u"-"_s, "place");
    }

    void references_followThePage()
    {
        const QByteArray page = "<IMG SRC=\"17\\a.png\"><img src='17/b.png'><a href=17/c>17/d</a> src=\"170\\a\" "
                                "src=\"x/17\\a\" \xE4\xF6";
        WriteFile(Path(), page);
        RenameReferences(Path(), u"17"_s, u"5"_s);
        QCOMPARE(Written(), "<IMG SRC=\"5\\a.png\"><img src='5/b.png'><a href=5/c>17/d</a> src=\"170\\a\" "
                            "src=\"x/17\\a\" \xE4\xF6"_ba);
        RenameReferences(Path(), u"5"_s, u"1234567"_s);
        QVERIFY(Written().startsWith("<IMG SRC=\"1234567\\a.png\">"));
    }

    void references_areFoundHoweverTheyAreWritten_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QByteArray>("renamed");
        const QString key = u"Über & uns"_s;
        const auto row = [](const char* name, const QByteArray& before, const QByteArray& after) {
            QTest::newRow(name) << before << after;
        };
        row("UTF-8", u"<img src=\"%1/a.png\">"_s.arg(key).toUtf8(), "<img src=\"5/a.png\">");
        row("Latin-1", u"<img src=\"%1/a.png\">"_s.arg(key).toLatin1(), "<img src=\"5/a.png\">");
        row("as an address", "<img src='./%c3%9Cber%20&%20uns/a.png'>", "<img src='./5/a.png'>");
        row("escaped",
            "<a href=\"\xC3\x9C"
            "ber &amp; uns/b\">",
            "<a href=\"5/b\">");
        row("escaped address", "<a href=\"%C3%9Cber%20&amp;%20uns/b\">", "<a href=\"5/b\">");
        row("background", "<body background=\"%C3%9Cber%20&%20uns/b\">", "<body background=\"5/b\">");
        const QString text = u"\xd800 src='%1/a'\n"_s;
        const QByteArray half = "x"; // of a unit
        row("UTF-16, little", Utf16(text.arg(key), true) + half, Utf16(text.arg(u"5"_s), true) + half);
        row("UTF-16, big", Utf16(text.arg(key), false) + half, Utf16(text.arg(u"5"_s), false) + half);
    }
    void references_areFoundHoweverTheyAreWritten()
    {
        QFETCH(const QByteArray, page);
        WriteFile(Path(), page);
        RenameReferences(Path(), u"Über & uns"_s, u"5"_s);
        QTEST(Written(), "renamed");
    }

private:
    static QByteArray Utf16(const QString& text, bool isLittle)
    {
        QByteArray bytes = isLittle ? "\xff\xfe" : "\xfe\xff";
        for (const QChar unit : text) {
            bytes += char(isLittle ? unit.cell() : unit.row());
            bytes += char(isLittle ? unit.row() : unit.cell());
        }
        return bytes;
    }
};

QB_TEST_MAIN(TestBranchStream)
#include "tst_branch_stream.moc"
