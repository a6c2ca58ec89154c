#include "platform/system/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace qb {

namespace {

qsizetype LastSeparator(const QString& path)
{
    return qMax(path.lastIndexOf(u'\\'), path.lastIndexOf(u'/'));
}

QString MadeFolder(const QString& folder)
{
    QDir().mkpath(folder);
    return QDir::cleanPath(folder) + u'/';
}

/// An installed program has its shared data beside the folder of the executable.
bool IsInstalled(const QString& executableFolder)
{
    return QFileInfo(executableFolder + QStringLiteral("/../share/quillbase")).isDir()
           || !QFileInfo(executableFolder).isWritable();
}

} // namespace

QString fnExtractPathOrFileName(QString& path, PathPart part, bool modify)
{
    const qsizetype cut = LastSeparator(path) + 1;
    const QString folder = path.left(cut);
    const QString name = path.mid(cut);
    if (modify)
        path = part == PathPart::Folder ? name : folder;
    switch (part) {
    case PathPart::Folder:
        return folder;
    case PathPart::FileName:
        return name;
    case PathPart::BaseName:
        break;
    }
    return TakeExtensionOff(name);
}

QString fnExtractPathOrFileName(const QString& path, PathPart part)
{
    QString copy = path;
    return fnExtractPathOrFileName(copy, part, false);
}

QString TakeExtensionOff(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot >= 0 && dot >= name.size() - 5 ? name.left(dot) : name;
}

QString NumberedName(const QString& name, const std::function<bool(const QString&)>& isTaken)
{
    const qsizetype file = name.lastIndexOf(u'/') + 1;
    const qsizetype base = file + TakeExtensionOff(name.mid(file)).size();
    QString numbered = name;
    for (int number = 1; isTaken(numbered); ++number)
        numbered = QStringLiteral("%1(%2)%3").arg(name.left(base), QString::number(number), name.mid(base));
    return numbered;
}

QString NumberedPath(const QString& path)
{
    return NumberedName(path, [](const QString& taken) {
        const QFileInfo there(taken);
        return there.exists() || there.isSymLink();
    });
}

QString ApplicationFolder()
{
    const QString redirected = qEnvironmentVariable("QUILLBASE_DATA_HOME");
    if (!redirected.isEmpty())
        return MadeFolder(QFileInfo(redirected).absoluteFilePath());
    const QString own = QCoreApplication::applicationDirPath();
    if (!IsInstalled(own))
        return QDir::cleanPath(own) + u'/';
    return MadeFolder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
                      + QStringLiteral("/KTQuillbase"));
}

QString ConfigFolder()
{
    const QString redirected = qEnvironmentVariable("QUILLBASE_CONFIG_HOME");
    if (!redirected.isEmpty())
        return MadeFolder(QFileInfo(redirected).absoluteFilePath());
    return MadeFolder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                      + QStringLiteral("/KTQuillbase"));
}

QString CacheFolder()
{
    const QString redirected = qEnvironmentVariable("QUILLBASE_CACHE_HOME");
    if (!redirected.isEmpty())
        return MadeFolder(QFileInfo(redirected).absoluteFilePath());
    return MadeFolder(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
                      + QStringLiteral("/KTQuillbase"));
}

QString SharedPath(const QString& name)
{
    const QString own = QCoreApplication::applicationDirPath();
    const QString installed = QDir::cleanPath(own + QStringLiteral("/../share/quillbase/") + name);
    for (const QString& path : {installed, own + u'/' + name, QDir::cleanPath(own + QStringLiteral("/../") + name)}) {
        if (QFileInfo::exists(path))
            return path;
    }
    return installed;
}

bool DeleteFolder(const QString& path)
{
    const QString name = QDir::cleanPath(path); // a separator at the end would lead through a link
    const QFileInfo info(name);
    if (info.isSymLink())
        return QFile::remove(name);
    return !info.exists() || (info.isDir() && QDir(name).removeRecursively());
}

QString WhyNotWritable(const QString& file)
{
    const QFileInfo info(file);
    const QFileInfo folder(info.absolutePath());
    const QString shownFolder = QDir::toNativeSeparators(folder.filePath());
    if (info.isDir())
        return QStringLiteral("'%1' is a folder.").arg(QDir::toNativeSeparators(file));
    if (!folder.isDir())
        return QStringLiteral("The folder '%1' does not exist.").arg(shownFolder);
    if (info.exists() && !info.isWritable())
        return QStringLiteral("The file '%1' is read-only.").arg(QDir::toNativeSeparators(file));
    if (!folder.isWritable())
        return QStringLiteral("The folder '%1' is read-only.").arg(shownFolder);
    return {};
}

} // namespace qb
