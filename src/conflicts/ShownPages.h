#pragma once

#include "platform/system/FileLock.h"
#include "store/Library.h"

#include <QString>

namespace qb {

/// The pages of both versions of an item as files of a folder below the library's folder of web pages, for as long as
/// the object lives. What a dead process left there goes when the next object is made; what a living one shows stays.
class ShownPages {
public:
    explicit ShownPages(Library& library);
    ~ShownPages();
    ShownPages(const ShownPages&) = delete;
    ShownPages& operator=(const ShownPages&) = delete;

    /// Ends in a separator; empty before the first page.
    const QString& Folder() const { return m_folder; }
    /// Writes the page that the library has of an item, or that of the other version. Its address; empty where there is
    /// no page. Raises RuntimeError 75 for what can't be written.
    QString WriteOwn(qint64 item);
    QString WriteOther(qint64 item);

private:
    void MakeFolder();
    void Claim(QString& number);
    QString Complete(const QString& number);

    Library& m_library;
    QString m_folder;
    FileLock m_lock; ///< on it
    int m_last = 0;  ///< number of a page
    QString m_own;   ///< those that are there
    QString m_other;
};

} // namespace qb
