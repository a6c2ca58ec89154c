#pragma once

#include <QString>
#include <functional>

namespace qb {

/// What fnExtractPathOrFileName returns.
enum class PathPart {
    Folder = 0,   ///< the folder, which keeps its separator
    FileName = 1, ///< the file name
    BaseName = 2, ///< the file name without its extension
};

/// Splits @p path at its last separator ('/' or '\\'). With @p modify, @p path is replaced by
/// the other part: by the file name for PathPart::Folder, by the folder for the rest.
QString fnExtractPathOrFileName(QString& path, PathPart part, bool modify);

/// The same without a replacement.
QString fnExtractPathOrFileName(const QString& path, PathPart part);

/// @p name without its extension. A "." counts as the start of an extension only within the
/// last five characters, so that "Version 1.2 notes" stays whole.
QString TakeExtensionOff(const QString& name);

/// @p name, or with the first number in brackets before its extension under which it is not taken:
/// "a.txt", "a(1).txt", "a(2).txt". Folders in it, separated by "/", stay as they are.
QString NumberedName(const QString& name, const std::function<bool(const QString& name)>& isTaken);

/// The same of a path: the first under which nothing is there. A link that leads nowhere is something.
QString NumberedPath(const QString& path);

/// The folder of the program's own files, ending in a separator: the folder of the executable
/// when it is run from its own folder, the user's data folder when it is installed. The
/// environment variable QUILLBASE_DATA_HOME puts another folder in its place. The folder is
/// made when it is missing.
QString ApplicationFolder();

/// The folder of the user's settings, ending in a separator; QUILLBASE_CONFIG_HOME puts another
/// in its place. The folder is made when it is missing.
QString ConfigFolder();

/// The folder of what can be made again at any time, ending in a separator: that of the user's caches;
/// QUILLBASE_CACHE_HOME puts another in its place. The folder is made when it is missing.
QString CacheFolder();

/// A file or folder that comes with the program: in ../share/quillbase beside the folder of the
/// executable where it is installed, beside the executable or its folder where it was built.
QString SharedPath(const QString& name);

/// Removes a folder and its contents; a link to a folder is removed, never followed. False when
/// something could not be removed. A folder that does not exist is no failure.
bool DeleteFolder(const QString& path);

/// Why nothing can be written at @p file (a file, or a name for one): a sentence that names
/// the file or its folder. Empty when it is writable.
QString WhyNotWritable(const QString& file);

} // namespace qb
