#include "web/DefaultPages.h"

#include "exchange/BranchStream.h"
#include "exchange/PageNames.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "store/StoredFiles.h"
#include "web/WebPages.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of the file; each page is the name with ".htm", its files lie in a folder of the name.
const QString Keys[] = {u"default"_s, u"default2"_s};
const QString PageSuffix = u".htm"_s;

/// The paths of a page and of its files below the folder of web pages, the page first.
QStringList FilesOf(const QString& folder, const QString& key)
{
    QStringList files;
    QDirIterator all(folder + key, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (!QFileInfo(folder + key).isSymLink() && all.hasNext()) {
        const QString file = all.next();
        if (IsPlainFile(file))
            files << file.mid(folder.size());
    }
    files.sort();
    if (!IsPlainFile(folder + key + PageSuffix))
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"There is no page '%1' in the library's folder of web pages."_s.arg(key + PageSuffix),
                           u"WriteDefaultPages"_s);
    files.prepend(key + PageSuffix);
    return files;
}

void WritePage(BranchWriter& stream, const QString& folder, const QString& key)
{
    const QStringList files = FilesOf(folder, key);
    stream.WriteCount(qint32(files.size()));
    for (const QString& path : files) {
        QFile file(folder + path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            throw RuntimeError(
                ErrorNumber::PathAccess,
                u"'%1' can't be read: %2."_s.arg(QDir::toNativeSeparators(file.fileName()), file.errorString()),
                u"WriteDefaultPages"_s);
        const QString name = path.startsWith(key + u'/') ? path.mid(key.size() + 1).replace(u'/', u'\\') : path;
        stream.Write(BranchPage{.Name = name,
                                .Modified = Date::FromDateTime(QFileInfo(file).lastModified().toLocalTime()),
                                .Number = QFileInfo(name).completeBaseName().toInt(),
                                .Size = file.size()});
        stream.WriteContents(file, file.size(), NoWork());
    }
}

[[noreturn]] void Refuse(const QString& why)
{
    throw RuntimeError(ErrorNumber::Corrupt, why, u"ReadDefaultPages"_s);
}

/// A file that is made where it is wanted, and read over where it isn't.
void ReadFile(BranchReader& reader, const BranchPage& record, StagedFiles* stage, const QString& path)
{
    if (!stage)
        return reader.ReadContents(nullptr, record.Size, NoWork());
    QFile file(stage->PathFor(path));
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be written: %2."_s.arg(path, file.errorString()),
                           u"ReadDefaultPages"_s);
    reader.ReadContents(&file, record.Size, NoWork());
    if (!file.flush())
        throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be written: %2."_s.arg(path, file.errorString()),
                           u"ReadDefaultPages"_s);
}

void ReadPage(BranchReader& reader, const QString& key, StagedFiles* stage)
{
    const qint32 files = reader.ReadCount();
    if (files == 0)
        Refuse(u"it lacks the page '%1'"_s.arg(key + PageSuffix));
    for (qint32 number = 0; number < files; ++number) {
        BranchPage record;
        reader.Read(record);
        const std::optional<QString> place = PlaceOfPage(record.Name, key, number == 0);
        if (!place || place->isEmpty() != (number == 0))
            Refuse(u"a file of a page in it is called '%1'"_s.arg(record.Name));
        ReadFile(reader, record, stage, place->isEmpty() ? key + PageSuffix : key + u'/' + *place);
    }
}

void ReadPages(const QString& file, const QString& folder, StagedFiles& stage)
{
    BranchReader reader(file);
    if (reader.Count() != qint32(std::size(Keys)))
        Refuse(u"it does not hold the two default pages"_s);
    for (const QString& key : Keys)
        ReadPage(reader, key, QFileInfo::exists(folder + key + PageSuffix) ? nullptr : &stage);
}

} // namespace

void WriteDefaultPages(const QString& folder, const QString& file)
{
    const QFileInfo target(file);
    StagedFiles stage(target.absolutePath());
    BranchWriter stream(stage.PathFor(target.fileName()), qint32(std::size(Keys)));
    for (const QString& key : Keys)
        WritePage(stream, folder, key);
    stream.Close();
    stage.PutInPlace(false);
    stage.Flush(); // what is reported as done outlives the machine
}

void ReadDefaultPages(const QString& file, const QString& folder)
{
    StagedFiles stage(folder);
    try {
        ReadPages(file, folder, stage);
    } catch (const RuntimeError& error) {
        if (error.Number() != ErrorNumber::Corrupt)
            throw;
        throw RuntimeError(ErrorNumber::Corrupt,
                           u"'%1' is no file of default pages, or is damaged: %2"_s.arg(QDir::toNativeSeparators(file),
                                                                                        error.Description()),
                           error.Source());
    }
    stage.PutInPlace(true);
}

} // namespace qb
