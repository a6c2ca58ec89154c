#include "BenchLibrary.h"

#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/TextEncoding.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/Library.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int CodeLength = 3500;
constexpr int Fan = 46; // 46 * 46 * 46 is about 100,000

/// Pieces of real source text.
QStringList SourcePieces()
{
    QStringList pieces;
    for (const QString& path : SourceFiles(4000)) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const auto text = DecodeText(file.readAll());
        for (qsizetype at = 0; text && at + CodeLength <= text->size() && pieces.size() < 20000; at += CodeLength)
            pieces << text->mid(at, CodeLength);
    }
    return pieces;
}

void FillWithSources(Library& database, int items)
{
    const QStringList pieces = SourcePieces();
    std::vector<qint64> ids{0};
    Transaction transaction(database);
    for (int i = 0; i < items; ++i) {
        CCodeItem item;
        item.Initialise(database, {});
        item.SetParentKey(QString::number(ids[size_t(i / Fan)]));
        item.SetTitle(u"%1 item %2"_s.arg(QChar(u'a' + (i * 7919) % 26)).arg(i));
        item.SetDescription(u"What item %1 is for"_s.arg(i));
        item.SetCode(RtfFromPlainText(pieces[i % pieces.size()], CodeFont));
        item.Commit();
        ids.push_back(item.Key().toLongLong());
    }
    transaction.Commit();
}

qint64 AddTitle(Library& library, qint64 parent, const QString& title, const QString& code)
{
    CCodeItem item;
    item.Initialise(library, {});
    item.SetParentKey(QString::number(parent));
    item.SetTitle(title);
    item.SetCode(code);
    item.Commit();
    return item.Key().toLongLong();
}

void FillLikeFolders(Library& library, int items)
{
    const QStringList files = SourceFiles(items);
    int made = 0;
    Transaction transaction(library);
    for (int copy = 1; made < items; ++copy) {
        const qint64 root = AddTitle(library, 0, u"Sources %1"_s.arg(copy), {});
        ++made;
        QHash<QString, qint64> folders;
        for (qsizetype i = 0; i < files.size() && made < items; ++i) {
            qint64 parent = root;
            QString folder;
            for (const QString& name : QFileInfo(files[i]).path().split(u'/', Qt::SkipEmptyParts)) {
                folder += u'/' + name;
                qint64& id = folders[folder];
                if (id == 0) {
                    id = AddTitle(library, parent, name, {});
                    ++made;
                }
                parent = id;
            }
            AddTitle(library, parent, QFileInfo(files[i]).fileName(), RtfFromPlainText(files[i], CodeFont));
            ++made;
        }
    }
    transaction.Commit();
}

QString MadeLibrary(const QString& folder, int items, void (*fill)(Library&, int))
{
    const QString path = DataFolder(u"%1-%2"_s.arg(folder).arg(items)) + u"/QBLib.qbd"_s;
    if (QFileInfo::exists(path))
        return path;
    const QString interim = path + u".new"_s;
    QFile::remove(interim);
    CDBCreate().CreateNewDB(interim, LanguageType::Cpp, {});
    fill(*Library::Open(interim), items);
    QFile::rename(interim, path);
    return path;
}

} // namespace

QString DataFolder(const QString& name)
{
    const QString folder = QStringLiteral(QUILLBASE_BENCH_DATA) + u'/' + name;
    QDir().mkpath(folder);
    return folder;
}

BenchHome::BenchHome(const QString& folder) : m_folder(DataFolder(folder))
{
    QDir(m_folder).removeRecursively(); // the pages of the library that was there would not suit a new one
    QDir().mkpath(m_folder);
    qputenv("QUILLBASE_DATA_HOME", QFile::encodeName(m_folder));
    qputenv("QUILLBASE_CONFIG_HOME", QFile::encodeName(m_folder + u"/config"_s));
}

BenchHome::~BenchHome()
{
    qunsetenv("QUILLBASE_DATA_HOME");
    qunsetenv("QUILLBASE_CONFIG_HOME");
}

QStringList SourceFiles(int count)
{
    QStringList files;
    for (const QString& folder : {u"/usr/include"_s, u"/usr/lib/python3"_s, u"/usr/lib/python3.11"_s,
                                  u"/usr/share/cmake-3.25"_s, u"/usr/share/perl"_s, u"/usr/lib/gcc"_s}) {
        QDirIterator found(folder, {u"*.h"_s, u"*.hpp"_s, u"*.py"_s, u"*.cmake"_s, u"*.pm"_s, u"*.pl"_s, u"*.tcc"_s},
                           QDir::Files, QDirIterator::Subdirectories);
        while (found.hasNext() && files.size() < count)
            files << found.next();
    }
    return files;
}

QString CppSource(qsizetype size)
{
    QString text;
    for (const QString& path : SourceFiles(2000)) {
        QFile file(path);
        if (text.size() >= size)
            break;
        if (path.endsWith(u".h"_s) && file.open(QIODevice::ReadOnly))
            text += DecodeText(file.readAll()).value_or(QString());
    }
    return text.left(size);
}

QString BenchLibrary(int items)
{
    return MadeLibrary(u"library"_s, items, FillWithSources);
}

QString FolderLibrary(int items)
{
    return MadeLibrary(u"folders"_s, items, FillLikeFolders);
}

} // namespace qb::bench
