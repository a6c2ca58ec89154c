#include "platform/archive/CBFileSplitter.h"

#include "platform/archive/Pace.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RunBeside.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 ChunkSize = 1024 * 1024;

[[noreturn]] void Fail(const QString& path, const QString& why)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"'%1': %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(path), why),
                       u"CBFileSplitter"_s);
}

QString VolumeName(const QString& file, int number)
{
    return file + u".%1"_s.arg(number, 3, 10, QLatin1Char('0'));
}

/// The name of the whole file, of a volume's; empty when it is none.
QString WholeName(const QString& volume)
{
    static const QRegularExpression name(u"^(.*[^/\\\\])\\.(\\d{3})\\z"_s,
                                         QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = name.match(volume);
    return match.hasMatch() && match.captured(2) != u"000"_s ? match.captured(1) : QString();
}

/// The sizes of the volumes of @p whole, in order. Raises an error when one is missing before the last,
/// or they are not pieces of one size with a smaller last.
std::vector<qint64> VolumeSizes(const QString& whole)
{
    std::vector<qint64> sizes;
    int missing = 0;
    for (int number = 1; number <= CBFileSplitter::MostVolumes; ++number) {
        const QFileInfo volume(VolumeName(whole, number));
        if (!volume.isFile()) {
            missing = missing ? missing : number;
            continue;
        }
        if (missing)
            Fail(VolumeName(whole, missing), u"this volume is missing; the volumes can't be joined without it"_s);
        sizes.push_back(volume.size());
    }
    for (size_t i = 1; i < sizes.size(); ++i) {
        const bool isLast = i + 1 == sizes.size();
        if (isLast ? sizes[i] > sizes[0] : sizes[i] != sizes[0])
            Fail(VolumeName(whole, int(i) + 1),
                 u"this volume has another size than the first; it is incomplete or belongs to another file"_s);
    }
    return sizes;
}

} // namespace

/// Copying in chunks, of which it tells.
class CBFileSplitter::Chunks {
public:
    Chunks(CBFileSplitter& owner, Work& work, qint64 total)
        : m_owner(owner), m_pace(work, total), m_total(total), m_buffer(ChunkSize, Qt::Uninitialized)
    {
        Q_EMIT m_owner.TotalChunks(CountOf(total));
    }

    /// Copies @p length bytes from where @p source stands to what will be @p name. False when the work is
    /// to end.
    bool Copy(QFile& source, QFile& target, const QString& name, qint64 length)
    {
        while (length > 0) {
            const qint64 untilChunk = ChunkSize - m_done % ChunkSize;
            const qint64 piece = source.read(m_buffer.data(), qMin(length, untilChunk));
            if (piece <= 0)
                Fail(source.fileName(), piece < 0 ? source.errorString() : u"it ends early"_s);
            if (const QString why = WriteAll(target, m_buffer.constData(), piece); !why.isEmpty())
                Fail(name, why);
            length -= piece;
            m_done += piece;
            if (m_done % ChunkSize == 0 || m_done == m_total)
                Q_EMIT m_owner.Progress(CountOf(m_done));
            if (!m_pace.Tell(m_done))
                return false;
        }
        return true;
    }

private:
    static int CountOf(qint64 bytes) { return int((bytes + ChunkSize - 1) / ChunkSize); }

    CBFileSplitter& m_owner;
    Pace m_pace;
    qint64 m_total;
    qint64 m_done = 0;
    QByteArray m_buffer;
};

QString CBFileSplitter::Split(const QString& file, qint64 size, Work& work)
{
    if (size == 0)
        return file;
    if (size < 0)
        throw RuntimeError(ErrorNumber::InvalidCall, u"A volume can't have %1 bytes. Nothing was changed."_s.arg(size),
                           u"CBFileSplitter"_s);
    if (const QFileInfo info(file); info.exists() && !info.isFile())
        Fail(file, u"it is no file"_s);
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        Fail(file, source.errorString());
    const qint64 total = source.size();
    const qint64 count = qMax<qint64>(1, total / size + (total % size != 0 ? 1 : 0));
    if (count > MostVolumes)
        Fail(file, u"volumes of %1 bytes would be %2; %3 are the most"_s.arg(size).arg(count).arg(MostVolumes));
    StagedFiles volumes(QFileInfo(file).absolutePath());
    Chunks chunks(*this, work, total);
    for (int number = 1; number <= count; ++number) {
        const qint64 length = qMin(size, total - (number - 1) * size);
        const QString name = VolumeName(file, number);
        QFile volume(volumes.PathFor(QFileInfo(name).fileName()));
        Q_EMIT NextVolume(number, length, true);
        if (!volume.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            Fail(name, volume.errorString());
        if (!chunks.Copy(source, volume, name, length))
            return {};
    }
    if (source.size() != total)
        Fail(file, u"something is writing to it"_s);
    volumes.PutInPlace(false, work);
    for (int number = int(count) + 1; QFile::remove(VolumeName(file, number));)
        ++number;
    QFile::remove(file);
    return VolumeName(file, 1);
}

QString CBFileSplitter::Merge(const QString& file, Work& work)
{
    if (!IsVolume(file))
        return {};
    const QString target = NumberedPath(WholeName(file));
    return MergeTo(file, target, work) ? target : QString();
}

bool CBFileSplitter::MergeTo(const QString& file, const QString& target, Work& work)
{
    if (!IsVolume(file))
        Fail(file, u"it is no volume"_s);
    const QString whole = WholeName(file);
    const std::vector<qint64> sizes = VolumeSizes(whole);
    qint64 total = 0;
    for (const qint64 size : sizes)
        total += size;
    const QString interim = InterimName(target);
    auto clear = qScopeGuard([&interim] { QFile::remove(interim); });
    QFile joined(interim);
    if (!joined.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        Fail(target, joined.errorString());
    Chunks chunks(*this, work, total);
    for (size_t i = 0; i < sizes.size(); ++i) {
        QFile volume(VolumeName(whole, int(i) + 1));
        Q_EMIT NextVolume(int(i) + 1, sizes[i], false);
        if (!volume.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            Fail(volume.fileName(), volume.errorString());
        if (!chunks.Copy(volume, joined, target, sizes[i]))
            return false;
    }
    joined.close();
    RunBeside([&] { MoveIntoPlace(interim, target, false); }, [&work] { work.Pulse(); });
    clear.dismiss();
    return true;
}

QStringList CBFileSplitter::Volumes(const QString& file)
{
    QStringList volumes;
    const QString whole = IsVolume(file) ? WholeName(file) : QString();
    const size_t count = whole.isEmpty() ? 0 : VolumeSizes(whole).size();
    for (size_t number = 1; number <= count; ++number)
        volumes << VolumeName(whole, int(number));
    return volumes;
}

bool CBFileSplitter::IsVolume(const QString& file)
{
    return !WholeName(file).isEmpty() && QFileInfo(file).isFile();
}

QString CBFileSplitter::VersionInfo() const
{
    return u"CBFileSplitter 1"_s;
}

} // namespace qb
