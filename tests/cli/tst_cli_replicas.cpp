#include "store/Library.h"
#include "support/CliRun.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Replication by the command line.
class TestCliReplicas : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    QString m_mother;
    QString m_transfer;
    QString m_child;

    QString Path(const QString& name) const { return m_home->Path(name); }
    static Outcome Replica(const QStringList& arguments) { return Cli(QStringList{u"replica"_s} + arguments); }
    void MakeChildFile()
    {
        const Outcome made = Replica({u"create"_s, m_mother, m_transfer, u"--description"_s, u"Änne's laptop"_s});
        QVERIFY2(made.Status == 0, qPrintable(made.Error));
        const Outcome opened = Replica({u"open"_s, m_transfer, m_child});
        QVERIFY2(opened.Status == 0, qPrintable(opened.Error));
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_mother = Path(u"mütter.qbd"_s);
        m_transfer = Path(u"child.qbr"_s);
        m_child = Path(u"away/child.qbd"_s);
        QDir().mkpath(Path(u"away"_s));
        const auto library = MakeLibrary(m_mother);
        const qint64 one = AddItem(*library, 0, u"one"_s, u"int one;"_s);
        AddStoredFile(*library, one, u"a.bin"_s, "bytes", {});
    }
    void cleanup() { m_home.reset(); }

    void child_isGivenOutOpenedAndExports()
    {
        const Outcome made = Replica({u"create"_s, m_mother, m_transfer, u"--description"_s, u"Änne"_s, u"--json"_s});
        QCOMPARE(made.Status, 0);
        QCOMPARE(made.Object()[u"replica"_s].toString(), m_transfer);
        const Outcome opened = Replica({u"open"_s, m_transfer, m_child, u"--json"_s});
        QCOMPARE(opened.Status, 0);
        QCOMPARE(opened.Object()[u"library"_s].toString(), m_child);
        QCOMPARE(opened.Object()[u"items"_s].toInt(), 1);
        QCOMPARE(opened.Object()[u"files"_s].toInt(), 1);
        QVERIFY(QFile::exists(m_transfer));
        const QJsonObject before = Replica({u"status"_s, m_child, u"--json"_s}).Object();
        QCOMPARE(before[u"kind"_s].toString(), u"child"_s);
        QCOMPARE(before[u"mother"_s].toString(), m_mother);
        QCOMPARE(before[u"identity"_s], made.Object()[u"identity"_s]);
        QCOMPARE(before[u"waiting"_s].toInt(), 0);
        QCOMPARE(before[u"exported"_s].toBool(), false);
        QCOMPARE(Cli({u"add"_s, m_child, u"--parent"_s, u"1"_s, u"--title"_s, u"two"_s}).Status, 0);
        QCOMPARE(Replica({u"status"_s, m_child, u"--json"_s}).Object()[u"waiting"_s].toInt(), 1);
        const Outcome exported = Replica({u"export"_s, m_child, Path(u"c.qbs"_s), u"--json"_s});
        QVERIFY2(exported.Status == 0, qPrintable(exported.Error));
        QCOMPARE(exported.Object()[u"changes"_s].toObject()[u"items"_s].toInt(), 1);
        QVERIFY(QFile::exists(Path(u"c.qbs"_s)));
        QCOMPARE(Replica({u"status"_s, m_child, u"--json"_s}).Object()[u"exported"_s].toBool(), true);
        const Outcome twice = Replica({u"export"_s, m_child, Path(u"d.qbs"_s)});
        QCOMPARE(twice.Status, 1);
        QVERIFY(twice.Error.contains(u"on their way"_s));
        QVERIFY(!QFile::exists(Path(u"d.qbs"_s)));
        QCOMPARE(Replica({u"export"_s, m_child, Path(u"d.qbs"_s), u"--again"_s}).Out, u"1 changes\n"_s);
    }

    void contentsThatAreMissing_areTold()
    {
        MakeChildFile();
        {
            const auto child = Library::Open(m_child);
            child->Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = ? WHERE ID = 1"_s, {child->NextStamp()});
        }
        const Outcome exported = Replica({u"export"_s, m_child, Path(u"c.qbs"_s), u"--json"_s});
        QCOMPARE(exported.Status, 0);
        QVERIFY2(exported.Error.contains(u"1 web page is missing in the library, and so in the export."_s),
                 qPrintable(exported.Error));
        QCOMPARE(exported.Object()[u"changes"_s].toObject()[u"missingPages"_s].toInt(), 1);
    }

    void status_tellsAnOrdinaryLibraryAndAMother()
    {
        QCOMPARE(Replica({u"status"_s, m_mother, u"--json"_s}).Object()[u"kind"_s].toString(), u"ordinary"_s);
        MakeChildFile();
        const QJsonObject mother = Replica({u"status"_s, m_mother, u"--json"_s}).Object();
        QCOMPARE(mother[u"kind"_s].toString(), u"mother"_s);
        QCOMPARE(mother[u"children"_s].toInt(), 1);
        QVERIFY(Replica({u"status"_s, m_mother}).Out.startsWith(u"kind: mother\n"_s));
        QVERIFY(Replica({u"status"_s, m_child}).Out.contains(u"mother: %1\n"_s.arg(m_mother)));
    }

    void openReplica_isNoticedWhenItIsOpenedAgain()
    {
        MakeChildFile();
        const Outcome again = Replica({u"open"_s, m_transfer, Path(u"away/again.qbd"_s)});
        QCOMPARE(again.Status, 1);
        QVERIFY2(again.Error.contains(u"open already"_s), qPrintable(again.Error));
        QVERIFY(!QFile::exists(Path(u"away/again.qbd"_s)));
        QCOMPARE(Replica({u"open"_s, m_transfer, Path(u"away/again.qbd"_s), u"--answer"_s, u"no"_s}).Status, 1);
        QCOMPARE(Replica({u"open"_s, m_transfer, Path(u"away/again.qbd"_s), u"--answer"_s, u"yes"_s}).Status, 0);
        QCOMPARE(Replica({u"open"_s, m_transfer, m_child}).Status, 1); // it is there
        QCOMPARE(Replica({u"open"_s, m_transfer, m_child, u"--number"_s, u"--answer"_s, u"yes"_s}).Out,
                 Path(u"away/child1.qbd"_s) + u'\n');
        QCOMPARE(Replica({u"open"_s, m_transfer, m_child, u"--answer"_s, u"perhaps"_s}).Status, 2);
    }

    void children_areListedAndForgotten()
    {
        MakeChildFile();
        Cli({u"add"_s, m_mother, u"--parent"_s, u"0"_s, u"--title"_s, u"new"_s});
        const Outcome list = Replica({u"list"_s, m_mother, u"--json"_s});
        QCOMPARE(list.Array().size(), 1);
        const QJsonObject child = list.Array().first().toObject();
        QCOMPARE(child[u"description"_s].toString(), u"Änne's laptop"_s);
        QCOMPARE(child[u"waiting"_s].toObject()[u"items"_s].toInt(), 1);
        QVERIFY(Replica({u"list"_s, m_mother}).Out.contains(u"(waiting: 1 changed item)"_s));
        const Outcome unsure = Replica({u"forget"_s, m_mother, u"1"_s});
        QCOMPARE(unsure.Status, 1);
        QVERIFY(unsure.Error.startsWith(u"Are you sure that you want to remove the selected replica"_s));
        QCOMPARE(Replica({u"forget"_s, m_mother, u"1"_s, u"--answer"_s, u"no"_s}).Status, 1);
        for (const QString& number : {u"0"_s, u"2"_s, u"x"_s})
            QCOMPARE(Replica({u"forget"_s, m_mother, number, u"--answer"_s, u"yes"_s}).Status, 1);
        QCOMPARE(
            Replica({u"forget"_s, m_mother, u"1"_s, u"--answer"_s, u"yes"_s, u"--json"_s}).Object()[u"forgotten"_s],
            QJsonValue(1));
        QCOMPARE(Replica({u"list"_s, m_mother, u"--json"_s}).Array().size(), 0);
    }

    void synchronization_isReportedHandedOutAgainAndUndone()
    {
        MakeChildFile();
        const QString file = Path(u"c.qbs"_s), again = Path(u"again.qbs"_s);
        QCOMPARE(Replica({u"report"_s, m_mother, u"--json"_s}).Array().size(), 0);
        QCOMPARE(Replica({u"undo"_s, m_mother}).Status, 1); // there is none yet
        QCOMPARE(Replica({u"again"_s, m_mother, u"1"_s, again}).Status, 1);
        QCOMPARE(Cli({u"add"_s, m_child, u"--parent"_s, u"1"_s, u"--title"_s, u"two"_s}).Status, 0);
        QCOMPARE(Replica({u"export"_s, m_child, file}).Status, 0);
        const QByteArray sent = ReadFile(file);
        const Outcome merged = Replica({u"sync"_s, m_mother, file, u"--json"_s});
        QVERIFY2(merged.Status == 0, qPrintable(merged.Error));
        const QJsonArray reports = Replica({u"report"_s, m_mother, u"--last"_s, u"5"_s, u"--json"_s}).Array();
        QCOMPARE(reports.size(), 1);
        QCOMPARE(reports[0].toObject()[u"step"_s].toInt(), 2);
        const QJsonObject line = reports[0].toObject()[u"lines"_s].toArray().first().toObject();
        QCOMPARE(line[u"event"_s].toString(), u"item-added"_s);
        QCOMPARE(line[u"title"_s].toString(), u"two"_s);
        QVERIFY(Replica({u"report"_s, m_mother}).Out.contains(u"item-added"_s));
        QCOMPARE(Replica({u"report"_s, m_mother, u"--last"_s, u"0"_s}).Status, 2);
        QCOMPARE(Replica({u"again"_s, m_mother, u"7"_s, again}).Status, 1);
        QVERIFY(!QFile::exists(again));
        const Outcome handed = Replica({u"again"_s, m_mother, u"1"_s, again, u"--json"_s});
        QVERIFY2(handed.Status == 0 && QFile::exists(again), qPrintable(handed.Error));
        QVERIFY(handed.Out.startsWith(u'{'));
        const Outcome undone = Replica({u"undo"_s, m_mother, u"--json"_s});
        QVERIFY2(undone.Status == 0, qPrintable(undone.Error));
        QVERIFY(undone.Out.startsWith(u'{'));
        QCOMPARE(ReadFile(file), sent);
        QVERIFY(!Cli({u"tree"_s, m_mother}).Out.contains(u"two"_s));
        const Outcome twice = Replica({u"undo"_s, m_mother});
        QCOMPARE(twice.Status, 1);
        QVERIFY2(twice.Error.contains(u"othing was put aside"_s), qPrintable(twice.Error));
    }

    void removed_isListedShownAndBroughtBack()
    {
        QCOMPARE(Cli({u"removed"_s, m_mother, u"--json"_s}).Array().size(), 0);
        QCOMPARE(Cli({u"delete"_s, m_mother, u"1"_s}).Status, 0);
        const QJsonArray entries = Cli({u"removed"_s, m_mother, u"--json"_s}).Array();
        QCOMPARE(entries.size(), 1);
        const QString entry = entries[0].toObject()[u"entry"_s].toString();
        QCOMPARE(entries[0].toObject()[u"title"_s].toString(), u"one"_s);
        QCOMPARE(Cli({u"removed"_s, m_mother, u"--search"_s, u"nowhere"_s, u"--json"_s}).Array().size(), 0);
        QVERIFY(Cli({u"removed"_s, u"show"_s, m_mother, entry}).Out.contains(u"int one;"_s));
        QVERIFY(Cli({u"removed"_s, u"show"_s, m_mother, entry, u"--json"_s})
                    .Object()[u"preview"_s]
                    .toString()
                    .contains(u"int one;"_s));
        for (const QString& verb : {u"show"_s, u"restore"_s})
            QCOMPARE(Cli({u"removed"_s, verb, m_mother, u"20000101000000.1"_s}).Status, 1);
        const Outcome back = Cli({u"removed"_s, u"restore"_s, m_mother, entry, u"--json"_s});
        QVERIFY2(back.Status == 0, qPrintable(back.Error));
        QCOMPARE(back.Object()[u"id"_s].toInt(), 1);
        QCOMPARE(back.Object()[u"files"_s].toInt(), 1);
        QVERIFY(Cli({u"show"_s, m_mother, u"1"_s, u"--field"_s, u"code"_s}).Out.contains(u"int one;"_s));
    }

    void whatIsNone_isRefused()
    {
        QCOMPARE(Replica({}).Status, 2);
        QCOMPARE(Replica({u"marry"_s, m_mother}).Status, 2);
        QCOMPARE(Replica({u"export"_s, m_mother, Path(u"a.qbs"_s)}).Status, 1);
        WriteFile(m_transfer, "no replica");
        QCOMPARE(Replica({u"open"_s, m_transfer, m_child}).Status, 1);
        QVERIFY(!QFile::exists(m_child));
        QCOMPARE(Cli({u"backup"_s, m_mother, Path(u"b.qbb"_s)}).Status, 0);
        const Outcome backup = Replica({u"open"_s, Path(u"b.qbb"_s), m_child});
        QCOMPARE(backup.Status, 1);
        QVERIFY2(backup.Error.contains(u"no replica"_s), qPrintable(backup.Error));
        const auto open = Library::Open(m_mother);
        QCOMPARE(Replica({u"create"_s, m_mother, m_transfer}).Status, 1);
        QCOMPARE(ReadFile(m_transfer), "no replica");
    }

    void clockThatCantBeTrusted_isToldInItsWords()
    {
        MakeChildFile();
        Library::Open(m_child)->Execute(u"UPDATE Items SET LastChanged = 9000000000"_s);
        const Outcome refused = Replica({u"export"_s, m_child, Path(u"c.qbs"_s)});
        QCOMPARE(refused.Status, 1);
        QVERIFY2(refused.Error.contains(u"ou can't synchronize because one or more records"_s),
                 qPrintable(refused.Error));
        QVERIFY(refused.Error.contains(u"Items (1),"_s));
        QVERIFY(refused.Error.endsWith(u"Synchronization file was not created.\n"_s));
        QVERIFY(!QFile::exists(Path(u"c.qbs"_s)));
    }
};

QB_TEST_MAIN(TestCliReplicas)
#include "tst_cli_replicas.moc"
