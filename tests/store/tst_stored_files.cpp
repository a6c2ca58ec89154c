#include "platform/system/Prompts.h"
#include "store/Deletions.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/StoredFiles.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QFileInfo>
#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestStoredFiles : public QObject {
    Q_OBJECT

private:
    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"Dateien & mehr.qbd"_s), LanguageType::None);
        m_item = AddItem(*m_library, 0, u"owner"_s);
    }

    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void path_isTheNumberAndTheTitleInTheFolder()
    {
        QCOMPARE(StoredFilePath(*m_library, 12, u"Bericht ä.txt"_s),
                 m_home->Path(u"Dateien & mehr_Files/12 - Bericht ä.txt"_s));
    }

    void pathOfATitleThatLeadsOut_isEmpty_data()
    {
        QTest::addColumn<QString>("title");
        QTest::newRow("slash") << u"../x"_s;
        QTest::newRow("backslash") << u"..\\x"_s;
        QTest::newRow("NUL") << u"x"_s + QChar(u'\0') + u"y"_s;
    }
    void pathOfATitleThatLeadsOut_isEmpty()
    {
        QFETCH(QString, title);
        QCOMPARE(StoredFilePath(*m_library, 12, title), QString());
    }

    void plainFile_isNoLinkFolderOrPipe()
    {
        const QString folder = m_library->FilesFolder();
        WriteFile(folder + u"file"_s, "contents");
        QVERIFY(QFile::link(folder + u"file"_s, folder + u"link"_s));
        QVERIFY(QDir().mkpath(folder + u"folder"_s));
        QCOMPARE(::mkfifo(QFile::encodeName(folder + u"pipe"_s).constData(), 0600), 0);
        QVERIFY(IsPlainFile(folder + u"file"_s));
        for (const QString& name : {u"link"_s, u"folder"_s, u"pipe"_s, u"missing"_s})
            QVERIFY2(!IsPlainFile(folder + name), qPrintable(name));
    }

    void filesOfAnItem_areNamed()
    {
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        const qint64 first = AddStoredFile(*m_library, m_item, u"a"_s, "1", m_clock->Now());
        AddStoredFile(*m_library, other, u"b"_s, "2", m_clock->Now());
        const qint64 third = AddStoredFile(*m_library, m_item, u"c"_s, "3", m_clock->Now());
        QCOMPARE(StoredFilesOf(*m_library, m_item), (std::vector<qint64>{first, third}));
        QVERIFY(StoredFilesOf(*m_library, 4711).empty());
    }

    void deletedRow_leavesTheFileToTheCaller()
    {
        const qint64 file = AddStoredFile(*m_library, m_item, u"a.txt"_s, "1", m_clock->Now());
        const QString path = DeleteStoredFileRow(*m_library, file).Place;
        QCOMPARE(path, StoredFilePath(*m_library, file, u"a.txt"_s));
        QVERIFY(QFileInfo::exists(path));
        QCOMPARE(CountOf(*m_library, u"Files"_s), 0);
        QCOMPARE(DeleteStoredFileRow(*m_library, file).Place, QString()); // there is no such row any more
    }

    void deletion_isRecordedForThoseWhoKnowTheFile_data()
    {
        QTest::addColumn<qint64>("own");
        QTest::addColumn<qint64>("childs");
        QTest::addColumn<Value>("added");
        QTest::addColumn<qint64>("motherRecord");
        QTest::addColumn<QString>("recorded"); // "none", "own", "Null" or the mother's number
        const auto row = [](const char* name, qint64 own, qint64 childs, const Value& added, qint64 motherRecord,
                            const char* recorded) {
            QTest::newRow(name) << own << childs << added << motherRecord << QString::fromLatin1(recorded);
        };
        row("plain", 0, 0, 50, 0, "none");
        row("plain, Null", 0, 0, {}, 0, "none");
        row("child, before", 100, 0, 99, 7, "7");
        row("child, at", 100, 0, 100, 7, "none");
        row("child, Null", 100, 0, {}, 7, "7");
        row("mother, before", 0, 100, 99, 0, "own");
        row("mother, after", 0, 100, 101, 0, "none");
        row("mother, Null", 0, 100, {}, 0, "own");
        row("both, known to its mother", 100, 200, 99, 7, "7");
        row("both, added in the second of its own stamp", 100, 200, 100, 7, "Null");
        row("both, known to its child only", 100, 200, 150, 0, "Null");
        row("both, known to nobody", 100, 200, 200, 0, "none");
    }
    void deletion_isRecordedForThoseWhoKnowTheFile()
    {
        QFETCH(qint64, own);
        QFETCH(qint64, childs);
        QFETCH(Value, added);
        QFETCH(qint64, motherRecord);
        QFETCH(QString, recorded);
        if (own > 0)
            MakeChild(*m_library, u"/Mütter/m.qbd"_s, Date::FromSeconds(own));
        if (childs > 0)
            MakeMother(*m_library, Date::FromSeconds(childs));
        const qint64 file = AddStoredFile(*m_library, m_item, u"a.txt"_s, "1", {});
        m_library->Execute(u"UPDATE Files SET DateAdded = ?"_s, {added});
        if (own > 0)
            m_library->Execute(u"UPDATE Files SET MotherRecordID = ?"_s, {motherRecord});
        DeleteStoredFileRow(*m_library, file);
        QCOMPARE(CountOf(*m_library, u"Files"_s), 0);
        if (own + childs == 0) {
            QVERIFY(!m_library->TableExists(u"DeletedFiles"_s));
            return;
        }
        const QStringList rows = Texts(*m_library,
                                       u"SELECT coalesce(ItemID, 'Null') || ' at ' || DateDeleted FROM DeletedFiles"_s);
        const QString id = recorded == u"own" ? QString::number(file) : recorded;
        QCOMPARE(rows, recorded == u"none" ? QStringList()
                                           : QStringList{u"%1 at %2"_s.arg(id).arg(m_clock->Now().Seconds())});
    }

    void childsFileWithoutTheMothersNumber_isSaid()
    {
        MakeChild(*m_library, u"/m.qbd"_s, m_clock->Now());
        const qint64 file = AddStoredFile(*m_library, m_item, u"a.txt"_s, "1", m_clock->Now().AddDays(-1));
        ScriptedPrompts prompts;
        StoredFileDeletion deletion;
        {
            Transaction transaction(*m_library);
            deletion.Delete(*m_library, file);
            transaction.Commit();
        }
        QVERIFY(prompts.Messages.isEmpty()); // while others wait for the library
        prompts.ExpectMsgBox(u"Error"_s);
        deletion.Complete();
        QCOMPARE(prompts.Messages.value(0).Text, u"Missing valid MotherRecordID in Files table in replica database. "
                                                 "(CFileObject; DeleteObject subroutine)"_s);
        QCOMPARE(prompts.Messages.value(0).Icon, MsgBoxIcon::Critical);
        QCOMPARE(CountOf(*m_library, u"Files"_s), 0);
        QVERIFY(m_library->QueryValue(u"SELECT ItemID FROM DeletedFiles"_s).IsNull());
        QCOMPARE(CountOf(*m_library, u"DeletedFiles"_s), 1);
    }

    void cutOff_isTheLaterOfTheTwoDates_data()
    {
        QTest::addColumn<qint64>("own");
        QTest::addColumn<qint64>("childs");
        QTest::addColumn<qint64>("cutOff");
        QTest::newRow("plain") << 0ll << 0ll << 0ll;
        QTest::newRow("child") << 100ll << 0ll << 100ll;
        QTest::newRow("mother") << 0ll << 50ll << 50ll;
        QTest::newRow("both, own later") << 100ll << 50ll << 100ll;
        QTest::newRow("both, child's later") << 100ll << 150ll << 150ll;
    }
    void cutOff_isTheLaterOfTheTwoDates()
    {
        QFETCH(qint64, own);
        QFETCH(qint64, childs);
        if (own > 0)
            MakeChild(*m_library, u"/m.qbd"_s, Date::FromSeconds(own));
        if (childs > 0)
            MakeMother(*m_library, Date::FromSeconds(childs));
        QTEST(DeletionCutOff(*m_library).Seconds(), "cutOff");
        QCOMPARE(OwnLastSynchronized(*m_library).Seconds(), own);
    }
};

QB_TEST_MAIN(TestStoredFiles)
#include "tst_stored_files.moc"
