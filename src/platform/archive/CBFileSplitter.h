#pragma once

#include "platform/system/Work.h"

#include <QObject>

namespace qb {

/// The file splitter: cuts a file into volumes "name.001", "name.002", ... and joins them. A volume is a
/// plain piece of the file without a header, so that any tool can join them (`cat name.* >name`).
class CBFileSplitter : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// The most volumes of one file.
    static constexpr int MostVolumes = 999;

    /// Cuts @p file into volumes of @p size bytes, the last as small as it comes, which take its place;
    /// volumes of an earlier split that follow them go. Returns the first volume. With size 0 the file stays
    /// as it is and is what comes back. Empty when it was cancelled. Raises RuntimeError 75 when
    /// something can't be read or written or there would be more than MostVolumes, and 5 for a negative
    /// size. The file stays whole in all these cases.
    /// @p work counts bytes.
    QString Split(const QString& file, qint64 size, Work& work = NoWork());

    /// Joins the volumes of which @p file is one, and leaves them where they are. Returns the joined
    /// file: its name is that of the volumes without their number, or with a number in brackets where a
    /// file of that name stands. Empty when @p file is no volume, or it was cancelled. Raises
    /// RuntimeError 75 when a volume is missing between others or has another size than the first, or
    /// something can't be read or written; nothing is left then. @p work counts bytes.
    QString Merge(const QString& file, Work& work = NoWork());

    /// The same, into @p target, which must not be there. False when it was cancelled; raises RuntimeError 75 also
    /// when @p file is no volume.
    bool MergeTo(const QString& file, const QString& target, Work& work = NoWork());

    /// All volumes of which @p file is one, in order, with the errors of Merge; empty when it is none.
    static QStringList Volumes(const QString& file);

    /// Whether a file is there and its name is that of a volume.
    static bool IsVolume(const QString& file);

    /// Name and version of the splitter.
    QString VersionInfo() const;

Q_SIGNALS:
    /// How many chunks the work has, of a mebibyte each.
    void TotalChunks(int total);
    /// So many chunks are done.
    void Progress(int chunkNo);
    /// Another volume is begun, of @p value bytes: made when @p creating, else joined.
    void NextVolume(int volumeNo, qint64 value, bool creating);

private:
    class Chunks;
};

} // namespace qb
