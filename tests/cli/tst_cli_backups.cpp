#include "maintenance/Compaction.h"
#include "store/Library.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The commands on backups, as scripts and timers use them.
class TestCliBackups : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;

    QString In(const QString& name = {}) const { return m_home->Path(u"backups/"_s + name); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"Büch.qbd"_s);
        QDir().mkpath(In());
        const auto library = MakeLibrary(m_library);
        AddItem(*library, 0, u"one"_s, u"int one;"_s);
        AddItem(*library, 1, u"two"_s);
        AddStoredFile(*library, 2, u"f.bin"_s, QByteArray(20000, 'f'), {});
    }
    void cleanup() { m_home.reset(); }

    void backupVerifyAndRestore_speakJson()
    {
        const QMap<QString, QByteArray> before = StateOf(m_library);
        Outcome outcome = Cli({u"backup"_s, m_library, In(u"b.qbb"_s), u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Object().value(u"items"_s).toInt(), 2);
        QCOMPARE(outcome.Object().value(u"files"_s).toInt(), 1);
        QCOMPARE(outcome.Object().value(u"backup"_s).toArray(), QJsonArray{In(u"b.qbb"_s)});
        outcome = Cli({u"verify"_s, In(u"b.qbb"_s), u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Object().value(u"faults"_s).toArray(), QJsonArray());
        outcome = Cli({u"restore"_s, In(u"b.qbb"_s), In(u"r.qbd"_s), u"--json"_s});
        QCOMPARE(outcome.Object().value(u"library"_s).toString(), In(u"r.qbd"_s));
        QCOMPARE(DifferenceOf(StateOf(In(u"r.qbd"_s)), before), QString());
        QCOMPARE(Cli({u"restore"_s, In(u"b.qbb"_s), In(u"r.qbd"_s)}).Status, 1);
        QCOMPARE(Cli({u"restore"_s, In(u"b.qbb"_s), In(u"r.qbd"_s), u"--number"_s}).Out.trimmed(), In(u"r1.qbd"_s));
        QCOMPARE(Cli({u"restore"_s, In(u"b.qbb"_s), In(u"r.qbd"_s), u"--replace"_s}).Status, 0);
        QCOMPARE(Cli({u"restore"_s, In(u"b.qbb"_s), In(u"r.qbd"_s), u"--replace"_s, u"--number"_s}).Status, 2);
        WriteFile(In(u"b.qbb"_s), ReadFile(In(u"b.qbb"_s)).left(500));
        QCOMPARE(Cli({u"verify"_s, In(u"b.qbb"_s)}).Status, 1);
    }

    void damage_isNamedAndTheBackupMade()
    {
        Library::Open(m_library)->Execute(u"UPDATE Items SET Code = 'rotten' WHERE ID = 1"_s);
        const Outcome outcome = Cli({u"backup"_s, m_library, In(u"b.qbb"_s), u"--json"_s});
        QCOMPARE(outcome.Status, 1);
        QCOMPARE(outcome.Object().value(u"damaged"_s).toInt(), 1);
        QVERIFY2(outcome.Error.contains(u"The item 1 'one' has a damaged code"_s), qPrintable(outcome.Error));
        QVERIFY(outcome.Error.contains(u"restore-item"_s));
        QVERIFY(QFileInfo::exists(In(u"b.qbb"_s)));
        QCOMPARE(Cli({u"verify"_s, In(u"b.qbb"_s)}).Status, 1);
        QVERIFY(Cli({u"check"_s, m_library, u"--deep"_s}).Out.contains(u"restore-item"_s));
    }

    void volumes_haveSizesWithUnits_data()
    {
        QTest::addColumn<QString>("size");
        QTest::addColumn<int>("status");
        QTest::newRow("bytes") << u"3000"_s << 0;
        QTest::newRow("kilobytes") << u"3k"_s << 0;
        QTest::newRow("none") << u"0"_s << 2;
        QTest::newRow("negative") << u"-1"_s << 2;
        QTest::newRow("word") << u"large"_s << 2;
        QTest::newRow("unit alone") << u"M"_s << 2;
        QTest::newRow("too large") << u"99999999999G"_s << 2;
    }
    void volumes_haveSizesWithUnits()
    {
        QFETCH(QString, size);
        QFETCH(int, status);
        QCOMPARE(Cli({u"backup"_s, m_library, In(u"v.qbb"_s), u"--volume=%1"_s.arg(size)}).Status, status);
        QCOMPARE(QFileInfo::exists(In(u"v.qbb.001"_s)), status == 0);
        if (status == 0)
            QCOMPARE(Cli({u"restore"_s, In(u"v.qbb.001"_s), In(u"r.qbd"_s)}).Status, 0);
    }

    void listAndRotation_areForTimers()
    {
        for (const QString& day : {u"250101"_s, u"250102"_s, u"250103"_s})
            QCOMPARE(Cli({u"backup"_s, m_library, In(u"Büch%1.qbb"_s.arg(day))}).Status, 0);
        QJsonArray list = Cli({u"backups"_s, In(), u"--json"_s}).Array();
        QCOMPARE(list.size(), 3);
        QCOMPARE(list[0].toObject().value(u"good"_s), QJsonValue(true)); // each was compared when it was made
        QCOMPARE(list[0].toObject().value(u"items"_s).toInt(), 2);
        const Outcome outcome = Cli({u"rotate"_s, In(), u"--last"_s, u"1"_s, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Object().value(u"deleted"_s).toArray().size(), 2);
        QCOMPARE(outcome.Object().value(u"kept"_s).toArray(), QJsonArray{In(u"Büch250103.qbb"_s)});
        QCOMPARE(Cli({u"rotate"_s, In()}).Status, 2);
        QCOMPARE(Cli({u"rotate"_s, In(u"nowhere"_s), u"--last"_s, u"1"_s}).Status, 1);
        QCOMPARE(Cli({u"backups"_s, In(u"nowhere"_s)}).Status, 1);
    }

    void item_isBroughtBack()
    {
        QCOMPARE(Cli({u"backup"_s, m_library, In(u"b.qbb"_s)}).Status, 0);
        QCOMPARE(Cli({u"delete"_s, m_library, u"2"_s}).Status, 0);
        const Outcome outcome = Cli({u"restore-item"_s, In(u"b.qbb"_s), u"2"_s, m_library, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        const auto library = Library::Open(m_library);
        QCOMPARE(Texts(*library, u"SELECT Title || ParentID FROM Items WHERE ID = ?"_s,
                       {outcome.Object().value(u"id"_s).toInteger()}),
                 QStringList{u"two1"_s});
        QCOMPARE(Cli({u"restore-item"_s, In(u"b.qbb"_s), u"9"_s, m_library}).Status, 1);
    }

    void library_isCompacted()
    {
        {
            const auto library = Library::Open(m_library);
            AddItem(*library, 0, u"big"_s, QString(300'000, u'y'));
            library->Execute(u"DELETE FROM Items WHERE Title = 'big'"_s);
        }
        const Outcome outcome = Cli({u"compact"_s, m_library, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QVERIFY(outcome.Object().value(u"freed"_s).toInteger() > 200'000);
        QCOMPARE(Cli({u"compact"_s, m_home->Path(u"none.qbd"_s)}).Status, 1);
    }

    void session_isUndone()
    {
        MakeSessionCopy(m_library);
        QCOMPARE(Cli({u"delete"_s, m_library, u"1"_s}).Status, 0);
        const Outcome outcome = Cli({u"undo-session"_s, m_library, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Object().value(u"undone"_s), QJsonValue(true));
        const auto library = Library::Open(m_library);
        QCOMPARE(Texts(*library, u"SELECT Title FROM Items ORDER BY ID"_s), (QStringList{u"one"_s, u"two"_s}));
    }

    void openLibrary_isNeitherCompactedNorReplaced()
    {
        QCOMPARE(Cli({u"backup"_s, m_library, In(u"b.qbb"_s)}).Status, 0);
        const auto open = Library::Open(m_library);
        for (const QStringList& command :
             {QStringList{u"compact"_s, m_library}, {u"restore"_s, In(u"b.qbb"_s), m_library, u"--replace"_s}}) {
            const Outcome outcome = Cli(command);
            QCOMPARE(outcome.Status, 1);
            QVERIFY2(outcome.Error.contains(u"is open"_s), qPrintable(outcome.Error));
        }
        QCOMPARE(Cli({u"backup"_s, m_library, In(u"b.qbb"_s)}).Status, 0); // but it is backed up
        QCOMPARE(Cli({u"undo-session"_s, m_library}).Status, 1);
    }
};

QB_TEST_MAIN(TestCliBackups)
#include "tst_cli_backups.moc"
