#include "platform/archive/BrindletonZip.h"

#include "platform/archive/Pace.h"
#include "platform/archive/ZipHandle.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RunBeside.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSet>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int CompressionLevel = 5; // of 9: more takes a third more time for one part in a hundred
constexpr int FastCompressionLevel = 1;

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

[[noreturn]] void FailToPack(const QString& archive, const QString& why)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"The archive '%1' can't be made: %2. Nothing was changed."_s.arg(Shown(archive), why),
                       u"BrindletonZip"_s);
}

/// What the library is told to call back while it writes: turns its fraction of all files, each of
/// which counts the same, into files and bytes.
struct PackProgress {
    Pace Steps;
    std::vector<qint64> Before; ///< bytes of the files before each
    std::vector<qint64> Sizes;
    std::function<void(int index)> FileBegun;
    int Begun = 0; ///< files
    qint64 Done = 0;

    void Report(double fraction)
    {
        const double files = fraction * double(Sizes.size());
        const int index = qBound(0, int(files), int(Sizes.size()) - 1);
        while (Begun <= index)
            FileBegun(Begun++);
        Done = Before[size_t(index)] + qint64((files - index) * double(Sizes[size_t(index)]));
    }
};

int Percentage(qint64 size, qint64 packed)
{
    return size > 0 ? int(qMax<qint64>(0, (size - packed) * 100 / size)) : 0;
}

} // namespace

ZipHandle OpenZip(const QString& path, int flags, QString& why)
{
    int error = 0;
    ZipHandle archive(zip_open(QFile::encodeName(path).constData(), flags, &error), zip_discard);
    if (!archive) {
        zip_error_t reason;
        zip_error_init_with_code(&reason, error);
        why = QString::fromLocal8Bit(zip_error_strerror(&reason));
        zip_error_fini(&reason);
    }
    return archive;
}

std::vector<BrindletonZip::Packed> BrindletonZip::FilesToPack() const
{
    std::vector<Packed> files;
    QSet<QString> names;
    QString base = m_baseDirectory.isEmpty() ? QString() : QDir(m_baseDirectory).absolutePath();
    if (!base.isEmpty() && !base.endsWith(u'/'))
        base += u'/';
    for (const QString& path : m_files) {
        const QFileInfo info(path);
        if (!info.isFile())
            FailToPack(m_zipFileName, u"there is no file '%1'"_s.arg(Shown(path)));
        if (!info.isReadable())
            FailToPack(m_zipFileName, u"the file '%1' can't be read"_s.arg(Shown(path)));
        const QString clean = QDir::cleanPath(info.absoluteFilePath());
        QString name = !m_bareNames && !base.isEmpty() && clean.startsWith(base) ? clean.mid(base.size())
                                                                                 : info.fileName();
        name = NumberedName(ArchiveName(name), [&](const QString& taken) { return names.contains(taken); });
        names.insert(name);
        files.push_back({path, name, info.size()});
    }
    if (files.empty())
        FailToPack(m_zipFileName, u"there is no file to put in it"_s);
    return files;
}

bool BrindletonZip::Zip(Work& work)
{
    const std::vector<Packed> files = FilesToPack();
    if (const QString what = WhyNoPlainFile(m_zipFileName); !what.isEmpty())
        FailToPack(m_zipFileName, what + u" stands there"_s);
    const QString interim = InterimName(m_zipFileName);
    const auto clear = qScopeGuard([&interim] { QFile::remove(interim); });
    if (!Pack(files, interim, work))
        return false;
    RunBeside([&] { MoveIntoPlace(interim, m_zipFileName, true); }, [&work] { work.Pulse(); });
    qint64 size = 0;
    for (const Packed& file : files)
        size += file.Size;
    TellResult(m_zipFileName, size, int(files.size()));
    return true;
}

/// Names a file to the library, which reads it when the archive is closed.
void BrindletonZip::AddTo(zip* archive, const Packed& file) const
{
    const QByteArray path = QFile::encodeName(file.Path);
    zip_source_t* source = zip_source_file(archive, path.constData(), 0, -1);
    const zip_int64_t added = source ? zip_file_add(archive, file.Name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8)
                                     : -1;
    if (added < 0) {
        zip_source_free(source);
        FailToPack(m_zipFileName, u"'%1': %2"_s.arg(Shown(file.Path), QString::fromLocal8Bit(zip_strerror(archive))));
    }
    const auto index = zip_uint64_t(added);
    zip_set_file_compression(archive, index, m_storeOnly ? ZIP_CM_STORE : ZIP_CM_DEFLATE,
                             m_isFast ? FastCompressionLevel : CompressionLevel);
    struct stat state {};
    if (::stat(path.constData(), &state) == 0) {
        zip_file_set_mtime(archive, index, state.st_mtime, 0);
        zip_file_set_external_attributes(archive, index, 0, ZIP_OPSYS_UNIX, zip_uint32_t(state.st_mode) << 16);
    }
}

bool BrindletonZip::Pack(const std::vector<Packed>& files, const QString& target, Work& work)
{
    QString why;
    ZipHandle archive = OpenZip(target, ZIP_CREATE | ZIP_EXCL, why);
    if (!archive)
        FailToPack(m_zipFileName, why);
    PackProgress progress{.Steps = Pace(work, 0), .Before = {}, .Sizes = {}, .FileBegun = {}};
    qint64 total = 0;
    for (const Packed& file : files) {
        AddTo(archive.get(), file);
        progress.Before.push_back(total);
        progress.Sizes.push_back(file.Size);
        total += file.Size;
    }
    if (!m_comment.isEmpty())
        zip_set_archive_comment(archive.get(), m_comment.constData(), zip_uint16_t(m_comment.size()));
    progress.Steps = Pace(work, total);
    progress.FileBegun = [&](int index) {
        Q_EMIT Progress(index + 1, u"  adding: %1 "_s.arg(files[size_t(index)].Name));
    };
    zip_register_progress_callback_with_state(
        archive.get(), 0,
        [](zip_t*, double fraction, void* state) { static_cast<PackProgress*>(state)->Report(fraction); }, nullptr,
        &progress);
    zip_register_cancel_callback_with_state(
        archive.get(),
        [](zip_t*, void* state) {
            auto* self = static_cast<PackProgress*>(state);
            return self->Steps.Tell(self->Done) ? 0 : 1;
        },
        nullptr, &progress);
    if (zip_close(archive.get()) == 0) {
        archive.release();
        return true;
    }
    if (progress.Steps.Ended())
        return false;
    FailToPack(m_zipFileName, QString::fromLocal8Bit(zip_strerror(archive.get())));
}

void BrindletonZip::TellResult(const QString& archive, qint64 size, int count)
{
    const qint64 packed = QFileInfo(archive).size();
    const int percent = Percentage(size, packed);
    Q_EMIT Progress(count, m_storeOnly ? u" (stored 0%)\r\n"_s : u" (deflated %1%)\r\n"_s.arg(percent));
    Q_EMIT Progress(count, u" (in=%1) (out=%2) (deflated %3%)"_s.arg(size).arg(packed).arg(percent));
}

QString BrindletonZip::VersionInfo() const
{
    return u"BrindletonZip, with libzip "_s + QString::fromLatin1(zip_libzip_version());
}

} // namespace qb
