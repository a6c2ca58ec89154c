#pragma once

#include "platform/system/Date.h"

#include <QFile>
#include <QString>
#include <vector>

namespace qb {

/// What took something away, or overwrote it.
enum class RemovalKind {
    DeletedByUser,
    Merge,
    ConflictDecided,
    ConflictsDiscarded,
    RemoveAllDeleted, ///< the items that waited for removal
    Overwritten       ///< by the user: a stored file or a page that got other contents
};
/// The word for it in names of files: small letters and blanks.
QString NameOf(RemovalKind kind);
/// The same for people: "Deleted", "Synchronized", ...
QString CaptionOf(RemovalKind kind);

/// What of an item was removed.
enum class RemovedPart {
    Item,        ///< all of it, or a version of all its texts with files and page
    File,        ///< a stored file alone
    Description, ///< of a stored file
    Page         ///< the web page alone
};

/// The word for it in an index.
QString NameOf(RemovedPart part);

struct RemovedFile {
    qint64 Id = 0;
    QString Title;
    qint64 Bytes = 0;
    bool IsMissing = false; ///< its contents were not where they should be
};

/// A link as the library had it; one end is the item.
struct RemovedLink {
    qint64 From = 0;
    qint64 To = 0;
    QString Note;
    Date Added = {};
};

struct RemovedBookmark {
    QString Group;
    QString Description;
};

/// What an index says of one thing that was removed. Its texts and contents are the record of the same number, from 1,
/// in the file beside it.
struct RemovedEntry {
    qint64 Number = 0;
    RemovedPart Part = RemovedPart::Item;
    qint64 Item = 0;    ///< its ID in the library; 0: it had none there
    QString Title = {}; ///< of the item
    QString Path = {};  ///< titles of the items above it then, parted by " / "
    qint64 Parent = 0;
    QString Reason = {};
    Date Created = {};
    Date Changed = {};
    qint64 Bytes = 0; ///< of texts, stored files and page
    bool HasPage = false;
    std::vector<RemovedFile> Files = {};
    std::vector<RemovedLink> Links = {};
    std::vector<RemovedBookmark> Bookmarks = {};
};

/// What an index says of its event.
struct RemovedHeader {
    RemovalKind Kind = RemovalKind::DeletedByUser;
    QString What;    ///< a sentence for people
    QString Library; ///< identity
    Date Moment = {};
};

/// Writes an index, entry after entry. Whatever can't be written raises RuntimeError 75.
class RemovedIndexWriter {
public:
    RemovedIndexWriter(const QString& path, const RemovedHeader& header);
    void Write(const RemovedEntry& entry);
    void Close();

private:
    void Bytes(const QByteArray& bytes);

    QFile m_file;
    bool m_isFirst = true;
};

struct RemovedIndex {
    RemovedHeader Header;
    std::vector<RemovedEntry> Entries;
};
/// Raises RuntimeError 3024 when there is no such file, 3049 when it is no index.
RemovedIndex ReadRemovedIndex(const QString& path);

} // namespace qb
