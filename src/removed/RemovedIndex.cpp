#include "removed/RemovedIndex.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "store/StoredFiles.h"

#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>
#include <array>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Form = u"quillbase-removed-1"_s;
constexpr qint64 LargestIndex = 256 << 20; // bytes; a hundred thousand items make a sixth of it

struct KindWords {
    RemovalKind Kind;
    QLatin1StringView Name;
    QLatin1StringView Caption;
};
constexpr KindWords Kinds[] = {
    {RemovalKind::DeletedByUser, "deleted"_L1, "Deleted"_L1},
    {RemovalKind::Merge, "synchronized"_L1, "Synchronization"_L1},
    {RemovalKind::ConflictDecided, "conflict decided"_L1, "Conflict decided"_L1},
    {RemovalKind::ConflictsDiscarded, "conflicts discarded"_L1, "Conflicts discarded"_L1},
    {RemovalKind::RemoveAllDeleted, "deleted items removed"_L1, "Deleted items removed"_L1},
    {RemovalKind::Overwritten, "overwritten"_L1, "Overwritten"_L1},
};

// By RemovedPart.
constexpr std::array Parts{"item"_L1, "file"_L1, "description"_L1, "page"_L1};

const KindWords& WordsOf(RemovalKind kind)
{
    return *std::find_if(std::begin(Kinds), std::end(Kinds),
                         [kind](const KindWords& words) { return words.Kind == kind; });
}

[[noreturn]] void Refuse(const QString& path, const QString& why)
{
    throw RuntimeError(ErrorNumber::Corrupt,
                       u"The list of removed items '%1' can't be read: %2."_s.arg(QDir::toNativeSeparators(path), why),
                       u"ReadRemovedIndex"_s);
}

/// Midnight of the origin is none.
QJsonValue DateToJson(Date date)
{
    return date.IsNone() ? QJsonValue() : QJsonValue(date.ToIso());
}

Date DateFromJson(const QJsonValue& value)
{
    QDateTime moment = QDateTime::fromString(value.toString(), Qt::ISODate);
    constexpr int LastYear = 9999;
    const bool isDate = moment.isValid() && moment.date().year() > 0 && moment.date().year() <= LastYear;
    return isDate ? Date::FromDateTime(moment) : Date();
}

/// A number of a record, or a size: what is none counts as 0.
qint64 NumberFromJson(const QJsonValue& value)
{
    return std::max<qint64>(0, value.toInteger());
}

template <class Row, class ToJson>
void InsertRows(QJsonObject& object, const QString& name, const std::vector<Row>& rows, ToJson toJson)
{
    if (rows.empty())
        return;
    QJsonArray array;
    for (const Row& row : rows)
        array.append(toJson(row));
    object.insert(name, array);
}

QJsonObject EntryToJson(const RemovedEntry& entry)
{
    QJsonObject object{{u"entry"_s, entry.Number},  {u"part"_s, Parts[size_t(entry.Part)]},
                       {u"item"_s, entry.Item},     {u"title"_s, entry.Title},
                       {u"path"_s, entry.Path},     {u"parent"_s, entry.Parent},
                       {u"reason"_s, entry.Reason}, {u"created"_s, DateToJson(entry.Created)},
                       {u"bytes"_s, entry.Bytes},   {u"changed"_s, DateToJson(entry.Changed)},
                       {u"page"_s, entry.HasPage}};
    InsertRows(object, u"files"_s, entry.Files, [](const RemovedFile& file) {
        QJsonObject row{{u"file"_s, file.Id}, {u"title"_s, file.Title}, {u"bytes"_s, file.Bytes}};
        if (file.IsMissing)
            row.insert(u"missing"_s, true);
        return row;
    });
    InsertRows(object, u"links"_s, entry.Links, [](const RemovedLink& link) {
        return QJsonObject{
            {u"from"_s, link.From}, {u"to"_s, link.To}, {u"note"_s, link.Note}, {u"added"_s, DateToJson(link.Added)}};
    });
    InsertRows(object, u"bookmarks"_s, entry.Bookmarks, [](const RemovedBookmark& bookmark) {
        return QJsonObject{{u"group"_s, bookmark.Group}, {u"description"_s, bookmark.Description}};
    });
    return object;
}

RemovedEntry EntryFromJson(const QJsonObject& object)
{
    RemovedEntry entry{.Number = NumberFromJson(object[u"entry"_s]),
                       .Item = NumberFromJson(object[u"item"_s]),
                       .Title = object[u"title"_s].toString(),
                       .Path = object[u"path"_s].toString(),
                       .Parent = NumberFromJson(object[u"parent"_s]),
                       .Reason = object[u"reason"_s].toString(),
                       .Created = DateFromJson(object[u"created"_s]),
                       .Changed = DateFromJson(object[u"changed"_s]),
                       .Bytes = NumberFromJson(object[u"bytes"_s]),
                       .HasPage = object[u"page"_s].toBool()};
    const auto part = std::find(Parts.begin(), Parts.end(), object[u"part"_s].toString());
    entry.Part = part == Parts.end() ? RemovedPart::Item : RemovedPart(part - Parts.begin());
    for (const QJsonValue& file : object[u"files"_s].toArray())
        entry.Files.push_back({NumberFromJson(file[u"file"_s]), file[u"title"_s].toString(),
                               NumberFromJson(file[u"bytes"_s]), file[u"missing"_s].toBool()});
    for (const QJsonValue& link : object[u"links"_s].toArray())
        entry.Links.push_back({NumberFromJson(link[u"from"_s]), NumberFromJson(link[u"to"_s]),
                               link[u"note"_s].toString(), DateFromJson(link[u"added"_s])});
    for (const QJsonValue& bookmark : object[u"bookmarks"_s].toArray())
        entry.Bookmarks.push_back({bookmark[u"group"_s].toString(), bookmark[u"description"_s].toString()});
    return entry;
}

} // namespace

QString NameOf(RemovalKind kind)
{
    return WordsOf(kind).Name;
}

QString NameOf(RemovedPart part)
{
    return Parts[size_t(part)];
}

QString CaptionOf(RemovalKind kind)
{
    return WordsOf(kind).Caption;
}

// Writing

RemovedIndexWriter::RemovedIndexWriter(const QString& path, const RemovedHeader& header) : m_file(path)
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        Bytes({});
    const QJsonObject object{{u"form"_s, Form},
                             {u"kind"_s, NameOf(header.Kind)},
                             {u"what"_s, header.What},
                             {u"library"_s, header.Library},
                             {u"moment"_s, DateToJson(header.Moment)}};
    Bytes(QJsonDocument(object).toJson(QJsonDocument::Compact).chopped(1) + ",\"entries\":[");
}

void RemovedIndexWriter::Write(const RemovedEntry& entry)
{
    Bytes((m_isFirst ? "\n" : ",\n") + QJsonDocument(EntryToJson(entry)).toJson(QJsonDocument::Compact));
    m_isFirst = false;
}

void RemovedIndexWriter::Close()
{
    Bytes("\n]}\n");
    if (!m_file.flush())
        Bytes({});
    m_file.close();
}

void RemovedIndexWriter::Bytes(const QByteArray& bytes)
{
    if (bytes.isEmpty() || m_file.write(bytes) != bytes.size())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be written: %2."_s.arg(QDir::toNativeSeparators(m_file.fileName()), m_file.errorString()),
            u"RemovedIndexWriter"_s);
}

// Reading

RemovedIndex ReadRemovedIndex(const QString& path)
{
    QFile file(path);
    if (!IsPlainFile(path) || !file.open(QIODevice::ReadOnly))
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"There is no list of removed items '%1'."_s.arg(QDir::toNativeSeparators(path)),
                           u"ReadRemovedIndex"_s);
    if (file.size() > LargestIndex)
        Refuse(path, u"it is too large"_s);
    QByteArray bytes;
    if (const QString why = ReadAll(file, bytes); !why.isEmpty())
        Refuse(path, why);
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(bytes, &error).object();
    if (error.error != QJsonParseError::NoError)
        Refuse(path, error.errorString());
    const auto kind = std::find_if(std::begin(Kinds), std::end(Kinds), [&object](const KindWords& words) {
        return words.Name == object[u"kind"_s].toString();
    });
    if (object[u"form"_s].toString() != Form || kind == std::end(Kinds))
        Refuse(path, u"it is of another form"_s);
    RemovedIndex index;
    index.Header = {kind->Kind, object[u"what"_s].toString(), object[u"library"_s].toString(),
                    DateFromJson(object[u"moment"_s])};
    for (const QJsonValue& entry : object[u"entries"_s].toArray()) {
        index.Entries.push_back(EntryFromJson(entry.toObject()));
        if (index.Entries.back().Number != qint64(index.Entries.size()))
            Refuse(path, u"its entries are not in their order"_s);
    }
    return index;
}

} // namespace qb
