#include "replication/ReplicaFamily.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;

} // namespace

/// Faults in the rows of a synchronization file are told, and the merge goes on over them.
class TestMergeFaults : public QObject {
    Q_OBJECT

    std::unique_ptr<Family> f;

    void Change(const QString& sql)
    {
        const auto database = f->Unpack();
        database->Execute(sql);
        WriteFile(f->File, ReadFile(database->Name()));
    }
    /// Takes the changed file in, which tells the fault and no other; whatever a query asks for is then as expected.
    void VerifyTold(const QString& path, const QString& fault, const QString& query, const QString& expected)
    {
        f->Prompts.ExpectMsgBox(u"Error"_s);
        const SyncResult result = f->TakeIn(path);
        QVERIFY(result.Done);
        QCOMPARE(result.Report.Faults.size(), size_t(1));
        QCOMPARE(result.Report.Faults[0].Text, fault);
        QCOMPARE(f->Prompts.Messages.last().Text, fault);
        QCOMPARE(f->Prompts.Messages.last().Icon, MsgBoxIcon::Critical);
        QCOMPARE(Texts(*Library::Open(path), query).join(u';'), expected);
        QCOMPARE(Family::TitleOf(path, Family::P), u"P by A"_s); // the rest is taken in
    }
    static void AddRow(const char* name, const QString& sql, const QString& fault, const QString& query,
                       const QString& expected)
    {
        QTest::newRow(name) << sql << fault << query << expected;
    }
    static void AddColumns()
    {
        for (const char* column : {"sql", "fault", "query", "expected"})
            QTest::addColumn<QString>(column);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        f = std::make_unique<Family>();
        f->EditTitle(f->A(), Family::P, u"P by A"_s);
        f->AttachTo(f->A(), Family::Q, u"good.txt"_s, "good");
    }
    void cleanup() { f.reset(); }

    void faultInWhatAChildSends_isTold_data()
    {
        AddColumns();
        const QString files = u"SELECT Title || ' ' || coalesce(Description, '') FROM Files ORDER BY Title"_s;
        const QString links = u"SELECT count(*) FROM ItemLinks"_s;
        AddRow("new item whose parent is missing",
               u"INSERT INTO Items (ID, Title, ParentID, MotherRecordID, MotherParentID, LastChanged) SELECT 500, "
               "'lost', 499, -1, -1, LastChanged FROM Items"_s,
               u"Error in CDBManipulate class; UpdateItemsIDsAndParents subroutine.\r\nMissing required record in "
               "synchronization file."_s,
               u"SELECT p.Title FROM Items i JOIN Items p ON p.ID = i.ParentID WHERE i.Title = 'lost'"_s,
               u"Orphaned Items"_s);
        AddRow("link to nothing",
               u"INSERT INTO ItemLinks (ItemID, LinkItemID, MotherItemID, MotherLinkItemID) VALUES (1, 999, 1, 0)"_s,
               u"Required record in Items table in synchronization file was not found! (CDBManipulate; "
               "UpdateItemLinksIDs subroutine)"_s,
               links, u"1"_s);
        AddRow("known file with contents",
               u"INSERT INTO Files (ID, Title, CodeID, MotherRecordID, MotherCodeID, File, LastUpdated, Description) "
               "SELECT 1, 'f Ü.bin', 5, 1, 5, x'00', LastUpdated, 'other' FROM Files"_s,
               u"A file record has been changed, but exports also the file itself!"_s, files, u"f Ü.bin ;good.txt "_s);
        AddRow("file of an item that is missing", // before a good one
               u"INSERT INTO Files (rowid, ID, Title, CodeID, MotherRecordID, MotherCodeID, File) "
               "VALUES (-1, 77, 'bad.txt', 999, 0, 0, x'61')"_s,
               u"An item record is missing for a current file record!"_s, files, u"f Ü.bin ;good.txt "_s);
        AddRow("page of an item that is missing",
               u"INSERT INTO HTMLFiles (ItemIDRef, Name, Folder, MotherRecordID, File) VALUES (888, '888.htm', '', 0, "
               "x'61')"_s,
               u"Invalid HTMLFile name - it doesn't exist in the main db. (CDBManipulate, CopyHTMLFiles function)"_s,
               links, u"1"_s);
    }
    void faultInWhatAChildSends_isTold()
    {
        QFETCH(QString, sql);
        QFETCH(QString, fault);
        QFETCH(QString, query);
        QFETCH(QString, expected);
        f->ExportOf(f->A());
        Change(sql);
        VerifyTold(f->M(), fault, query, expected);
    }

    void faultInTheAnswer_isTold_data()
    {
        AddColumns();
        const QString missing = u"Required record missing! (CDBManipulate; %1"_s;
        const QString links = u"SELECT count(*) FROM ItemLinks"_s;
        const QString files = u"SELECT Title FROM Files ORDER BY Title"_s;
        const QString item = u"INSERT INTO Items (ID, Title, MotherRecordID, MotherParentID, IDChanged, ConflictItem, "
                             "LastChanged) VALUES (600, 'lost', 600, 999, 0, %1, 1)"_s;
        AddRow("conflict of an item that is missing", item.arg(-1),
               missing.arg(u"CopyNewAndUpdatedItemsToReplica sub"_s), u"SELECT 1 FROM Items WHERE Title = 'lost'"_s,
               {});
        AddRow("item whose parent is missing", item.arg(0),
               missing.arg(u"UpdateItemsParentIDsInReplica subroutine) /1/"_s),
               u"SELECT p.Title FROM Items i JOIN Items p ON p.ID = i.ParentID WHERE i.Title = 'lost'"_s,
               u"Orphaned Items"_s);
        AddRow("link to nothing",
               u"INSERT INTO ItemLinks (ItemID, LinkItemID, MotherItemID, MotherLinkItemID, IDChanged) VALUES (1, 2, "
               "1, 999, 0)"_s,
               u"Required record in Items table in synchronization file was not found! (CDBManipulate; "
               "UpdateItemLinksIDs subroutine)"_s,
               links, u"1"_s);
        AddRow("parent of a version that lost", u"UPDATE Items SET MotherParentID = 999 WHERE MotherRecordID = 5"_s,
               missing.arg(u"UpdateParentIDsInTempTables subroutine)"_s),
               u"SELECT Title || ' ' || ParentID FROM TempItems"_s, u"X by M 999"_s);
        const QString file = u"INSERT INTO Files (ID, Title, CodeID, MotherRecordID, MotherCodeID, IDChanged, File) "
                             "VALUES (700, 'bad.txt', 5, 700, %1, 0, %2)"_s;
        AddRow("description of a file that is missing", file.arg(u"5"_s, u"NULL"_s),
               missing.arg(u"CopyFilesToReplica subroutine) /2/"_s), files, u"f Ü.bin;good.txt"_s);
        AddRow("file of an item that is missing", file.arg(u"999"_s, u"x'61'"_s),
               missing.arg(u"CopyFilesToReplica subroutine) /3/"_s), files, u"f Ü.bin;good.txt"_s);
        AddRow("page of an item that is missing",
               u"INSERT INTO HTMLFiles (ItemIDRef, Name, Folder, MotherRecordID, File) VALUES (888, '888.htm', '', "
               "888, x'61')"_s,
               u"Invalid HTMLFile name - it doesn't exist in the main db. (CDBManipulate, CopyHTMLFiles function)"_s,
               links, u"1"_s);
    }
    void faultInTheAnswer_isTold()
    {
        QFETCH(QString, sql);
        QFETCH(QString, fault);
        QFETCH(QString, query);
        QFETCH(QString, expected);
        f->EditTitle(f->M(), Family::X, u"X by M"_s);
        f->ExportOf(f->A());
        QVERIFY(f->TakeIn(f->M()).Done);
        f->EditTitle(f->A(), Family::X, u"X since"_s); // the later one
        Change(sql);
        VerifyTold(f->A(), fault, query, expected);
    }
};

QB_TEST_MAIN(TestMergeFaults)
#include "tst_merge_faults.moc"
