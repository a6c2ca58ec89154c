#include "store/Bookmarks.h"
#include "store/ItemBranch.h"
#include "store/ItemStatus.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Bookmarks, status, rating and facts by the command line.
class TestCliBookmarks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_path = m_home->Path(u"Büch erei.qbd"_s);
        m_library = MakeLibrary(m_path, LanguageType::None);
        AddItem(*m_library, 0, u"Größe"_s);
        AddItem(*m_library, 0, u"other"_s);
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    // Bookmarks

    void bookmark_isMadeListedAndRemoved()
    {
        const Outcome made = Cli({u"bookmark"_s, m_path, u"2"_s, u"--group"_s, u"to do"_s, u"--text"_s, u"a\nb"_s});
        QCOMPARE(made.Error, QString());
        QCOMPARE(made.Out, u"1\n"_s);
        const Outcome again = Cli({u"bookmark"_s, m_path, u"1"_s, u"--group"_s, u"TO DO"_s, u"--json"_s});
        QCOMPARE(again.Object()[u"id"_s].toInt(), 2);
        QCOMPARE(CountOf(*m_library, u"BookmarkGroups"_s), 1);
        QCOMPARE(Cli({u"bookmarks"_s, m_path}).Out, u"1\t2\tto do\tother\ta b\n2\t1\tto do\tGröße\t\n"_s);
        const QJsonArray all = Cli({u"bookmarks"_s, m_path, u"--json"_s}).Array();
        QCOMPARE(all.size(), 2);
        const QJsonObject expected{
            {u"id"_s, 1}, {u"item"_s, 2}, {u"title"_s, u"other"_s}, {u"group"_s, u"to do"_s}, {u"text"_s, u"a\nb"_s}};
        QCOMPARE(all[0].toObject(), expected);
        QCOMPARE(Cli({u"bookmark-remove"_s, m_path, u"1"_s}).Status, 0);
        QCOMPARE(Cli({u"bookmarks"_s, m_path}).Out, u"2\t1\tto do\tGröße\t\n"_s);
        QCOMPARE(CountOf(*m_library, u"BookmarkGroups"_s), 1);
    }

    void libraryWithoutBookmarks_listsNone()
    {
        QCOMPARE(Cli({u"bookmarks"_s, m_path}).Out, QString());
        const Outcome json = Cli({u"bookmarks"_s, m_path, u"--json"_s});
        QCOMPARE(json.Status, 0);
        QVERIFY(json.Array().isEmpty());
        QVERIFY(json.Out.startsWith(u'['));
    }

    void bookmarkThatCantBe_isRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QStringList& arguments, int status, const QString& reason) {
            QTest::newRow(name) << arguments << status << reason;
        };
        row("no group", {u"bookmark"_s, u"1"_s}, 2, u"--group is missing."_s);
        row("blank group", {u"bookmark"_s, u"1"_s, u"--group"_s, u"  "_s}, 2, u"--group is missing."_s);
        row("long group", {u"bookmark"_s, u"1"_s, u"--group"_s, QString(51, u'x')}, 1, u"has 51 characters"_s);
        row("long text", {u"bookmark"_s, u"1"_s, u"--group"_s, u"g"_s, u"--text"_s, QString(256, u'x')}, 1,
            u"Description"_s);
        row("root", {u"bookmark"_s, u"0"_s, u"--group"_s, u"g"_s}, 1, u"The root of the tree is no item"_s);
        row("no item", {u"bookmark"_s, u"9"_s, u"--group"_s, u"g"_s}, 1, u"9"_s);
        row("orphan", {u"bookmark"_s, u"3"_s, u"--group"_s, u"g"_s}, 1, u"orphan"_s);
        row("no bookmark", {u"bookmark-remove"_s, u"9"_s}, 1, u"There is no bookmark 9"_s);
        row("no number", {u"bookmark-remove"_s, u"x"_s}, 2, u"'x' is not"_s);
        row("too many", {u"bookmarks"_s, u"1"_s}, 2, u"Unexpected argument '1'."_s);
    }
    void bookmarkThatCantBe_isRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        AddItem(*m_library, 0, OrphanedItemsTitle);
        arguments.insert(1, m_path);
        const QByteArray before = ReadFile(m_path);
        const Outcome outcome = Cli(arguments);
        QTEST(outcome.Status, "status");
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
        QCOMPARE(outcome.Out, QString());
        QCOMPARE(ReadFile(m_path), before); // no group either
    }

    void bookmarkThatCantBeTold_isNotMade()
    {
        QVERIFY(QFile::exists(u"/dev/full"_s));
        QProcess process;
        process.setStandardOutputFile(u"/dev/full"_s);
        process.start(qEnvironmentVariable("QUILLBASE_CLI"), {u"bookmark"_s, m_path, u"1"_s, u"--group"_s, u"g"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(CountOf(*m_library, u"Bookmarks"_s) + CountOf(*m_library, u"BookmarkGroups"_s), 0);
    }

    // Status, rating and facts

    void statusAndRating_areSet()
    {
        for (const ItemStatusName& row : ItemStatusNames()) {
            QCOMPARE(Cli({u"set"_s, m_path, u"1"_s, u"--status"_s, QString::fromLatin1(row.Name)}).Status, 0);
            QCOMPARE(Number(u"ItemStatus"_s), qint64(row.Status));
            QCOMPARE(Fact(u"status"_s).toString(), QString::fromLatin1(row.Name));
        }
        m_library->Execute(u"UPDATE Items SET LastChanged = 5"_s);
        QCOMPARE(Cli({u"set"_s, m_path, u"1"_s, u"--rating"_s, u"7"_s}).Status, 0);
        QCOMPARE(Number(u"ItemRating"_s), 7);
        QVERIFY(Number(u"LastChanged"_s) > 5);
        QCOMPARE(Fact(u"rating"_s).toInt(), 7);
        QCOMPARE(Cli({u"set"_s, m_path, u"1"_s, u"--rating"_s, u"0"_s, u"--status"_s, u"own"_s}).Status, 0);
        QCOMPARE(Number(u"ItemRating"_s), 0);
        QCOMPARE(Number(u"ItemStatus"_s), qint64(ItemStatus::Own));
    }

    void statusAndRatingThatCantBe_areRefused_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("reason");
        QTest::newRow("status") << QStringList{u"--status"_s, u"good"_s} << u"Unknown status 'good'"_s;
        QTest::newRow("rating") << QStringList{u"--rating"_s, u"11"_s} << u"1 to 10 half stars"_s;
        QTest::newRow("negative") << QStringList{u"--rating"_s, u"-1"_s} << u"'-1' is not a number"_s;
        QTest::newRow("word") << QStringList{u"--rating"_s, u"best"_s} << u"'best' is not a number"_s;
        QTest::newRow("nothing") << QStringList{} << u"--status or --rating."_s;
    }
    void statusAndRatingThatCantBe_areRefused()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, reason);
        const QByteArray before = ReadFile(m_path);
        const Outcome outcome = Cli(QStringList{u"set"_s, m_path, u"1"_s} + options);
        QCOMPARE(outcome.Status, 2);
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
        QCOMPARE(ReadFile(m_path), before);
    }

    void info_tellsOfAnItem()
    {
        QCOMPARE(Cli({u"set"_s, m_path, u"1"_s, u"--info"_s, u"one\r\ntwo"_s, u"--status"_s, u"tested"_s, u"--rating"_s,
                      u"3"_s})
                     .Status,
                 0);
        QCOMPARE(Cli({u"bookmark"_s, m_path, u"1"_s, u"--group"_s, u"g"_s}).Status, 0);
        QCOMPARE(Cli({u"link"_s, m_path, u"1"_s, u"2"_s}).Status, 0);
        m_library->Execute(
            u"UPDATE Items SET Created = ?, LastChanged = 0, \"User\" = 'me', HTMLPage = -1 WHERE ID = 1"_s,
            {Date::FromParts(2026, 3, 2, 14, 30, 5)});
        const QJsonObject facts = Cli({u"info"_s, m_path, u"1"_s, u"--json"_s}).Object();
        const QJsonObject expected{{u"id"_s, 1},
                                   {u"parent"_s, 0},
                                   {u"title"_s, u"Größe"_s},
                                   {u"status"_s, u"tested"_s},
                                   {u"rating"_s, 3},
                                   {u"created"_s, Date::FromParts(2026, 3, 2, 14, 30, 5).ToIso()},
                                   {u"changed"_s, QString()},
                                   {u"user"_s, u"me"_s},
                                   {u"files"_s, 0},
                                   {u"links"_s, 1},
                                   {u"page"_s, true},
                                   {u"bookmarks"_s, QJsonArray{1}},
                                   {u"info"_s, u"one\r\ntwo"_s}};
        QCOMPARE(facts, expected);
        const QString text = Cli({u"info"_s, m_path, u"1"_s}).Out;
        QVERIFY2(text.startsWith(u"id:        1\nparent:    0\ntitle:     Größe\nstatus:    tested\nrating:    3\n"_s),
                 qPrintable(text));
        QVERIFY(text.contains(u"\nbookmarks: 1\n"_s));
        QVERIFY(text.endsWith(u"\n\none\ntwo\n"_s));
    }

    void factsThatSayNothing_areNone()
    {
        m_library->Execute(u"UPDATE Items SET ItemStatus = 77, ItemRating = 77"_s);
        QCOMPARE(Fact(u"status"_s).toString(), u"none"_s);
        QCOMPARE(Fact(u"rating"_s).toInt(), 0);
    }

    void infoOfNoItem_isRefused()
    {
        QCOMPARE(Cli({u"info"_s, m_path, u"9"_s}).Status, 1);
        QCOMPARE(Cli({u"info"_s, m_path, u"x"_s}).Status, 2);
        QCOMPARE(Cli({u"info"_s, m_path, u"1"_s, u"2"_s}).Status, 2);
        QCOMPARE(Cli({u"info"_s, m_path, u"--json"_s}).Object()[u"items"_s].toInt(), 2); // of the library
    }

private:
    qint64 Number(const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = 1"_s.arg(column)).ToLong();
    }
    QJsonValue Fact(const QString& name) { return Cli({u"info"_s, m_path, u"1"_s, u"--json"_s}).Object()[name]; }

    std::unique_ptr<TemporaryHome> m_home;
    QString m_path;
    std::unique_ptr<Library> m_library;
};

QB_TEST_MAIN(TestCliBookmarks)
#include "tst_cli_bookmarks.moc"
