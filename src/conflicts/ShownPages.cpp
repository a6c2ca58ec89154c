#include "conflicts/ShownPages.h"

#include "conflicts/ConflictPages.h"
#include "exchange/PageNames.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/PageReferences.h"
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
        const QString folder = pages.filePath(name) + u'/';
        if (IsOurs(folder) && FileLock(folder, FileLock::Target::Existing).IsHeld())
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
    QDir().mkpath(folder);
    m_lock = FileLock(folder, FileLock::Target::Existing); // before it is known as ours
    if (!m_lock.IsHeld() || !ReplaceContents(folder + MarkName, {}).isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The pages can't be shown: the folder '%1' can't be written."_s.arg(QDir::toNativeSeparators(folder)),
            u"ShownPages"_s);
    m_folder = folder;
}

/// Makes room for a page in the place of the former one, under a number that no page had yet: a browser shows again
/// what it knows by the same address.
void ShownPages::Claim(QString& number)
{
    MakeFolder();
    if (!number.isEmpty()) {
        QFile::remove(m_folder + number + u".htm"_s);
        DeleteFolder(m_folder + number + u'/');
    }
    number = QString::number(++m_last);
}

/// The pictures that all pages share, which it has beside it. Returns its address.
QString ShownPages::Complete(const QString& number)
{
    const QDir defaults(m_library.HTMLFolder() + TemplateFolder);
    CopyFiles(defaults.path() + u'/', defaults.entryList(QDir::Files | QDir::NoSymLinks),
              m_folder + number + u'/' + TemplateFolder + u'/');
    RenameReferences(m_folder + number + u".htm"_s, TemplateFolder, number + u'/' + TemplateFolder);
    return u"local://Item"_s + number;
}

QString ShownPages::WriteOwn(qint64 item)
{
    const QString page = PageFileOf(m_library, item);
    if (!IsPlainFile(page))
        return {};
    Claim(m_own);
    CopyFileContents(page, m_folder + m_own + u".htm"_s);
    CopyFiles(PageFolderOf(m_library, item), FilesOfPage(m_library, item), m_folder + m_own + u'/');
    RenameReferences(m_folder + m_own + u".htm"_s, QString::number(item), m_own);
    return Complete(m_own);
}

QString ShownPages::WriteOther(qint64 item)
{
    if (!HasConflictPage(m_library, item))
        return {};
    Claim(m_other);
    return WriteConflictPage(m_library, item, m_folder, m_other) ? Complete(m_other) : QString();
}

} // namespace qb
