#include "web/ItemPages.h"

#include "exchange/PageNames.h"
#include "platform/system/Clock.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "removed/Keeping.h"
#include "store/CCodeItem.h"
#include "store/ItemRules.h"
#include "store/PageChanges.h"
#include "store/PageReferences.h"
#include "store/StoredFiles.h"
#include "web/PagePictures.h"
#include "web/PictureSize.h"
#include "web/WebPages.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString PageSuffix = u".htm"_s;

[[noreturn]] void Fail(long number, const QString& what)
{
    throw RuntimeError(number, what, u"ItemPages"_s);
}

bool IsThere(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

QByteArray ReadPlain(const QString& path)
{
    if (!IsPlainFile(path))
        Fail(ErrorNumber::PathAccess,
             u"'%1' is no ordinary file; it is neither read nor changed."_s.arg(QDir::toNativeSeparators(path)));
    QFile file(path);
    QByteArray bytes;
    const QString why = file.open(QIODevice::ReadOnly) ? ReadAll(file, bytes) : file.errorString();
    if (!why.isEmpty())
        Fail(ErrorNumber::PathAccess, u"'%1' can't be read: %2."_s.arg(QDir::toNativeSeparators(path), why));
    return bytes;
}

/// The template of the library's pages, which gets one if it has none.
QByteArray Template(const Library& library)
{
    if (!IsThere(library.HTMLFolder() + PageTemplate))
        CreateDefaultHTMLItems(library.HTMLFolder());
    return ReadPlain(library.HTMLFolder() + PageTemplate);
}

void WriteNew(const QString& path, const QByteArray& bytes)
{
    if (const QString why = ReplaceContents(path, bytes); !why.isEmpty())
        Fail(ErrorNumber::PathAccess, u"The page can't be written: %1; nothing was changed."_s.arg(why));
}

void WriteRow(Library& library, qint64 id, bool hasPage)
{
    CCodeItem item;
    item.Initialise(library, QString::number(id));
    item.SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, StandingOf(library, id)));
    item.SetHTMLPage(hasPage);
    item.SetHTMLLastUpdated(library.NextStamp());
    item.SetItemChanged(true);
    if (!item.Commit())
        Fail(ErrorNumber::Engine, u"The item %1 could not be stored, so its page was not changed."_s.arg(id));
}

/// Makes a page and the files of its folder, which ends in a separator, aside.
using MakePage = std::function<void(const QString& page, const QString& folder)>;

/// One change: what @p make makes counts with the row.
void Change(Library& library, qint64 item, PageChanges::Kind kind, const MakePage& make,
            const BeforeCommit& beforeCommit, Keeping& keeping)
{
    RequireChange(library, item, {ItemChange::EditUnasked}); // before anything is made on the disk
    PageChanges change(library);
    Transaction transaction(library);
    RequireChange(library, item, {ItemChange::EditUnasked});
    SettlePage(library, item);
    keeping.Add([item](RemovedEvent& event) { event.AddPages(RemovedRows::OfLibrary(u"r.ID = ?"_s, {item}), {}); });
    make(change.PageFile(item), change.PageFolder(item));
    change.Bind(item, kind);
    WriteRow(library, item, kind != PageChanges::Kind::Delete);
    keeping.Note();
    if (beforeCommit)
        beforeCommit();
    transaction.Commit();
    keeping.Place();
    change.PutInPlace();
}

/// A change whose former state nobody wants back.
void Change(Library& library, qint64 item, PageChanges::Kind kind, const MakePage& make,
            const BeforeCommit& beforeCommit = {})
{
    Keeping nothing(nullptr);
    Change(library, item, kind, make, beforeCommit, nothing);
}

/// Files below a folder, by their paths in it. No link is followed.
QStringList FilesBelow(const QString& folder)
{
    QStringList files;
    if (QFileInfo(folder.chopped(1)).isSymLink())
        return files;
    QDirIterator all(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString file = all.next();
        if (IsPlainFile(file))
            files << file.mid(folder.size());
    }
    files.sort();
    return files;
}

/// A page has no zero bytes but in an encoding of two bytes a character, which says so.
void RequireText(const QString& file, const QByteArray& bytes)
{
    const bool isWide = bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff");
    if (!isWide && bytes.contains('\0'))
        Fail(ErrorNumber::ValueNotAllowed, u"'%1' is no page; nothing was changed."_s.arg(file));
}

/// What was written is worth more than that page and row go together: it is kept before the old page comes back. Says
/// what has become of it.
QString PutBack(const QString& page, const QByteArray& before)
{
    const QFileInfo file(page);
    const QString aside = file.absoluteDir().filePath(
        NumberedName(file.completeBaseName() + u" not stored.htm"_s,
                     [&file](const QString& name) { return IsThere(file.absoluteDir().filePath(name)); }));
    const bool isKept = IsPlainFile(page) && ReplaceContents(aside, ReadPlain(page)).isEmpty();
    if (!isKept || !ReplaceContents(page, before).isEmpty()) {
        QFile::remove(aside);
        return u"\nThe page itself is as you have changed it."_s;
    }
    return u"\nThe page is as it was before; what you have made of it is kept as '%1'."_s.arg(
        QDir::toNativeSeparators(aside));
}

QByteArray RequireInserted(const std::optional<QByteArray>& page)
{
    if (!page)
        Fail(WrongPageFormatError, WrongPageFormat + u" Nothing was changed."_s);
    return *page;
}

/// A picture that was made in the folder of a change gets a name that is free in the folder of the page too, whichever
/// letters that tells from each other.
QString NameFreely(const KeptPicture& made, const QString& pageFolder)
{
    const QStringList taken = QDir(pageFolder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System);
    const QFileInfo file(made.Path);
    const QString name = NumberedName(
        file.fileName(), [&taken](const QString& one) { return taken.contains(one, Qt::CaseInsensitive); });
    if (name != file.fileName() && !RenameFile(made.Path, file.absoluteDir().filePath(name)))
        Fail(ErrorNumber::PathAccess, u"The picture can't be written; nothing was changed."_s);
    return name;
}

void CopyFolder(const QString& from, const QString& to)
{
    const QString source = QDir::cleanPath(from) + u'/';
    if (!QFileInfo(source).isDir())
        Fail(ErrorNumber::FileNotFound, u"There is no folder '%1'; nothing was changed."_s.arg(from));
    const QStringList files = FilesBelow(source);
    if (!QDir().mkpath(to))
        Fail(ErrorNumber::PathAccess, u"The page can't be written; nothing was changed."_s);
    for (const QString& file : files) {
        QDir().mkpath(QFileInfo(to + file).absolutePath());
        CopyFileContents(source + file, to + file);
    }
}

} // namespace

QString PageFileOf(const Library& library, qint64 item)
{
    return library.HTMLFolder() + QString::number(item) + PageSuffix;
}

QString PageFolderOf(const Library& library, qint64 item)
{
    return library.HTMLFolder() + QString::number(item) + u'/';
}

QByteArray ReadPage(const Library& library, qint64 item)
{
    if (!IsThere(PageFileOf(library, item)))
        Fail(ErrorNumber::FileNotFound, u"The item %1 has no web page."_s.arg(item));
    return ReadPlain(PageFileOf(library, item));
}

QStringList FilesOfPage(const Library& library, qint64 item)
{
    return FilesBelow(PageFolderOf(library, item));
}

bool EnsureHTMLFileExists(Library& library, qint64 item)
{
    const bool isMissing = !IsThere(PageFileOf(library, item));
    if (isMissing) {
        EditPage(library, item, [](const QByteArray& page, const QString& made) {
            QDir().mkpath(made);
            return page;
        });
        return true;
    }
    RequireChange(library, item, {ItemChange::EditUnasked});
    ReadPage(library, item); // what can't be read can't be changed either
    QDir().mkpath(PageFolderOf(library, item));
    return false;
}

void WritePage(Library& library, qint64 item, const QByteArray& page, const BeforeCommit& beforeCommit)
{
    Change(
        library, item, PageChanges::Kind::Add, [&](const QString& made, const QString&) { WriteNew(made, page); },
        beforeCommit);
}

void EditPage(Library& library, qint64 item, const PageEdit& edit, const BeforeCommit& beforeCommit)
{
    Change(
        library, item, PageChanges::Kind::Add,
        [&](const QString& made, const QString& madeFolder) {
            const bool isThere = IsThere(PageFileOf(library, item));
            const QByteArray page = isThere ? ReadPage(library, item) : Template(library);
            WriteNew(made, edit(page, madeFolder));
        },
        beforeCommit);
}

void SetPage(Library& library, qint64 item, const QString& file, const QString& folder,
             const BeforeCommit& beforeCommit)
{
    const QByteArray page = ReadPlain(file);
    RequireText(file, page);
    const auto kind = folder.isEmpty() ? PageChanges::Kind::Add : PageChanges::Kind::Replace;
    const auto make = [&](const QString& made, const QString& madeFolder) {
        WriteNew(made, page);
        if (folder.isEmpty())
            return;
        CopyFolder(folder, madeFolder);
        RenameReferences(made, QDir(folder).dirName(), QString::number(item));
    };
    Kept(library, RemovalKind::Overwritten, u"A web page got other contents"_s,
         [&](Keeping& keeping) { Change(library, item, kind, make, beforeCommit, keeping); });
}

void AddPicture(Library& library, qint64 item, const QString& file, QSize size, const PictureNamed& named)
{
    PagePicture picture;
    EditPage(
        library, item,
        [&](const QByteArray& page, const QString& made) {
            const QString changes = QDir::cleanPath(made + u".."_s) + u'/';
            const KeptPicture kept = KeepPicture({changes, QDir(made).dirName()}, file);
            picture.Source = QString::number(item) + u'/' + NameFreely(kept, PageFolderOf(library, item));
            PictureSize shown(kept.Kind.Width, kept.Kind.Height);
            shown.SetLocked(size.width() <= 0 || size.height() <= 0); // a length that is not given follows the other
            if (size.width() > 0)
                shown.SetWidth(size.width());
            if (size.height() > 0)
                shown.SetHeight(size.height());
            picture.Width = shown.Width();
            picture.Height = shown.Height();
            return RequireInserted(WithPicture(page, picture));
        },
        [&] {
            if (named)
                named(picture);
        });
}

void InsertPicture(Library& library, qint64 item, const PagePicture& picture)
{
    EditPage(library, item, [&picture](const QByteArray& page, const QString&) {
        return RequireInserted(WithPicture(page, picture));
    });
}

void InsertLink(Library& library, qint64 item, const PageLink& link, const BeforeCommit& beforeCommit)
{
    EditPage(
        library, item,
        [&link](const QByteArray& page, const QString&) { return RequireInserted(WithLink(page, link)); },
        beforeCommit);
}

void DeletePage(Library& library, qint64 item, const BeforeCommit& beforeCommit)
{
    Kept(library, RemovalKind::DeletedByUser, u"A web page deleted"_s, [&](Keeping& keeping) {
        Change(
            library, item, PageChanges::Kind::Delete, [](const QString&, const QString&) {}, beforeCommit, keeping);
    });
}

void NotePageChanged(Library& library, qint64 item, const QByteArray& before)
{
    try {
        Transaction transaction(library);
        RequireChange(library, item, {ItemChange::EditUnasked});
        WriteRow(library, item, true);
        transaction.Commit();
    } catch (const RuntimeError& error) {
        const QString kept = PutBack(PageFileOf(library, item), before);
        throw RuntimeError(error.Number(), error.Description() + kept, error.Source());
    }
}

bool ForgetMissingPage(Library& library, qint64 item)
{
    Transaction transaction(library); // nobody gives it one in between
    if (IsThere(PageFileOf(library, item)) || IsPagePending(library, item)
        || !library.QueryValue(u"SELECT HTMLPage FROM Items WHERE ID = ?"_s, {item}).ToBoolean())
        return false;
    CCodeItem row;
    row.Initialise(library, QString::number(item));
    row.SetDontUpdateLastChangedDate(true);
    row.SetHTMLPage(false);
    row.SetItemChanged(true);
    if (!row.Commit())
        return false; // which has been reported
    transaction.Commit();
    return true;
}

int ExportPage(const Library& library, qint64 item, const QString& folder)
{
    const QString name = QFileInfo(PageFileOf(library, item)).fileName();
    const QString inFolder = QString::number(item) + u'/';
    const QByteArray page = ReadPage(library, item);
    QStringList files = FilesOfPage(library, item);
    for (QString& file : files)
        file.prepend(inFolder);
    files += TemplateFilesOf(library, item);
    const QFileInfo target(QDir::cleanPath(QFileInfo(folder).absoluteFilePath()));
    StagedFiles stage(target.absolutePath());
    WriteNew(stage.PathFor(name), page);
    for (const QString& file : std::as_const(files))
        CopyFileContents(library.HTMLFolder() + file, stage.PathFor(file));
    stage.PutInPlaceAsFolder(target.fileName());
    stage.Flush(); // what is reported as done outlives the machine
    return int(files.size()) + 1;
}

} // namespace qb
