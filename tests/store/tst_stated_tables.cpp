#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A table as other programs and files rely on it. A column is "name type notes": "auto" numbers itself,
/// "empty" takes a text without characters, "required" refuses Null, "=x" is its default.
struct StatedTable {
    const char* What;
    DatabaseKind Kind;
    QString Name;
    void (*Make)(CDBCreate& create); ///< null: it is in each new file
    QStringList Columns;
    QString Key; ///< columns of which no two rows have the same values; empty: nothing is refused twice
};

const QStringList ItemColumns{
    u"Title Text255 required"_s, u"Description Text255 empty"_s, u"Info Memo empty"_s,       u"Created Date"_s,
    u"LastChanged Date"_s,       u"User Text20 empty"_s,         u"ItemStatus Integer =0"_s, u"ItemRating Long =0"_s,
    u"Code Memo empty"_s,        u"CodeHeaders Byte =0"_s,       u"Notes Memo empty"_s,      u"Example Memo empty"_s,
    u"UsageHeaders Byte =0"_s,   u"HTMLPage Boolean =0"_s,       u"HTMLLastUpdated Date"_s,  u"ParentID Long =0"_s};
const QStringList FileColumns{u"CodeID Long"_s,     u"Title Text255"_s,    u"OrigDateTime Date"_s,
                              u"DateAdded Date"_s,  u"FileSize Long =0"_s, u"Description Memo empty"_s,
                              u"LastUpdated Date"_s};
const QStringList LinkColumns{u"ID Long auto"_s,    u"ItemID Long =0"_s, u"LinkItemID Long =0"_s,
                              u"Note Memo empty"_s, u"DateAdded Date"_s, u"DateUpdated Date"_s};
/// A key requires its columns.
const QStringList KeyedLinkColumns =
    QStringList{u"ID Long auto"_s, u"ItemID Long required =0"_s, u"LinkItemID Long required =0"_s} + LinkColumns.mid(3);
const QStringList PageColumns{u"ItemIDRef Long =0"_s, u"Name Text50"_s, u"Folder Text250 empty"_s,
                              u"File LongBinary"_s};
const QStringList PropertyColumns{u"Version Text10"_s,
                                  u"LanguageUsed Text20 empty"_s,
                                  u"DBDescription Memo empty"_s,
                                  u"ColouredKeywordColour Long =0"_s,
                                  u"KeywordColour Long =0"_s,
                                  u"CommentColour Long =0"_s,
                                  u"CommentIdentifier Text5 empty"_s,
                                  u"CommentIdentifierStart Text5 empty"_s,
                                  u"CommentIdentifierEnd Text5 empty"_s,
                                  u"SharedDatabase Boolean =0"_s,
                                  u"CompactOnExit Boolean =0"_s,
                                  u"CompactOnExitEvery Long =0"_s,
                                  u"CompactOnExitUsedDays Long =0"_s,
                                  u"LastCompacted Date"_s,
                                  u"BackupOnExit Boolean =0"_s,
                                  u"BackupOnExitEvery Long =0"_s,
                                  u"BackupOnExitUsedDays Long =0"_s,
                                  u"LastBackedUp Date"_s,
                                  u"BackupDir Text255"_s,
                                  u"BackupAutoDelete Boolean =0"_s,
                                  u"BackupAutoDeleteNo Long =0"_s,
                                  u"LastOpened Date"_s,
                                  u"DBID Text10 empty"_s};

const QString AutoId = u"ID Long auto"_s;
const QString PlainId = u"ID Long =0"_s;
constexpr auto Library = DatabaseKind::Library;
constexpr auto Child = DatabaseKind::Child;
constexpr auto Synchronization = DatabaseKind::Synchronization;

const StatedTable Tables[] = {
    {"Items", Library, u"Items"_s, nullptr, QStringList{AutoId} + ItemColumns, {}},
    {"Files", Library, u"Files"_s, nullptr, QStringList{AutoId} + FileColumns, {}},
    {"ItemLinks", Library, u"ItemLinks"_s, nullptr, KeyedLinkColumns, u"ItemID LinkItemID"_s},
    {"BookmarkGroups", Library, u"BookmarkGroups"_s, nullptr, {AutoId, u"Group Text50"_s}, {}},
    {"Bookmarks",
     Library,
     u"Bookmarks"_s,
     nullptr,
     {AutoId, u"CodeID Long required =0"_s, u"BookmarkGroup Long =0"_s, u"Description Text255 empty"_s},
     {}},
    {"ChildCopies",
     Library,
     u"ChildCopies"_s,
     nullptr,
     {u"DBCopyID Text10 required"_s, u"LastSynchronized Date"_s, u"ShortDescr Text255 empty"_s},
     u"DBCopyID"_s},
    {"Keywords",
     Library,
     u"Keywords"_s,
     nullptr,
     {u"Keyword Text30 required"_s, u"Coloured Boolean =0"_s},
     u"Keyword"_s},
    {"Properties", Library, u"Properties"_s, nullptr, PropertyColumns, {}},
    {"Properties of a child",
     Child,
     u"Properties"_s,
     nullptr,
     PropertyColumns
         + QStringList{u"MasterReplicaPath Text255 empty"_s, u"LastSynchronized Date"_s, u"LastExported Date"_s},
     {}},
    {"DeletedFiles",
     Child,
     u"DeletedFiles"_s,
     [](CDBCreate& create) { create.Create_TblDef_DeletedFiles(); },
     {u"ItemID Long =0"_s, u"DateDeleted Date"_s},
     {}},
    {"DeletedItems",
     Child,
     u"DeletedItems"_s,
     [](CDBCreate& create) { create.Create_TblDef_DeletedItems(); },
     {u"ItemID Long =0"_s, u"DateDeleted Date"_s},
     {}},
    {"DeletedItemLinks",
     Child,
     u"DeletedItemLinks"_s,
     [](CDBCreate& create) { create.Create_TblDef_DeletedItemLinks(); },
     {u"ItemID Long =0"_s, u"LinkItemID Long =0"_s, u"DateDeleted Date"_s},
     {}},
    {"HTMLFiles",
     Child,
     u"HTMLFiles"_s,
     [](CDBCreate& create) { create.Create_TblDef_HTMLFiles({}); },
     PageColumns,
     {}},
    {"ItemsX",
     Synchronization,
     u"ItemsX"_s,
     [](CDBCreate& create) { create.Create_TblDef_Items(true, u"ItemsX"_s); },
     QStringList{PlainId} + ItemColumns,
     {}},
    {"FilesX",
     Synchronization,
     u"FilesX"_s,
     [](CDBCreate& create) { create.Create_TblDef_Files(u"FilesX"_s); },
     QStringList{PlainId} + FileColumns,
     {}},
    {"TempFiles",
     Library,
     u"TempFiles"_s,
     [](CDBCreate& create) { create.Create_TblDef_Files(u"TempFiles"_s); },
     QStringList{AutoId} + FileColumns,
     {}},
    {"TempItems",
     Library,
     u"TempItems"_s,
     [](CDBCreate& create) { create.Create_TblDef_Items(true, u"TempItems"_s); },
     QStringList{PlainId} + ItemColumns,
     {}},
    {"ItemLinksX with a key", Synchronization, u"ItemLinksX"_s,
     [](CDBCreate& create) { create.Create_TblDef_ItemLinks(u"ItemLinksX"_s, false); }, KeyedLinkColumns,
     u"ItemID LinkItemID"_s},
    {"links without a key",
     Synchronization,
     u"Links"_s,
     [](CDBCreate& create) { create.Create_TblDef_ItemLinks(u"Links"_s, true); },
     LinkColumns,
     {}},
    {"ItemsX completed",
     Synchronization,
     u"ItemsX"_s,
     [](CDBCreate& create) {
         create.Create_TblDef_Items(true, u"ItemsX"_s);
         create.Create_TblDef_Files(u"FilesX"_s);
         create.Create_TblDef_ItemLinks(u"ItemLinksX"_s, false);
         create.CreateAditionalFields(TableSet::X);
     },
     QStringList{PlainId} + ItemColumns + QStringList{u"MotherRecordID Long =-1"_s, u"MotherParentID Long =-1"_s},
     {}},
};

struct Column {
    QString Name;
    QString Type;
    int Size = 0; ///< characters, 0 for other types than Text
    bool Auto = false;
    bool Empty = false;
    bool Required = false;
    Value Default = {};

    explicit Column(const QString& text)
    {
        const QStringList words = text.split(u' ');
        Name = words[0];
        Type = words[1].startsWith(u"Text"_s) ? u"Text"_s : words[1];
        Size = words[1].mid(4).toInt();
        for (const QString& word : words.mid(2)) {
            Auto |= word == u"auto"_s;
            Empty |= word == u"empty"_s;
            Required |= word == u"required"_s;
            if (word.startsWith(u'='))
                Default = word.mid(1).toLongLong();
        }
    }

    bool IsText() const { return Type == u"Text"_s || Type == u"Memo"_s; }
    Value Sample() const { return IsText() ? Value(u"x"_s) : Type == u"LongBinary"_s ? Value("x"_ba) : Value(0); }
};

} // namespace

/// The tables by what the file takes and refuses.
class TestStatedTables : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Database> m_database;
    const StatedTable* m_table = nullptr;

    std::vector<Column> Columns() const { return {m_table->Columns.begin(), m_table->Columns.end()}; }

    /// A row of samples, with @p value in one column; "" names none.
    void Insert(const QString& column, const Value& value, bool leavesItOut = false)
    {
        QStringList names;
        Values values;
        for (const Column& one : Columns()) {
            if (one.Auto || (leavesItOut && one.Name == column))
                continue;
            names << Quoted(one.Name);
            values.push_back(one.Name == column ? value : one.Sample());
        }
        const QString marks = QStringList(names.size(), u"?"_s).join(u", "_s);
        const QString list = names.isEmpty() ? u"DEFAULT VALUES"_s
                                             : u"(%1) VALUES (%2)"_s.arg(names.join(u", "_s), marks);
        m_database->Execute(u"INSERT INTO %1 %2"_s.arg(m_table->Name, list), values);
    }

    long Refusal(const QString& column, const Value& value)
    {
        const Transaction transaction(*m_database); // rolled back
        try {
            Insert(column, value);
        } catch (const RuntimeError& error) {
            return error.Number();
        }
        return 0;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        QFETCH(int, index);
        m_table = &Tables[index];
        m_home = std::make_unique<TemporaryHome>();
        const QString path = m_home->Path(u"stated.qbd"_s);
        CDBCreate().Create_Database(path, m_table->Kind);
        m_database = DBEngine::OpenDatabase(path);
        m_database->Execute(u"PRAGMA foreign_keys = OFF"_s); // relations have tests of their own
        CDBCreate create(m_database.get(), m_table->Kind);
        if (m_table->Make)
            m_table->Make(create);
        m_database->Execute(u"DELETE FROM "_s + m_table->Name);
    }
    void cleanup()
    {
        m_database.reset();
        m_home.reset();
    }

    void table_takesAndRefusesAsStated_data()
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < std::size(Tables); ++i)
            QTest::newRow(Tables[i].What) << int(i);
    }
    void table_takesAndRefusesAsStated()
    {
        QStringList made, stated;
        for (const Field& field : m_database->GetTableDef(m_table->Name).Fields)
            made << field.Name;
        for (const Column& column : Columns())
            stated << column.Name;
        made.sort();
        stated.sort();
        QCOMPARE(made, stated);
        for (const Column& column : Columns()) {
            if (column.Auto)
                continue;
            const QByteArray text = column.Name.toUtf8();
            const char* name = text.constData();
            const bool refusesNull = column.Required || column.Type == u"Boolean"_s;
            QVERIFY2(Refusal(column.Name, Value()) == (refusesNull ? ErrorNumber::NullNotAllowed : 0), name);
            if (column.IsText())
                QVERIFY2(Refusal(column.Name, QString(u""_s)) == (column.Empty ? 0 : ErrorNumber::ZeroLengthNotAllowed),
                         name);
            QVERIFY2(Refusal(column.Name, QString(column.Size, u'ß')) == 0 || column.Size == 0, name);
            if (column.Size > 0)
                QVERIFY2(Refusal(column.Name, QString(column.Size + 1, u'ß')) == ErrorNumber::TooLong, name);
            if (column.Required && column.Default.IsNull())
                continue;
            const Transaction transaction(*m_database);
            Insert(column.Name, {}, true);
            const Value value = m_database->QueryValue(u"SELECT %1 FROM %2"_s.arg(Quoted(column.Name), m_table->Name));
            QVERIFY2(value == column.Default, name);
        }
    }

    void sameRowTwice_isRefusedByAKeyOnly_data() { table_takesAndRefusesAsStated_data(); }
    void sameRowTwice_isRefusedByAKeyOnly()
    {
        Insert({}, {});
        QB_VERIFY_RAISES(Insert({}, {}), m_table->Key.isEmpty() ? 0 : ErrorNumber::UniqueKeyRefused);
        if (m_table->Key.isEmpty())
            return;
        for (const QString& column : m_table->Key.split(u' ')) { // another value in one of them is another key
            const Transaction transaction(*m_database);
            const Column stated(m_table->Columns.filter(column + u' ').first());
            Insert(column, stated.IsText() ? Value(u"other"_s) : Value(7));
        }
    }
};

QB_TEST_MAIN(TestStatedTables)
#include "tst_stated_tables.moc"
