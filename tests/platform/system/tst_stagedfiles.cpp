#include "platform/system/StagedFiles.h"
#include "support/FolderContents.h"
#include "support/OrdinaryUser.h"

#include <QFile>
#include <optional>
#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

using Contents = QMap<QString, QByteArray>;

/// Files that get below a folder together, or not at all.
class TestStagedFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(Folder() + u"/old.txt"_s, "old");
        WriteFile(Folder() + u"/sub/old"_s, "old, too");
        m_before = ContentsOf(m_home->Path());
    }
    void cleanup() { m_home.reset(); }

    void files_appearTogether()
    {
        {
            StagedFiles files(Folder());
            WriteFile(files.PathFor(u"größe 漢字"_s), "1");
            WriteFile(files.PathFor(u"a/b/c"_s), "2");
            WriteFile(files.PathFor(u"a/b/%1 %2"_s), "3");
            files.AddFolder(u"empty/folder"_s);
            QCOMPARE(Shown(), (Contents{{u"old.txt"_s, "old"}, {u"sub/"_s, {}}, {u"sub/old"_s, "old, too"}}));
            files.PutInPlace(false);
        }
        QCOMPARE(ContentsOf(Folder()), (Contents{{u"größe 漢字"_s, "1"},
                                                 {u"a/"_s, {}},
                                                 {u"a/b/"_s, {}},
                                                 {u"a/b/c"_s, "2"},
                                                 {u"a/b/%1 %2"_s, "3"},
                                                 {u"empty/"_s, {}},
                                                 {u"empty/folder/"_s, {}},
                                                 {u"old.txt"_s, "old"},
                                                 {u"sub/"_s, {}},
                                                 {u"sub/old"_s, "old, too"}}));
    }

    void whatStands_isReplacedOrKept_data()
    {
        QTest::addColumn<bool>("keepExisting");
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("replaced") << false << "new"_ba;
        QTest::newRow("kept") << true << "old"_ba;
    }
    void whatStands_isReplacedOrKept()
    {
        QFETCH(bool, keepExisting);
        {
            StagedFiles files(Folder());
            WriteFile(files.PathFor(u"old.txt"_s), "new");
            WriteFile(files.PathFor(u"sub/new"_s), "new");
            files.AddFolder(u"sub"_s);
            files.PutInPlace(keepExisting);
        }
        QFETCH(QByteArray, contents);
        QCOMPARE(
            ContentsOf(Folder()),
            (Contents{{u"old.txt"_s, contents}, {u"sub/"_s, {}}, {u"sub/old"_s, "old, too"}, {u"sub/new"_s, "new"}}));
    }

    void missingFolder_isMade_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("one") << u"new"_s;
        QTest::newRow("several") << u"new/ä b/c"_s;
        QTest::newRow("with a separator") << u"new/c/"_s;
    }
    void missingFolder_isMade()
    {
        QFETCH(QString, folder);
        {
            StagedFiles files(m_home->Path(folder));
            QVERIFY(QFileInfo(m_home->Path(folder)).isDir());
            WriteFile(files.PathFor(u"a"_s), "1");
            files.PutInPlace(false);
        }
        QCOMPARE(ContentsOf(m_home->Path(folder)), (Contents{{u"a"_s, "1"}}));
    }

    void emptyFolder_staysWhenThatIsAll()
    {
        StagedFiles(m_home->Path(u"new"_s)).PutInPlace(false);
        QCOMPARE(ContentsOf(m_home->Path(u"new"_s)), Contents());
        QVERIFY(QFileInfo(m_home->Path(u"new"_s)).isDir());
    }

    void relativeFolder_isThatOfTheProcess()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(Folder()));
        {
            StagedFiles files(u"sub"_s);
            QVERIFY(QDir::setCurrent(before));
            WriteFile(files.PathFor(u"a"_s), "1");
            files.PutInPlace(false);
        }
        QCOMPARE(ReadFile(Folder() + u"/sub/a"_s), "1");
    }

    // Nothing of it

    void endBeforeItIsPutInPlace_leavesTheFolderAsItWas_data() { TwoFolders(); }
    void endBeforeItIsPutInPlace_leavesTheFolderAsItWas()
    {
        QFETCH(QString, folder);
        {
            StagedFiles files(m_home->Path(folder));
            WriteFile(files.PathFor(u"old.txt"_s), "new");
            WriteFile(files.PathFor(u"a/b"_s), "new");
            files.AddFolder(u"c"_s);
        }
        QCOMPARE(ContentsOf(m_home->Path()), m_before);
    }

    void failure_leavesTheFolderAsItWas_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("why");
        QTest::newRow("over a folder") << u"sub"_s << u"/sub' can't be written: a folder stands there"_s;
        QTest::newRow("over a pipe") << u"pipe"_s
                                     << u"/pipe' can't be written: a device, a pipe or a socket stands there"_s;
        QTest::newRow("below a file") << u"sub/old/a"_s << u"/sub/old' can't be written: a file stands there"_s;
        QTest::newRow("through a link") << u"link/a"_s
                                        << u"/link' can't be written: a link stands there, which may lead elsewhere"_s;
        QTest::newRow("not written") << u"missing"_s << u"/missing' can't be written: No such file or directory"_s;
    }
    void failure_leavesTheFolderAsItWas()
    {
        QFETCH(QString, name);
        QFETCH(QString, why);
        QVERIFY(QFile::link(m_home->Path(u"data"_s), Folder() + u"/link"_s));
        QCOMPARE(::mkfifo(QFile::encodeName(Folder() + u"/pipe"_s).constData(), 0600), 0);
        m_before = ContentsOf(m_home->Path());
        {
            StagedFiles files(Folder());
            for (const QString& earlier : {u"a"_s, u"old.txt"_s, u"new/b/c"_s})
                WriteFile(files.PathFor(earlier), "new");
            const QString path = files.PathFor(name);
            if (name != u"missing"_s)
                WriteFile(path, "new");
            QB_VERIFY_REFUSES(files.PutInPlace(false), u"'"_s + Folder() + why);
        }
        QCOMPARE(ContentsOf(m_home->Path()), m_before);
    }

    void failureOfOneThatReplaces_leavesItAsItWas()
    {
        {
            StagedFiles files(Folder());
            files.PathFor(u"old.txt"_s); // is not written
            QB_VERIFY_REFUSES(files.PutInPlace(false), u"/old.txt' can't be written: "_s);
            QCOMPARE(Shown().value(u"old.txt"_s), "old");
        }
        QCOMPARE(ContentsOf(m_home->Path()), m_before);
    }

    void foldersThatSomebodyElseUses_stay()
    {
        {
            StagedFiles files(m_home->Path(u"new/deep"_s));
            WriteFile(m_home->Path(u"new/somebody's"_s), "1");
        }
        QCOMPARE(ContentsOf(m_home->Path(u"new"_s)), (Contents{{u"somebody's"_s, "1"}}));
    }

    void lockedFolder_isRefused_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("there") << u"locked"_s;
        QTest::newRow("missing") << u"locked/new"_s;
        QTest::newRow("deep") << u"open/new/../../locked/new"_s;
    }
    void lockedFolder_isRefused()
    {
        QFETCH(QString, folder);
        QVERIFY(QDir().mkdir(m_home->Path(u"locked"_s)) && QDir().mkdir(m_home->Path(u"open"_s)));
        const QFile::Permissions all = QFile::Permissions(0x7777);
        QVERIFY(QFile::setPermissions(m_home->Path(), all) && QFile::setPermissions(m_home->Path(u"open"_s), all));
        QVERIFY(QFile::setPermissions(m_home->Path(u"locked"_s), QFile::Permissions(0x5555)));
        m_before = ContentsOf(m_home->Path());
        {
            const OrdinaryUser user;
            QB_VERIFY_REFUSES(StagedFiles(m_home->Path(folder)), u"can't be written: Permission denied"_s);
        }
        QVERIFY(QFile::setPermissions(m_home->Path(u"locked"_s), all)); // so that it can be cleared away
        QCOMPARE(ContentsOf(m_home->Path()), m_before);
    }

    void noFolder_isRefused_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("a file") << u"in/old.txt"_s;
        QTest::newRow("below a file") << u"in/old.txt/new"_s;
        QTest::newRow("no name") << QString();
    }
    void noFolder_isRefused()
    {
        QFETCH(QString, folder);
        QB_VERIFY_REFUSES(StagedFiles(folder.isEmpty() ? folder : m_home->Path(folder)), u"can't be written: "_s);
        QCOMPARE(ContentsOf(m_home->Path()), m_before);
    }

    void linkToAFolder_isAFolder()
    {
        QVERIFY(QFile::link(Folder(), m_home->Path(u"link"_s)));
        {
            StagedFiles files(m_home->Path(u"link"_s));
            WriteFile(files.PathFor(u"a"_s), "1");
            files.PutInPlace(false);
        }
        QCOMPARE(ReadFile(Folder() + u"/a"_s), "1");
        QCOMPARE(ContentsOf(Folder()).size(), 4);
    }

    // Others that work there

    void deadStage_isRemoved()
    {
        WriteFile(DeadStage() + u"/new/a/b"_s, "1");
        WriteFile(DeadStage() + u"/old-0"_s, "1");
        {
            const StagedFiles files(Folder());
            QVERIFY(!QFileInfo::exists(DeadStage()));
        }
        QCOMPARE(ContentsOf(m_home->Path()), m_before);
    }

    void stageOfALivingOne_stays()
    {
        std::optional<StagedFiles> first(Folder());
        WriteFile(first->PathFor(u"a"_s), "1");
        {
            StagedFiles second(Folder());
            WriteFile(second.PathFor(u"a"_s), "2");
            second.PutInPlace(false);
        }
        QCOMPARE(ReadFile(Folder() + u"/a"_s), "2");
        first->PutInPlace(false);
        first.reset();
        QCOMPARE(ReadFile(Folder() + u"/a"_s), "1");
        QCOMPARE(ContentsOf(Folder()).size(), 4);
    }

    void whatIsNoStage_stays_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("a user's folder") << u".unpacking-my things"_s;
        QTest::newRow("the same, longer") << u".unpacking-"_s + QString(33, u'0');
        QTest::newRow("another letter") << u".unpacking-"_s + QString(31, u'0') + u'g';
        QTest::newRow("not hidden") << u"unpacking-"_s + QString(32, u'0');
    }
    void whatIsNoStage_stays()
    {
        QFETCH(QString, name);
        WriteFile(Folder() + u'/' + name + u"/file"_s, "1");
        const Contents before = ContentsOf(m_home->Path());
        StagedFiles(Folder()).PutInPlace(false);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void linkWithTheNameOfAStage_isNotFollowed()
    {
        QVERIFY(QFile::link(Folder() + u"/sub"_s, DeadStage()));
        StagedFiles(Folder()).PutInPlace(false);
        QCOMPARE(ReadFile(Folder() + u"/sub/old"_s), "old, too");
    }

private:
    QString Folder() const { return m_home->Path(u"in"_s); }
    QString DeadStage() const { return Folder() + u"/.unpacking-0123456789abcdef0123456789abcdef"_s; }
    /// What is in the folder but for what is made aside.
    Contents Shown() const
    {
        Contents shown = ContentsOf(Folder());
        shown.removeIf([](const auto& file) { return file.key().startsWith(u".unpacking-"_s); });
        return shown;
    }
    static void TwoFolders()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("there") << u"in"_s;
        QTest::newRow("missing") << u"new/deeper"_s;
    }

    std::unique_ptr<TemporaryHome> m_home;
    Contents m_before;
};

QTEST_GUILESS_MAIN(TestStagedFiles)
#include "tst_stagedfiles.moc"
