// A fuzzer of the extraction of archives. Whatever comes in: no crash, no hang, nothing outside the target
// folder, and nothing in it after an error.

#include "platform/archive/BrindletonZip.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdlib>

namespace {

void Write(const QString& path, const char* bytes, qint64 size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes, size) != size)
        std::abort();
}

QStringList Names(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Qt::StringLiterals;
    static const QTemporaryDir home(QDir(u"/dev/shm"_s).exists() ? u"/dev/shm/fuzz-XXXXXX"_s
                                                                 : QDir::tempPath() + u"/fuzz-XXXXXX"_s);
    const QString archive = home.filePath(u"archive.zip"_s);
    const QString target = home.filePath(u"target"_s);
    Write(archive, reinterpret_cast<const char*>(data), qint64(size));
    QDir().mkpath(target);
    bool extracted = false;
    qb::BrindletonZip zip;
    try {
        extracted = zip.ExtractTo(archive, target);
    } catch (const qb::RuntimeError&) { // what most of them are
    }
    if (Names(home.path()) != QStringList{u"archive.zip"_s, u"target"_s} || (!extracted && !Names(target).isEmpty()))
        std::abort();
    for (const QString& name : Names(target)) {
        if (name.startsWith(u".unpacking-"_s))
            std::abort();
    }
    qb::DeleteFolder(target);
    return 0;
}
