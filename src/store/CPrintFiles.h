#pragma once

#include "platform/dao/Database.h"
#include "store/CPrintFile.h"

#include <QHash>
#include <memory>
#include <vector>

namespace qb {

/// The stored files of an item as they are printed, each under the key "F" and its ID, in the order in which `Files`
/// gives them.
class CPrintFiles {
public:
    using Files = std::vector<std::shared_ptr<CPrintFile>>;

    static QString KeyOf(qint64 fileId) { return u'F' + QString::number(fileId); }

    /// Reads the files of an item. Raises an error when they can't be read, with nothing in the list. A list that was
    /// read before is read anew.
    void InitializeItemFilesList(Database& database, qint64 itemId);
    /// By key, or by position from 1 when the text is a number; null when there is none.
    std::shared_ptr<CPrintFile> Item(const QString& keyOrNumber) const;
    int Count() const { return int(m_files.size()); }

    Files::const_iterator begin() const { return m_files.begin(); }
    Files::const_iterator end() const { return m_files.end(); }

private:
    Files m_files;
    QHash<QString, std::shared_ptr<CPrintFile>> m_byKey;
};

/// A size in bytes as it is printed, in the form "#,###,###": no number at all for 0.
QString PrintedSize(qint64 bytes);

} // namespace qb
