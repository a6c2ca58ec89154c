#include "store/SideFolders.h"

#include "platform/dao/DBEngine.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "store/Library.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString MarkName = u".library"_s;

/// The identity in a folder's mark; empty when it has none.
QString MarkOf(const QString& folder)
{
    constexpr qint64 Longest = 100;
    const QFileInfo mark(QDir(folder).filePath(MarkName));
    QFile file(mark.filePath());
    QByteArray bytes;
    if (!mark.isFile() || mark.isSymLink() || !file.open(QIODevice::ReadOnly)
        || !ReadAll(file, bytes, Longest).isEmpty())
        return {};
    return QString::fromUtf8(bytes).trimmed();
}

bool IsLibraryFile(const QString& path)
{
    constexpr qint64 HeaderLength = 72;
    QFile file(path);
    QByteArray header;
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || !ReadAll(file, header, HeaderLength).isEmpty())
        return false;
    return header.startsWith("SQLite format 3") && header.endsWith("KTQB");
}

} // namespace

QString LibraryIdentity(Database& database)
{
    return database.QueryValue(u"SELECT DBID FROM Properties"_s).ToText();
}

FolderOwner OwnerOf(const QString& folder, const QString& identity)
{
    const QString mark = MarkOf(folder);
    if (mark.isEmpty() || identity.isEmpty())
        return FolderOwner::Nobody;
    return mark == identity ? FolderOwner::This : FolderOwner::Another;
}

void ClaimFolder(const QString& folder, const QString& identity)
{
    const auto fail = [&](const QString& why) {
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The folder '%1' %2; nothing was changed."_s.arg(QDir::toNativeSeparators(folder), why),
                           u"ClaimFolder"_s);
    };
    if (!QDir().mkpath(folder))
        fail(u"can't be written"_s);
    const FolderOwner owner = OwnerOf(folder, identity);
    if (owner == FolderOwner::Another)
        fail(u"belongs to another library"_s);
    if (owner == FolderOwner::Nobody && !identity.isEmpty()
        && !ReplaceContents(QDir(folder).filePath(MarkName), identity.toUtf8() + '\n').isEmpty())
        fail(u"can't be written"_s);
}

QString WhoseFoldersAreForeign(Database& database)
{
    QStringList foreign;
    for (const QString& folder : {FilesFolderOf(database.Name()), HTMLFolderOf(database.Name())}) {
        if (OwnerOf(folder, LibraryIdentity(database)) == FolderOwner::Another)
            foreign << QDir::toNativeSeparators(folder.chopped(1));
    }
    if (foreign.isEmpty())
        return {};
    return u"'%1' belongs to another library of this name with another extension. Its files are not used for this "
           "library, which can "
           "store none: give one of the two another name, and its folders, too."_s.arg(foreign.join(u"', '"_s));
}

void RefuseSharedFolders(const QString& path)
{
    const auto refuse = [&path](const QString& what) {
        throw RuntimeError(
            ErrorNumber::DatabaseExists,
            u"The library '%1' can't be made: %2, and would share its folders. Choose another name; nothing was "
            "changed."_s.arg(QDir::toNativeSeparators(path), what),
            u"RefuseSharedFolders"_s);
    };
    for (const QString& folder : {FilesFolderOf(path), HTMLFolderOf(path)}) {
        if (!MarkOf(folder).isEmpty())
            refuse(u"the folder '%1' is another library's"_s.arg(QDir::toNativeSeparators(folder.chopped(1))));
    }
    const QFileInfo own(path);
    for (const QFileInfo& other : own.absoluteDir().entryInfoList(QDir::Files)) {
        const bool shares = FilesFolderOf(other.absoluteFilePath()) == FilesFolderOf(own.absoluteFilePath());
        if (shares && other.fileName() != own.fileName() && IsLibraryFile(other.filePath()))
            refuse(u"the library '%1' has the same name but for the extension"_s.arg(other.fileName()));
    }
}

} // namespace qb
