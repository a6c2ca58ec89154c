#include "store/Library.h"
#include "support/CliRun.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Web pages of items on the command line.
class TestCliPages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"the library.qbd"_s);
        AddItem(*MakeLibrary(m_library), 0, u"owner"_s);
        WriteFile(m_home->Path(u"in/page.htm"_s), "<p><img src='in/ä.gif'>text\xe4</p>\r\n<!--End-->");
        WriteFile(m_home->Path(u"in/ä.gif"_s), Gif());
    }
    void cleanup() { m_home.reset(); }

    void page_isSetShownGrownExportedAndDeleted()
    {
        const Outcome set = Page(
            {u"set"_s, u"1"_s, In(u"page.htm"_s), u"--with"_s, m_home->Path(u"in"_s), u"--json"_s});
        QVERIFY2(set.Status == 0, qPrintable(set.Error));
        QCOMPARE(set.Object()[u"page"_s], true);
        QVERIFY(!set.Object()[u"updated"_s].toString().isEmpty());
        QProcess raw; // in its own encoding
        raw.start(qEnvironmentVariable("QUILLBASE_CLI"), {u"page"_s, u"show"_s, m_library, u"1"_s});
        QVERIFY(raw.waitForFinished());
        QCOMPARE(raw.readAllStandardOutput(), "<p><img src='1/ä.gif'>text\xe4</p>\r\n<!--End-->");
        const QJsonObject shown = Page({u"show"_s, u"1"_s, u"--json"_s}).Object();
        QCOMPARE(shown[u"files"_s].toArray(), (QJsonArray{u"page.htm"_s, u"ä.gif"_s}));
        QCOMPARE(shown[u"page"_s], true);
        const Outcome picture = Page({u"picture"_s, u"1"_s, In(u"ä.gif"_s), u"--width"_s, u"40"_s});
        QVERIFY2(picture.Out.startsWith(u"1/"_s) && picture.Out.endsWith(u".gif\n"_s), qPrintable(picture.Out));
        const QJsonObject told = Page({u"picture"_s, u"1"_s, In(u"ä.gif"_s), u"--json"_s}).Object();
        QCOMPARE(told[u"width"_s], 1);
        QVERIFY(QFile::exists(m_home->Path(u"the library_HTML/"_s) + told[u"picture"_s].toString()));
        QCOMPARE(Page({u"link"_s, u"1"_s, u"example.org"_s, u"--text"_s, u"E"_s, u"--before"_s, u"see"_s, u"--behind"_s,
                       u"too"_s})
                     .Status,
                 0);
        QVERIFY(ReadFile(m_home->Path(u"the library_HTML/1.htm"_s))
                    .contains("</p>see <a href=\"http://example.org\">E</a> too</p>\r\n<!--End-->"));
        const QString out = m_home->Path(u"out"_s);
        QCOMPARE(Page({u"export"_s, u"1"_s, out, u"--json"_s}).Object()[u"files"_s], 5);
        QCOMPARE(ContentsOf(out)[u"1.htm"_s], ReadFile(m_home->Path(u"the library_HTML/1.htm"_s)));
        QCOMPARE(Page({u"delete"_s, u"1"_s, u"--json"_s}).Object()[u"page"_s], false);
        QCOMPARE(Page({u"show"_s, u"1"_s}).Status, 1);
        QCOMPARE(Cli({u"check"_s, m_library}).Status, 0);
    }

    void pictureOfOneGivenLength_keepsItsRatio_data()
    {
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<QString>("shown");
        QTest::newRow("none") << QStringList() << u"8 4"_s;
        QTest::newRow("width") << QStringList{u"--width"_s, u"40"_s} << u"40 20"_s;
        QTest::newRow("height") << QStringList{u"--height"_s, u"40"_s} << u"80 40"_s;
        QTest::newRow("both") << QStringList{u"--width"_s, u"5"_s, u"--height"_s, u"40"_s} << u"5 40"_s;
    }
    void pictureOfOneGivenLength_keepsItsRatio()
    {
        QFETCH(QStringList, asked);
        WriteFile(m_home->Path(u"in/wide.svg"_s),
                  "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='4'></svg>");
        const Outcome added = Page(QStringList{u"picture"_s, u"1"_s, In(u"wide.svg"_s), u"--json"_s} + asked);
        QVERIFY2(added.Status == 0, qPrintable(added.Error));
        const QJsonObject told = added.Object();
        QTEST(u"%1 %2"_s.arg(told[u"width"_s].toInt()).arg(told[u"height"_s].toInt()), "shown");
        QVERIFY(ReadFile(m_home->Path(u"the library_HTML/1.htm"_s))
                    .contains(QStringLiteral("width=\"%1\" height=\"%2\"")
                                  .arg(told[u"width"_s].toInt())
                                  .arg(told[u"height"_s].toInt())
                                  .toUtf8()));
    }

    void itemWithoutPage_getsOneByALink()
    {
        const QJsonObject told =
            Page({u"link"_s, u"1"_s, u"http://"_s, u"--before"_s, u"words"_s, u"--json"_s}).Object();
        QCOMPARE(told[u"page"_s], true);
        QVERIFY(Page({u"show"_s, u"1"_s}).Out.contains(u"</p>words"_s));
    }

    void defaults_areWrittenToAFile()
    {
        const QString file = m_home->Path(u"ü.qhd"_s);
        QCOMPARE(Cli({u"page"_s, u"defaults"_s, file, u"--json"_s}).Object()[u"file"_s], file);
        const QByteArray own = ReadFile(file);
        QVERIFY(own.contains("default2.htm"));
        QCOMPARE(Page({u"link"_s, u"1"_s, u"x"_s}).Status, 0); // which makes the library's
        WriteFile(m_home->Path(u"the library_HTML/default2.htm"_s), "mine");
        QCOMPARE(Cli({u"page"_s, u"defaults"_s, m_library, file}).Status, 0);
        QVERIFY(ReadFile(file).contains("mine"));
        QFile::remove(m_home->Path(u"the library_HTML/default.htm"_s));
        const QByteArray before = ReadFile(file);
        QCOMPARE(Cli({u"page"_s, u"defaults"_s, m_library, file}).Status, 1);
        QCOMPARE(ReadFile(file), before);
    }

    void whatCantBe_isRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("reason");
        const QString in = u"IN/"_s;
        QTest::newRow("no verb") << QStringList{} << 2 << u"wants show, set"_s;
        QTest::newRow("no item") << QStringList{u"show"_s, u"9"_s} << 1 << u"There is no item 9"_s;
        QTest::newRow("no page") << QStringList{u"show"_s, u"1"_s} << 1 << u"has no web page"_s;
        QTest::newRow("set nothing") << QStringList{u"set"_s, u"1"_s, in + u"none.htm"_s} << 1 << u"no ordinary file"_s;
        QTest::newRow("set a picture") << QStringList{u"set"_s, u"1"_s, in + u"ä.gif"_s} << 1 << u"is no page"_s;
        QTest::newRow("set with nothing")
            << QStringList{u"set"_s, u"1"_s, in + u"page.htm"_s, u"--with"_s, in + u"none"_s} << 1
            << u"There is no folder"_s;
        QTest::newRow("delete of no item") << QStringList{u"delete"_s, u"9"_s} << 1 << u"There is no item 9"_s;
        QTest::newRow("picture that is none")
            << QStringList{u"picture"_s, u"1"_s, in + u"page.htm"_s} << 1 << u"is no picture"_s;
        QTest::newRow("width that is none")
            << QStringList{u"picture"_s, u"1"_s, in + u"ä.gif"_s, u"--width"_s, u"x"_s} << 2 << u"width"_s;
        QTest::newRow("export of no page")
            << QStringList{u"export"_s, u"1"_s, in + u"out"_s} << 1 << u"has no web page"_s;
    }
    void whatCantBe_isRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        const QString html = m_home->Path(u"the library_HTML"_s);
        const QMap<QString, QByteArray> before = ContentsOf(html);
        for (QString& argument : arguments)
            argument.replace(u"IN/"_s, m_home->Path(u"in"_s) + u'/');
        const Outcome outcome = Page(arguments);
        QTEST(outcome.Status, "status");
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
        QMap<QString, QByteArray> after = ContentsOf(html);
        after.removeIf([](const auto& entry) { // what a look at the template makes
            return entry.key().startsWith(u"default"_s) || entry.key() == u".library"_s;
        });
        QCOMPARE(after, before);
    }

private:
    static QByteArray Gif()
    {
        return QByteArray::fromHex(
            "47494638396101000100800000ffffff00000021f90401000000002c00000000010001000002024401003b");
    }
    QString In(const QString& name) const { return m_home->Path(u"in/"_s + name); }
    /// A verb, and what stands behind the library.
    Outcome Page(const QStringList& words) const
    {
        return Cli(QStringList{u"page"_s} + words.mid(0, 1) + (words.isEmpty() ? QStringList() : QStringList{m_library})
                   + words.mid(1));
    }

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;
};

QB_TEST_MAIN(TestCliPages)
#include "tst_cli_pages.moc"
