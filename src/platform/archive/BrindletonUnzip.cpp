// The extracting part of the zip engine.

#include "platform/archive/BrindletonZip.h"
#include "platform/archive/Pace.h"
#include "platform/archive/ZipHandle.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>
#include <algorithm>
#include <limits>
#include <memory>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void FailToExtract(const QString& archive, const QString& why)
{
    throw RuntimeError(
        ErrorNumber::PathAccess,
        u"The archive '%1' can't be extracted: %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(archive), why),
        u"BrindletonZip"_s);
}

ZipHandle Open(const QString& path)
{
    const QFileInfo info(path);
    if (info.isFile() && info.size() == 0)
        FailToExtract(path, u"the file is empty"_s); // which the library takes for an archive without entries
    QString why;
    ZipHandle archive = OpenZip(path, ZIP_RDONLY, why);
    if (!archive)
        FailToExtract(path, why);
    return archive;
}

/// Entries of an archive, on their way out of it.
class Extraction {
public:
    Extraction(const QString& path, zip_t* archive, StagedFiles& target, Pace pace)
        : m_path(path), m_archive(archive), m_target(target), m_pace(std::move(pace)),
          m_buffer(BufferSize, Qt::Uninitialized)
    {
    }

    /// False when it is to end.
    bool Extract(const ArchiveEntry& entry)
    {
        if (entry.IsFolder) {
            m_target.AddFolder(entry.Name);
            return m_pace.Tell(m_done);
        }
        const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> source(zip_fopen_index(m_archive, entry.Index, 0),
                                                                        zip_fclose);
        if (!source)
            Fail(entry, QString::fromLocal8Bit(zip_strerror(m_archive)));
        QFile file(m_target.PathFor(entry.Name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            Fail(entry, file.errorString());
        if (!Copy(entry, source.get(), file))
            return false;
        if (entry.IsExecutable)
            file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser
                                | QFileDevice::ExeGroup | QFileDevice::ExeOther);
        if (entry.Modified.isValid())
            file.setFileTime(entry.Modified, QFileDevice::FileModificationTime);
        return true;
    }

private:
    static constexpr qsizetype BufferSize = 256 * 1024;

    [[noreturn]] void Fail(const ArchiveEntry& entry, const QString& why)
    {
        FailToExtract(m_path, u"'%1': %2"_s.arg(entry.Name, why));
    }

    bool Copy(const ArchiveEntry& entry, zip_file_t* source, QFile& target)
    {
        qint64 written = 0;
        for (;;) {
            const zip_int64_t length = zip_fread(source, m_buffer.data(), zip_uint64_t(m_buffer.size()));
            if (length < 0)
                Fail(entry, QString::fromLocal8Bit(zip_file_strerror(source)));
            if (length == 0)
                break;
            written += length;
            m_done += length;
            if (written > entry.Size) // the limits were checked against what it declares
                Fail(entry, u"it is larger than it declares"_s);
            if (const QString why = WriteAll(target, m_buffer.constData(), length); !why.isEmpty())
                Fail(entry, why);
            if (!m_pace.Tell(m_done))
                return false;
        }
        if (written != entry.Size)
            Fail(entry, u"it ends before it is complete"_s);
        return m_pace.Tell(m_done);
    }

    QString m_path;
    zip_t* m_archive;
    StagedFiles& m_target;
    Pace m_pace;
    qint64 m_done = 0;
    QByteArray m_buffer;
};

/// The line that tells of a file, as one of the engine's forms.
QString LineFor(const ArchiveEntry& entry)
{
    const QString path = u".\\"_s + QString(entry.Name).replace(u'/', u'\\');
    return (entry.IsStored ? u" extracting: "_s : u"  inflating: "_s) + path + u"       "_s;
}

} // namespace

qint64 BrindletonZip::MostBytes(qint64 archiveSize)
{
    constexpr qint64 Gigabyte = qint64(1) << 30;
    constexpr qint64 MostTimes = 200;
    return qMax(Gigabyte, archiveSize * MostTimes);
}

std::vector<ArchiveEntry> BrindletonZip::Entries(const QString& archive)
{
    return EntriesOf(Open(archive).get());
}

bool BrindletonZip::ReadFirstFile(const QString& archive, const std::function<bool(const QByteArray&)>& take,
                                  Work& work)
{
    constexpr qsizetype PieceSize = 256 * 1024;
    const ZipHandle open = Open(archive);
    const std::vector<ArchiveEntry> entries = EntriesOf(open.get());
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [](const ArchiveEntry& one) { return !one.IsFolder; });
    if (entry == entries.end())
        FailToExtract(archive, u"there is no file in it"_s);
    const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> source(zip_fopen_index(open.get(), entry->Index, 0),
                                                                    zip_fclose);
    if (!source)
        FailToExtract(archive, QString::fromLocal8Bit(zip_strerror(open.get())));
    Pace pace(work, entry->Size);
    QByteArray buffer;
    for (qint64 done = 0;;) {
        buffer.resize(PieceSize);
        const zip_int64_t length = zip_fread(source.get(), buffer.data(), zip_uint64_t(buffer.size()));
        if (length < 0)
            FailToExtract(archive,
                          u"'%1': %2"_s.arg(entry->Name, QString::fromLocal8Bit(zip_file_strerror(source.get()))));
        if (length == 0)
            return pace.Tell(entry->Size);
        done += length;
        buffer.truncate(qsizetype(length));
        if (!take(buffer) || !pace.Tell(done))
            return false;
    }
}

QString BrindletonZip::FirstFileName(const QString& archive)
{
    for (const ArchiveEntry& entry : Entries(archive)) {
        if (!entry.IsFolder)
            return entry.Name;
    }
    return {};
}

bool BrindletonZip::Unzip(UnzipDialog& dialog, const QString& folder, const QString& title)
{
    m_unzippedPath.clear();
    return dialog.Run(*this, folder.isEmpty() ? m_extractDirectory : folder, title);
}

bool BrindletonZip::ExtractTo(const QString& archive, const QString& folder, Work& work)
{
    return Extract(archive, folder, nullptr, work);
}

bool BrindletonZip::ExtractEntries(const QString& archive, const QString& folder, const QList<quint64>& indexes,
                                   Work& work)
{
    return Extract(archive, folder, &indexes, work);
}

bool BrindletonZip::Extract(const QString& archive, const QString& folder, const QList<quint64>* indexes, Work& work)
{
    const ZipHandle open = Open(archive);
    const std::vector<ArchiveEntry> all = EntriesOf(open.get());
    const qint64 archiveSize = QFileInfo(archive).size();
    const qint64 most = m_ownArchive ? std::numeric_limits<qint64>::max() / 2 : MostBytes(archiveSize);
    if (const QString why = WhyNotExtracted(all, archiveSize, most); !why.isEmpty())
        FailToExtract(archive, why);
    const QSet<quint64> wanted = indexes ? QSet<quint64>(indexes->begin(), indexes->end()) : QSet<quint64>();
    std::vector<ArchiveEntry> entries;
    qint64 total = 0;
    m_fileCount = 0;
    for (const ArchiveEntry& entry : all) {
        if (indexes && !wanted.contains(entry.Index))
            continue;
        if (!entry.Problem.isEmpty())
            FailToExtract(archive, u"'%1' is refused, %2"_s.arg(entry.Name, entry.Problem));
        entries.push_back(entry);
        total += entry.Size;
        m_fileCount += entry.IsFolder ? 0 : 1;
    }
    StagedFiles target(folder);
    if (const qint64 room = QStorageInfo(folder).bytesAvailable(); room >= 0 && total > room)
        FailToExtract(archive, u"it needs %1 bytes, and %2 are free in '%3'"_s.arg(total).arg(room).arg(
                                   QDir::toNativeSeparators(folder)));
    Extraction extraction(archive, open.get(), target, Pace(work, total));
    int fileNo = 0;
    for (const ArchiveEntry& entry : entries) {
        if (!entry.IsFolder)
            Q_EMIT Progress(++fileNo, LineFor(entry));
        if (!extraction.Extract(entry))
            return false;
    }
    m_keptFiles = target.PutInPlace(m_keepExisting);
    m_unzippedPath = folder;
    return true;
}

} // namespace qb
