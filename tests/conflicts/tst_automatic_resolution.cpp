#include "conflicts/AutomaticResolution.h"
#include "conflicts/ConflictedLibrary.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Conflicts that are none go by themselves.
class TestAutomaticResolution : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    QStringList m_discarded;

    AutomaticResolution Resolve() { return ResolveAutomatically(*m->Db, RecordedDiscard::Into(m_discarded)); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m = std::make_unique<ConflictedLibrary>();
        m_discarded.clear();
    }
    void cleanup() { m.reset(); }

    void withoutConflicts_nothingRemains()
    {
        QVERIFY(!AutomaticResolveProblems(*m->Db));
        CDBCreate().RemoveTemporaryTablesFromMainDB(*m->Db);
        QVERIFY(!AutomaticResolveProblems(*m->Db));
    }

    void differences_thatCount_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("remains");
        const auto change = [](const char* name, const char* sql, bool remains) {
            QTest::newRow(name) << QString::fromUtf8(sql) << remains;
        };
        change("nothing", "UPDATE TempItems SET Info = Info", false);
        change("title", "UPDATE TempItems SET Title = 'x'", true);
        change("title's case", "UPDATE TempItems SET Title = 'Item Ü'", true);
        change("description", "UPDATE TempItems SET Description = 'x'", true);
        change("info", "UPDATE TempItems SET Info = 'x'", true);
        change("code", "UPDATE TempItems SET Code = '{\\rtf1 int b;}'", true);
        change("code's case", "UPDATE TempItems SET Code = '{\\rtf1 int A;}'", true);
        change("looks of code", "UPDATE TempItems SET Code = '{\\rtf1\\b int a;}'", false);
        change("usage", "UPDATE TempItems SET Example = '{\\rtf1 x}'", true);
        change("looks of usage", "UPDATE TempItems SET Example = '{\\rtf1\\i use}'", false);
        change("notes", "UPDATE TempItems SET Notes = '{\\rtf1 x}'", true);
        change("looks of notes", "UPDATE TempItems SET Notes = '{\\rtf1\\ul notes}'", false);
        change("no RTF", "UPDATE TempItems SET Code = 'int a;'", false);
        change("page", "UPDATE TempItems SET HTMLLastUpdated = 5", true);
        change("page flag", "UPDATE TempItems SET HTMLPage = -1", false);
        change("date", "UPDATE TempItems SET LastChanged = 5", false);
        change("creation", "UPDATE TempItems SET Created = 5", false);
        change("user", "UPDATE TempItems SET User = 'x'", false);
        change("status", "UPDATE TempItems SET ItemStatus = 2", false);
        change("place", "UPDATE TempItems SET ParentID = 77", false);
        change("item gone", "DELETE FROM Items", true);
    }
    void differences_thatCount()
    {
        QFETCH(QString, change);
        m->AddConflict({}, {});
        m->Db->Execute(change);
        QTEST(AutomaticResolveProblems(*m->Db), "remains");
        QTEST(CountOf(*m->Db, u"TempItems"_s) == 1, "remains");
    }

    void nullAndEmpty_areTheSame()
    {
        m->AddConflict({}, {});
        m->Db->Execute(u"UPDATE Items SET Description = '', Info = NULL, Code = '', Notes = NULL, Example = ''"_s);
        m->Db->Execute(u"UPDATE TempItems SET Description = NULL, Info = '', Code = NULL, Notes = '', Example = NULL, "
                       "HTMLLastUpdated = NULL"_s);
        QVERIFY(!AutomaticResolveProblems(*m->Db));
    }

    void files_thatCount_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("remains");
        const auto change = [](const char* name, const char* sql, bool remains) {
            QTest::newRow(name) << QString::fromUtf8(sql) << remains;
        };
        change("the same", "UPDATE TempFiles SET LastUpdated = 5, FileSize = 1", false);
        change("own ones only", "DELETE FROM TempFiles", true);
        change("other ones only", "DELETE FROM Files", true);
        change("fewer", "DELETE FROM TempFiles WHERE Title = 'b'", true);
        change("another title", "UPDATE TempFiles SET Title = 'c' WHERE Title = 'b'", true);
        change("a second later", "UPDATE TempFiles SET DateAdded = DateAdded + 1 WHERE Title = 'b'", true);
        change("description", "UPDATE TempFiles SET Description = 'x' WHERE Title = 'b'", true);
        change("description's case", "UPDATE TempFiles SET Description = 'WORDS' WHERE Title = 'b'", true);
        change("no description", "UPDATE TempFiles SET Description = NULL WHERE Title = 'a'", false);
        change("twins", "UPDATE TempFiles SET Title = 'a'", true);
    }
    void files_thatCount()
    {
        QFETCH(QString, change);
        const qint64 id = m->AddConflict({}, {});
        for (const QString& title : {u"a"_s, u"b"_s}) {
            const QString words = title == u"b"_s ? u"words"_s : QString();
            m->AddFile(id, title, "x", m->At(5), words);
            m->AddTempFile(id, title, QByteArray("x"), m->At(5), words);
        }
        m->AddConflict({}, {}); // one without files
        m->Db->Execute(change);
        QTEST(AutomaticResolveProblems(*m->Db), "remains");
        QFETCH(bool, remains);
        QCOMPARE(CountOf(*m->Db, u"TempItems"_s), remains ? 1 : 0);
        if (!remains)
            QCOMPARE(m->TemporaryRows(), 0);
    }

    void looksThatGo_areDiscardedVersions()
    {
        m->AddConflict({}, {});
        QCOMPARE(SummaryOf({}), QString());
        QCOMPARE(SummaryOf(Resolve()), u"1 conflict resolved automatically"_s);
        QCOMPARE(m_discarded, (QStringList{u"noted"_s, u"placed"_s})); // nothing is lost by that
        m_discarded.clear();
        const qint64 id = m->AddConflict({}, {.Title = u"item Ü"_s, .Notes = u"{\\rtf1\\b notes}"_s});
        m->AddConflict({}, {});
        m->Db->Execute(u"UPDATE TempItems SET ItemStatus = 2, ItemRating = 7 WHERE ID = ?"_s, {id});
        m->AddTempPage(id, u"1.htm"_s, {}, "x");
        const AutomaticResolution result = Resolve();
        QCOMPARE(result.Settled.size(), size_t(2));
        QCOMPARE(result.Settled.front().Item, id);
        QCOMPARE(result.Settled.front().Dropped, (QStringList{u"looks"_s, u"status"_s, u"rating"_s}));
        QCOMPARE(SummaryOf(result),
                 u"2 conflicts resolved automatically; 1 of the other versions is in the removed items"_s);
        QCOMPARE(m_discarded, (QStringList{u"temporary: item Ü"_s, u"noted"_s, u"placed"_s}));
        QCOMPARE(m->TemporaryRows(), 0);
        QCOMPARE(m->DateOf(u"LastChanged"_s, id), m->At(1000)); // the item itself stays as it is
    }

    void whatElseGoes_isNamed()
    {
        const qint64 id = m->AddConflict({}, {});
        m->Db->Execute(u"UPDATE TempItems SET HTMLPage = -1, ParentID = 77 WHERE ID = ?"_s, {id});
        QCOMPARE(Resolve().Settled.front().Dropped, (QStringList{u"page flag"_s, u"place"_s}));
    }

    void allThatIsGivenUp_isDiscardedWithItsPages()
    {
        const qint64 id = m->AddConflict({}, {.Title = u"theirs"_s});
        m->AddTempPage(id, u"1.htm"_s, {}, "x");
        QCOMPARE(DiscardAllConflicts(*m->Db, RecordedDiscard::Into(m_discarded)), 1);
        QCOMPARE(m_discarded, (QStringList{u"temporary: theirs"_s, u"noted"_s, u"placed"_s}));
        QCOMPARE(CountOf(*m->Db, u"TempHTMLFiles"_s), 0);
        QVERIFY(!m->Db->TableExists(u"TempItems"_s));
        QCOMPARE(DiscardAllConflicts(*m->Db), 0);
    }

    void failure_changesNothing()
    {
        m->AddConflict({}, {});
        m->Db->Execute(u"CREATE TEMP TRIGGER refuse BEFORE DELETE ON main.TempItems "
                       "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
        m->Prompts.ExpectError();
        QVERIFY(AutomaticResolveProblems(*m->Db));
        QCOMPARE(CountOf(*m->Db, u"TempItems"_s), 1);
    }
};

QB_TEST_MAIN(TestAutomaticResolution)
#include "tst_automatic_resolution.moc"
