#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "support/LibraryBuilder.h"
#include "support/SchemaText.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

struct TableText {
    const char* Name;
    QStringList Fields;
    QStringList Indexes;
};

const TableText Tables[] = {
    {"Items",
     {u"1 ID Long 17"_s, u"2 Title Text255 2 required"_s, u"3 Description Text255 2 empty"_s, u"4 Info Memo 2 empty"_s,
      u"5 Created Date 1"_s, u"6 LastChanged Date 1"_s, u"7 User Text20 2 empty"_s, u"8 ItemStatus Integer 1 =0"_s,
      u"9 ItemRating Long 1 =0"_s, u"10 Code Memo 2 empty"_s, u"11 CodeHeaders Byte 1 =0"_s, u"12 Notes Memo 2 empty"_s,
      u"13 Example Memo 2 empty"_s, u"14 UsageHeaders Byte 1 =0"_s, u"15 HTMLPage Boolean 1"_s,
      u"16 HTMLLastUpdated Date 1"_s, u"17 ParentID Long 1 =0"_s},
     {u"CodeState(ItemStatus)"_s, u"Description(Title)"_s, u"ID(ID)"_s, u"ParentID(ParentID)"_s,
      u"PrimaryKey(ID) primary unique"_s}},
    {"Files",
     {u"1 ID Long 17"_s, u"2 CodeID Long 1"_s, u"3 Title Text255 2"_s, u"5 OrigDateTime Date 1"_s,
      u"6 DateAdded Date 1"_s, u"7 FileSize Long 1 =0"_s, u"8 Description Memo 2 empty"_s, u"9 LastUpdated Date 1"_s},
     {u"CodeID(CodeID)"_s}},
    {"ItemLinks",
     {u"1 ID Long 17"_s, u"1 ItemID Long 1 =0"_s, u"2 LinkItemID Long 1 =0"_s, u"3 Note Memo 2 empty"_s,
      u"6 DateAdded Date 1"_s, u"7 DateUpdated Date 1"_s},
     {u"ItemID(ItemID)"_s, u"LinkItemID(LinkItemID)"_s, u"PrimaryKey(ItemID,LinkItemID) primary unique"_s}},
    {"BookmarkGroups", {u"1 ID Long 17"_s, u"2 Group Text50 2"_s}, {u"ID(ID)"_s, u"PrimaryKey(ID) primary unique"_s}},
    {"Bookmarks",
     {u"1 ID Long 17"_s, u"2 CodeID Long 1 required =0"_s, u"3 BookmarkGroup Long 1 =0"_s,
      u"4 Description Text255 2 empty"_s},
     {u"CodeID(CodeID)"_s, u"Description(Description)"_s, u"ID(ID) unique"_s, u"PrimaryKey(ID) primary unique"_s}},
    {"ChildCopies",
     {u"1 DBCopyID Text10 2"_s, u"2 LastSynchronized Date 1"_s, u"4 ShortDescr Text255 2 empty"_s},
     {u"DBCopyID(DBCopyID)"_s, u"PrimaryKey(DBCopyID) primary unique"_s}},
    {"Keywords", {u"1 Keyword Text30 2"_s, u"2 Coloured Boolean 1"_s}, {u"PrimaryKey(Keyword) primary unique"_s}},
    {"Properties",
     {u"1 Version Text10 2"_s,
      u"2 LanguageUsed Text20 2 empty"_s,
      u"3 DBDescription Memo 2 empty"_s,
      u"4 ColouredKeywordColour Long 1 =0"_s,
      u"5 KeywordColour Long 1 =0"_s,
      u"6 CommentColour Long 1 =0"_s,
      u"7 CommentIdentifier Text5 2 empty"_s,
      u"8 CommentIdentifierStart Text5 2 empty"_s,
      u"9 CommentIdentifierEnd Text5 2 empty"_s,
      u"10 SharedDatabase Boolean 1"_s,
      u"11 CompactOnExit Boolean 1"_s,
      u"12 CompactOnExitEvery Long 1 =0"_s,
      u"13 CompactOnExitUsedDays Long 1 =0"_s,
      u"14 LastCompacted Date 1"_s,
      u"15 BackupOnExit Boolean 1"_s,
      u"16 BackupOnExitEvery Long 1 =0"_s,
      u"17 BackupOnExitUsedDays Long 1 =0"_s,
      u"17 DBID Text10 2 empty"_s,
      u"18 LastBackedUp Date 1"_s,
      u"19 BackupDir Text255 2"_s,
      u"20 BackupAutoDelete Boolean 1"_s,
      u"21 BackupAutoDeleteNo Long 1 =0"_s,
      u"22 LastOpened Date 1"_s},
     {u"KeywordColour(KeywordColour)"_s}},
    {"DBVersion", {u"1 Version Long 1"_s}, {}},
};

} // namespace

class TestLibrarySchema : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Library> NewLibrary() { return MakeLibrary(m_home.Path(u"schema ä.qbd"_s), LanguageType::None); }

    TemporaryHome m_home;
    std::unique_ptr<Library> m_library;

private Q_SLOTS:
    void initTestCase() { m_library = NewLibrary(); }

    void init()
    {
        FailOnWarnings();
        m_library->BeginTrans(); // each test works on a new library
    }

    void cleanup() { m_library->Rollback(); }

    void newLibrary_holdsTheseTablesOnly()
    {
        QStringList names;
        for (const TableText& table : Tables)
            names << QString::fromLatin1(table.Name);
        names.sort();
        QCOMPARE(m_library->TableNames(), names);
    }

    void table_hasItsColumnsAndIndexes_data()
    {
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QStringList>("indexes");
        for (const TableText& table : Tables)
            QTest::newRow(table.Name) << table.Fields << table.Indexes;
    }
    void table_hasItsColumnsAndIndexes()
    {
        QFETCH(QStringList, fields);
        QFETCH(QStringList, indexes);
        const QString table = QString::fromLatin1(QTest::currentDataTag());
        QCOMPARE(FieldTexts(*m_library, table), fields);
        QCOMPARE(IndexTexts(*m_library, table), indexes);
        QStringList names;
        for (const Field& field : m_library->GetTableDef(table).Fields)
            names << field.Name;
        QCOMPARE(ColumnsOnDisk(*m_library, table), names);
    }

    void newLibrary_hasTwoRelations()
    {
        const std::vector<Relation> expected{
            {u"BookmarkGroupsBookmarks"_s, u"BookmarkGroups"_s, u"Bookmarks"_s, u"ID"_s, u"BookmarkGroup"_s, 4352},
            {u"CodeItemsCodeFiles"_s, u"Items"_s, u"Files"_s, u"ID"_s, u"CodeID"_s, 4352}};
        QVERIFY(m_library->Relations() == expected);
    }

    void newRow_takesTheDefaults()
    {
        m_library->Execute(u"INSERT INTO Items (Title) VALUES ('Ä')"_s);
        const Recordset row = m_library->OpenRecordset(u"Items"_s);
        for (const QString& column :
             {u"ItemStatus"_s, u"ItemRating"_s, u"CodeHeaders"_s, u"UsageHeaders"_s, u"ParentID"_s})
            QCOMPARE(row[column], Value(0));
        for (const QString& column : {u"Description"_s, u"Info"_s, u"Created"_s, u"LastChanged"_s, u"Code"_s})
            QVERIFY2(row[column].IsNull(), qPrintable(column));
    }

    void booleanThatIsNotSet_isFalse_data()
    {
        QTest::addColumn<QString>("insert");
        QTest::newRow("Items.HTMLPage") << u"INSERT INTO Items (Title) VALUES ('t')"_s;
        QTest::newRow("Keywords.Coloured") << u"INSERT INTO Keywords (Keyword) VALUES ('k')"_s;
    }
    void booleanThatIsNotSet_isFalse()
    {
        QFETCH(QString, insert);
        m_library->Execute(insert);
        const QStringList name = QString::fromLatin1(QTest::currentDataTag()).split(u'.');
        QCOMPARE(m_library->QueryValue(u"SELECT count(*) FROM %1 WHERE %2 = 0"_s.arg(name[0], name[1])), Value(1));
    }

    void value_isHeldToItsLimit_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("column");
        QTest::addColumn<Value>("value");
        QTest::addColumn<int>("refusal");
        const auto row = [](const char* table, const char* column, const char* what, const Value& value, long refusal) {
            QTest::addRow("%s.%s %s", table, column, what)
                << QString::fromLatin1(table) << QString::fromLatin1(column) << value << int(refusal);
        };
        const auto text = [&row](const char* table, const char* column, int size) {
            row(table, column, "longest", QString(size, u'ß'), 0);
            row(table, column, "too long", QString(size + 1, u'ß'), ErrorNumber::TooLong);
        };
        text("Items", "Title", 255);
        text("Items", "Description", 255);
        text("Items", "User", 20);
        text("Files", "Title", 255);
        text("BookmarkGroups", "Group", 50);
        text("Bookmarks", "Description", 255);
        text("ChildCopies", "DBCopyID", 10);
        text("ChildCopies", "ShortDescr", 255);
        text("Keywords", "Keyword", 30);
        text("Properties", "Version", 10);
        text("Properties", "LanguageUsed", 20);
        text("Properties", "CommentIdentifier", 5);
        text("Properties", "CommentIdentifierStart", 5);
        text("Properties", "CommentIdentifierEnd", 5);
        text("Properties", "BackupDir", 255);
        text("Properties", "DBID", 10);
        row("Items", "Title", "empty", QString(u""_s), ErrorNumber::ZeroLengthNotAllowed);
        row("Items", "Title", "Null", {}, ErrorNumber::NullNotAllowed);
        row("Items", "Description", "empty", QString(u""_s), 0);
        row("Files", "Title", "empty", QString(u""_s), ErrorNumber::ZeroLengthNotAllowed);
        row("BookmarkGroups", "Group", "empty", QString(u""_s), ErrorNumber::ZeroLengthNotAllowed);
        row("Properties", "BackupDir", "empty", QString(u""_s), ErrorNumber::ZeroLengthNotAllowed);
        row("Bookmarks", "CodeID", "Null", {}, ErrorNumber::NullNotAllowed);
        row("ChildCopies", "DBCopyID", "Null", {}, ErrorNumber::NullNotAllowed);
        row("Keywords", "Keyword", "Null", {}, ErrorNumber::NullNotAllowed);
        row("Items", "ItemStatus", "largest", 32767, 0);
        row("Items", "ItemStatus", "too large", 32768, ErrorNumber::Overflow);
        row("Items", "ItemStatus", "too small", -32769, ErrorNumber::Overflow);
        row("Items", "ItemRating", "largest", 2147483647, 0);
        row("Items", "ItemRating", "too large", 2147483648, ErrorNumber::Overflow);
        row("Items", "CodeHeaders", "largest", 255, 0);
        row("Items", "CodeHeaders", "too large", 256, ErrorNumber::Overflow);
        row("Items", "UsageHeaders", "negative", -1, ErrorNumber::Overflow);
        row("Items", "HTMLPage", "True", true, 0);
        row("Items", "HTMLPage", "no Boolean", 1, ErrorNumber::Overflow);
    }
    void value_isHeldToItsLimit()
    {
        QFETCH(QString, table);
        QFETCH(QString, column);
        QFETCH(Value, value);
        QFETCH(int, refusal);
        Recordset row = m_library->OpenRecordset(table, u"rowid = -1"_s);
        row.AddNew();
        if (table == u"Items")
            row.Set(u"Title"_s, u"title"_s);
        if (table == u"Bookmarks")
            row.Set(u"BookmarkGroup"_s, Value());
        if (table == u"ChildCopies")
            row.Set(u"DBCopyID"_s, u"copy"_s);
        row.Set(column, value);
        const qint64 before = CountOf(*m_library, table);
        QB_VERIFY_RAISES(row.Update(), refusal);
        QCOMPARE(CountOf(*m_library, table), before + (refusal == 0 ? 1 : 0));
    }

    void deletedItem_takesItsFilesAlong()
    {
        const qint64 first = AddItem(*m_library, 0, u"first"_s);
        const qint64 second = AddItem(*m_library, 0, u"second"_s);
        for (const qint64 owner : {first, first, second})
            m_library->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (?, 'file')"_s, {owner});
        m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {first});
        QCOMPARE(Texts(*m_library, u"SELECT CodeID FROM Files"_s), QStringList{QString::number(second)});
    }

    void deletedGroup_takesItsBookmarksAlong()
    {
        m_library->Execute(u"INSERT INTO BookmarkGroups (ID, \"Group\") VALUES (1, 'one'), (2, 'two')"_s);
        m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (7, 1), (8, 2), (9, 1)"_s);
        m_library->Execute(u"DELETE FROM BookmarkGroups WHERE ID = 1"_s);
        QCOMPARE(Texts(*m_library, u"SELECT CodeID FROM Bookmarks"_s), QStringList{u"8"_s});
    }

    void renumberedGroup_keepsItsBookmarks()
    {
        m_library->Execute(u"INSERT INTO BookmarkGroups (ID, \"Group\") VALUES (1, 'one')"_s);
        m_library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (7, 1)"_s);
        m_library->Execute(u"UPDATE BookmarkGroups SET ID = 5"_s);
        QCOMPARE(Texts(*m_library, u"SELECT BookmarkGroup FROM Bookmarks"_s), QStringList{u"5"_s});
    }

    void fileOfNoItem_isRefused()
    {
        QB_VERIFY_RAISES(m_library->Execute(u"INSERT INTO Files (CodeID, Title) VALUES (77, 'file')"_s),
                         ErrorNumber::RelatedRecordRequired);
        QCOMPARE(CountOf(*m_library, u"Files"_s), 0);
    }

    void secondLinkBetweenTwoItems_isRefused()
    {
        const QString insert = u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (?, ?)"_s;
        m_library->Execute(insert, {1, 2});
        m_library->Execute(insert, {2, 1});
        QB_VERIFY_RAISES(m_library->Execute(insert, {1, 2}), ErrorNumber::UniqueKeyRefused);
        QCOMPARE(Texts(*m_library, u"SELECT ItemID || '-' || LinkItemID FROM ItemLinks ORDER BY ID"_s),
                 (QStringList{u"1-2"_s, u"2-1"_s}));
    }

    void numbersOfDeletedItems_areNotUsedAgain()
    {
        const qint64 first = AddItem(*m_library, 0, u"first"_s);
        m_library->Execute(u"DELETE FROM Items"_s);
        QVERIFY(AddItem(*m_library, 0, u"second"_s) > first);
    }

    void keywordInOtherCase_isRefused()
    {
        m_library->Execute(u"INSERT INTO Keywords (Keyword) VALUES ('Class')"_s);
        QB_VERIFY_RAISES(m_library->Execute(u"INSERT INTO Keywords (Keyword) VALUES ('cLASS')"_s),
                         ErrorNumber::UniqueKeyRefused);
    }
};

QB_TEST_MAIN(TestLibrarySchema)
#include "tst_library_schema.moc"
