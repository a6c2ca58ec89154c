#include "store/LibrarySchema.h"

namespace qb::LibrarySchema {

using namespace Qt::StringLiterals;

namespace {

// The columns, one maker a type. The first argument is the ordinal position, whose gaps and
// repeats are meant: they decide the order of columns.

Field AutoNumber(int position, const QString& name)
{
    return {.Name = name, .Type = FieldType::Long, .OrdinalPosition = position, .AutoIncrement = true};
}

Field Long(int position, const QString& name, const Value& defaultValue = {})
{
    return {.Name = name, .Type = FieldType::Long, .OrdinalPosition = position, .DefaultValue = defaultValue};
}

Field Number(FieldType type, int position, const QString& name)
{
    return {.Name = name, .Type = type, .OrdinalPosition = position, .DefaultValue = 0};
}

Field DateField(int position, const QString& name)
{
    return {.Name = name, .Type = FieldType::Date, .OrdinalPosition = position};
}

Field Boolean(int position, const QString& name)
{
    return {.Name = name, .Type = FieldType::Boolean, .OrdinalPosition = position};
}

enum class ZeroLength { Refused, Allowed };

Field Text(int position, const QString& name, int size, ZeroLength zeroLength = ZeroLength::Refused)
{
    return {.Name = name,
            .Type = FieldType::Text,
            .Size = size,
            .OrdinalPosition = position,
            .AllowZeroLength = zeroLength == ZeroLength::Allowed};
}

Field Memo(int position, const QString& name)
{
    return {.Name = name, .Type = FieldType::Memo, .OrdinalPosition = position, .AllowZeroLength = true};
}

Field Required(Field field)
{
    field.Required = true;
    return field;
}

Field ID(bool autoNumber)
{
    return autoNumber ? AutoNumber(1, u"ID"_s) : Long(1, u"ID"_s, 0);
}

Index On(const QString& name, const QString& column)
{
    return {.Name = name, .Fields = {column}};
}

Index On(const QString& column)
{
    return On(column, column);
}

Index Primary(const QStringList& columns)
{
    return {.Name = u"PrimaryKey"_s, .Fields = columns, .Primary = true, .Unique = true};
}

QString NameOr(const QString& name, const QString& own)
{
    return name.isEmpty() ? own : name;
}

std::vector<Field> ReplicaProperties(int position)
{
    return {Text(position, u"MasterReplicaPath"_s, 255, ZeroLength::Allowed),
            DateField(position + 1, u"LastSynchronized"_s), DateField(position + 2, u"LastExported"_s)};
}

constexpr int Cascade = SchemaAttribute::RelationUpdateCascade | SchemaAttribute::RelationDeleteCascade;

} // namespace

TableDef Items(const QString& name, bool noKeys)
{
    TableDef table{
        .Name = NameOr(name, u"Items"_s),
        .Fields = {ID(!noKeys), Required(Text(2, u"Title"_s, 255)), Text(3, u"Description"_s, 255, ZeroLength::Allowed),
                   Memo(4, u"Info"_s), DateField(5, u"Created"_s), DateField(6, u"LastChanged"_s),
                   Text(7, u"User"_s, 20, ZeroLength::Allowed), Number(FieldType::Integer, 8, u"ItemStatus"_s),
                   Number(FieldType::Long, 9, u"ItemRating"_s), Memo(10, u"Code"_s),
                   Number(FieldType::Byte, 11, u"CodeHeaders"_s), Memo(12, u"Notes"_s), Memo(13, u"Example"_s),
                   Number(FieldType::Byte, 14, u"UsageHeaders"_s), Boolean(15, u"HTMLPage"_s),
                   DateField(16, u"HTMLLastUpdated"_s), Number(FieldType::Long, 17, u"ParentID"_s)},
        // The index Description covers Title, in spite of its name.
        .Indexes = {On(u"CodeState"_s, u"ItemStatus"_s), On(u"Description"_s, u"Title"_s), On(u"ID"_s),
                    On(u"ParentID"_s)}};
    if (!noKeys)
        table.Indexes.push_back(Primary({u"ID"_s}));
    return table;
}

TableDef Files(const QString& name)
{
    return {.Name = NameOr(name, u"Files"_s),
            .Fields = {ID(name.isEmpty() || name == u"TempFiles"), Long(2, u"CodeID"_s), Text(3, u"Title"_s, 255),
                       DateField(5, u"OrigDateTime"_s), DateField(6, u"DateAdded"_s),
                       Number(FieldType::Long, 7, u"FileSize"_s), Memo(8, u"Description"_s),
                       DateField(9, u"LastUpdated"_s)},
            .Indexes = {On(u"CodeID"_s)}};
}

TableDef ItemLinks(const QString& name, bool noKeys)
{
    TableDef table{.Name = NameOr(name, u"ItemLinks"_s),
                   .Fields = {AutoNumber(1, u"ID"_s), Long(1, u"ItemID"_s, 0), Long(2, u"LinkItemID"_s, 0),
                              Memo(3, u"Note"_s), DateField(6, u"DateAdded"_s), DateField(7, u"DateUpdated"_s)},
                   .Indexes = {On(u"ItemID"_s), On(u"LinkItemID"_s)}};
    if (!noKeys)
        table.Indexes.push_back(Primary({u"ItemID"_s, u"LinkItemID"_s}));
    return table;
}

TableDef HTMLFiles(const QString& name)
{
    return {.Name = NameOr(name, u"HTMLFiles"_s),
            .Fields = {Long(1, u"ItemIDRef"_s, 0), Text(2, u"Name"_s, 50),
                       Text(3, u"Folder"_s, 250, ZeroLength::Allowed), FileContents()},
            .Indexes = {}};
}

TableDef BookmarkGroups()
{
    return {.Name = u"BookmarkGroups"_s,
            .Fields = {AutoNumber(1, u"ID"_s), Text(2, u"Group"_s, 50)},
            .Indexes = {On(u"ID"_s), Primary({u"ID"_s})}};
}

TableDef Bookmarks()
{
    return {.Name = u"Bookmarks"_s,
            .Fields = {AutoNumber(1, u"ID"_s), Required(Long(2, u"CodeID"_s, 0)), Long(3, u"BookmarkGroup"_s, 0),
                       Text(4, u"Description"_s, 255, ZeroLength::Allowed)},
            .Indexes = {On(u"CodeID"_s),
                        On(u"Description"_s),
                        {.Name = u"ID"_s, .Fields = {u"ID"_s}, .Primary = false, .Unique = true},
                        Primary({u"ID"_s})}};
}

TableDef ChildCopies()
{
    return {.Name = u"ChildCopies"_s,
            .Fields = {Text(1, u"DBCopyID"_s, 10), DateField(2, u"LastSynchronized"_s),
                       Text(4, u"ShortDescr"_s, 255, ZeroLength::Allowed)},
            .Indexes = {On(u"DBCopyID"_s), Primary({u"DBCopyID"_s})}};
}

TableDef Keywords()
{
    return {.Name = u"Keywords"_s,
            .Fields = {Text(1, u"Keyword"_s, 30), Boolean(2, u"Coloured"_s)},
            .Indexes = {Primary({u"Keyword"_s})}};
}

TableDef LanguageRules()
{
    return {.Name = u"LanguageRules"_s, .Fields = {Memo(1, u"Rules"_s)}, .Indexes = {}};
}

TableDef Properties(DatabaseKind kind)
{
    TableDef table{.Name = u"Properties"_s,
                   .Fields = {Text(1, u"Version"_s, 10),
                              Text(2, u"LanguageUsed"_s, 20, ZeroLength::Allowed),
                              Memo(3, u"DBDescription"_s),
                              Long(4, u"ColouredKeywordColour"_s, 0),
                              Long(5, u"KeywordColour"_s, 0),
                              Long(6, u"CommentColour"_s, 0),
                              Text(7, u"CommentIdentifier"_s, 5, ZeroLength::Allowed),
                              Text(8, u"CommentIdentifierStart"_s, 5, ZeroLength::Allowed),
                              Text(9, u"CommentIdentifierEnd"_s, 5, ZeroLength::Allowed),
                              Boolean(10, u"SharedDatabase"_s),
                              Boolean(11, u"CompactOnExit"_s),
                              Long(12, u"CompactOnExitEvery"_s, 0),
                              Long(13, u"CompactOnExitUsedDays"_s, 0),
                              DateField(14, u"LastCompacted"_s),
                              Boolean(15, u"BackupOnExit"_s),
                              Long(16, u"BackupOnExitEvery"_s, 0),
                              Long(17, u"BackupOnExitUsedDays"_s, 0),
                              DateField(18, u"LastBackedUp"_s),
                              Text(19, u"BackupDir"_s, 255),
                              Boolean(20, u"BackupAutoDelete"_s),
                              Long(21, u"BackupAutoDeleteNo"_s, 0),
                              DateField(22, u"LastOpened"_s),
                              Text(17, u"DBID"_s, 10, ZeroLength::Allowed)},
                   .Indexes = {}};
    if (kind != DatabaseKind::Library) {
        const std::vector<Field> replica = ReplicaProperties(18);
        table.Fields.insert(table.Fields.end(), replica.begin(), replica.end());
        table.Indexes.push_back(On(u"MasterReplicaPath"_s));
    }
    table.Indexes.push_back(On(u"KeywordColour"_s));
    return table;
}

TableDef DBVersion()
{
    return {.Name = u"DBVersion"_s, .Fields = {Long(1, u"Version"_s)}, .Indexes = {}};
}

TableDef DeletedFiles()
{
    return {.Name = u"DeletedFiles"_s,
            .Fields = {Long(0, u"ItemID"_s, 0), DateField(1, u"DateDeleted"_s)}, // ItemID: the Files.ID
            .Indexes = {On(u"ItemID"_s)}};
}

TableDef DeletedItems()
{
    return {.Name = u"DeletedItems"_s,
            .Fields = {Long(3, u"ItemID"_s, 0), DateField(2, u"DateDeleted"_s)},
            .Indexes = {On(u"ItemID"_s)}};
}

TableDef DeletedItemLinks()
{
    return {.Name = u"DeletedItemLinks"_s,
            .Fields = {Long(3, u"ItemID"_s, 0), Long(3, u"LinkItemID"_s, 0), DateField(2, u"DateDeleted"_s)},
            .Indexes = {On(u"ItemID"_s)}};
}

TableDef ReplicaLog()
{
    const auto required = [](Field field, const Value& defaultValue) {
        field.DefaultValue = defaultValue;
        return Required(std::move(field));
    };
    return {.Name = u"ReplicaLog"_s,
            .Fields = {required(Text(1, u"OfTable"_s, 20, ZeroLength::Allowed), u""_s),
                       required(Long(2, u"RecordID"_s), 0), required(Long(3, u"SecondID"_s), 0),
                       Long(4, u"MotherRecordID"_s, 0), Long(5, u"MotherSecondID"_s, 0),
                       required(Number(FieldType::Byte, 6, u"Event"_s), 0), required(DateField(7, u"Moment"_s), 0),
                       required(DateField(8, u"RowDate"_s), 0),
                       required(Text(9, u"Origin"_s, 10, ZeroLength::Allowed), u""_s)},
            .Indexes = {On(u"Moment"_s),
                        {.Name = u"EventRowDate"_s, .Fields = {u"Event"_s, u"RowDate"_s}},
                        Primary({u"OfTable"_s, u"RecordID"_s, u"SecondID"_s, u"Event"_s, u"Origin"_s, u"RowDate"_s})}};
}

std::vector<TableDef> TablesOfChild()
{
    return {Items({}, false), Files({}),      ItemLinks({}, false),
            BookmarkGroups(), Bookmarks(),    ChildCopies(),
            Keywords(),       DBVersion(),    Properties(DatabaseKind::Child),
            DeletedFiles(),   DeletedItems(), DeletedItemLinks(),
            HTMLFiles({}),    ReplicaLog()};
}

Field FileContents()
{
    return {.Name = u"File"_s, .Type = FieldType::LongBinary, .OrdinalPosition = 4};
}

std::vector<AddedField> AditionalFields(TableSet set, DatabaseKind kind)
{
    std::vector<AddedField> added;
    if (set == TableSet::Temporary) {
        added = {{u"TempFiles"_s, FileContents()},
                 {u"TempItems"_s, Boolean(20, u"ReplicaOrigin"_s)},
                 {u"TempItems"_s, Long(17, u"ReplicaRecordID"_s, -1)}};
    } else {
        const QString suffix = set == TableSet::X ? u"X"_s : QString();
        added = {{u"Files"_s + suffix, Long(9, u"MotherRecordID"_s, 0)},
                 {u"Files"_s + suffix, Long(10, u"MotherCodeID"_s, 0)},
                 {u"Files"_s + suffix, FileContents()},
                 {u"Items"_s + suffix, Long(18, u"MotherRecordID"_s, -1), true},
                 {u"Items"_s + suffix, Long(19, u"MotherParentID"_s, -1), true},
                 {u"ItemLinks"_s + suffix, Long(1, u"MotherItemID"_s, 0)},
                 {u"ItemLinks"_s + suffix, Long(2, u"MotherLinkItemID"_s, 0)}};
    }
    if (kind != DatabaseKind::Library) {
        for (const Field& field : ReplicaProperties(7))
            added.push_back({u"Properties"_s, field});
    }
    return added;
}

std::vector<AddedField> SynchronizationMarks()
{
    constexpr int Last = 30; // behind all columns of a row
    return {{u"Items"_s, Boolean(Last, u"IDChanged"_s)},
            {u"Items"_s, Boolean(Last + 1, u"ConflictItem"_s)},
            {u"Files"_s, Boolean(Last, u"IDChanged"_s)},
            {u"ItemLinks"_s, Boolean(Last, u"IDChanged"_s)}};
}

std::vector<AddedField> MergeMarks()
{
    constexpr int Last = 30;
    return {{u"Items"_s, Boolean(Last, u"MoveToOrphaned"_s)}, {u"Items"_s, Boolean(Last + 1, u"Deleted"_s)}};
}

Relation BookmarkGroupsBookmarks()
{
    return {u"BookmarkGroupsBookmarks"_s, u"BookmarkGroups"_s, u"Bookmarks"_s, u"ID"_s, u"BookmarkGroup"_s, Cascade};
}

Relation CodeItemsCodeFiles()
{
    return {u"CodeItemsCodeFiles"_s, u"Items"_s, u"Files"_s, u"ID"_s, u"CodeID"_s, Cascade};
}

} // namespace qb::LibrarySchema
