#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestCliFind : public QObject {
    Q_OBJECT

private:
    Outcome Find(const QStringList& arguments) { return Cli(QStringList{u"find"_s, m_library->Name()} + arguments); }
    /// The items that are found, in their order.
    QList<qint64> Items(const QStringList& arguments)
    {
        const Outcome outcome = Find(arguments + QStringList{u"--json"_s});
        if (outcome.Status != 0)
            QTest::qFail(qPrintable(outcome.Error), __FILE__, __LINE__);
        QList<qint64> items;
        for (const QJsonValue& item : outcome.Object().value(u"items"_s).toArray())
            items << item.toObject().value(u"item"_s).toInteger();
        return items;
    }
    QString Plain(qint64 item)
    {
        return PlainTextFromRtf(m_library->QueryValue(u"SELECT Code FROM Items WHERE ID = ?"_s, {item}).ToText());
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_a = 0, m_b = 0, m_c = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"finde ö.qbd"_s));
        m_a = AddItem(*m_library, 0, u"Vector"_s, u"int a;\r\n  std::move(a);"_s);
        m_b = AddItem(*m_library, m_a, u"Moving"_s, u"remove it, é"_s);
        m_c = AddItem(*m_library, 0, u"Other"_s, u"a move"_s);
        Transaction transaction(*m_library);
        for (const qint64 id : {m_a, m_b, m_c})
            m_library->Execute(u"UPDATE Items SET LastChanged = ? WHERE ID = ?"_s,
                               {Date::FromParts(2026, 1, int(id)), id});
        m_library->Execute(u"UPDATE Items SET ItemStatus = 2, ItemRating = 7 WHERE ID = ?"_s, {m_b});
        transaction.Commit();
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void phrase_isFoundWithItsPlaces()
    {
        const Outcome outcome = Find({u"std::move"_s, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        const QJsonObject item = outcome.Object().value(u"items"_s).toArray().at(0).toObject();
        QCOMPARE(item.value(u"item"_s).toInteger(), m_a);
        QCOMPARE(item.value(u"counters"_s).toObject(), (QJsonObject{{u"C"_s, 1}}));
        const QJsonObject hit = item.value(u"hits"_s).toArray().at(0).toObject();
        QCOMPARE(hit, (QJsonObject{{u"field"_s, u"code"_s},
                                   {u"letter"_s, u"C"_s},
                                   {u"line"_s, 2},
                                   {u"column"_s, 3},
                                   {u"begin"_s, 10},
                                   {u"length"_s, 9},
                                   {u"text"_s, u"  std::move(a);"_s}}));
        QCOMPARE(Find({u"std::move"_s}).Out, u"Vector [%1] (C)\n  code:2:3: std::move(a);\n"_s.arg(m_a));
    }

    void fileThatIsTooLarge_isSaidAndNoFailure()
    {
        AddStoredFile(*m_library, m_a, u"large.log"_s, QByteArray((16 << 20) + 1, 'x'), {});
        const Outcome outcome = Find({u"std::move"_s, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QVERIFY(outcome.Object().value(u"complete"_s).toBool());
        QCOMPARE(outcome.Object().value(u"left_out"_s).toInt(-1), 1);
        QCOMPARE(Find({u"std::move"_s, u"--in"_s, u"code"_s, u"--json"_s}).Object().value(u"left_out"_s).toInt(-1), 0);
        QVERIFY2(outcome.Error.contains(u"Files of more than 16 MB that were not looked through: 1."_s),
                 qPrintable(outcome.Error));
    }

    void hits_comeTitlesFirstThenWordsThenLateChanges()
    {
        QCOMPARE(Items({u"mov"_s}), (QList<qint64>{m_b, m_c, m_a}));
        QCOMPARE(Items({u"move"_s}), (QList<qint64>{m_c, m_a, m_b}));
        QCOMPARE(Items({u"move"_s, u"--limit"_s, u"2"_s}), (QList<qint64>{m_c, m_a}));
    }

    void options_narrowTheSearch_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("letters"); ///< of the items
        const auto row = [](const QString& arguments, const QString& letters) {
            QTest::newRow(qPrintable(arguments)) << arguments.split(u' ') << letters;
        };
        row(u"MOVE"_s, QString());
        row(u"MOVE --ignore-case"_s, u"cab"_s);
        row(u"vector --case"_s, QString());
        row(u"move --word"_s, u"ca"_s);
        row(u"mov[ei] --regex"_s, u"bca"_s);
        row(u"a|it --regex --word"_s, u"cba"_s);
        row(u"e --accents --in code --word"_s, u"b"_s);
        row(u"o --in title"_s, u"cba"_s);
        row(u"o --in T,code"_s, u"cba"_s);
        row(u"move --branch 1"_s, u"ab"_s);
        row(u"move --since 2026-01-02"_s, u"cb"_s);
        row(u"move --status 2"_s, u"b"_s);
        row(u"move --rating 7"_s, u"b"_s);
        row(u"move --language c++"_s, u"cab"_s);
        row(u"move --language python"_s, QString());
    }
    void options_narrowTheSearch()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, letters);
        QList<qint64> expected;
        for (const QChar letter : letters)
            expected << (letter == u'a' ? m_a : letter == u'b' ? m_b : m_c);
        QCOMPARE(Items(arguments), expected);
    }

    void allWords_mayStandAnywhere()
    {
        QCOMPARE(Items({u"vector move"_s, u"--all"_s}), QList<qint64>{m_a});
        QCOMPARE(Items({u"vector move"_s}), QList<qint64>{});
    }

    void textThatBeginsWithDashes_isAText()
    {
        const qint64 arrow = AddItem(*m_library, 0, u"p"_s, u"p->next --count"_s);
        QCOMPARE(Items({u"->"_s}), QList<qint64>{arrow});
        QCOMPARE(Items({u"->next"_s, u"--case"_s}), QList<qint64>{arrow});
        QCOMPARE(Cli({u"find"_s, u"--json"_s, m_library->Name(), u"--"_s, u"--count"_s}).Status, 0);
        QCOMPARE(Find({u"--count"_s}).Status, 2);
    }

    void wrongUse_isExplained_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("says");
        const auto row = [](const QStringList& arguments, int status, const QString& says) {
            QTest::newRow(qPrintable(arguments.join(u' '))) << arguments << status << says;
        };
        row({u""_s}, 1, u"empty"_s);
        row({u"(a"_s, u"--regex"_s}, 1, u"at character 3"_s);
        row({u"x"_s, u"--in"_s, u"nowhere"_s}, 2, u"nowhere"_s);
        row({u"x"_s, u"--in"_s, u","_s}, 2, u"--in"_s);
        row({u"x"_s, u"--since"_s, u"yesterday"_s}, 2, u"yesterday"_s);
        row({u"x"_s, u"--all"_s, u"--regex"_s}, 2, u"--regex"_s);
        row({u"x"_s, u"--case"_s, u"--ignore-case"_s}, 2, u"--case"_s);
        row({u"x"_s, u"--dry-run"_s}, 2, u"--dry-run"_s);
        row({u"x"_s, u"--replace"_s, u"y"_s, u"--in"_s, u"links"_s}, 2, u"replaced"_s);
        row({u"x"_s, u"--limit"_s, u"many"_s}, 2, u"many"_s);
    }
    void wrongUse_isExplained()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const int, status);
        QFETCH(const QString, says);
        const Outcome outcome = Find(arguments);
        QCOMPARE(outcome.Status, status);
        QVERIFY2(outcome.Error.contains(says), qPrintable(outcome.Error));
    }

    void unwritableCacheFolder_findsAllTheSame()
    {
        const QString folder = m_home->Path(u"cache"_s);
        WriteFile(folder, "a file in its place");
        const Outcome outcome = Find({u"std::move"_s});
        QCOMPARE(outcome.Status, 0);
        QVERIFY(outcome.Out.startsWith(u"Vector"_s));
        QVERIFY2(outcome.Error.contains(u"can't be kept"_s), qPrintable(outcome.Error));
    }

    void changeByAnotherProcess_isFoundAtOnce()
    {
        QCOMPARE(Items({u"brandnew"_s}), QList<qint64>{});
        QCOMPARE(Cli({u"set"_s, m_library->Name(), QString::number(m_c), u"--description"_s, u"brandnew"_s}).Status, 0);
        QCOMPARE(Items({u"brandnew"_s}), QList<qint64>{m_c});
    }

    void twoProcessesAtOnce_findTheSame()
    {
        std::vector<std::unique_ptr<QProcess>> processes;
        for (int i = 0; i < 4; ++i) {
            processes.push_back(std::make_unique<QProcess>());
            processes.back()->start(qEnvironmentVariable("QUILLBASE_CLI"),
                                    {u"find"_s, m_library->Name(), u"std::move"_s});
        }
        for (const auto& process : processes) {
            QVERIFY(process->waitForFinished(60000));
            QCOMPARE(process->exitCode(), 0);
            QVERIFY(QString::fromUtf8(process->readAllStandardOutput()).startsWith(u"Vector"_s));
        }
    }

    void dryRun_saysWhatWouldBeChangedAndChangesNothing()
    {
        const QByteArray before = ReadFile(m_library->Name());
        const Outcome outcome = Find({u"move"_s, u"--word"_s, u"--replace"_s, u"swap"_s, u"--dry-run"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Out, u"%1 code:1\n- a move\n+ a swap\n%2 code:2\n-   std::move(a);\n+   std::swap(a);\n"
                              "2 changes would be made\n"_s.arg(m_c)
                                  .arg(m_a));
        QCOMPARE(ReadFile(m_library->Name()), before);
    }

    void replace_changesAllItemsThatAreFound()
    {
        const Outcome outcome = Find(
            {u"move"_s, u"--replace"_s, u"swap"_s, u"--branch"_s, QString::number(m_a), u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Object().value(u"changes"_s).toArray().size(), 2);
        QCOMPARE(Plain(m_a), u"int a;\r\n  std::swap(a);"_s);
        QCOMPARE(Plain(m_b), u"reswap it, é"_s);
        QCOMPARE(Plain(m_c), u"a move"_s);
        QCOMPARE(Items({u"swap"_s}), (QList<qint64>{m_a, m_b}));
    }

    void replaceThatOneItemRefuses_changesNone()
    {
        const Outcome outcome = Find({u"Other|int"_s, u"--regex"_s, u"--replace"_s, u""_s});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"no title would be left; nothing was changed"_s), qPrintable(outcome.Error));
        QCOMPARE(Plain(m_a), u"int a;\r\n  std::move(a);"_s);
    }
};

QB_TEST_MAIN(TestCliFind)
#include "tst_cli_find.moc"
