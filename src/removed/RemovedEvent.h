#pragma once

#include "platform/system/FileLock.h"
#include "removed/RemovedIndex.h"
#include "removed/RemovedRows.h"
#include "store/Library.h"
#include "store/PendingRemoved.h"

#include <QString>
#include <memory>

namespace qb {

class RemovedWriter;

/// Something that is taken away, or overwritten, on its way into the folder where the library keeps it: one file of
/// items and one index for each event. Nothing is written before the first of it is added. To be made before the
/// transaction, so that it goes after it; what goes without Place() takes its files away, unless it was noted and
/// committed, which the next opening of the library finishes.
class RemovedEvent {
public:
    /// @p what is a sentence for people.
    RemovedEvent(Library& library, RemovalKind kind, QString what);
    ~RemovedEvent();
    RemovedEvent(const RemovedEvent&) = delete;
    RemovedEvent& operator=(const RemovedEvent&) = delete;

    // Each adds versions as they are now, inside the caller's transaction on the library's connection, and returns how
    // many. Raises an error when one can't be read or written; then nothing must be removed.

    /// Items, with all that @p rows name. Parents come before their children.
    int Add(const RemovedRows& rows, const QString& reason);
    /// Stored files alone. Their rows go by the name f in RemovedRows::Where, those of their items by r.
    int AddFiles(const RemovedRows& rows, const QString& reason);
    /// Descriptions of stored files alone, in the same way.
    int AddDescriptions(const RemovedRows& rows, const QString& reason);
    /// Web pages of items alone; items without one are passed over.
    int AddPages(const RemovedRows& rows, const QString& reason);

    bool IsEmpty() const { return Count() == 0; }
    int Count() const; ///< of entries
    /// The name that its files get; empty before Note().
    const QString& Name() const { return m_pending.Name; }

    /// The last thing before the caller's commit: the files are complete and on the disk, and the library knows of
    /// them. Nothing when nothing was added.
    void Note();
    /// After the commit. Raises nothing: what can't be put in place now the next opening puts there.
    void Place();

private:
    enum class State { Open, Noted, Placed };

    RemovedWriter& Open();
    void Close();
    bool IsNoteThere() const;

    Library& m_library;
    RemovedHeader m_header;
    PendingRemoved m_pending;
    QString m_folder; ///< that holds it; ends in a separator. Empty before the first entry
    FileLock m_lock;  ///< on it
    std::unique_ptr<RemovedWriter> m_writer;
    int m_count = 0;
    State m_state = State::Open;
};

} // namespace qb
