#include "platform/dao/TemporaryDatabase.h"

#include <QFileInfo>
#include <numeric>
#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray BigEndian(quint32 number)
{
    QByteArray bytes;
    for (const int shift : {24, 16, 8, 0})
        bytes += char(number >> shift);
    return bytes;
}

/// What the engine writes behind the journal of a transaction over several files.
QByteArray Trailer(const QByteArray& superJournal)
{
    const auto sum = std::accumulate(superJournal.begin(), superJournal.end(), quint32(0),
                                     [](quint32 so, char byte) { return so + quint32(qint32(byte)); });
    return superJournal + BigEndian(quint32(superJournal.size())) + BigEndian(sum)
           + "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7"_ba;
}

/// A library that a crash has left with a journal to be played back.
class CrashedLibrary {
public:
    CrashedLibrary()
    {
        m_database->AppendTableDef(ItemsTable());
        AddItems(*m_database, {u"one"_s, u"two"_s});
        m_database->BeginTrans();
        m_database->Execute(u"PRAGMA cache_spill = 1"_s);
        m_database->Execute(u"PRAGMA cache_size = 1"_s);
        for (int i = 0; i < 200; ++i)
            AddItems(*m_database, {QString(40, u'x')});
        m_database->Execute(u"DELETE FROM Items"_s);
        QFile::copy(m_database.Path(), Path());
        QFile::copy(m_database.Path() + u"-journal"_s, Journal());
        m_database->Rollback();
    }
    QString Path() const { return m_database.Folder() + u"/crashed ä.qbd"_s; }
    QString Journal() const { return Path() + u"-journal"_s; }
    QString Folder() const { return m_database.Folder(); }
    void Name(const QString& superJournal) const
    {
        WriteFile(Journal(), ReadFile(Journal()) + Trailer(QFile::encodeName(superJournal)));
    }

private:
    TemporaryDatabase m_database;
};

} // namespace

/// What lies beside a library under the names of its journals is a stranger's file like the library.
class TestJournalCheck : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void journalThatNamesAnotherFile_isRefusedAndTheFileStays_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("any file beside") << u"diary.txt"_s;
        QTest::newRow("elsewhere") << u"data/diary.txt"_s;
        QTest::newRow("as the engine names them, elsewhere") << u"data/crashed ä.qbd-mj01AB239CD"_s;
        QTest::newRow("nearly as the engine names them") << u"crashed ä.qbd-mj01AB238CD"_s;
    }
    void journalThatNamesAnotherFile_isRefusedAndTheFileStays()
    {
        QFETCH(QString, name);
        const CrashedLibrary library;
        const QString victim = library.Folder() + u'/' + name;
        WriteFile(victim, "dear diary"_ba);
        library.Name(victim);
        const QByteArray file = ReadFile(library.Path());
        const QByteArray journal = ReadFile(library.Journal());
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(library.Path(), DBEngine::Access::ReadOnly), 3343);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(library.Path()), 3343);
        QCOMPARE(ReadFile(victim), "dear diary"_ba);
        QCOMPARE(ReadFile(library.Path()), file);
        QCOMPARE(ReadFile(library.Journal()), journal);
    }

    void journalOfATransactionOverTwoFiles_isPlayedBack()
    {
        const CrashedLibrary library;
        const QString own = library.Path() + u"-mj01AB239CD"_s;
        WriteFile(own, QFile::encodeName(library.Journal()) + '\0');
        library.Name(own);
        const auto database = DBEngine::OpenDatabase(library.Path());
        QCOMPARE(Texts(*database, u"SELECT Title FROM Items"_s), (QStringList{u"one"_s, u"two"_s}));
        QVERIFY(!QFileInfo::exists(library.Journal()));
    }

    void superJournalThatNothingRefersTo_isRemoved_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<bool>("removed");
        QTest::newRow("whole list") << "JOURNAL\0/elsewhere/other.qbs-journal\0"_ba << true;
        QTest::newRow("half of it") << "JOUR"_ba << true;
        QTest::newRow("empty") << ""_ba << true;
        QTest::newRow("a file of the user") << "dear diary"_ba << false;
        QTest::newRow("a list of others") << "/elsewhere/other.qbs-journal\0"_ba << false;
    }
    void superJournalThatNothingRefersTo_isRemoved()
    {
        QFETCH(QByteArray, list);
        QFETCH(bool, removed);
        const TemporaryDatabase database;
        const QString own = database.Path() + u"-mj01AB239CD"_s;
        const QByteArray journal = QFile::encodeName(database.Path() + u"-journal"_s);
        WriteFile(own, list == "JOUR"_ba ? journal.first(9) : list.replace("JOURNAL", journal));
        DBEngine::OpenDatabase(database.Path(), DBEngine::Access::ReadOnly);
        QVERIFY(QFileInfo::exists(own));
        DBEngine::OpenDatabase(database.Path());
        QCOMPARE(QFileInfo::exists(own), !removed);
    }

    void superJournalThatAJournalRefersTo_stays()
    {
        const CrashedLibrary library;
        const QString other = library.Folder() + u"/other.qbs"_s;
        DBEngine::CreateDatabase(other);
        const QString own = other + u"-mj01AB239CD"_s; // a transaction of the other file and this one
        WriteFile(own, QFile::encodeName(other + u"-journal"_s) + '\0' + QFile::encodeName(library.Journal()) + '\0');
        library.Name(own);
        DBEngine::OpenDatabase(other);
        QVERIFY(QFileInfo::exists(own)); // else what the journal holds would count as committed
        const auto database = DBEngine::OpenDatabase(library.Path());
        QCOMPARE(Texts(*database, u"SELECT Title FROM Items"_s), (QStringList{u"one"_s, u"two"_s}));
    }

    void journalOfFilesThatWereMoved_isRefused()
    {
        const CrashedLibrary library;
        library.Name(library.Folder() + u"/gone/library.qbd-mj01AB239CD"_s);
        const QByteArray file = ReadFile(library.Path());
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(library.Path()), 3343);
        QCOMPARE(ReadFile(library.Path()), file);
        QVERIFY(QFileInfo::exists(library.Journal()));
    }

    void journalWithATrailerThatTheEngineWouldNotTake_isPlayedBack()
    {
        const CrashedLibrary library;
        QByteArray trailer = Trailer("/no/such/file"_ba);
        trailer[0] = '-'; // the checksum is another one
        WriteFile(library.Journal(), ReadFile(library.Journal()) + trailer);
        const auto database = DBEngine::OpenDatabase(library.Path());
        QCOMPARE(Texts(*database, u"SELECT Title FROM Items"_s), (QStringList{u"one"_s, u"two"_s}));
    }

    void journalThatIsNoOrdinaryFile_isRefusedAtOnce_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::newRow("journal") << u"-journal"_s;
        QTest::newRow("write-ahead log") << u"-wal"_s;
        QTest::newRow("its index") << u"-shm"_s;
    }
    void journalThatIsNoOrdinaryFile_isRefusedAtOnce()
    {
        QFETCH(QString, suffix);
        TemporaryDatabase database;
        database.Close();
        const QString path = database.Path() + suffix;
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(database.Path()), 3343);
        QVERIFY(QFile::remove(path));
        WriteFile(database.Folder() + u"/elsewhere"_s, "text"_ba);
        QVERIFY(QFile::link(database.Folder() + u"/elsewhere"_s, path));
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(database.Path()), 3343);
        QCOMPARE(ReadFile(database.Folder() + u"/elsewhere"_s), "text"_ba);
    }

    void libraryBehindALink_itsOwnFoldersJournalCounts()
    {
        const CrashedLibrary library;
        const QString link = library.Folder() + u"/data/link.qbd"_s;
        QVERIFY(QFile::link(library.Path(), link));
        const QString victim = library.Folder() + u"/diary.txt"_s;
        WriteFile(victim, "dear diary"_ba);
        library.Name(victim);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(link), 3343);
        QCOMPARE(ReadFile(victim), "dear diary"_ba);
    }
};

QB_TEST_MAIN(TestJournalCheck)
#include "tst_journal_check.moc"
