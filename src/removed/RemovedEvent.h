#pragma once

#include "platform/system/FileLock.h"
#include "removed/RemovedIndex.h"
#include "store/Library.h"
#include "store/PendingRemoved.h"

#include <QString>
#include <memory>

namespace qb {

/// Rows of items whose versions are about to go: of the library, or of a file that is attached to its connection. In
/// conditions and expressions a row goes by the name r.
struct RemovedRows {
    QString Where;     ///< a condition, as "r.ID IN (SELECT ...)"
    Values Parameters; ///< of it
    QString Schema = MainSchema;
    QString Items = QStringLiteral("Items");
    QString Files = QStringLiteral("Files"); ///< whose CodeID is the row's ID; empty: without files
    QString Pages = QStringLiteral("HTMLFiles");
    enum class Contents {
        InFolders, ///< those of the library
        InColumns, ///< `File` of both tables; what is Null there is noted as missing
    };
    Contents Lie = Contents::InFolders;
    /// Whose ItemID and LinkItemID are such rows' IDs; empty: without links.
    QString Links = QStringLiteral("ItemLinks");
    // What the library calls the item, and the item above it. 0 or less: it does not know it.
    QString ItemId = QStringLiteral("r.ID");
    QString ParentId = QStringLiteral("r.ParentID");

    /// Items of the library, whole: with files, pages, links and bookmarks.
    static RemovedRows OfLibrary(const QString& where, const Values& parameters = {});
    /// Rows of a file that is attached, or the temporary tables of the library (@p prefix "Temp"): with what is in
    /// their columns, without links, whose numbers are not the library's.
    static RemovedRows InColumns(const QString& schema, const QString& where, const Values& parameters = {},
                                 const QString& prefix = {});
};

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
    class Writer;
    enum class State { Open, Noted, Placed };

    Writer& Open();
    void Close();
    bool IsNoteThere() const;

    Library& m_library;
    RemovedHeader m_header;
    PendingRemoved m_pending;
    QString m_folder; ///< that holds it; ends in a separator. Empty before the first entry
    FileLock m_lock;  ///< on it
    std::unique_ptr<Writer> m_writer;
    int m_count = 0;
    State m_state = State::Open;
};

} // namespace qb
