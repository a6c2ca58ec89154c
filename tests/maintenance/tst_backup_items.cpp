#include "maintenance/BackupItems.h"
#include "maintenance/Compaction.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryCheck.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Paths.h"
#include "store/ItemBranch.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Single items out of a backup, compaction, and the way back to the start of a session.
class TestBackupItems : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    FixedClock m_clock;
    RecordedWork m_work;
    QString m_path;
    QString m_backup;

    QStringList NamesBeside() const
    {
        return QDir(m_home->Path(u"lib"_s))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_path = m_home->Path(u"lib/Bücher.qbd"_s);
        m_backup = m_home->Path(u"b.qbb"_s);
        QDir().mkpath(m_home->Path(u"lib"_s));
        const auto library = MakeLibrary(m_path);
        AddItem(*library, 0, u"parent"_s);
        AddItem(*library, 1, u"wänted"_s, u"int x;"_s);
        AddItem(*library, 0, u"other"_s);
        library->Execute(u"UPDATE Items SET HTMLPage = -1, ItemRating = 3, Created = 1000 WHERE ID = 2"_s);
        library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (2, 3, 'to'), (3, 2, 'from')"_s);
        AddStoredFile(*library, 2, u"ä.bin"_s, QByteArray(20000, 'b'), m_clock.Now());
        library->Execute(u"UPDATE Files SET Description = 'said of it', OrigDateTime = 2000"_s);
        WriteFile(library->HTMLFolder() + u"2.htm"_s, "<img src=\"2/a.png\"><img src='2/b.png'><a href=\"12/a\">");
        WriteFile(library->HTMLFolder() + u"2/a.png"_s, "a");
        BackUpLibrary(m_path, m_backup, {});
    }
    void cleanup() { m_home.reset(); }

    void item_isLookedAt()
    {
        BackupItems items(m_backup, m_home->Path());
        QCOMPARE(items.All().size(), size_t(3));
        const BackupItem item = items.Item(2);
        QCOMPARE(item.Title, u"wänted"_s);
        QCOMPARE(item.Parent, 1);
        QCOMPARE(PlainTextFromRtf(item.Code), u"int x;"_s);
        QCOMPARE(item.Files, QStringList{u"ä.bin"_s});
        QVERIFY(item.HasPage);
        QB_VERIFY_RAISES(items.Item(77), 3265);
    }

    void deletedItem_comesBackWhole()
    {
        const auto library = Library::Open(m_path);
        DeleteItem(*library, 2);
        BackupItems items(m_backup, m_home->Path());
        const qint64 id = items.BringBack(2, *library);
        QCOMPARE(Texts(*library,
                       u"SELECT Title || ParentID || ItemRating || Created || HTMLPage FROM Items WHERE ID = ?"_s,
                       {id}),
                 QStringList{u"wänted131000-1"_s});
        QCOMPARE(library->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {id}).ToDate(), m_clock.Now());
        QCOMPARE(Texts(*library,
                       u"SELECT Title || FileSize || Description || OrigDateTime FROM Files WHERE CodeID = ?"_s, {id}),
                 QStringList{u"ä.bin20000said of it2000"_s});
        const QString file = library->QueryValue(u"SELECT ID FROM Files WHERE CodeID = ?"_s, {id}).ToText();
        QCOMPARE(ReadFile(library->FilesFolder() + file + u" - ä.bin"_s), QByteArray(20000, 'b'));
        const QByteArray number = QByteArray::number(id);
        QCOMPARE(ReadFile(library->HTMLFolder() + QString::number(id) + u".htm"_s),
                 "<img src=\"" + number + "/a.png\"><img src='" + number + "/b.png'><a href=\"12/a\">");
        QCOMPARE(ReadFile(library->HTMLFolder() + QString::number(id) + u"/a.png"_s), "a");
        QCOMPARE(Texts(*library, u"SELECT ItemID || '>' || LinkItemID || Note FROM ItemLinks ORDER BY Note"_s),
                 (QStringList{u"3>%1from"_s.arg(id), u"%1>3to"_s.arg(id)}));
        QVERIFY(CheckLibrary(*library).empty());
    }

    /// Those of another library have other numbers there.
    void linksOfThePage_leadToTheSameItemsOrNowhere()
    {
        const auto library = Library::Open(m_path);
        WriteFile(library->HTMLFolder() + u"2.htm"_s, "<a href=local://Item2><a href=local://Item3><img src=2/a.png>");
        BackUpLibrary(m_path, m_backup, {});
        BackupItems items(m_backup, m_home->Path());
        const auto other = MakeLibrary(m_home->Path(u"other.qbd"_s));
        for (Library* to : {library.get(), other.get()}) {
            const qint64 id = items.BringBack(2, *to);
            const QByteArray number = QByteArray::number(id);
            QCOMPARE(ReadFile(to->HTMLFolder() + QString::number(id) + u".htm"_s),
                     "<a href=local://Item" + number + "><a href=local://Item" + (to == other.get() ? "-3" : "3")
                         + "><img src=" + number + "/a.png>");
        }
    }

    void linksOfAReplica_areNewToTheOthers()
    {
        const auto library = Library::Open(m_path);
        MakeMother(*library, m_clock.Now());
        DeleteItem(*library, 2);
        BackupItems items(m_backup, m_home->Path());
        items.BringBack(2, *library);
        const QString later = QString::number(m_clock.Now().Seconds() + 1);
        QCOMPARE(Texts(*library, u"SELECT DateAdded FROM ItemLinks"_s), (QStringList{later, later}));
    }

    void itemThatIsStillThere_comesBeside()
    {
        const auto library = Library::Open(m_path);
        BackupItems items(m_backup, m_home->Path());
        const qint64 id = items.BringBack(2, *library, 3);
        QCOMPARE(Texts(*library, u"SELECT ID FROM Items WHERE Title = 'wänted' ORDER BY ID"_s),
                 (QStringList{u"2"_s, QString::number(id)}));
        QCOMPARE(library->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {id}), Value(3));
        QCOMPARE(CountOf(*library, u"ItemLinks"_s), 2);
        QB_VERIFY_RAISES(items.BringBack(77, *library), 3265);
        QVERIFY(!Raised([&] { items.BringBack(2, *library, 4711); }).isEmpty());
        QCOMPARE(CountOf(*library, u"Items"_s), 4);
        QCOMPARE(StoredNames(library->FilesFolder()).size(), 2);
    }

    void reservedTitle_isRefusedAtTheTop()
    {
        const QString reserved = u"Orphaned Items"_s;
        const QString path = m_home->Path(u"orphans.qbd"_s);
        const QString backup = m_home->Path(u"o.qbb"_s);
        AddItem(*MakeLibrary(path), 0, reserved);
        BackUpLibrary(path, backup, {});
        const auto library = Library::Open(m_path);
        BackupItems items(backup, m_home->Path());
        QVERIFY(!Raised([&] { items.BringBack(1, *library, 0); }).isEmpty());
        QCOMPARE(CountOf(*library, u"Items"_s), 3);
        items.BringBack(1, *library, 3); // it is one like others there
    }

    void otherLibrary_getsItAtTheTop()
    {
        const auto library = MakeLibrary(m_home->Path(u"else.qbd"_s));
        AddItem(*library, 0, u"number 1 of its own"_s);
        BackupItems items(m_backup, m_home->Path());
        const qint64 id = items.BringBack(2, *library);
        QCOMPARE(library->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {id}), Value(0));
        QCOMPARE(CountOf(*library, u"ItemLinks"_s), 0);
    }

    void nameThatLeadsOut_isNotBroughtBack()
    {
        auto library = Library::Open(m_path);
        library->Execute(u"UPDATE Files SET Title = '../../out'"_s);
        WriteFile(library->FilesFolder() + u"1 - x"_s, "x");
        library.reset();
        BackUpLibrary(m_path, m_backup, {});
        library = Library::Open(m_path);
        // Such a file can't be in a backup of this program's making: there is none of that name.
        BackupItems items(m_backup, m_home->Path());
        const qint64 id = items.BringBack(2, *library);
        QCOMPARE(library->QueryValue(u"SELECT count(*) FROM Files WHERE CodeID = ?"_s, {id}), Value(0));
    }

    void foreignNameThatLeadsOut_isRefused()
    {
        BrindletonZip zip;
        QVERIFY(zip.ExtractTo(m_backup, m_home->Path()));
        DBEngine::OpenDatabase(m_home->Path(u"b.qbt"_s))->Execute(u"UPDATE Files SET Title = '../../../out'"_s);
        zip.SetZipFileName(m_backup);
        zip.AddFile(m_home->Path(u"b.qbt"_s));
        QVERIFY(zip.Zip());
        const auto library = Library::Open(m_path);
        BackupItems items(m_backup, m_home->Path());
        QB_VERIFY_RAISES(items.BringBack(2, *library), 3000);
        QCOMPARE(ContentsOf(m_home->Path()).keys().filter(u"out"_s), QStringList());
    }

    // Compaction

    void compaction_keepsAllAndFreesRoom()
    {
        {
            const auto library = Library::Open(m_path);
            AddItem(*library, 0, u"big"_s, QString(500'000, u'y'));
            DeleteItem(*library, 4);
        }
        const QMap<QString, QByteArray> before = StateOf(m_path);
        const qint64 size = QFileInfo(m_path).size();
        QVERIFY(CompactLibrary(m_path, m_work) > 400'000);
        QVERIFY(QFileInfo(m_path).size() < size - 400'000);
        QCOMPARE(DifferenceOf(StateOf(m_path), before), QString());
        QCOMPARE(NamesBeside(), (QStringList{u"Bücher.qbd"_s, u"Bücher_Files"_s, u"Bücher_HTML"_s}));
        const auto open = Library::Open(m_path);
        QB_VERIFY_RAISES(CompactLibrary(m_path, m_work), 3045);
        QB_VERIFY_RAISES(CompactLibrary(m_home->Path(u"lib/none.qbd"_s), m_work), 3024);
    }

    // The session

    void session_isUndone()
    {
        const QMap<QString, QByteArray> before = StateOf(m_path);
        MakeSessionCopy(m_path);
        {
            const auto library = Library::Open(m_path);
            AddItem(*library, 0, u"of this session"_s);
            QB_VERIFY_RAISES(UndoSession(m_path), 3045);
        }
        UndoSession(m_path);
        QCOMPARE(DifferenceOf(StateOf(m_path), before), QString());
        QVERIFY(QFileInfo::exists(SessionCopyPath())); // it can be done again
    }

    void undo_givesNobodyMoreRights()
    {
        MakeSessionCopy(m_path);
        QVERIFY(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner));
        const QFile::Permissions before = QFile::permissions(m_path);
        UndoSession(m_path);
        QCOMPARE(QFile::permissions(m_path), before);
    }

    void copyThatFails_leavesNoneOfAnEarlierSession()
    {
        MakeSessionCopy(m_path);
        QVERIFY(WhyNotUndone(m_path).isEmpty());
        QB_VERIFY_RAISES(MakeSessionCopy(m_home->Path(u"lib/none.qbd"_s)), 3024);
        QVERIFY(!QFileInfo::exists(SessionCopyPath()));
        QVERIFY(!WhyNotUndone(m_path).isEmpty());
    }

    void copyThatIsRemoved_leavesNothing()
    {
        const QStringList before = QDir(ApplicationFolder()).entryList(QDir::Files | QDir::Hidden);
        RemoveSessionCopy(); // of none
        MakeSessionCopy(m_path);
        RemoveSessionCopy();
        QCOMPARE(QDir(ApplicationFolder()).entryList(QDir::Files | QDir::Hidden), before);
        QB_VERIFY_RAISES(UndoSession(m_path), 3024);
    }

    void copyThatIsDamaged_isNotTaken()
    {
        MakeSessionCopy(m_path);
        DBEngine::OpenDatabase(SessionCopyPath())
            ->Execute(u"INSERT INTO Properties (DBID) SELECT DBID FROM Properties"_s);
        const QMap<QString, QByteArray> before = StateOf(m_path);
        QB_VERIFY_RAISES(UndoSession(m_path), 3049);
        QCOMPARE(DifferenceOf(StateOf(m_path), before), QString());
    }

    void copyOfAnotherLibrary_isNotTaken()
    {
        QB_VERIFY_RAISES(UndoSession(m_path), 3024);
        const QString other = m_home->Path(u"other.qbd"_s);
        MakeLibrary(other).reset();
        MakeSessionCopy(other);
        const QMap<QString, QByteArray> before = StateOf(m_path);
        QB_VERIFY_RAISES(UndoSession(m_path), 3024);
        QVERIFY(QFile::remove(ApplicationFolder() + u"KTSStartupBackup.path"_s));
        QB_VERIFY_RAISES(UndoSession(m_path), 3024);      // the copy itself says whose it is
        const QString twin = m_home->Path(u"twin.qbd"_s); // a copy by hand, with the identity of the first
        QVERIFY(QFile::copy(m_path, twin));
        MakeSessionCopy(twin);
        QB_VERIFY_RAISES(UndoSession(m_path), 3024);
        QCOMPARE(DifferenceOf(StateOf(m_path), before), QString());
        QVERIFY(WhyNotUndone(twin).isEmpty());
    }
};

QB_TEST_MAIN(TestBackupItems)
#include "tst_backup_items.moc"
