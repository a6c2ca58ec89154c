#pragma once

#include "conflicts/CConflictFileObject.h"

#include <memory>
#include <vector>

namespace qb {

/// The stored files of one version of an item, in the order of their IDs. The key of a file is its ID, followed by "C".
class CConflictFileObjects {
public:
    CConflictFileObjects() = default;
    CConflictFileObjects(const CConflictFileObjects&) = delete;
    CConflictFileObjects& operator=(const CConflictFileObjects&) = delete;

    Library* DB() const { return m_library; }
    void SetDB(Library* library) { m_library = library; }
    bool TemporaryTable() const { return m_temporaryTable; }
    void SetTemporaryTable(bool value) { m_temporaryTable = value; }

    /// Fills the collection with the files of an item. Without a database the user is told so.
    void AddAll(qint64 item);
    /// A file that has no row yet.
    CConflictFileObject& AddNew();
    /// The file of a row. Raises 457 when the collection has it.
    CConflictFileObject& Add(qint64 id);
    /// A file without a row that says what @p file says.
    CConflictFileObject& CopyFileObject(CConflictFileObject& file);

    /// By its key, or null.
    CConflictFileObject* Item(const QString& key) const;
    CConflictFileObject* Item(qint64 id) const { return Item(QString::number(id) + QLatin1Char('C')); }
    int Count() const { return int(m_files.size()); }
    /// Takes a file out of the collection; its row stays. Raises 5 when there is none of that key.
    void Remove(const QString& key);

    // To go through all of them
    auto begin() const { return m_files.begin(); }
    auto end() const { return m_files.end(); }

private:
    CConflictFileObject& Append(const QString& key);

    Library* m_library = nullptr;
    bool m_temporaryTable = false;
    std::vector<std::unique_ptr<CConflictFileObject>> m_files;
};

/// Tells each file of two versions which one of the other is the same: it has its title and was added in the same
/// second. Of several the first that no other one has taken. A file of one version alone, or with another description,
/// is told by AppearsIn.
void PairFiles(CConflictFileObjects& items, CConflictFileObjects& temporary);

} // namespace qb
