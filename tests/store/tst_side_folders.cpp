#include "maintenance/LibraryCheck.h"
#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QElapsedTimer>
#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Libraries whose names differ in the extension only would have the same folders beside them.
class TestSideFolders : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    QString m_one;
    QString m_two;

    QString Folder() const { return FilesFolderOf(m_one); }
    /// Stores one file in the first library; then a second one comes to lie beside it, from elsewhere.
    void MakeBoth()
    {
        auto database = MakeLibrary(m_one, LanguageType::None);
        AddItem(*database, 0, u"item"_s);
        database.reset();
        WriteFile(m_home->Path(u"a.txt"_s), "first"_ba);
        QCOMPARE(Cli({u"attach"_s, m_one, u"1"_s, m_home->Path(u"a.txt"_s)}).Status, 0);
        const QString elsewhere = m_home->Path(u"elsewhere.qbd"_s);
        database = MakeLibrary(elsewhere, LanguageType::None);
        AddItem(*database, 0, u"item"_s);
        AddStoredFile(*database, 1, u"a.txt"_s, "second"_ba, {});
        database.reset();
        QVERIFY(QFile::rename(elsewhere, m_two));
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_one = m_home->Path(u"work ü.qbd"_s);
        m_two = m_home->Path(u"work ü.qbr"_s);
        QCOMPARE(FilesFolderOf(m_one), FilesFolderOf(m_two));
    }
    void cleanup() { m_home.reset(); }

    void secondLibraryOfOneName_isNotMade()
    {
        MakeLibrary(m_one, LanguageType::None);
        const Outcome outcome = Cli({u"new"_s, m_two});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"has the same name but for the extension"_s), qPrintable(outcome.Error));
        QVERIFY(!QFileInfo::exists(m_two));
    }

    void libraryThatWouldTakeOverTheFoldersOfOneThatIsGone_isNotMade()
    {
        MakeBoth();
        QVERIFY(QFile::remove(m_one) && QFile::remove(m_two));
        QCOMPARE(Cli({u"new"_s, m_one}).Status, 1);
        QCOMPARE(ReadFile(Folder() + u"1 - a.txt"_s), "first"_ba);
    }

    void secondLibrary_isOpenedWithAWordAndLeavesTheFilesAlone()
    {
        MakeBoth();
        const auto contents = [this] { return QDir(Folder()).entryList(QDir::Files | QDir::Hidden, QDir::Name); };
        const QStringList before = contents();
        QVERIFY(Cli({u"info"_s, m_two}).Error.contains(u"belongs to another library"_s));
        QVERIFY(Cli({u"info"_s, m_one}).Error.isEmpty());
        QCOMPARE(Cli({u"extract"_s, m_two, u"1"_s, m_home->Path(u"out.txt"_s)}).Status, 1);
        QVERIFY(!QFileInfo::exists(m_home->Path(u"out.txt"_s)));
        QCOMPARE(Cli({u"attach"_s, m_two, u"1"_s, m_home->Path(u"a.txt"_s)}).Status, 1);
        QCOMPARE(Cli({u"detach"_s, m_two, u"1"_s}).Status, 0);
        QCOMPARE(Cli({u"delete"_s, m_two, u"1"_s}).Status, 0);
        QCOMPARE(contents(), before);
        QCOMPARE(ReadFile(Folder() + u"1 - a.txt"_s), "first"_ba);
        QCOMPARE(Cli({u"check"_s, m_one}).Status, 0);
        const Outcome check = Cli({u"check"_s, m_two, u"--json"_s});
        QCOMPARE(check.Array()[0].toObject()[u"kind"_s], u"foreign-folder"_s);
    }

    void pendingFilesOfAnother_areNotFinished()
    {
        MakeBoth();
        const QString pending = Folder() + u".arriving-0123456789abcdef0123456789abcdef-7-01234567"_s;
        WriteFile(pending, "under way"_ba);
        QCOMPARE(Cli({u"set"_s, m_two, u"1"_s, u"--title"_s, u"x"_s}).Status, 0);
        QVERIFY(QFileInfo::exists(pending));
        QCOMPARE(Cli({u"set"_s, m_one, u"1"_s, u"--title"_s, u"x"_s}).Status, 0);
        QVERIFY(!QFileInfo::exists(pending));
    }

    void fileInTheWay_isKeptUnderAnotherName()
    {
        auto database = MakeLibrary(m_one, LanguageType::None);
        AddItem(*database, 0, u"item"_s);
        database.reset();
        WriteFile(m_home->Path(u"a.txt"_s), "mine"_ba);
        WriteFile(Folder() + u"1 - a.txt"_s, "somebody's"_ba);
        QCOMPARE(Cli({u"attach"_s, m_one, u"1"_s, m_home->Path(u"a.txt"_s)}).Out, u"1\n"_s);
        QCOMPARE(ReadFile(Folder() + u"1 - a.txt"_s), "mine"_ba);
        QCOMPARE(ReadFile(Folder() + u"found 1 - a.txt"_s), "somebody's"_ba);
    }

    /// A folder from a stranger may hold anything under the name of a stored file.
    void whatIsNoFile_isNeitherFollowedNorWaitedFor_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("pipe") << u"pipe"_s;
        QTest::newRow("link") << u"link"_s;
        QTest::newRow("link to nothing") << u"nothing"_s;
    }
    void whatIsNoFile_isNeitherFollowedNorWaitedFor()
    {
        QFETCH(QString, kind);
        MakeBoth();
        const QString secret = m_home->Path(u"secret"_s);
        WriteFile(secret, "secret"_ba);
        const QString target = kind == u"link"_s ? secret : u"/no/such/file"_s;
        const QString mark = u"0123456789abcdef0123456789abcdef"_s;
        for (const QString& name : {u"1 - a.txt"_s, u".arriving-%1-1"_s.arg(mark), u".packing-%1-0"_s.arg(mark),
                                    u".adding-%1-0"_s.arg(mark)}) {
            QFile::remove(Folder() + name);
            QVERIFY(kind == u"pipe"_s ? ::mkfifo(QFile::encodeName(Folder() + name).constData(), 0600) == 0
                                      : QFile::link(target, Folder() + name));
        }
        const QString out = m_home->Path(u"out.txt"_s);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(Cli({u"extract"_s, m_one, u"1"_s, out}).Status, 1);
        QVERIFY(!QFileInfo::exists(out));
        QCOMPARE(Cli({u"check"_s, m_one}).Status, 1);
        QCOMPARE(Cli({u"set"_s, m_one, u"1"_s, u"--title"_s, u"x"_s}).Status, 0); // which finishes what is pending
        QCOMPARE(Cli({u"attach"_s, m_one, u"1"_s, Folder() + u"1 - a.txt"_s}).Status, kind == u"link"_s ? 0 : 1);
        QCOMPARE(Cli({u"delete"_s, m_one, u"1"_s}).Status, 0);
        QVERIFY(timer.elapsed() < 30000);
        QCOMPARE(ReadFile(secret), "secret"_ba);
        QCOMPARE(QDir(Folder()).entryList({u".a*"_s, u".p*"_s}, QDir::AllEntries | QDir::Hidden | QDir::System),
                 QStringList());
    }

    void storedFileOfAnotherSize_isAFault()
    {
        MakeBoth();
        QCOMPARE(Cli({u"check"_s, m_one}).Status, 0);
        WriteFile(Folder() + u"1 - a.txt"_s, "fir"_ba);
        const Outcome outcome = Cli({u"check"_s, m_one, u"--json"_s});
        QCOMPARE(outcome.Status, 1);
        QCOMPARE(outcome.Array()[0].toObject()[u"kind"_s], u"other-size"_s);
    }
};

QB_TEST_MAIN(TestSideFolders)
#include "tst_side_folders.moc"
