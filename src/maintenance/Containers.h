#pragma once

#include "platform/system/Work.h"

#include <QByteArray>
#include <QString>

namespace qb {

// A container is one file, zipped, and handed to the file splitter. Its works count bytes.

enum class Compression {
    Usual,
    Fast, ///< half the time, a bit larger
};

/// Packs a library into a container. The @p source is deleted once it is packed. False, with the source
/// in its place, when it was cancelled; raises RuntimeError 75 when it can't be packed.
bool PackLibrary(const QString& source, const QString& target, Work& work);

/// Packs a library into a container that carries @p comment, and leaves the source. False when it was cancelled;
/// raises RuntimeError 75 when it can't be packed.
bool PackContainer(const QString& source, const QString& target, const QByteArray& comment, Work& work,
                   Compression compression = Compression::Usual);

/// Cuts a container into volumes of @p size bytes, which take its place, and returns the first; the container itself
/// with size 0. Empty when it was cancelled. Raises what CBFileSplitter::Split raises.
QString SplitContainer(const QString& container, qint64 size, Work& work);

/// Packs an export that bears its final name: what is in it goes into a container of that name. Returns
/// the name of the container, or its first volume; empty, with the contents under the name that ends in
/// "t", when it was cancelled. Raises RuntimeError 75 when it can't be packed.
QString PackExport(const QString& file, Work& work, Compression compression = Compression::Usual);

/// Unpacks the one file of a container into the container's folder and returns its path; empty when it
/// was cancelled, or there is none. Volumes are joined first, which leaves the joined file behind.
/// Raises RuntimeError 75 for what is no container, holds more than a file, or would replace a file
/// that is not the container's own of an earlier time.
QString UnpackLibrary(const QString& container, Work& work);

/// The same into an empty folder elsewhere, where nothing is in the way; the joined file of volumes goes.
QString UnpackLibraryTo(const QString& container, const QString& folder, Work& work);

/// The same for an export.
QString UnpackExport(const QString& container, Work& work);
QString UnpackExportTo(const QString& container, const QString& folder, Work& work);

} // namespace qb
