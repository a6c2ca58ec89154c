#pragma once

#include "platform/system/FileLock.h"
#include "platform/system/Work.h"

#include <QString>
#include <QStringList>

namespace qb {

/// A library that is made aside, beside the one whose place it takes at the end: the database, or the database and
/// both of its folders, all of them or none. What the end of the object before PutInPlace() leaves is the library as
/// it was. A process that ends in the middle leaves what the next opening finishes, or removes.
class LibrarySwap {
public:
    /// Raises RuntimeError 75 when nothing can be made beside @p library, which need not be there.
    explicit LibrarySwap(const QString& library);
    ~LibrarySwap();
    LibrarySwap(const LibrarySwap&) = delete;
    LibrarySwap& operator=(const LibrarySwap&) = delete;

    /// Where the new database is to be made; its folders belong beside it, as those of any library.
    QString NewLibrary() const;
    /// A folder for what is needed on the way; it goes with the object. Ends in a separator.
    QString Scratch() const { return m_stage + QStringLiteral("scratch/"); }

    enum class Parts { DatabaseOnly, WithFolders };
    /// Flushes the new library and puts it in place of the old one, which is gone then. To be called while nobody else
    /// uses it (SoleUse). Raises RuntimeError 75 with the library as it was. @p work is told that it goes on.
    void PutInPlace(Parts parts, Work& work = NoWork());

private:
    QString m_library;
    QString m_stage; ///< ends in a separator
    FileLock m_lock; ///< on the stage
};

/// Brings to its end what a dead process began, and removes what it had only prepared. Raises RuntimeError 75 when
/// the library can't be completed.
void FinishSwap(const QString& library);

} // namespace qb
