#pragma once

#include "exchange/BranchStream.h"
#include "removed/RemovedIndex.h"
#include "removed/RemovedRows.h"
#include "store/Library.h"

#include <QHash>
#include <QSet>
#include <functional>
#include <unordered_map>
#include <vector>

namespace qb {

/// Flushes the names in a folder to the disk. Raises an error: nothing must be removed then.
void FlushNames(const QString& folder);

/// The two files of an event of removal while they are written: an export of its items, and the index.
class RemovedWriter {
public:
    /// @p folder ends in a separator. This and the next raise an error for what can't be read or written; nothing must
    /// be removed then.
    RemovedWriter(Library& library, const QString& folder, const RemovedHeader& header);
    // Each returns how many entries it has added.
    int AddItems(const RemovedRows& rows, const QString& reason, RemovedPart part);
    int AddFiles(const RemovedRows& rows, const QString& reason, RemovedPart part);
    /// Both files are complete and on the disk.
    void Close();

private:
    /// A row that is to be written.
    struct ChosenRow {
        qint64 Row;    ///< its key in its table
        qint64 Id;     ///< in its table
        qint64 Parent; ///< by Id
    };
    static std::vector<ChosenRow> ParentsFirst(const std::vector<ChosenRow>& rows);
    std::vector<ChosenRow> Choose(const RemovedRows& rows, const QString& statement);
    /// False for an item without the part that is wanted.
    bool AddItem(const RemovedRows& rows, const ChosenRow& chosen, const QString& reason, RemovedPart part);
    void AddFile(const RemovedRows& rows, qint64 file, const QString& reason, RemovedPart part);
    /// A record that stands at the top, but for one whose parent came before it.
    BranchItem RecordOf(const ChosenRow& row, qint64 id);
    void TakeTexts(BranchItem& item, const Statement& row);

    // Stored files

    std::vector<qint64> FilesOf(qint64 id);
    void WriteFiles(const std::vector<qint64>& files, bool descriptionsOnly);
    /// False when there is no such file. @p writeRecord writes the record that goes before its contents.
    bool WriteFileOf(const QString& path, const std::function<void(qint64)>& writeRecord);
    bool WriteColumn(const QString& table, qint64 row, const std::function<void(qint64)>& writeRecord);

    // Web pages

    struct Page {
        QString Path;   ///< below the folder of pages; empty in columns
        qint64 Row = 0; ///< in columns
        QString Name;   ///< as an export has it
        bool IsPage = false;
    };

    std::vector<Page> PagesOf(qint64 id);
    void WritePages(const std::vector<Page>& pages, const QString& key, qint64 id);

    // What the stream has no place for

    void TakeRelations(qint64 id);
    void TakeLinks(qint64 id);
    /// Titles of the items above, as long as the library knows them.
    QString PathTo(qint64 parent);
    void Finish();
    /// The links between items of the event, as any export has them.
    void AddTrailer();

    Library& m_library;
    QString m_path; ///< of the two files, without extension
    BranchWriter m_stream;
    RemovedIndexWriter m_index;
    qint64 m_entries = 0;
    QSet<QString> m_keys;
    QString m_lastKey;
    QHash<std::pair<QString, qint64>, QString> m_keyOfRow; ///< by table and ID
    std::unordered_map<qint64, QString> m_idKeys;          ///< of items of the library
    QHash<qint64, QString> m_paths;                        ///< by parent
    std::vector<RemovedLink> m_links;
    const RemovedRows* m_rows = nullptr; ///< those that are being written
    RemovedEntry m_entry;                ///< the same
};

} // namespace qb
