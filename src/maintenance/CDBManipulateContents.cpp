// The ways of stored files and web pages into a database and out of it.

#include "maintenance/CDBManipulate.h"
#include "maintenance/PhasedWork.h"
#include "platform/system/Heartbeat.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/CDBCreate.h"
#include "store/PageChanges.h"
#include "store/StoredFiles.h"
#include "support/DateFormatCustom.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString PagesTable = u"HTMLFiles"_s;
const QString FilesTable = u"Files"_s;
/// The column for the whole name of a file, Folder included, where that fits into Name and Folder no more. It is made
/// when it is needed.
const QString LongNameField = u"LongName"_s;
constexpr qsizetype NameLength = 50;
constexpr qsizetype FolderLength = 250;
constexpr int Finished = 101;

[[noreturn]] void RefuseName(const QString& name)
{
    throw RuntimeError(
        ErrorNumber::PathAccess,
        u"The name '%1' in the database would lead out of its folder, or can't be one of a file. Nothing "
        "was changed."_s.arg(name),
        u"CDBManipulate"_s);
}

/// Names of a database are a stranger's: parts of a path that stay below their folder.
bool IsPartOfPath(const QString& part)
{
    const bool hasBadCharacter = std::any_of(part.begin(), part.end(), [](QChar character) {
        return character == u'/' || character == u'\\' || character == QChar(u'\0');
    });
    return !part.isEmpty() && part != u"." && part != u".." && !hasBadCharacter;
}

/// The folder that a column Folder names, with "/" between its parts and at its end.
QString PathOfFolder(const QString& folder)
{
    if (folder.isEmpty())
        return {};
    QString path;
    QStringList parts = folder.split(u'\\');
    if (parts.last().isEmpty())
        parts.removeLast();
    for (const QString& part : std::as_const(parts)) {
        if (!IsPartOfPath(part))
            RefuseName(folder);
        path += part + u'/';
    }
    return path;
}

/// Makes the folders of a file below @p root, none of which may be a link.
void MakeFoldersOf(const QString& root, const QString& name)
{
    QString path = root;
    for (const QString& part : name.split(u'/').mid(0, name.count(u'/'))) {
        path += part + u'/';
        const QFileInfo info(path.chopped(1));
        if (info.isSymLink() || (!info.isDir() && !QDir().mkdir(path)))
            throw RuntimeError(
                ErrorNumber::PathAccess,
                u"The folder '%1' can't be made. Nothing was changed."_s.arg(QDir::toNativeSeparators(path)),
                u"CDBManipulate"_s);
    }
}

/// A table, which may be one of an attached file ("synchro.Files"), in a statement.
QString Reference(const QString& table)
{
    const qsizetype dot = table.indexOf(u'.');
    return Qualified(table.left(qMax<qsizetype>(dot, 0)), table.mid(dot + 1));
}

QString Selection(const ContentRows& rows, const QString& columns, const QString& table, const QString& always)
{
    QStringList conditions;
    for (const QString& condition : {always, rows.Where}) {
        if (!condition.isEmpty())
            conditions << u'(' + condition + u')';
    }
    return u"SELECT %1 FROM %2%3 ORDER BY rowid"_s.arg(
        columns, Reference(rows.Table.isEmpty() ? table : rows.Table),
        conditions.isEmpty() ? QString() : u" WHERE "_s + conditions.join(u" AND "_s));
}

qint64 CountOf(Database& database, const QString& selection, const Values& values)
{
    return database.QueryValue(u"SELECT count(*) FROM (%1)"_s.arg(selection), values).ToLong();
}

QFileInfoList EntriesOf(const QString& folder)
{
    return QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                      QDir::Name);
}

} // namespace

/// Says a text with the part of the rows that is done, whenever that has passed the next multiple of three.
class CDBManipulate::Percent {
public:
    Percent(Work& work, const QString& text, qint64 rows) : m_work(work), m_heart(work), m_text(text), m_rows(rows) {}
    ~Percent() { m_work.Say({}, Finished); }
    Percent(const Percent&) = delete;
    Percent& operator=(const Percent&) = delete;

    void Row()
    {
        EndUnless(m_heart.Beat(), u"CDBManipulate"_s);
        constexpr int Step = 3;
        const int percent = int(m_done++ * 100 / qMax<qint64>(1, m_rows));
        if (percent < m_next)
            return;
        m_next = (percent / Step + 1) * Step;
        m_work.Say(m_text, percent);
    }

private:
    Work& m_work;
    Heartbeat m_heart; ///< a row may have no contents that would tell of themselves
    QString m_text;
    qint64 m_rows;
    qint64 m_done = 0;
    int m_next = 3;
};

ContentPace& CDBManipulate::Pace()
{
    if (!m_pace)
        m_pace.emplace(m_work, m_expected);
    return *m_pace;
}

void CDBManipulate::ImportFileToField(const PackedField& field, const QString& file)
{
    FileToField(field, file, Pace());
}

void CDBManipulate::SaveToFile(const PackedField& field, const QString& file)
{
    FieldToFile(field, file, Pace());
}

// Into the database

void CDBManipulate::ImportAllHTMLFiles(const QString& folder, const ContentRows& items, const QString& table)
{
    const QString target = table.isEmpty() ? PagesTable : table;
    const QString root = folder.endsWith(u'/') ? folder : folder + u'/';
    const QString selection = Selection(items, u"ID, Title, HTMLLastUpdated"_s, u"Items"_s,
                                        items.Table.isEmpty() ? u"HTMLPage <> 0"_s : QString());
    std::vector<std::tuple<qint64, QString, Value>> missing;
    {
        Percent percent(m_work, u"Saving HTML pages..."_s, CountOf(*m_database, selection, items.WhereValues));
        Statement rows = m_database->Query(selection, items.WhereValues);
        while (rows.Step()) {
            const QString id = QString::number(rows.Long(0));
            percent.Row();
            if (IsPlainFile(root + id + u".htm"_s))
                ImportPage(target, rows.Long(0), id + u".htm"_s, {}, root + id + u".htm"_s);
            else
                missing.emplace_back(rows.Long(0), rows.Text(1), rows.Column(2));
            ImportHTMLFolder(target, root + id, {}, rows.Long(0));
        }
    }
    m_missingPages += qint64(missing.size());
    for (const auto& [id, title, updated] : missing) {
        NoteMissingPage(id, title, updated);
        if (items.Table.isEmpty()) // of some items it is said elsewhere what becomes of them
            m_database->Execute(u"UPDATE Items SET HTMLPage = 0, HTMLLastUpdated = 0 WHERE ID = ?"_s, {id});
    }
}

void CDBManipulate::NoteMissingPage(qint64 id, const QString& title, const Value& updated)
{
    constexpr long MissingPage = 50000;
    HandleError(MissingPage, u"Missing web pages to an item."_s, u"CDBManipulte"_s, u"ImportAllHTMLFiles"_s,
                u"ItemId: %1, Title: %2, HTMLLastUPdated: %3"_s.arg(id).arg(
                    title, DateFormatCustom(updated.ToDate(), u"mm/dd/yyyy hh:nn:ss"_s)),
                false);
}

void CDBManipulate::ImportPage(const QString& table, qint64 itemID, const QString& name, const QString& subFolder,
                               const QString& file)
{
    const bool isLong = name.size() > NameLength || subFolder.size() > FolderLength;
    if (isLong && !m_database->GetTableDef(table).FindField(LongNameField))
        m_database->AppendField(table, {.Name = LongNameField, .Type = FieldType::Memo, .OrdinalPosition = 5});
    m_database->Execute(u"INSERT INTO %1 (ItemIDRef, Name, Folder) VALUES (?, ?, ?)"_s.arg(Reference(table)),
                        {itemID, name.left(NameLength), isLong ? QString() : subFolder});
    const qint64 row = m_database->LastInsertedRowKey();
    if (isLong)
        m_database->Execute(u"UPDATE %1 SET LongName = ? WHERE rowid = ?"_s.arg(Reference(table)),
                            {subFolder + name, row});
    const ContentSums sums = FileToField({*m_database, table, row}, file, Pace());
    m_pages.Add(sums.Bytes, sums.Sum);
}

void CDBManipulate::ImportHTMLFolder(const QString& table, const QString& folder, const QString& subFolder,
                                     qint64 itemID)
{
    if (const QFileInfo info(folder); info.isSymLink() || !info.isDir())
        return;
    QStringList folders;
    for (const QFileInfo& entry : EntriesOf(folder)) {
        if (entry.isSymLink())
            continue; // it may lead anywhere
        if (entry.isDir())
            folders << entry.fileName();
        else if (IsPlainFile(entry.filePath()))
            ImportPage(table, itemID, entry.fileName(), subFolder, entry.filePath());
    }
    for (const QString& name : std::as_const(folders))
        ImportHTMLFolder(table, folder + u'/' + name, subFolder + name + u'\\', itemID);
}

void CDBManipulate::ImportDefaultHTMLFiles(const QString& folder)
{
    for (const QString& name : {u"default"_s, u"default2"_s}) {
        const QString page = name + u".htm"_s;
        if (!IsPlainFile(folder + page))
            continue;
        ImportPage(PagesTable, 0, page, {}, folder + page);
        ImportHTMLFolder(PagesTable, folder + name, name + u'\\', 0);
    }
}

void CDBManipulate::ImportOtherHTMLFiles(const QString& folder)
{
    QSet<QString> taken{u".library"_s}; // the mark of the folder's own library
    Statement items = m_database->Query(u"SELECT DISTINCT ItemIDRef FROM HTMLFiles WHERE ItemIDRef <> 0"_s);
    while (items.Step())
        taken << items.Text(0) << items.Text(0) + u".htm"_s;
    Statement defaults = m_database->Query(u"SELECT Name, Folder FROM HTMLFiles WHERE ItemIDRef = 0"_s);
    while (defaults.Step())
        taken << (defaults.Text(1).isEmpty() ? defaults.Text(0) : defaults.Text(1).section(u'\\', 0, 0));
    for (const QFileInfo& entry : EntriesOf(folder)) {
        if (taken.contains(entry.fileName()) || entry.isSymLink() || IsOfUnboundChanges(*m_database, entry.filePath()))
            continue;
        if (entry.isDir())
            ImportHTMLFolder(PagesTable, entry.filePath(), entry.fileName() + u'\\', 0);
        else if (IsPlainFile(entry.filePath()))
            ImportPage(PagesTable, 0, entry.fileName(), {}, entry.filePath());
    }
}

void CDBManipulate::ImportAllItemFiles(const QString& folder, const ContentRows& files)
{
    const QString selection = Selection(files, u"rowid, ID, Title"_s, FilesTable, {});
    Percent percent(m_work, u"Saving files..."_s, CountOf(*m_database, selection, files.WhereValues));
    // Rows are changed while they are gone through, which would end their own statement.
    struct Row {
        qint64 Key;
        qint64 Id;
    };
    std::vector<Row> all;
    {
        Statement rows = m_database->Query(selection, files.WhereValues);
        while (rows.Step())
            all.push_back({rows.Long(0), rows.Long(1)});
    }
    const QString table = files.Table.isEmpty() ? FilesTable : files.Table;
    const QString titleOf = u"SELECT Title FROM %1 WHERE rowid = ?"_s.arg(Reference(table));
    for (const Row& row : all) {
        percent.Row();
        const QString path = StoredFilePath(folder, row.Id, m_database->QueryValue(titleOf, {row.Key}).ToText());
        if (path.isEmpty() || !IsPlainFile(path)) {
            ++m_missingFiles;
            continue;
        }
        const ContentSums sums = FileToField({*m_database, table, row.Key}, path, Pace());
        m_files.Add(sums.Bytes, sums.Sum);
    }
}

// Out of the database

/// Where a row of packed pages lies, below the folder of pages.
QString CDBManipulate::PageName(qint64 item, const QString& folder, const QString& name)
{
    if (!IsPartOfPath(name))
        RefuseName(name);
    const QString below = PathOfFolder(folder) + name;
    if (item == 0) {
        if (below == u".library")
            RefuseName(name);
        return below;
    }
    return QString::number(item) + u'/' + below;
}

void CDBManipulate::ExportAllHTMLFiles(const QString& folder, const ContentRows& rows)
{
    const QString table = rows.Table.isEmpty() ? PagesTable : rows.Table;
    const bool hasLongNames = m_database->GetTableDef(table).FindField(LongNameField) != nullptr;
    const QString selection = Selection(
        rows, u"rowid, ItemIDRef, Folder, Name, "_s + (hasLongNames ? LongNameField : u"NULL"_s), PagesTable, {});
    Percent percent(m_work, u"Saving HTML pages..."_s, CountOf(*m_database, selection, rows.WhereValues));
    QSet<qint64> withPage; // the items whose page has been written
    Statement row = m_database->Query(selection, rows.WhereValues);
    while (row.Step()) {
        percent.Row();
        const qint64 item = row.Long(1);
        QString subFolder = row.Text(2);
        QString name = row.Text(3);
        if (!row.IsNull(4)) {
            const qsizetype end = row.Text(4).lastIndexOf(u'\\') + 1;
            subFolder = row.Text(4).left(end);
            name = row.Text(4).mid(end);
        }
        const QString page = QString::number(item) + u".htm"_s;
        QString place = PageName(item, subFolder, name);
        if (item != 0 && subFolder.isEmpty() && name == page && !withPage.contains(item)) {
            withPage.insert(item);
            place = page;
        }
        MakeFoldersOf(folder, place);
        FieldToFile({*m_database, table, row.Long(0)}, folder + place, Pace());
    }
}

void CDBManipulate::ExportAllItemFiles(const QString& folder, const ContentRows& rows)
{
    const QString table = rows.Table.isEmpty() ? FilesTable : rows.Table;
    const QString selection = Selection(rows, u"rowid, ID, Title, File IS NULL"_s, FilesTable, {});
    Percent percent(m_work, u"Saving Files..."_s, CountOf(*m_database, selection, rows.WhereValues));
    Statement row = m_database->Query(selection, rows.WhereValues);
    while (row.Step()) {
        percent.Row();
        const bool isMissing = row.Long(3) != 0;
        const QString path = StoredFilePath(folder, row.Long(1), row.Text(2));
        if (path.isEmpty() && !isMissing)
            RefuseName(row.Text(2));
        if (path.isEmpty())
            continue; // there never was a file of that name
        try {
            FieldToFile({*m_database, table, row.Long(0)}, path, Pace());
        } catch (const RuntimeError& error) {
            if (!isMissing || error.Number() != ErrorNumber::PathAccess)
                throw;
        }
    }
}

} // namespace qb
