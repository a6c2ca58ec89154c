#include "maintenance/ContentCheck.h"

#include "maintenance/PhasedWork.h"
#include "platform/dao/StatementLimit.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/Library.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Kind = LibraryFault::Kind;

/// A row of a damaged file may have no end.
constexpr std::chrono::seconds DamagedRowTime{5};

/// A table whose rows have checksums.
struct SummedTable {
    const char* Name;
    const char* Stamp; ///< the column that says when the row was written
    const char* Called;
};
constexpr SummedTable Items{"Items", "LastChanged", "item"};
constexpr SummedTable Files{"Files", "LastUpdated", "stored file"};

/// Texts as users call them, by their columns.
struct TextName {
    const char* Column;
    const char* Called;
};
constexpr TextName TextNames[] = {{"Title", "title"}, {"Description", "description"}, {"Info", "info"},
                                  {"Code", "code"},   {"Example", "usage"},           {"Notes", "notes"}};

QString Called(const QString& column)
{
    for (const TextName& name : TextNames) {
        if (column == QLatin1StringView(name.Column))
            return QString::fromLatin1(name.Called);
    }
    return column;
}

std::vector<qint64> RowsOf(Database& database, const SummedTable& table)
{
    std::vector<qint64> rows;
    Statement all = database.Query(u"SELECT ID FROM %1 ORDER BY ID"_s.arg(QLatin1StringView(table.Name)));
    while (all.Step())
        rows.push_back(all.Long(0));
    return rows;
}

class RowCheck {
public:
    RowCheck(Database& database, const SummedTable& table, ContentCheck& found, Work& work)
        : m_database(database), m_table(table), m_name(QString::fromLatin1(table.Name)), m_found(found), m_work(work)
    {
    }

    void Run(qint64 id)
    {
        const StatementLimit limit(m_database, DamagedRowTime);
        try {
            Look(id);
        } catch (const RuntimeError& error) {
            if (error.Number() == ErrorNumber::UserInterrupt)
                throw;
            Report(Kind::DamagedText, id, u"can't be read: %1"_s.arg(error.Description()));
        }
    }

private:
    void Look(qint64 id)
    {
        const std::optional<NotedChecksums> noted = ReadChecksums(m_database, m_name, id);
        const qint64 stamp = ReadTitleAndStamp(id);
        if (noted && !noted->IsWhole)
            Report(Kind::DamagedChecksum, id, u"has a note of its checksums that is damaged itself"_s);
        const bool isKnown = noted && noted->IsWhole && noted->Stamp == stamp;
        ++(isKnown ? m_found.KnownRows : m_found.UnknownRows);
        if (!isKnown)
            return;
        for (auto sum = noted->Sums.begin(); sum != noted->Sums.end(); ++sum) {
            if (sum.key() == FileContentsName)
                CheckFile(id, sum.value());
            else
                CheckText(id, sum.key(), sum.value());
        }
    }

    qint64 ReadTitleAndStamp(qint64 id)
    {
        m_title.clear();
        Statement row = m_database.Query(
            u"SELECT Title, %1 FROM %2 WHERE ID = ?"_s.arg(QLatin1StringView(m_table.Stamp), m_name), {id});
        if (!row.Step())
            throw RuntimeError(ErrorNumber::RecordDeleted, u"the file lists the row, but doesn't hold it"_s,
                               u"CheckContents"_s);
        m_title = row.Text(0);
        return row.Long(1);
    }

    void CheckText(qint64 id, const QString& column, quint32 sum)
    {
        if (!m_database.GetTableDef(m_name).FindField(column))
            return;
        const Value text = m_database.QueryValue(
            u"SELECT CAST(%1 AS BLOB) FROM %2 WHERE ID = ?"_s.arg(Quoted(column), m_name), {id});
        if (ChecksumOfBytes(text.ToBytes()) != sum)
            Report(Kind::DamagedText, id, u"has a damaged %1: it is not what was written"_s.arg(Called(column)));
    }

    void CheckFile(qint64 id, quint32 sum)
    {
        const QString path = StoredFilePath(FilesFolderOf(m_database.Name()), id, m_title);
        if (path.isEmpty() || !IsPlainFile(path))
            return; // that it is missing is said by the check of the library
        if (ChecksumOfFile(path, m_work) != sum)
            Report(Kind::DamagedFile, id, u"is damaged: its contents are not what was stored"_s);
    }

    void Report(Kind kind, qint64 id, const QString& what)
    {
        m_found.Faults.push_back(
            {kind, m_name, id,
             u"The %1 %2 '%3' %4."_s.arg(QLatin1StringView(m_table.Called)).arg(id).arg(m_title, what)});
    }

    Database& m_database;
    const SummedTable& m_table;
    QString m_name;
    ContentCheck& m_found;
    Work& m_work;
    QString m_title;
};

} // namespace

ContentCheck CheckContents(Database& database, Work& work)
{
    ContentCheck found;
    std::vector<std::pair<const SummedTable*, qint64>> all;
    std::vector<SummedTable> tables{Items};
    if (WhoseFoldersAreForeign(database).isEmpty()) // else the files there are another library's
        tables.push_back(Files);
    for (const SummedTable& table : tables) {
        for (const qint64 id : RowsOf(database, table))
            all.emplace_back(&table, id);
    }
    for (size_t i = 0; i < all.size(); ++i) {
        RowCheck(database, *all[i].first, found, work).Run(all[i].second);
        work.Advance(qint64(i) + 1, qint64(all.size()));
        EndUnless(!work.IsCancelled(), u"CheckContents"_s);
    }
    return found;
}

QString LinesOf(const std::vector<LibraryFault>& faults)
{
    constexpr size_t Most = 10;
    QString lines;
    for (size_t i = 0; i < qMin(Most, faults.size()); ++i)
        lines += faults[i].Text + u"\r\n"_s;
    if (faults.size() > Most)
        lines += u"... and %1 more\r\n"_s.arg(faults.size() - Most);
    return lines;
}

} // namespace qb
