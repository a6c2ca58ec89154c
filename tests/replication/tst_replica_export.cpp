#include "replication/ReplicaPair.h"

#include "help/HelpTopics.h"
#include "platform/archive/BrindletonZip.h"
#include "replication/ExportRows.h"
#include "replication/SystemDate.h"
#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "store/PendingReplica.h"
#include "store/ReplicaLog.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/LibraryState.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"
#include "support/Unasked.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A child writes its changes into one file, and a mother hers into the tables for a child.
class TestReplicaExport : public QObject {
    Q_OBJECT

    std::unique_ptr<ReplicaPair> p;

    static QStringList Rows(Database& file, const QString& columns, const QString& table, const QString& orderBy)
    {
        return Texts(file, u"SELECT %1 FROM %2 ORDER BY %3"_s.arg(columns, table, orderBy));
    }
    QStringList Items(Database& file) const
    {
        return Rows(file, u"ID || ' ' || MotherRecordID || ' ' || MotherParentID || ' ' || Title"_s, u"Items"_s,
                    u"ID"_s);
    }
    Date Exported() const { return Library::Open(p->Child)->LastExportedDate(); }
    /// Runs what fails, and holds that child and folder are as they were.
    template <class Body>
    void VerifyNothingHappens(Body&& body)
    {
        const QMap<QString, QByteArray> before = StateOf(p->Child);
        const bool wasThere = QFile::exists(p->File);
        body();
        QCOMPARE(DifferenceOf(StateOf(p->Child), before), QString());
        QCOMPARE(QFile::exists(p->File), wasThere);
        QVERIFY(Exported().IsNone());
        QCOMPARE(QDir(p->Home.Path()).entryList({u".unpacking*"_s}, QDir::AllEntries | QDir::Hidden), QStringList());
    }
    /// The mother's side: her changes in the X tables of a file that the child has written.
    std::unique_ptr<Database> ExportOfMother(bool expected = true)
    {
        p->Export();
        const QString file = p->Home.Path(u"synchro.qbs"_s);
        QFile::remove(file);
        QFile::copy(p->Unpack()->Name(), file);
        CDBCreate().CreateAditionalTablesinSynchroDB(file);
        const auto mother = p->OpenMother();
        {
            const AttachedFile attached(*mother, file, u"synchro"_s);
            Transaction transaction(*mother);
            ExportCounts counts;
            const bool isDone = ExportChangedItems({.Connection = *mother,
                                                    .Library = u"main"_s,
                                                    .File = u"synchro"_s,
                                                    .FilesFolder = mother->FilesFolder(),
                                                    .HTMLFolder = mother->HTMLFolder()},
                                                   true, {}, counts);
            transaction.Commit();
            [=] { QCOMPARE(isDone, expected); }();
        }
        return DBEngine::OpenDatabase(file);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        p = std::make_unique<ReplicaPair>();
    }
    void cleanup() { p.reset(); }

    void nothingChanged_leavesNoRows()
    {
        const Date bound = p->OpenChild()->Replica().LastSynchronized;
        const auto file = p->Export();
        for (const QString& table : file->TableNames())
            QCOMPARE(CountOf(*file, table), table == u"Properties" ? 1 : 0);
        QCOMPARE(p->Changes->Counts.Changes(), 0);
        const Recordset properties = file->OpenRecordset(u"Properties"_s);
        const auto child = p->OpenChild();
        QCOMPARE(properties[u"dbid"_s].ToText(), child->Identity());
        QCOMPARE(properties[u"LastSynchronized"_s].ToDate(), bound);
        QCOMPARE(properties[u"LastExported"_s].ToDate(), p->Changes->Exported);
        QCOMPARE(properties[u"LanguageUsed"_s].ToText(), u"C++"_s);
        QCOMPARE(child->LastExportedDate(), p->Changes->Exported);
        QCOMPARE(child->Replica().LastSynchronized, bound);
        QVERIFY(p->Changes->Exported > bound);
        QCOMPARE(BrindletonZip().FirstFileName(p->File), u"changes.qbt"_s);
    }

    void changedItem_travelsWithItsTexts()
    {
        const auto child = p->OpenChild();
        p->Edit(*child, 5, u"X changed"_s);
        const auto file = p->Export();
        QCOMPARE(Items(*file), QStringList{u"5 5 4 X changed"_s});
        QCOMPARE(file->QueryValue(u"SELECT Code FROM Items"_s),
                 child->QueryValue(u"SELECT Code FROM Items WHERE ID = 5"_s));
        QCOMPARE(file->QueryValue(u"SELECT LastChanged FROM Items"_s).ToDate(), p->Clock.Now());
        QCOMPARE(p->Changes->Counts.Items, 1);
    }

    void rowsAtTheBound_stay()
    {
        const auto child = p->OpenChild();
        const Date bound = child->Replica().LastSynchronized;
        child->Execute(u"UPDATE Items SET LastChanged = ?, HTMLLastUpdated = ?"_s, {bound, bound});
        child->Execute(u"UPDATE Files SET LastUpdated = ?, DateAdded = ?"_s, {bound, bound});
        child->Execute(u"UPDATE ItemLinks SET DateAdded = ?"_s, {bound});
        QCOMPARE(p->Export()->QueryValue(u"SELECT count(*) FROM Items"_s), Value(0));
        QCOMPARE(p->Changes->Counts.Changes(), 0);
    }

    void newItems_sayWhereTheyBelong()
    {
        const auto child = p->OpenChild();
        const qint64 top = AddItem(*child, 0, u"top"_s);
        const qint64 inner = AddItem(*child, top, u"inner"_s);
        const qint64 known = AddItem(*child, 4, u"below a known one"_s);
        QCOMPARE(Items(*p->Export()), (QStringList{u"%1 -1 0 top"_s.arg(top), u"%1 -1 -1 inner"_s.arg(inner),
                                                   u"%1 -1 4 below a known one"_s.arg(known)}));
    }

    void mothersNumbers_areTakenAnew()
    {
        const auto child = p->OpenChild();
        const qint64 item = AddItem(*child, 2, u"item"_s);
        const qint64 file = p->Attach(*child, 2, u"a.txt"_s, "a");
        child->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (2, 5, ?)"_s, {p->Clock.Now()});
        // Since then the parent has become known to the mother under another number.
        child->Execute(u"UPDATE Items SET MotherRecordID = 1002 WHERE ID = 2"_s);
        child->Execute(u"UPDATE Items SET MotherParentID = -2, MotherRecordID = 0 WHERE ID = ?"_s, {item});
        child->Execute(u"UPDATE Files SET MotherRecordID = NULL, MotherCodeID = -1 WHERE ID = ?"_s, {file});
        const auto changes = p->Export();
        QCOMPARE(Items(*changes), QStringList{u"%1 -1 1002 item"_s.arg(item)});
        QCOMPARE(Texts(*changes, u"SELECT MotherRecordID || ' ' || MotherCodeID FROM Files"_s),
                 QStringList{u"0 1002"_s});
        QCOMPARE(Texts(*changes, u"SELECT MotherItemID || ' ' || MotherLinkItemID FROM ItemLinks"_s),
                 QStringList{u"1002 5"_s});
        QCOMPARE(child->QueryValue(u"SELECT MotherParentID FROM Items WHERE ID = ?"_s, {item}), Value(1002));
        QCOMPARE(child->QueryValue(u"SELECT MotherCodeID FROM Files WHERE ID = ?"_s, {file}), Value(1002));
    }

    void files_travelWithContentsWhenTheyAreNew()
    {
        const auto child = p->OpenChild();
        CFileObject old;
        old.Initialise(*child, u"1"_s);
        old.SetDescription(u"described"_s);
        old.SetDescriptionChanged(true);
        old.Commit();
        const qint64 empty = p->Attach(*child, 5, u"empty"_s, {});
        const qint64 full = p->Attach(*child, 5, u"Ü \"quote\".bin"_s, QByteArray(40000, 'n'));
        const auto file = p->Export();
        QCOMPARE(Rows(*file,
                      u"ID || ' ' || Title || ' ' || coalesce(length(File), 'none') || ' ' || MotherRecordID || ' ' "
                      "|| MotherCodeID"_s,
                      u"Files"_s, u"ID"_s),
                 (QStringList{u"1 f Ü.bin none 1 5"_s, u"%1 empty 0 0 5"_s.arg(empty),
                              u"%1 Ü \"quote\".bin 40000 0 5"_s.arg(full)}));
        QCOMPARE(file->QueryValue(u"SELECT Description FROM Files WHERE ID = 1"_s), Value(u"described"_s));
        QCOMPARE(p->Changes->Counts.Contents, 2);
    }

    void fileWithANewDateAlone_travelsWhole()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Files SET DateAdded = ?"_s, {p->Clock.Now()}); // it was moved to another item
        QCOMPARE(Texts(*p->Export(), u"SELECT File FROM Files"_s), QStringList{u"file f"_s});
    }

    void newFileThatIsMissing_isCounted()
    {
        const auto child = p->OpenChild();
        const qint64 id = p->Attach(*child, 5, u"a.txt"_s, "a");
        QFile::remove(child->FilesFolder() + u"%1 - a.txt"_s.arg(id));
        QCOMPARE(Texts(*p->Export(), u"SELECT File IS NULL FROM Files"_s), QStringList{u"1"_s});
        QCOMPARE(p->Changes->Counts.Missing, 1);
        QCOMPARE(p->Changes->Counts.MissingText(),
                 u"1 new stored file is missing in the library, and so in the export."_s);
    }

    void links_travelWhenTheyAreNew()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE ItemLinks SET Note = 'another', DateUpdated = ?"_s, {p->Clock.Now()});
        const qint64 item = AddItem(*child, 0, u"new"_s);
        child->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (1, ?1, ?2), (2, 4711, ?2)"_s,
                       {item, p->Clock.Now()});
        const auto file = p->Export();
        QCOMPARE(Texts(*file, u"SELECT ItemID || ' ' || LinkItemID || ' ' || MotherItemID || ' ' || MotherLinkItemID "
                              "FROM ItemLinks"_s),
                 QStringList{u"1 %1 1 0"_s.arg(item)});
        QCOMPARE(file->QueryValue(u"SELECT ID FROM ItemLinks"_s), Value(1)); // numbered by the file
    }

    void page_travelsWithTheNumberOfItsItem()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Items SET HTMLLastUpdated = ?, MotherRecordID = 1006 WHERE ID = 6"_s, {p->Clock.Now()});
        const qint64 item = AddItem(*child, 0, u"new"_s);
        child->Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = ? WHERE ID = ?"_s, {p->Clock.Now(), item});
        WriteFile(child->HTMLFolder() + u"%1.htm"_s.arg(item), "new page");
        const auto file = p->Export();
        QCOMPARE(Rows(*file, u"ItemIDRef || ' ' || Name || ' ' || MotherRecordID"_s, u"HTMLFiles"_s, u"rowid"_s),
                 (QStringList{u"6 6.htm 1006"_s, u"6 bild.png 1006"_s, u"%1 %1.htm 0"_s.arg(item)}));
        QCOMPARE(Items(*file).size(), 1);
        QCOMPARE(p->Changes->Counts.Pages, 3);
    }

    void pageThatIsMissing_staysTheMothers()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Items SET HTMLLastUpdated = ?, LastChanged = ? WHERE ID = 6"_s,
                       {p->Clock.Now(), p->Clock.Now()});
        QFile::remove(child->HTMLFolder() + u"6.htm"_s);
        const auto file = p->Export();
        QCOMPARE(p->Changes->Counts.MissingPages, 1);
        QCOMPARE(p->Changes->Counts.MissingText(), u"1 web page is missing in the library, and so in the export."_s);
        QCOMPARE(file->QueryValue(u"SELECT HTMLPage FROM Items"_s), Value(-1));
        QCOMPARE(child->QueryValue(u"SELECT HTMLPage FROM Items WHERE ID = 6"_s), Value(-1));
    }

    void pageThatWasTakenAway_isNoMissingOne()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Items SET HTMLPage = 0, HTMLLastUpdated = ? WHERE ID = 6"_s, {p->Clock.Now()});
        QCOMPARE(CountOf(*p->Export(), u"HTMLFiles"_s), 0);
        QCOMPARE(p->Changes->Counts.MissingText(), QString());
    }

    // Deletions

    void deletions_goByTheMothersNumbers()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Items SET MotherRecordID = 1002 WHERE ID = 2"_s); // after a round
        child->Execute(u"UPDATE Files SET MotherRecordID = 1001"_s);
        p->DeleteItem(*child, 2);
        CFileObject stored;
        stored.Initialise(*child, u"1"_s);
        stored.Delete();
        stored.Commit();
        const auto file = p->Export();
        QCOMPARE(Texts(*child, u"SELECT ItemID FROM DeletedItems"_s), QStringList{u"2"_s});
        QCOMPARE(Texts(*file, u"SELECT ItemID FROM DeletedItems"_s), QStringList{u"1002"_s});
        QCOMPARE(Texts(*file, u"SELECT ItemID FROM DeletedFiles"_s), QStringList{u"1001"_s});
        QCOMPARE(file->QueryValue(u"SELECT DateDeleted FROM DeletedItems"_s).ToDate(), p->Clock.Now());
        QCOMPARE(p->Changes->Counts.Deleted, 2);
    }

    void itemThatWasChangedAndThenDeleted_isTold()
    {
        const auto child = p->OpenChild();
        p->Edit(*child, 2, u"changed"_s);
        p->Clock.AddSeconds(10);
        p->DeleteItem(*child, 2);
        QCOMPARE(CountOf(*child, u"DeletedItems"_s), 0);
        QCOMPARE(Texts(*p->Export(), u"SELECT ItemID FROM DeletedItems"_s), QStringList{u"2"_s});
    }

    void itemThatTheMotherNeverHad_leavesNoTrace()
    {
        const auto child = p->OpenChild();
        const qint64 item = AddItem(*child, 0, u"short-lived"_s);
        const qint64 stored = p->Attach(*child, item, u"a.txt"_s, "a");
        QVERIFY(stored > 0);
        p->Clock.AddSeconds(10);
        p->DeleteItem(*child, item);
        p->Export();
        QCOMPARE(p->Changes->Counts.Changes(), 0);
    }

    void deletedFileThatTheMotherNeverHad_isNotTold()
    {
        p->OpenChild()->Execute(u"INSERT INTO DeletedFiles (ItemID, DateDeleted) VALUES (NULL, ?1), (0, ?1)"_s,
                                {p->Clock.Now()});
        QCOMPARE(p->Export()->QueryValue(u"SELECT count(*) FROM DeletedFiles"_s).ToLong(), 0);
    }

    void deletedLink_isTold()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Items SET MotherRecordID = 1005 WHERE ID = 5"_s);
        child->Execute(u"UPDATE ItemLinks SET MotherItemID = 1005"_s);
        CCodeItem item;
        item.Initialise(*child, u"5"_s);
        QVERIFY(!item.Title().isEmpty()); // and its links with it
        const auto link = item.Links().Item(u"L6"_s);
        QVERIFY(link);
        link->Direction = LinkDirection::None;
        link->DirtyFlag = true;
        item.SetLinksChanged(true);
        item.Commit();
        QCOMPARE(Texts(*p->Export(), u"SELECT ItemID || ' ' || LinkItemID FROM DeletedItemLinks"_s),
                 QStringList{u"1005 6"_s});
    }

    void deletionsOfWhatTheMotherCantKnow_stay()
    {
        const auto child = p->OpenChild();
        const auto note = [&](const QString& table, qint64 mother, qint64 motherSecond) {
            ReplicaLog(*child).Note({.Table = table,
                                     .Record = 70,
                                     .Second = 71,
                                     .MotherRecord = mother,
                                     .MotherSecond = motherSecond,
                                     .Moment = p->Clock.Now(),
                                     .RowDate = p->Clock.Now()});
        };
        note(u"Items"_s, 0, 0);
        note(u"ItemLinks"_s, 5, 0);
        child->Execute(u"INSERT INTO DeletedFiles (ItemID, DateDeleted) VALUES (0, ?)"_s, {p->Clock.Now()});
        const auto file = p->Export();
        for (const QString& table : {u"DeletedItems"_s, u"DeletedFiles"_s, u"DeletedItemLinks"_s})
            QCOMPARE(CountOf(*file, table), 0);
    }

    void itemBelowTheOrphans_saysSo()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Items SET ParentID = ?, LastChanged = ? WHERE ID = 2"_s,
                       {OrphanFolder(*child), p->Clock.Now()}); // which is each library's own
        QCOMPARE(Items(*p->Export()), QStringList{u"2 2 -2 Q"_s});
    }

    // What came from the mother

    void pageThatWasTakenOver_isNoneOfTheChilds()
    {
        const auto child = p->OpenChild();
        const Date bound = child->Replica().LastSynchronized;
        const Date later = Date::FromSeconds(bound.Seconds() + 30);
        child->Execute(u"UPDATE Items SET HTMLLastUpdated = ?, LastChanged = ? WHERE ID = 6"_s,
                       {later, p->Clock.Now()}); // its texts are
        ReplicaLog(*child).Note(
            {.Event = ReplicaEvent::TakenOver, .Table = u"Items"_s, .Record = 6, .Moment = later, .RowDate = later});
        const auto file = p->Export();
        QCOMPARE(CountOf(*file, u"HTMLFiles"_s), 0);
        QCOMPARE(file->QueryValue(u"SELECT HTMLLastUpdated FROM Items"_s).ToDate(), bound);
    }

    void fileThatTheMotherHasLost_travelsWhole()
    {
        const auto child = p->OpenChild();
        child->Execute(u"UPDATE Files SET MotherRecordID = 0"_s);
        ReplicaLog(*child).Note({.Event = ReplicaEvent::Changed,
                                 .Table = u"Files"_s,
                                 .Record = 1,
                                 .Moment = p->Clock.Now(),
                                 .RowDate = p->Clock.Now()});
        QCOMPARE(Texts(*p->Export(), u"SELECT File FROM Files"_s), QStringList{u"file f"_s});
    }

    void whatWasTakenOver_isNoChangeUntilItIsChanged()
    {
        const auto child = p->OpenChild();
        const Date later = Date::FromSeconds(p->Clock.Now().Seconds() + 60);
        for (const qint64 id : {1, 2}) {
            child->Execute(u"UPDATE Items SET LastChanged = ? WHERE ID = ?"_s, {later, id});
            ReplicaLog(*child).Note({.Event = ReplicaEvent::TakenOver,
                                     .Table = u"Items"_s,
                                     .Record = id,
                                     .Moment = p->Clock.Now(),
                                     .RowDate = later});
        }
        QVERIFY(!InvalidSystemDate(*child, u"main"_s, p->Clock.Now())); // nor is it a date in the future
        p->Clock.AddSeconds(120);
        p->Edit(*child, 2, u"changed since"_s);
        QCOMPARE(Items(*p->Export()), QStringList{u"2 2 0 changed since"_s});
    }

    // The clock

    void clockBehindTheSynchronization_isAlerted()
    {
        p->Clock.AddSeconds(-120);
        p->Prompts.ExpectMsgBox(u"System Date Alert"_s);
        VerifyNothingHappens([this] { QVERIFY(!p->Export()); });
        QCOMPARE(p->Prompts.Messages.last().Text,
                 u"The actual system date is lower than date of last synchronization!\r\nCheck the system date. If the "
                 "date is right, than you have created the replica while the system date was set wrongly and you will "
                 "have to create new replica and delete the old one.\r\nYou should also use 'Database Repair' tool "
                 "from the 'Tools' menu to correct any wrong dates in main database.\r\n\r\nSee help for more "
                 "details."_s);
        QCOMPARE(p->Prompts.Messages.last().Icon, MsgBoxIcon::Exclamation);
        QCOMPARE(TopicOf({p->Prompts.Messages.last().HelpName}), u"replication#when-the-clock-is-wrong"_s);
    }

    void rowsInTheFuture_areAlertedWithTheirNumbers()
    {
        const auto child = p->OpenChild();
        const Date later = Date::FromSeconds(p->Clock.Now().Seconds() + 1);
        child->Execute(u"UPDATE Items SET LastChanged = ? WHERE ID IN (1, 2)"_s, {later});
        child->Execute(u"UPDATE Items SET HTMLLastUpdated = ? WHERE ID = 3"_s, {later});
        child->Execute(u"UPDATE Items SET Created = ?, LastChanged = ? WHERE ID = 4"_s,
                       {p->Clock.Now(), p->Clock.Now()});
        child->Execute(u"UPDATE Files SET DateAdded = ?"_s, {later});
        child->Execute(u"UPDATE ItemLinks SET DateAdded = ?"_s, {later});
        for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s})
            child->Execute(u"INSERT INTO %1 (ItemID, DateDeleted) VALUES (1, ?)"_s.arg(table), {later});
        p->Prompts.ExpectMsgBox(u"System Date Alert"_s);
        VerifyNothingHappens([this] { QVERIFY(!p->Export()); });
        const QString text = p->Prompts.Messages.last().Text;
        QVERIFY2(text.startsWith(u"ou can't synchronize because one or more records in the database has higher date of "
                                 "its update than is current system date.\r\nPlease check the system clock date and "
                                 "try again. \r\nShould this problem occure again, that would mean, that you have used "
                                 "the program while the system clock date was invalid.\r\nUse 'Database Repair' tool "
                                 "from the 'Tools' menu to correct any wrong dates in database.\r\n\r\nSee help for "
                                 "more details.\r\n\r\n"_s),
                 qPrintable(text));
        QVERIFY2(text.endsWith(u"(Tables and number of records containing invalid date follow: Items (3),Files "
                               "(1),Item links (1),Deleted files (1),Deleted item links (1),Deleted items (1),"_s),
                 qPrintable(text));
        QCOMPARE(TopicOf({p->Prompts.Messages.last().HelpName}), u"replication#when-the-clock-is-wrong"_s);
        p->Clock.AddSeconds(1);
        QVERIFY(p->Export()); // right again
    }

    void conflictsInTheFuture_areCounted()
    {
        const auto child = p->OpenChild();
        CDBCreate().CreateTemporaryTablesInMainDB(*child);
        const Date later = Date::FromSeconds(p->Clock.Now().Seconds() + 1);
        child->Execute(u"INSERT INTO TempItems (ID, Title, Created) VALUES (1, 'a', ?)"_s, {later});
        child->Execute(u"INSERT INTO TempFiles (Title, LastUpdated) VALUES ('a', ?)"_s, {later});
        p->Prompts.ExpectMsgBox(u"System Date Alert"_s);
        QVERIFY(InvalidSystemDate(*child, u"main"_s, p->Clock.Now()));
        QVERIFY(p->Prompts.Messages.last().Text.endsWith(u": Conflict files (1),Conflict Items (1),"_s));
    }

    // Again

    void exportedChild_exportsAgainOnlyWhenAsked()
    {
        const auto child = p->OpenChild();
        p->Edit(*child, 1, u"first"_s);
        p->Export();
        const Date first = p->Changes->Exported;
        p->Clock.AddSeconds(10);
        AddItem(*child, 0, u"since"_s);
        QB_VERIFY_RAISES(p->Export(), 5);
        QCOMPARE(Exported(), first);
        const auto file = p->Export(ExportAgain::Yes);
        QCOMPARE(Texts(*file, u"SELECT Title FROM Items ORDER BY ID"_s), (QStringList{u"first"_s, u"since"_s}));
        QVERIFY(Exported() > first);
        QCOMPARE(Texts(*child, u"SELECT RowDate FROM ReplicaLog WHERE Event = 5 ORDER BY RowDate"_s),
                 (QStringList{QString::number(first.Seconds()), QString::number(Exported().Seconds())}));
    }

    void exportInTheSecondOfTheStamp_isLaterThanIt()
    {
        p->Clock.AddSeconds(-60);
        p->Export();
        QVERIFY(p->Changes->Exported > p->OpenChild()->Replica().LastSynchronized);
    }

    void libraryThatIsNoChild_isRefused()
    {
        QB_VERIFY_RAISES(WriteChanges(*p->OpenMother(), p->File, ExportAgain::No), 5);
        QVERIFY(!QFile::exists(p->File));
    }

    // Failures

    void targetThatIsNone_isRefused()
    {
        VerifyNothingHappens([this] {
            const auto child = p->OpenChild();
            QB_VERIFY_RAISES(WriteChanges(*child, p->Child, ExportAgain::No), 3204);
            QB_VERIFY_RAISES(WriteChanges(*child, p->MotherFile, ExportAgain::No), 3204);
            QB_VERIFY_RAISES(WriteChanges(*child, p->Home.Path(), ExportAgain::No), 75);
        });
    }

    void fullDisk_leavesTheChildFree()
    {
        const auto child = p->OpenChild();
        p->Attach(*child, 5, u"large"_s, QByteArray(600'000, 'l'));
        for (const int limit : {20'000, 100'000, 300'000, 500'000}) {
            VerifyNothingHappens([&] {
                const Unasked unasked;
                const FileSizeLimit full{rlim_t(limit)};
                bool isDone = false;
                const QString raised = Raised(
                    [&] { isDone = WriteChanges(*child, p->File, ExportAgain::No).has_value(); });
                QVERIFY2(!isDone, qPrintable(QString::number(limit)));
            });
        }
        QVERIFY(p->Export());
    }

    void cancelledWork_leavesTheChildFree()
    {
        WriteFile(p->File, "the one before");
        const auto child = p->OpenChild();
        p->Attach(*child, 5, u"large"_s, QByteArray(4'000'000, 'l'));
        for (const int part : {0, 200, 500, 900}) {
            RecordedWork work;
            work.Ends = [part](qint64 done) { return done >= part; };
            VerifyNothingHappens([&] { QB_VERIFY_RAISES(WriteChanges(*child, p->File, ExportAgain::No, work), 18); });
            QCOMPARE(ReadFile(p->File), "the one before");
        }
        RecordedWork work;
        QVERIFY(WriteChanges(*child, p->File, ExportAgain::No, work));
        QVERIFY(std::is_sorted(work.Done.begin(), work.Done.end()));
        QCOMPARE(work.Done.last(), work.Totals.last());
    }

    void placeThatIsTakenMeanwhile_leavesTheChildFree()
    {
        const auto child = p->OpenChild();
        p->Edit(*child, 1, u"changed"_s);
        RecordedWork work;
        work.Ends = [this](qint64 done) {
            if (done > 850)
                QDir().mkpath(p->File + u"/in the way"_s);
            return false;
        };
        const QMap<QString, QByteArray> before = StateOf(p->Child);
        QB_VERIFY_RAISES(WriteChanges(*child, p->File, ExportAgain::No, work), 75);
        QVERIFY(QFileInfo(p->File).isDir());
        QVERIFY(DBEngine::OpenDatabase(p->Child)->QueryValue(u"SELECT LastExported FROM Properties"_s).IsNull());
        QCOMPARE(DifferenceOf(StateOf(p->Child), before), QString());
        // One that is exported stays so as it was.
        QVERIFY(QDir(p->File).removeRecursively());
        QVERIFY(WriteChanges(*child, p->File, ExportAgain::No));
        const Date exported = Exported();
        p->File = p->Home.Path(u"again.qbs"_s);
        p->Clock.AddSeconds(10);
        QB_VERIFY_RAISES(WriteChanges(*child, p->File, ExportAgain::Yes, work), 75);
        QCOMPARE(Exported(), exported);
        QCOMPARE(Texts(*child, u"SELECT RowDate FROM ReplicaLog WHERE Event = 5"_s),
                 QStringList{QString::number(exported.Seconds())});
    }

    void fileOfTheChild_isReadByNobodyElse()
    {
        QVERIFY(QFile::setPermissions(p->Child, QFile::ReadOwner | QFile::WriteOwner));
        p->Export();
        QVERIFY(!(QFile::permissions(p->File) & (QFile::ReadGroup | QFile::ReadOther)));
    }

    void foldersOfAnother_areNotExported()
    {
        const auto child = p->OpenChild();
        WriteFile(child->FilesFolder() + u".library"_s, "another's");
        VerifyNothingHappens([&] { QB_VERIFY_RAISES(WriteChanges(*child, p->File, ExportAgain::No), 75); });
    }

    void fileOfABrokenDeletion_travels()
    {
        const auto child = p->OpenChild();
        const qint64 id = p->Attach(*child, 5, u"a.txt"_s, "a");
        QVERIFY(QFile::rename(child->FilesFolder() + u"%1 - a.txt"_s.arg(id),
                              child->FilesFolder() + u".leaving-0123456789abcdef0123456789abcdef-%1"_s.arg(id)));
        QCOMPARE(Texts(*p->Export(), u"SELECT File FROM Files"_s), QStringList{u"a"_s});
    }

    void exportWhoseFileNeverGotItsName_isTakenBackAtTheNextOpening()
    {
        p->Export();
        const Date exported = Exported();
        {
            const auto child = DBEngine::OpenDatabase(p->Child);
            NotePendingReplica(*child, {.File = p->File, .Complete = p->File, .Locked = p->Home.Path(u"gone"_s)});
        }
        QCOMPARE(Exported(), exported); // the file is there
        {
            const auto child = DBEngine::OpenDatabase(p->Child);
            NotePendingReplica(*child, {.File = p->File, .Complete = p->File, .Locked = p->Home.Path(u"gone"_s)});
        }
        QFile::remove(p->File);
        QVERIFY(Exported().IsNone());
        QCOMPARE(CountOf(*p->OpenChild(), u"ReplicaLog"_s), 0);
    }

    // The mother's changes

    void mother_exportsWhatChangedAndWhatCameFromOthers()
    {
        const QString childs = Library::Open(p->Child)->Identity();
        {
            const auto mother = p->OpenMother();
            p->Edit(*mother, 1, u"hers"_s);
            const auto note = [&](qint64 id, const QString& origin) {
                ReplicaLog(*mother).Note({.Event = ReplicaEvent::Arrived,
                                          .Table = u"Items"_s,
                                          .Record = id,
                                          .Moment = p->Clock.Now(),
                                          .Origin = origin});
            };
            note(2, u"AnotherOne"_s); // with the date that it has there
            note(3, childs);
            const qint64 stored = p->Attach(*mother, 2, u"from another"_s, "bytes");
            mother->Execute(u"UPDATE Files SET DateAdded = 1000, LastUpdated = 1000 WHERE ID = ?"_s, {stored});
            ReplicaLog(*mother).Note({.Event = ReplicaEvent::Arrived,
                                      .Table = u"Files"_s,
                                      .Record = stored,
                                      .Moment = p->Clock.Now(),
                                      .RowDate = Date::FromSeconds(1000),
                                      .Origin = u"AnotherOne"_s});
            // One that another child has only described goes on without its contents.
            const qint64 described = p->Attach(*mother, 2, u"described"_s, "more bytes");
            mother->Execute(u"UPDATE Files SET DateAdded = 1000, LastUpdated = 2000 WHERE ID = ?"_s, {described});
            ReplicaLog(*mother).Note({.Event = ReplicaEvent::Arrived,
                                      .Table = u"Files"_s,
                                      .Record = described,
                                      .Moment = p->Clock.Now(),
                                      .RowDate = Date::FromSeconds(2000),
                                      .Origin = u"AnotherOne"_s});
            mother->Execute(u"INSERT INTO DeletedItems (ItemID, DateDeleted) VALUES (99, ?)"_s, {p->Clock.Now()});
        }
        const auto file = ExportOfMother();
        QCOMPARE(Rows(*file, u"ID || ' ' || Title"_s, u"ItemsX"_s, u"ID"_s), (QStringList{u"1 hers"_s, u"2 Q"_s}));
        QCOMPARE(Texts(*file, u"SELECT Title || ' ' || coalesce(File, '') FROM FilesX ORDER BY ID"_s),
                 (QStringList{u"from another bytes"_s, u"described "_s}));
        QCOMPARE(CountOf(*file, u"Items"_s), 0);
        QCOMPARE(CountOf(*file, u"DeletedItems"_s), 0);
    }

    void itemThatTheChildLacks_comesWhole()
    {
        {
            const auto mother = p->OpenMother();
            ReplicaLog(*mother).Note({.Event = ReplicaEvent::Missing,
                                      .Table = u"Items"_s,
                                      .Record = 5,
                                      .Moment = p->Clock.Now(),
                                      .Origin = Library::Open(p->Child)->Identity()});
            p->Edit(*mother, 5, u"decided"_s);
        }
        const auto file = ExportOfMother();
        QCOMPARE(Rows(*file, u"Title"_s, u"ItemsX"_s, u"ID"_s), QStringList{u"decided"_s});
        QCOMPARE(Rows(*file, u"Title || ' ' || File"_s, u"FilesX"_s, u"ID"_s), QStringList{u"f Ü.bin file f"_s});
        QCOMPARE(Rows(*file, u"ItemID || ' ' || LinkItemID"_s, u"ItemLinksX"_s, u"ItemID"_s), QStringList{u"5 6"_s});
    }

    void itemThatWaitsForADecision_isForNobodyElse()
    {
        {
            const auto mother = p->OpenMother();
            mother->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = 5"_s);
            ReplicaLog(*mother).Note({.Event = ReplicaEvent::Arrived,
                                      .Table = u"Items"_s,
                                      .Record = 5,
                                      .Moment = p->Clock.Now(),
                                      .Origin = u"AnotherOne"_s});
        }
        QCOMPARE(CountOf(*ExportOfMother(), u"ItemsX"_s), 0);
    }

    void mothersPages_comeWithTheirNumbers()
    {
        {
            const auto mother = p->OpenMother();
            mother->Execute(u"UPDATE Items SET HTMLLastUpdated = ? WHERE ID = 6"_s, {p->Clock.Now()});
        }
        QCOMPARE(Rows(*ExportOfMother(), u"ItemIDRef || ' ' || Name || ' ' || MotherRecordID"_s, u"HTMLFilesX"_s,
                      u"rowid"_s),
                 (QStringList{u"6 6.htm 6"_s, u"6 bild.png 6"_s}));
    }

    void childThatTheMotherForgot_isTold()
    {
        p->OpenMother()->Execute(u"DELETE FROM ChildCopies"_s);
        p->Prompts.ExpectMsgBox(u"Synchronization faild"_s);
        QCOMPARE(CountOf(*ExportOfMother(false), u"ItemsX"_s), 0);
        QCOMPARE(p->Prompts.Messages.last().Text,
                 u"You are trying to synchronize from a replicated database, which is not a child of the current "
                 "database. Synchronization can not be performed."_s);
    }

    void childWithAnotherStamp_isToldAndStruckOff()
    {
        p->OpenMother()->Execute(u"UPDATE ChildCopies SET LastSynchronized = LastSynchronized + 1"_s);
        p->Prompts.ExpectMsgBox(u"Synchronization faild"_s);
        ExportOfMother(false);
        QCOMPARE(p->Prompts.Messages.last().Text,
                 u"You are trying to synchronize from a replicated database which became independent and is no longer "
                 "a child of the current database.\r\nThis database can not be synchronized as a child any "
                 "more.\r\nThe child information will be automaticaly removed from the current database."_s);
        QCOMPARE(CountOf(*p->OpenMother(), u"ChildCopies"_s), 0);
    }

    // Parts

    void copyRecords_goesByNameAndLeavesNumbersToTheTarget()
    {
        const auto database = DBEngine::CreateDatabase(p->Home.Path(u"two.qbd"_s));
        database->AppendTableDef({.Name = u"From"_s,
                                  .Fields = {{.Name = u"B"_s, .Type = FieldType::Memo},
                                             {.Name = u"ID"_s, .Type = FieldType::Long},
                                             {.Name = u"Own"_s, .Type = FieldType::Long},
                                             {.Name = u"a"_s, .Type = FieldType::Long}},
                                  .Indexes = {}});
        database->AppendTableDef({.Name = u"Into"_s,
                                  .Fields = {{.Name = u"ID"_s, .Type = FieldType::Long, .AutoIncrement = true},
                                             {.Name = u"A"_s, .Type = FieldType::Long},
                                             {.Name = u"B"_s, .Type = FieldType::Memo},
                                             {.Name = u"More"_s, .Type = FieldType::Long, .DefaultValue = 7}},
                                  .Indexes = {}});
        QCOMPARE(CopyRecords(*database, u"From"_s, u"Into"_s), 0);
        database->Execute(u"INSERT INTO \"From\" (ID, a, B, Own) VALUES (40, 1, 'x', 3), (50, 2, 'y', 4)"_s);
        QCOMPARE(CopyRecords(*database, u"From"_s, u"Into"_s, u"r.a > ?"_s, {0}), 2);
        QCOMPARE(Texts(*database, u"SELECT ID || ' ' || A || ' ' || B || ' ' || More FROM \"Into\" ORDER BY ID"_s),
                 (QStringList{u"1 1 x 7"_s, u"2 2 y 7"_s}));
    }

    void synchronizationFile_isPackedInItsPlace()
    {
        const QString path = p->Home.Path(u"back.qbs"_s);
        CDBCreate().CreateSynchroDatabase(path);
        QVERIFY(CompactSynchronizationFile(path));
        QCOMPARE(BrindletonZip().FirstFileName(path), u"back.qbt"_s);
        QVERIFY(!QFile::exists(p->Home.Path(u"back.qbt"_s)));
        p->Prompts.ExpectError();
        QVERIFY(!CompactSynchronizationFile(p->Home.Path(u"none.qbs"_s)));
    }

    void waitingChanges_areCounted()
    {
        const auto child = p->OpenChild();
        QCOMPARE(CountChanges(*child).Changes(), 0);
        p->Edit(*child, 1, u"changed"_s);
        p->Attach(*child, 1, u"a.txt"_s, "a");
        p->DeleteItem(*child, 2);
        const ExportCounts counts = CountChanges(*child);
        QCOMPARE(counts.Items, 1);
        QCOMPARE(counts.Files, 1);
        QCOMPARE(counts.Deleted, 1);
    }
};

QB_TEST_MAIN(TestReplicaExport)
#include "tst_replica_export.moc"
