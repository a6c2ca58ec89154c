#include "exchange/PageNames.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace qb {

using namespace Qt::StringLiterals;

QStringList PageFilesOf(const Library& library, qint64 item)
{
    const QString folder = QString::number(item);
    QStringList pages;
    if (IsPlainFile(library.HTMLFolder() + folder + u".htm"_s))
        pages << folder + u".htm"_s;
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

void RenameReferences(const QString& pageFile, const QString& oldKey, const QString& newKey)
{
    const auto fail = [&pageFile](const QString& why) {
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' can't be changed: %2."_s.arg(QDir::toNativeSeparators(pageFile), why),
                           u"RenameReferences"_s);
    };
    QFile file(pageFile);
    if (!file.open(QIODevice::ReadWrite))
        fail(file.errorString());
    QByteArray bytes;
    if (const QString why = ReadAll(file, bytes); !why.isEmpty())
        fail(why);
    // A page is in any encoding that has ASCII in it; one character a byte keeps all of them.
    const QRegularExpression reference(
        u"((?:src|href)\\s*=\\s*[\"']?)%1(?=[\\\\/])"_s.arg(QRegularExpression::escape(oldKey)),
        QRegularExpression::CaseInsensitiveOption);
    const QString text = QString::fromLatin1(bytes);
    QString renamed;
    qsizetype done = 0;
    for (const QRegularExpressionMatch& match : reference.globalMatch(text)) {
        renamed += QStringView(text).mid(done, match.capturedEnd(1) - done);
        renamed += newKey;
        done = match.capturedEnd();
    }
    renamed += QStringView(text).mid(done);
    const QByteArray changed = renamed.toLatin1();
    if (changed == bytes)
        return;
    if (!file.seek(0) || file.write(changed) != changed.size() || !file.resize(changed.size()) || !file.flush())
        fail(file.errorString());
}

} // namespace qb
