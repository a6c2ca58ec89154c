#include "platform/dao/TemporaryDatabase.h"
#include "support/FileSizeLimit.h"

#include <future>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Fills `Items` with about @p kilobytes of texts.
void Fill(Database& database, int kilobytes)
{
    Transaction transaction(database);
    for (int i = 0; i < kilobytes; ++i)
        database.Execute(u"INSERT INTO Items (Title, Notes) VALUES (?, ?)"_s,
                         {QString::number(i), QString(1000, QChar(u'a' + i % 26))});
    transaction.Commit();
}

long NumberRaisedBy(const std::function<void()>& action)
{
    try {
        action();
    } catch (const RuntimeError& error) {
        return error.Number();
    }
    return 0;
}

} // namespace

class TestDBEngine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void missingFile_raises3024AndMakesNone()
    {
        const TemporaryHome home;
        const QString path = home.Path(u"not here.qbd"_s);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(path), 3024);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(home.Path(u"no folder/x.qbd"_s)), 3024);
        QVERIFY(!QFileInfo::exists(path));
    }

    void folder_raises3343()
    {
        const TemporaryHome home;
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(home.Path(u"data"_s)), 3343);
    }

    void fileThatIsNoDatabase_raises3343AndIsLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("one byte") << "S"_ba;
        QTest::newRow("text") << QByteArray("a text that is no database\n").repeated(500);
        QTest::newRow("half of the mark") << "SQLite f"_ba;
    }

    void fileThatIsNoDatabase_raises3343AndIsLeftAlone()
    {
        QFETCH(QByteArray, contents);
        const TemporaryHome home;
        const QString path = home.Path(u"text ä.qbd"_s);
        WriteFile(path, contents);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(path), 3343);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(path, DBEngine::Access::ReadOnly), 3343);
        QCOMPARE(ReadFile(path), contents);
    }

    void truncatedFile_raises3049AndIsLeftAlone_data()
    {
        QTest::addColumn<int>("missing"); // bytes at the end; below 0: bytes that are kept
        QTest::newRow("one byte missing") << 1;
        QTest::newRow("half a page missing") << 2048;
        QTest::newRow("a page missing") << 4096;
        QTest::newRow("many pages missing") << 10 * 4096;
        QTest::newRow("first two pages kept") << -8192;
        QTest::newRow("first page kept") << -4096;
        QTest::newRow("part of the first page kept") << -1000;
        QTest::newRow("header kept") << -100;
    }

    void truncatedFile_raises3049AndIsLeftAlone()
    {
        QFETCH(int, missing);
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        Fill(*database, 100);
        database.Close();
        const QByteArray whole = ReadFile(database.Path());
        const QByteArray cut = missing > 0 ? whole.chopped(missing) : whole.left(-missing);
        WriteFile(database.Path(), cut);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(database.Path()), 3049);
        QCOMPARE(ReadFile(database.Path()), cut);
    }

    void damagedSchema_raises3049()
    {
        TemporaryDatabase database;
        database.Close();
        QByteArray bytes = ReadFile(database.Path());
        WriteFile(database.Path(), bytes.replace(100, 100, QByteArray(100, '\xff')));
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(database.Path()), 3049);
    }

    void everyName_isTakenAsItStands_data()
    {
        QTest::addColumn<QString>("name");
        const QStringList names{
            u"it's"_s,           u"say \"hello\""_s,  u"a|b;c"_s,       u"100%41"_s, u"what?mode=ro"_s, u"#1"_s,
            u"  two  blanks "_s, u"Übung – 日本 😀"_s, u"back\\slash"_s, u"file:x"_s, u":memory:"_s};
        for (const QString& name : names)
            QTest::newRow(qPrintable(name)) << name;
    }

    void everyName_isTakenAsItStands()
    {
        QFETCH(QString, name);
        const TemporaryHome home;
        const QString path = home.Path(u"data/"_s + name);
        {
            const auto made = DBEngine::CreateDatabase(path);
            QCOMPARE(made->Name(), path);
            made->AppendTableDef(ItemsTable());
            AddItems(*made, {u"one"_s});
        }
        QCOMPARE(FileNames(home.Path(u"data"_s)), QStringList{name});
        QCOMPARE(Texts(*DBEngine::OpenDatabase(path), u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
    }

    void createDatabase_existingTarget_raises3204AndLeavesIt()
    {
        const TemporaryHome home;
        const QString path = home.Path(u"there.qbd"_s);
        WriteFile(path, "precious"_ba);
        QB_VERIFY_RAISES(DBEngine::CreateDatabase(path), 3204);
        QB_VERIFY_RAISES(DBEngine::CreateDatabase(home.Path(u"data"_s)), 3204);
        QCOMPARE(ReadFile(path), "precious"_ba);
    }

    void createDatabase_whereNothingCanBeMade_raises75_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("no folder") << u"/no such folder/x.qbd"_s;
        QTest::newRow("file as folder") << u"/etc/passwd/x.qbd"_s;
        QTest::newRow("system folder") << u"/proc/x.qbd"_s;
    }

    void createDatabase_whereNothingCanBeMade_raises75()
    {
        QFETCH(QString, path);
        QB_VERIFY_RAISES(DBEngine::CreateDatabase(path), 75);
        QVERIFY(!QFileInfo::exists(path));
    }

    void createDatabase_diskFails_leavesNoFile()
    {
        const TemporaryHome home;
        long number = 0;
        {
            const FileSizeLimit limit(1000);
            number = NumberRaisedBy([&home] { DBEngine::CreateDatabase(home.Path(u"data/new.qbd"_s)); });
        }
        QCOMPARE(number, 3043);
        QCOMPARE(FileNames(home.Path(u"data"_s)), QStringList());
    }

    void newFile_bearsItsMarks()
    {
        TemporaryDatabase database;
        database.Close();
        const QByteArray bytes = ReadFile(database.Path());
        QCOMPARE(bytes.mid(68, 4), "KTQB"_ba);
        QCOMPARE(bytes.mid(60, 4), QByteArray("\0\0\0\2", 4));
    }

    void openDatabase_settingsOfTheConnection()
    {
        TemporaryDatabase database;
        database.Reopen();
        QCOMPARE(database->QueryValue(u"PRAGMA foreign_keys"_s).ToLong(), 1);
        QCOMPARE(database->QueryValue(u"PRAGMA synchronous"_s).ToLong(), 3);
        QCOMPARE(database->QueryValue(u"PRAGMA journal_mode"_s).ToText(), u"delete"_s);
        QVERIFY(!database->IsReadOnly());
    }

    void fileWithWriteAheadLog_isOpenedWithout()
    {
        TemporaryDatabase database;
        QCOMPARE(database->QueryValue(u"PRAGMA journal_mode = WAL"_s).ToText(), u"wal"_s);
        database.Reopen();
        QCOMPARE(database->QueryValue(u"PRAGMA journal_mode"_s).ToText(), u"delete"_s);
        database->AppendTableDef(ItemsTable());
        QCOMPARE(FileNames(database.Folder()), QStringList{QFileInfo(database.Path()).fileName()});
    }

    void readOnlyAccess_readsAndRefusesChanges()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        AddItems(*database, {u"one"_s});
        const auto reader = DBEngine::OpenDatabase(database.Path(), DBEngine::Access::ReadOnly);
        QVERIFY(reader->IsReadOnly());
        QB_VERIFY_RAISES(AddItems(*reader, {u"two"_s}), 3027);
        QCOMPARE(Texts(*reader, u"SELECT Title FROM Items"_s), QStringList{u"one"_s});
    }

    /// Both wait for the lock to go before they give up, so they wait at the same time.
    void lockedByAnother_openingAndCompactingRaise3045()
    {
        TemporaryDatabase locked;
        locked->Execute(u"BEGIN EXCLUSIVE"_s);
        TemporaryDatabase written;
        written->AppendTableDef(ItemsTable());
        const Transaction writing(*written);
        AddItems(*written, {u"not yet"_s});
        const QString target = written.Folder() + u"/target.qbd"_s;

        auto compacting = std::async(std::launch::async, [&] {
            return NumberRaisedBy([&] { DBEngine::CompactDatabase(written.Path(), target); });
        });
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(locked.Path()), 3045);
        QCOMPARE(compacting.get(), 3045);
        QVERIFY(!QFileInfo::exists(target));
        QVERIFY(!QFileInfo::exists(target + u".new"_s));
    }

    void compactDatabase_copiesEverythingButTheUnusedSpace()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        Fill(*database, 100);
        database->Execute(u"DELETE FROM Items WHERE ID > 10"_s);
        const QStringList before = Texts(*database, u"SELECT ID || Title || Notes FROM Items ORDER BY ID"_s);
        database.Close();
        const QByteArray source = ReadFile(database.Path());
        const QString target = database.Folder() + u"/smaller 'ß'.qbd"_s;

        DBEngine::CompactDatabase(database.Path(), target);

        QCOMPARE(ReadFile(database.Path()), source);
        QVERIFY(QFileInfo(target).size() < source.size() / 2);
        QCOMPARE(FileNames(database.Folder()), QStringList({u"library ö.qbd"_s, u"smaller 'ß'.qbd"_s}));
        const auto compacted = DBEngine::OpenDatabase(target);
        QCOMPARE(Texts(*compacted, u"SELECT ID || Title || Notes FROM Items ORDER BY ID"_s), before);
        QCOMPARE(compacted->GetTableDef(u"Items"_s).Fields, ItemsTable().Fields);
        QCOMPARE(compacted->QueryValue(u"PRAGMA application_id"_s).ToLong(), DBEngine::ApplicationId);
        QCOMPARE(compacted->QueryValue(u"PRAGMA user_version"_s).ToLong(), DBEngine::FormatVersion);
        AddItems(*compacted, {u"next"_s});
        QCOMPARE(compacted->LastInsertedRowKey(), 101); // numbers of deleted rows are not used again
    }

    void compactDatabase_existingTarget_raises3204AndLeavesIt()
    {
        TemporaryDatabase database;
        database.Close();
        const QString target = database.Folder() + u"/there.qbd"_s;
        WriteFile(target, "precious"_ba);
        QB_VERIFY_RAISES(DBEngine::CompactDatabase(database.Path(), target), 3204);
        QCOMPARE(ReadFile(target), "precious"_ba);
    }

    void compactDatabase_failing_leavesNoTarget_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<long>("number");
        QTest::newRow("no source") << QByteArray() << 3024l;
        QTest::newRow("no database") << "text"_ba << 3343l;
    }

    void compactDatabase_failing_leavesNoTarget()
    {
        QFETCH(QByteArray, source);
        QFETCH(long, number);
        const TemporaryHome home;
        const QString from = home.Path(u"data/from.qbd"_s);
        if (!source.isEmpty())
            WriteFile(from, source);
        const QStringList before = FileNames(home.Path(u"data"_s));
        QB_VERIFY_RAISES(DBEngine::CompactDatabase(from, home.Path(u"data/to.qbd"_s)), number);
        QCOMPARE(FileNames(home.Path(u"data"_s)), before);
    }

    void compactDatabase_intoNoFolder_raises75()
    {
        TemporaryDatabase database;
        database.Close();
        QB_VERIFY_RAISES(DBEngine::CompactDatabase(database.Path(), database.Folder() + u"/none/to.qbd"_s), 75);
        QVERIFY(!QFileInfo::exists(database.Folder() + u"/none"_s));
    }

    void writeThatWasCutOff_isUndoneForReaders()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        Fill(*database, 200);
        // A copy of the file and its journal in the middle of a change is what a crash leaves.
        const QString crashed = database.Folder() + u"/crashed.qbd"_s;
        database->Execute(u"PRAGMA cache_size = 1"_s);
        database->BeginTrans();
        database->Execute(u"DELETE FROM Items"_s);
        QVERIFY(QFile::copy(database.Path(), crashed));
        QVERIFY(QFile::copy(database.Path() + u"-journal"_s, crashed + u"-journal"_s));
        database->Rollback();
        const auto reader = DBEngine::OpenDatabase(crashed, DBEngine::Access::ReadOnly);
        QCOMPARE(reader->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong(), 200);
        QVERIFY(!QFileInfo::exists(crashed + u"-journal"_s));
    }

    void compactDatabase_diskFails_leavesOnlyTheSource()
    {
        TemporaryDatabase database;
        database->AppendTableDef(ItemsTable());
        Fill(*database, 200);
        database.Close();
        const QByteArray source = ReadFile(database.Path());
        long number = 0;
        {
            const FileSizeLimit limit(60000);
            number = NumberRaisedBy(
                [&] { DBEngine::CompactDatabase(database.Path(), database.Folder() + u"/to.qbd"_s); });
        }
        QCOMPARE(number, 3043);
        QCOMPARE(FileNames(database.Folder()), QStringList{u"library ö.qbd"_s});
        QCOMPARE(ReadFile(database.Path()), source);
    }
};

QB_TEST_MAIN(TestDBEngine)
#include "tst_dbengine.moc"
