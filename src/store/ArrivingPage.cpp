#include "store/ArrivingPage.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u".arriving-page-"_s;
const QString ItemName = u"item"_s; ///< of the file that tells the number of the item

/// The page comes last: where it is, all of it is. False when it can't be.
bool Place(const QString& root, const QString& folder, qint64 item)
{
    const QString made = folder + u"new/page"_s;
    const QString place = root + QString::number(item);
    if (QFileInfo(made).isDir()) {
        DeleteFolder(place);
        if (!RenameFile(made, place))
            return false;
    }
    return !QFileInfo::exists(made + u".htm"_s) || RenameFile(made + u".htm"_s, place + u".htm"_s);
}

} // namespace

ArrivingPage::ArrivingPage(const Library& library) : m_root(library.HTMLFolder())
{
    ClaimFolder(m_root, library.Identity());
    m_folder = m_root + Prefix + QUuid::createUuid().toString(QUuid::Id128) + u'/';
    if (QDir().mkdir(m_folder))
        m_lock = FileLock(m_folder, FileLock::Target::Existing, FileLock::Forever);
    if (!QDir().mkpath(Folder()))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The folder of web pages '%1' can't be written; nothing was changed."_s.arg(
                               QDir::toNativeSeparators(m_root)),
                           u"ArrivingPage"_s);
}

ArrivingPage::~ArrivingPage()
{
    if (!m_folder.isEmpty())
        DeleteFolder(m_folder);
}

void ArrivingPage::Bind(qint64 item, Flush flush)
{
    m_item = item;
    if (flush == Flush::Now)
        SyncFileSystem(m_folder);
    if (const QString why = ReplaceContents(m_folder + ItemName, QByteArray::number(item)); !why.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess, u"The page can't be written: %1; nothing was changed."_s.arg(why),
                           u"ArrivingPage"_s);
}

void ArrivingPage::PutInPlace()
{
    const QString folder = std::exchange(m_folder, {}); // where this fails it stays for the next opening
    if (Place(m_root, folder, m_item))
        DeleteFolder(folder);
}

void FinishArrivingPages(Library& library)
{
    const QString root = library.HTMLFolder();
    if (library.IsReadOnly() || OwnerOf(root, library.Identity()) == FolderOwner::Another)
        return;
    for (const QString& name : QDir(root).entryList({Prefix + u'*'}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        const QString folder = root + name + u'/';
        const FileLock lock(folder, FileLock::Target::Existing);
        if (!lock.IsHeld())
            continue;
        QFile file(folder + ItemName);
        QByteArray text;
        const bool isNamed = file.open(QIODevice::ReadOnly) && ReadAll(file, text, 20).isEmpty();
        const qint64 item = isNamed ? text.toLongLong() : 0;
        const bool isWanted = item > 0
                              && library.QueryValue(u"SELECT HTMLPage FROM Items WHERE ID = ?"_s, {item}).ToBoolean()
                              && !QFileInfo::exists(root + QString::number(item) + u".htm"_s);
        if (!isWanted || Place(root, folder, item))
            DeleteFolder(folder);
    }
}

} // namespace qb
