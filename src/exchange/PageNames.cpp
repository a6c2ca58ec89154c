#include "exchange/PageNames.h"

#include "store/PageReferences.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The files below a folder of the web pages, as paths below that of all of them.
QStringList FilesBelow(const Library& library, const QString& folder)
{
    QStringList pages;
    QStringList waiting{folder};
    while (!waiting.isEmpty()) {
        const QString at = waiting.takeFirst();
        const QDir found(library.HTMLFolder() + at);
        for (const QString& name : found.entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Name)) {
            if (IsPlainFile(found.filePath(name)))
                pages << at + u'/' + name;
        }
        QStringList inner;
        for (const QString& name :
             found.entryList(QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot, QDir::Name))
            inner << at + u'/' + name;
        waiting = inner + waiting;
    }
    return pages;
}

} // namespace

QStringList PageFilesOf(const Library& library, qint64 item)
{
    const QString folder = QString::number(item);
    QStringList pages;
    if (IsPlainFile(library.HTMLFolder() + folder + u".htm"_s))
        pages << folder + u".htm"_s;
    return pages + FilesBelow(library, folder);
}

QStringList TemplateFilesOf(const Library& library, qint64 item)
{
    const QString path = library.HTMLFolder() + QString::number(item) + u".htm"_s;
    if (!IsPlainFile(path))
        return {};
    return PageMentions(path, {TemplateFolder + u'/', TemplateFolder + u'\\'}) ? FilesBelow(library, TemplateFolder)
                                                                               : QStringList();
}

QString PageNameOf(const QString& path, qint64 item)
{
    const QString inFolder = QString::number(item) + u'/';
    return path.startsWith(inFolder) ? path.mid(inFolder.size()).replace(u'/', u'\\') : path;
}

std::optional<QString> PlaceOfPage(const QString& name, const QString& key, bool isFirst)
{
    constexpr qsizetype LongestName = 255; // bytes, of the usual file systems
    if (isFirst && name.compare(key + u".htm"_s, Qt::CaseInsensitive) == 0)
        return QString();
    const QString place = QString(name).replace(u'\\', u'/');
    for (const QString& part : place.split(u'/')) {
        if (part.isEmpty() || part == u"."_s || part == u".."_s || part.contains(QChar::Null)
            || QFile::encodeName(part).size() > LongestName)
            return std::nullopt;
    }
    return place;
}

} // namespace qb
