#include "conflicts/ShownPages.h"

#include "conflicts/ConflictPages.h"
#include "exchange/PageNames.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/StoredFiles.h"
#include "web/ItemPages.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In a folder that is one of these, and nobody's own.
const QString MarkName = u".conflict-pages"_s;
const QString DefaultFolder = u"default2"_s;

bool IsOurs(const QString& folder)
{
    return IsPlainFile(folder + MarkName) && !QFileInfo(folder.chopped(1)).isSymLink();
}

void CopyFiles(const QString& from, const QStringList& files, const QString& to)
{
    for (const QString& file : files) {
        QDir().mkpath(QFileInfo(to + file).absolutePath());
        CopyFileContents(from + file, to + file);
    }
}

} // namespace

ShownPages::ShownPages(Library& library) : m_library(library)
{
    const QDir pages(library.HTMLFolder());
    for (const QString& name : pages.entryList({u"Temp*"_s}, QDir::Dirs | QDir::NoSymLinks)) {
        if (const QString folder = pages.filePath(name) + u'/'; IsOurs(folder))
            DeleteFolder(folder);
    }
}

ShownPages::~ShownPages()
{
    if (!m_folder.isEmpty())
        DeleteFolder(m_folder);
}

/// A folder of that name that is somebody's own stays.
void ShownPages::MakeFolder()
{
    if (!m_folder.isEmpty())
        return;
    const QDir pages(m_library.HTMLFolder());
    const QString name = NumberedName(u"Temp"_s, [&pages](const QString& one) {
        const QFileInfo info(pages.filePath(one));
        return info.exists() || info.isSymLink();
    });
    const QString folder = pages.filePath(name) + u'/';
    if (!QDir().mkpath(folder) || !ReplaceContents(folder + MarkName, {}).isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The pages can't be shown: the folder '%1' can't be written."_s.arg(QDir::toNativeSeparators(folder)),
            u"ShownPages"_s);
    m_folder = folder;
}

/// Makes room for the page of that name.
QString ShownPages::Claim(const QString& name)
{
    MakeFolder();
    QFile::remove(m_folder + name + u".htm"_s);
    DeleteFolder(m_folder + name + u'/');
    return m_folder + name;
}

QString ShownPages::WriteOwn(qint64 item)
{
    const QString page = PageFileOf(m_library, item);
    if (!IsPlainFile(page))
        return {};
    const QString place = Claim(u"1"_s);
    CopyFileContents(page, place + u".htm"_s);
    CopyFiles(PageFolderOf(m_library, item), FilesOfPage(m_library, item), place + u'/');
    const QDir defaults(m_library.HTMLFolder() + DefaultFolder);
    CopyFiles(defaults.path() + u'/', defaults.entryList(QDir::Files | QDir::NoSymLinks),
              place + u'/' + DefaultFolder + u'/');
    RenameReferences(place + u".htm"_s, QString::number(item), u"1"_s);
    RenameReferences(place + u".htm"_s, DefaultFolder, u"1/"_s + DefaultFolder);
    return u"local://Item1"_s;
}

QString ShownPages::WriteOther(qint64 item)
{
    if (!HasConflictPage(m_library, item))
        return {};
    const QString place = Claim(u"2"_s);
    if (!WriteConflictPage(m_library, item, m_folder, u"2"_s, u"2"_s))
        return {};
    const QDir defaults(m_library.HTMLFolder() + DefaultFolder);
    CopyFiles(defaults.path() + u'/', defaults.entryList(QDir::Files | QDir::NoSymLinks),
              place + u'/' + DefaultFolder + u'/');
    RenameReferences(place + u".htm"_s, DefaultFolder, u"2/"_s + DefaultFolder);
    return u"local://Item2"_s;
}

} // namespace qb
