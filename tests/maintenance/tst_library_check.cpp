#include "maintenance/LibraryCheck.h"
#include "platform/dao/DBEngine.h"
#include "store/Library.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestLibraryCheck : public QObject {
    Q_OBJECT

private:
    /// Each fault in one line: kind, table, row and sentence.
    QStringList Faults()
    {
        QStringList texts;
        for (const LibraryFault& fault : CheckLibrary(*m_library))
            texts << u"%1 %2 %3: %4"_s.arg(FaultName(fault.What), fault.Table).arg(fault.Id).arg(fault.Text);
        return texts;
    }

    void Execute(const QString& sql, const Values& values = {}) { m_library->Execute(sql, values); }
    void SetParent(qint64 id, qint64 parent) { Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s, {parent, id}); }
    static QString StandsBelowItself(qint64 id, const QString& title)
    {
        return u"cycle Items %1: The item %1 '%2' stands below itself."_s.arg(id).arg(title);
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_a = 0, m_b = 0, m_c = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"prüfen.qbd"_s), LanguageType::None);
        m_a = AddItem(*m_library, 0, u"a"_s);
        m_b = AddItem(*m_library, m_a, u"bé"_s);
        m_c = AddItem(*m_library, m_b, u"c"_s);
    }

    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void cleanLibrary_hasNoFaults()
    {
        AddStoredFile(*m_library, m_b, u"da ü.txt"_s, "x", {});
        QCOMPARE(Faults(), QStringList());
    }

    void lostParent_isNamed()
    {
        SetParent(m_b, 4711);
        QCOMPARE(Faults(),
                 QStringList{
                     u"lost-parent Items %1: The item %1 'bé' has the parent 4711, which does not exist."_s.arg(m_b)});
    }

    void itemThatIsItsOwnParent_isNamed()
    {
        SetParent(m_b, m_b);
        QCOMPARE(Faults(), QStringList{StandsBelowItself(m_b, u"bé"_s)});
    }

    void cycle_isNamedItemByItem()
    {
        SetParent(m_a, m_c);
        AddItem(*m_library, m_b, u"hangs on the cycle"_s); // is no part of it
        QStringList faults = Faults();
        faults.sort();
        QCOMPARE(faults, (QStringList{StandsBelowItself(m_a, u"a"_s), StandsBelowItself(m_b, u"bé"_s),
                                      StandsBelowItself(m_c, u"c"_s)}));
    }

    void twoCycles_areBothNamed()
    {
        SetParent(m_a, m_a);
        SetParent(m_b, m_c);
        QCOMPARE(Faults().size(), 3);
    }

    void deepTree_isNoCycle()
    {
        qint64 parent = m_c;
        m_library->BeginTrans();
        for (int i = 0; i < 2000; ++i) {
            Execute(u"INSERT INTO Items (Title, ParentID) VALUES ('deep', ?)"_s, {parent});
            parent = m_library->LastInsertedRowKey();
        }
        m_library->CommitTrans();
        QCOMPARE(Faults(), QStringList());
    }

    void missingStoredFile_isNamed()
    {
        const qint64 there = AddStoredFile(*m_library, m_b, u"there.txt"_s, "x", {});
        const qint64 gone = AddStoredFile(*m_library, m_b, u"weg ü.txt"_s, "x", {});
        QVERIFY(there != gone && QFile::remove(m_library->FilesFolder() + u"%1 - weg ü.txt"_s.arg(gone)));
        QCOMPARE(
            Faults(),
            QStringList{u"missing-file Files %1: The stored file %1 'weg ü.txt' of the item %2 is missing from '%3'."_s
                            .arg(gone)
                            .arg(m_b)
                            .arg(QDir::toNativeSeparators(m_library->FilesFolder()))});
    }

    /// A kill behind the commit leaves it under another name until the next opening.
    void storedFileThatIsOnItsWay_isNotMissing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("faults");
        const QString mark(32, u'0');
        const QString title = QString::fromLatin1(
            QCryptographicHash::hash("ü.txt", QCryptographicHash::Sha1).toHex().left(8));
        QTest::newRow("arriving") << u".arriving-"_s + mark + u"-1-"_s + title << 0;
        QTest::newRow("leaving") << u".leaving-"_s + mark + u"-1"_s << 0;
        QTest::newRow("arriving under another title") << u".arriving-"_s + mark + u"-1-00000000"_s << 1;
        QTest::newRow("of another row") << u".leaving-"_s + mark + u"-11"_s << 1;
    }
    void storedFileThatIsOnItsWay_isNotMissing()
    {
        QFETCH(QString, name);
        const qint64 file = AddStoredFile(*m_library, m_b, u"ü.txt"_s, "x", {});
        QCOMPARE(file, 1);
        QVERIFY(QFile::rename(m_library->FilesFolder() + u"1 - ü.txt"_s, m_library->FilesFolder() + name));
        QTEST(int(CheckLibrary(*m_library).size()), "faults");
    }

    void folderInPlaceOfAStoredFile_isAMissingFile()
    {
        const qint64 file = AddStoredFile(*m_library, m_b, u"x"_s, "x", {});
        const QString path = m_library->FilesFolder() + u"%1 - x"_s.arg(file);
        QVERIFY(QFile::remove(path) && QDir().mkpath(path));
        QCOMPARE(CheckLibrary(*m_library).size(), size_t(1));
    }

    void titleThatLeadsOutOfTheFolder_isAMissingFile()
    {
        WriteFile(m_home->Path(u"outside"_s), "x");
        Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, '/../../outside')"_s, {m_b});
        const std::vector<LibraryFault> faults = CheckLibrary(*m_library);
        QCOMPARE(faults.size(), size_t(1));
        QCOMPARE(faults[0].What, LibraryFault::Kind::MissingFile);
    }

    void missingTable_isNamed_data()
    {
        QTest::addColumn<QString>("table");
        for (const char* table : {"BookmarkGroups", "Bookmarks", "ChildCopies", "DBVersion", "Files", "ItemLinks",
                                  "Items", "Keywords", "Properties"})
            QTest::newRow(table) << QString::fromLatin1(table);
    }
    void missingTable_isNamed()
    {
        QFETCH(QString, table);
        Execute(u"PRAGMA foreign_keys = OFF"_s);
        Execute(u"DROP TABLE "_s + table);
        QCOMPARE(Faults(), QStringList{u"missing-table %1 0: The table %1 is missing."_s.arg(table)});
    }

    void properties_haveOneRow_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<int>("rows");
        QTest::newRow("second row") << u"INSERT INTO Properties (DBID) VALUES ('Second0001')"_s << 2;
        QTest::newRow("no row") << u"DELETE FROM Properties"_s << 0;
    }
    void properties_haveOneRow()
    {
        QFETCH(QString, change);
        QFETCH(int, rows);
        Execute(change);
        QCOMPARE(
            Faults(),
            QStringList{u"missing-properties Properties 0: Properties has %1 rows; a library has one."_s.arg(rows)});
    }

    void fileOfNoItem_isDamage()
    {
        Execute(u"PRAGMA foreign_keys = OFF"_s);
        Execute(u"INSERT INTO Files (ID, CodeID, Title, FileSize) VALUES (9, 4711, 'x', 1)"_s);
        WriteFile(m_library->FilesFolder() + u"9 - x"_s, "x");
        QCOMPARE(Faults(),
                 QStringList{u"damage Files 9: The row 9 of Files refers to a row of Items that does not exist."_s});
    }

    void indexThatLacksARow_isDamage()
    {
        // One letter on the disk is bent, so that a row and its index differ.
        const QString path = m_library->Name();
        m_library.reset();
        QByteArray bytes = ReadFile(path);
        const qsizetype title = bytes.lastIndexOf("b\xc3\xa9"); // in one of the indexes, or in the row
        QVERIFY(title > 0);
        bytes[title] = 'q';
        WriteFile(path, bytes);
        m_library = Library::Open(path);
        const std::vector<LibraryFault> faults = CheckLibrary(*m_library);
        QVERIFY(!faults.empty());
        QCOMPARE(faults[0].What, LibraryFault::Kind::Damage);
        QVERIFY2(faults[0].Text.startsWith(u"The file is damaged: "), qPrintable(faults[0].Text));
    }

    void faults_areAllNamedAtOnce()
    {
        SetParent(m_b, 4711);
        SetParent(m_a, m_a);
        Execute(u"DELETE FROM Properties"_s);
        Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, 'gone')"_s, {m_c});
        QStringList kinds;
        for (const LibraryFault& fault : CheckLibrary(*m_library))
            kinds << FaultName(fault.What);
        QCOMPARE(kinds, (QStringList{u"missing-properties"_s, u"cycle"_s, u"lost-parent"_s, u"missing-file"_s}));
    }

    void check_tellsHowFarItIs()
    {
        AddStoredFile(*m_library, m_b, u"one.txt"_s, "x", {});
        AddStoredFile(*m_library, m_b, u"two.txt"_s, "y", {});
        RecordedWork work;
        CheckLibrary(*m_library, work);
        QVERIFY(work.Pulses >= 1); // while the engine looks at the structure, which can't be counted
        QCOMPARE(work.Done, (QList<qint64>{700, 800, 900, 1000, 1000}));
        QCOMPARE(work.Totals, QList<qint64>(5, 1000));
    }

    void check_endsWhereItIsCancelled_data()
    {
        QTest::addColumn<int>("parts");
        QTest::newRow("in the structure") << 0;
        QTest::newRow("in the tables") << 700;
        QTest::newRow("in the stored files") << 900;
    }

    void check_endsWhereItIsCancelled()
    {
        QFETCH(int, parts);
        AddStoredFile(*m_library, m_b, u"one.txt"_s, "x", {});
        AddStoredFile(*m_library, m_b, u"two.txt"_s, "y", {});
        Transaction transaction(*m_library); // steps enough for the engine to ask
        for (int i = 0; i < 3000; ++i)
            AddItem(*m_library, 0, QString::number(i));
        transaction.Commit();
        RecordedWork work;
        work.Ends = [parts](qint64 done) { return done >= parts; };
        long error = 0;
        try {
            CheckLibrary(*m_library, work);
        } catch (const RuntimeError& failure) {
            error = failure.Number();
        }
        QCOMPARE(error, long(parts == 700 ? ErrorNumber::Cancelled : ErrorNumber::UserInterrupt));
        QCOMPARE(work.Done.isEmpty() ? 0 : work.Done.last(), parts);
        work.Forget();
        QVERIFY(CheckLibrary(*m_library, work).empty());
    }

    void check_changesNothing()
    {
        SetParent(m_b, m_c);
        const qint64 before = m_library->QueryValue(u"SELECT total_changes()"_s).ToLong();
        CheckLibrary(*m_library);
        QCOMPARE(m_library->QueryValue(u"SELECT total_changes()"_s).ToLong(), before);
    }
};

QB_TEST_MAIN(TestLibraryCheck)
#include "tst_library_check.moc"
