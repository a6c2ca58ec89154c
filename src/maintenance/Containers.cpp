#include "maintenance/Containers.h"

#include "maintenance/ArchiveProgress.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/archive/CBFileSplitter.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The name of what lies in a container: its own with a "t" at the end.
QString InnerName(const QString& container)
{
    return container.chopped(1) + u't';
}

/// Packs @p source into @p target; false when it was cancelled.
template <class Progress>
bool Pack(const QString& source, const QString& target, Progress& progress, Work& work, const QByteArray& comment = {},
          Compression compression = Compression::Usual)
{
    progress.SetExtracting(false);
    BrindletonZip m_oZip;
    QObject::connect(&m_oZip, &BrindletonZip::Progress, &m_oZip,
                     [&](int, const QString& text) { progress.m_oZip_Progress(text); });
    m_oZip.SetZipFileName(target);
    m_oZip.ClearFileList();
    m_oZip.AddFile(source);
    m_oZip.SetComment(comment);
    m_oZip.SetZipOptionC(false);
    m_oZip.SetZipOptionA(false);
    m_oZip.SetZipOptionB(false);
    m_oZip.SetFast(compression == Compression::Fast);
    return m_oZip.Zip(work);
}

void Connect(CBFileSplitter& oFS, VolumeProgress& progress)
{
    QObject::connect(&oFS, &CBFileSplitter::TotalChunks, &oFS, [&](int total) { progress.TotalChunks(total); });
    QObject::connect(&oFS, &CBFileSplitter::NextVolume, &oFS,
                     [&](int number, qint64, bool creating) { progress.NextVolume(number, creating); });
    QObject::connect(&oFS, &CBFileSplitter::Progress, &oFS, [&](int chunk) { progress.Progress(chunk); });
}

constexpr qint64 NoVolumes = 0;

QString Split(const QString& file, qint64 size, Work& work)
{
    CBFileSplitter oFS;
    VolumeProgress progress(work);
    Connect(oFS, progress);
    return oFS.Split(file, size, work);
}

QString Joined(const QString& container, Work& work)
{
    if (!CBFileSplitter::IsVolume(container))
        return container;
    CBFileSplitter oFS;
    VolumeProgress progress(work);
    Connect(oFS, progress);
    return oFS.Merge(container, work);
}

[[noreturn]] void Refuse(const QString& container, const QString& why)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"'%1' %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(container), why),
                       u"UnpackContainer"_s);
}

/// A container holds one file.
void RefuseOtherArchives(BrindletonZip& zip, const QString& container)
{
    int files = 0;
    for (const ArchiveEntry& entry : zip.Entries(container))
        files += entry.IsFolder ? 0 : 1;
    if (files != 1)
        Refuse(container, u"is no container of this program: it holds %1 files instead of one"_s.arg(files));
}

/// What is in it must take the place neither of the container nor of another file beside it.
void RefuseOthers(BrindletonZip& zip, const QString& container)
{
    RefuseOtherArchives(zip, container);
    const QString name = zip.FirstFileName(container);
    if (name == QFileInfo(container).fileName())
        Refuse(container, u"can't be unpacked: the file in it has the same name and would take its place"_s);
    const QFileInfo there(QFileInfo(container).absolutePath() + u'/' + name);
    if (there.exists() && there.fileName() != QFileInfo(InnerName(container)).fileName())
        Refuse(container, u"can't be unpacked: a file '%1' stands beside it"_s.arg(name));
}

/// Extracts the one file of a container into a folder.
template <class Progress>
QString Extract(BrindletonZip& m_oZip, const QString& container, const QString& folder, Progress& progress, Work& work)
{
    progress.SetExtracting(true);
    QObject::connect(&m_oZip, &BrindletonZip::Progress, &m_oZip,
                     [&](int, const QString& text) { progress.m_oZip_Progress(text); });
    return m_oZip.ExtractTo(container, folder, work) ? folder + u'/' + m_oZip.FirstFileName(container) : QString();
}

template <class Progress>
QString Unpack(const QString& file, Progress& progress, Work& work)
{
    const QString container = Joined(file, work);
    if (container.isEmpty())
        return {};
    BrindletonZip m_oZip;
    m_oZip.SetOwnArchive(true);
    RefuseOthers(m_oZip, container);
    return Extract(m_oZip, container, QFileInfo(container).absolutePath(), progress, work);
}

template <class Progress>
QString UnpackTo(const QString& container, const QString& folder, Work& work)
{
    QString whole = container;
    const bool isVolume = CBFileSplitter::IsVolume(container);
    if (isVolume) {
        whole = QDir(folder).filePath(u"joined"_s);
        CBFileSplitter oFS;
        VolumeProgress merging(work);
        Connect(oFS, merging);
        if (!oFS.MergeTo(container, whole, work))
            return {};
    }
    BrindletonZip m_oZip;
    m_oZip.SetOwnArchive(true);
    Progress progress(work);
    RefuseOtherArchives(m_oZip, whole);
    if (isVolume && m_oZip.FirstFileName(whole) == u"joined")
        Refuse(container, u"is no container of this program"_s);
    const QString unpacked = Extract(m_oZip, whole, folder, progress, work);
    if (isVolume)
        QFile::remove(whole);
    return unpacked;
}

} // namespace

bool PackLibrary(const QString& source, const QString& target, Work& work)
{
    LibraryZipProgress progress(work);
    if (!Pack(source, target, progress, work))
        return false;
    QFile::remove(source);
    Split(target, NoVolumes, work);
    return true;
}

bool PackContainer(const QString& source, const QString& target, const QByteArray& comment, Work& work,
                   Compression compression)
{
    LibraryZipProgress progress(work);
    return Pack(source, target, progress, work, comment, compression);
}

QString SplitContainer(const QString& container, qint64 size, Work& work)
{
    return Split(container, size, work);
}

QString PackExport(const QString& file, Work& work, Compression compression)
{
    const QString inner = InnerName(file);
    QFile::remove(inner);
    if (!QFile::rename(file, inner))
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The file '%1' can't be renamed to be packed. Nothing was changed."_s.arg(QDir::toNativeSeparators(file)),
            u"PackExport"_s);
    ExportZipProgress progress(work);
    if (!Pack(inner, file, progress, work, {}, compression))
        return {};
    QFile::remove(inner);
    return Split(file, NoVolumes, work);
}

QString UnpackLibrary(const QString& container, Work& work)
{
    LibraryZipProgress progress(work);
    return Unpack(container, progress, work);
}

QString UnpackLibraryTo(const QString& container, const QString& folder, Work& work)
{
    return UnpackTo<LibraryZipProgress>(container, folder, work);
}

QString UnpackExport(const QString& container, Work& work)
{
    ExportZipProgress progress(work);
    return Unpack(container, progress, work);
}

QString UnpackExportTo(const QString& container, const QString& folder, Work& work)
{
    return UnpackTo<ExportZipProgress>(container, folder, work);
}

} // namespace qb
