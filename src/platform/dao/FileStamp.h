#pragma once

#include <QtGlobal>

namespace qb {

/// What tells one state of a database file from another: whoever commits a change, in whichever process, moves it.
struct FileStamp {
    quint32 Commits = 0; ///< the engine's own count, which goes up by one with each transaction that changes the file
    quint32 Pages = 0;
    quint64 Inode = 0;   ///< another file has taken the name when it differs
    qint64 Modified = 0; ///< nanoseconds; files are put back or written to without the engine, too

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

} // namespace qb
