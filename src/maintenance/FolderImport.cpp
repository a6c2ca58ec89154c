#include "maintenance/FolderImport.h"

#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <memory>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"ImportFolder"_s;

/// A folder as it will be taken in.
struct SourceFolder {
    QString Path;
    QString Title;
    std::vector<SourceFolder> Folders;
    QStringList Files;

    int FileCount() const
    {
        int count = int(Files.size());
        for (const SourceFolder& folder : Folders)
            count += folder.FileCount();
        return count;
    }
};

QString TitleOfFolder(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const QString name = QFileInfo(canonical).fileName();
    return name.isEmpty() ? canonical : name;
}

/// Reads the names below a folder. Links to folders are left out, so the depth is that of the
/// real folders.
SourceFolder Survey(const QString& path, const QString& title, const QStringList& globs)
{
    SourceFolder folder{.Path = path, .Title = title, .Folders = {}, .Files = {}};
    const QDir dir(path);
    const QDir::SortFlags order = QDir::Name;
    for (const QFileInfo& sub : dir.entryInfoList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks, order)) {
        SourceFolder inner = Survey(sub.filePath(), sub.fileName(), globs);
        if (globs.isEmpty() || inner.FileCount() > 0)
            folder.Folders.push_back(std::move(inner));
    }
    for (const QFileInfo& file : dir.entryInfoList(globs, QDir::Files | QDir::Hidden, order))
        folder.Files << file.filePath();
    return folder;
}

class Import {
public:
    Import(Database& database, const FolderImportOptions& options, int total)
        : m_database(database), m_options(options), m_total(total)
    {
    }

    FolderImportResult Run(const SourceFolder& root)
    {
        // A folder before what it holds; the depth of real folders is no measure for a stack.
        std::vector<std::pair<const SourceFolder*, qint64>> waiting{{&root, m_options.Parent}};
        while (!waiting.empty()) {
            const auto [folder, parent] = waiting.back();
            waiting.pop_back();
            const qint64 item = AddItem(parent, folder->Title, {});
            if (m_result.Folders++ == 0)
                m_result.RootItem = item;
            for (const QString& file : folder->Files)
                TakeFile(file, item);
            for (auto sub = folder->Folders.rbegin(); sub != folder->Folders.rend(); ++sub)
                waiting.emplace_back(&*sub, item);
        }
        return m_result;
    }

private:
    void TakeFile(const QString& path, qint64 parent)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            m_result.Skipped.push_back({path, u"it can't be read: "_s + file.errorString()});
        } else if (const auto text = DecodeText(file.readAll(), m_options.Fallback)) {
            AddItem(parent, QFileInfo(path).fileName(), *text);
            ++m_result.Files;
        } else {
            m_result.Skipped.push_back({path, u"it is no text in a known encoding"_s});
        }
        if (m_options.Progress && !m_options.Progress(++m_done, m_total))
            throw RuntimeError(ErrorNumber::Internal, u"The import was stopped; nothing was changed."_s, Procedure);
    }

    qint64 AddItem(qint64 parent, const QString& title, const QString& code)
    {
        RefuseReservedTitle(title, parent);
        CCodeItem item;
        item.Initialise(m_database, {});
        item.SetParentKey(QString::number(parent));
        item.SetTitle(title);
        item.SetCode(RtfFromPlainText(code, CodeFont));
        if (!item.Commit())
            throw RuntimeError(ErrorNumber::Engine, u"'%1' could not be stored; nothing was changed."_s.arg(title), Procedure);
        return item.Key().toLongLong();
    }

    Database& m_database;
    const FolderImportOptions& m_options;
    int m_total;
    int m_done = 0;
    FolderImportResult m_result;
};

} // namespace

FolderImportResult ImportFolder(Database& database, const QString& folder, const FolderImportOptions& options)
{
    if (!QFileInfo(folder).isDir())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"'%1' is not a folder; nothing was changed."_s.arg(QDir::toNativeSeparators(folder)), Procedure);
    if (options.Parent != 0 && database.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {options.Parent}).IsNull())
        throw RuntimeError(ErrorNumber::ItemNotFound,
                           u"There is no item %1 in the library; nothing was changed."_s.arg(options.Parent), Procedure);
    const SourceFolder root = Survey(folder, TitleOfFolder(folder), options.Globs);
    Transaction transaction(database);
    const FolderImportResult result = Import(database, options, root.FileCount()).Run(root);
    transaction.Commit();
    return result;
}

} // namespace qb
