#include "maintenance/FolderImport.h"

#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/FileReplace.h"
#include "platform/system/SourceForm.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "store/ShippedLanguages.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <filesystem>

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

/// Reads the names below a folder as the system has them. What can't be taken in is named in
/// @p skipped: names that are no text, links to folders or to nothing. A folder that can't be read is an
/// error.
class Survey {
public:
    Survey(const QStringList& globs, std::vector<SkippedFile>& skipped) : m_globs(globs), m_skipped(skipped) {}

    SourceFolder Read(const QString& path, const QString& title)
    {
        SourceFolder folder{.Path = path, .Title = title, .Folders = {}, .Files = {}};
        std::error_code error;
        for (std::filesystem::directory_iterator entry(QFile::encodeName(path).toStdString(), error), end;
             !error && entry != end; entry.increment(error))
            Take(*entry, folder);
        if (error) // nobody can tell what is missing
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"The folder '%1' can't be read: %2; nothing was changed."_s.arg(
                                   QDir::toNativeSeparators(path), QString::fromLocal8Bit(error.message().c_str())),
                               Procedure);
        std::sort(folder.Files.begin(), folder.Files.end());
        std::sort(folder.Folders.begin(), folder.Folders.end(),
                  [](const SourceFolder& left, const SourceFolder& right) { return left.Title < right.Title; });
        return folder;
    }

private:
    void Take(const std::filesystem::directory_entry& entry, SourceFolder& folder)
    {
        const std::string bytes = entry.path().filename().string();
        const auto name = DecodeText(QByteArray::fromStdString(bytes));
        const QString path = folder.Path + u'/' + name.value_or(QString::fromLatin1(bytes.c_str()));
        std::error_code error;
        if (!name)
            m_skipped.push_back({path, u"its name is no text"_s});
        else if (entry.is_directory(error) && entry.is_symlink(error))
            m_skipped.push_back({path, u"it is a link to a folder"_s});
        else if (entry.is_directory(error))
            TakeFolder(Read(path, *name), folder);
        else if (!QDir::match(m_globs, *name) && !m_globs.isEmpty())
            return;
        else if (entry.is_regular_file(error))
            folder.Files << path;
        else
            m_skipped.push_back({path, entry.is_symlink(error) ? u"it is a link to nothing"_s : u"it is no file"_s});
    }

    /// With patterns, only folders on the way to a file that fits.
    void TakeFolder(SourceFolder&& inner, SourceFolder& folder)
    {
        if (m_globs.isEmpty() || inner.FileCount() > 0)
            folder.Folders.push_back(std::move(inner));
    }

    const QStringList& m_globs;
    std::vector<SkippedFile>& m_skipped;
};

class Import {
public:
    Import(Library& library, const FolderImportOptions& options, int total, std::vector<SkippedFile> skipped,
           Work& work)
        : m_library(library), m_options(options), m_work(work), m_total(total)
    {
        m_result.Skipped = std::move(skipped);
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
        QByteArray bytes;
        const QString reason = file.open(QIODevice::ReadOnly) ? ReadAll(file, bytes) : file.errorString();
        if (!reason.isEmpty()) {
            m_result.Skipped.push_back({path, u"it can't be read: "_s + reason});
        } else if (const auto text = DecodeText(bytes, m_options.Fallback)) {
            AddItem(parent, QFileInfo(path).fileName(), RtfOf(path, bytes, *text));
            ++m_result.Files;
        } else {
            m_result.Skipped.push_back({path, u"it is no text in a known encoding"_s});
        }
        m_work.Advance(++m_done, m_total);
        if (m_work.IsCancelled())
            throw RuntimeError(ErrorNumber::Internal, u"The import was stopped; nothing was changed."_s, Procedure);
    }

    /// The text as it is kept, with what its file is to be made of again.
    QString RtfOf(const QString& path, const QByteArray& bytes, const QString& text) const
    {
        if (text.isEmpty())
            return {};
        RichTextDocument document(CodeFont);
        document.Replace(0, 0, text, document.DefaultFormat());
        document.SetLanguage(LanguageOf(QFileInfo(path).fileName(), text));
        document.SetSourceForm(SourceFormOf(bytes, text));
        return WriteRtf(document);
    }

    /// What the item is to name; nothing where it is the library's language or none is known.
    QString LanguageOf(const QString& fileName, const QString& text) const
    {
        const ShippedLanguage* language = m_options.NamesLanguages ? ShippedLanguageOfFile(fileName, text) : nullptr;
        return language && language->Name != m_language ? language->Name : QString();
    }

    qint64 AddItem(qint64 parent, const QString& title, const QString& code)
    {
        RefuseReservedTitle(title, parent);
        CCodeItem item;
        item.Initialise(m_library, {});
        item.SetParentKey(QString::number(parent));
        item.SetTitle(title);
        item.SetCode(code);
        if (!item.Commit())
            throw RuntimeError(ErrorNumber::Engine, u"'%1' could not be stored; nothing was changed."_s.arg(title),
                               Procedure);
        return item.Key().toLongLong();
    }

    Library& m_library;
    const FolderImportOptions& m_options;
    Work& m_work;
    QString m_language = m_library.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText(); ///< of the library
    int m_total;
    int m_done = 0;
    FolderImportResult m_result;
};

} // namespace

FolderImportResult ImportFolder(Library& library, const QString& folder, const FolderImportOptions& options, Work& work)
{
    if (!QFileInfo(folder).isDir())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"'%1' is not a folder; nothing was changed."_s.arg(QDir::toNativeSeparators(folder)),
                           Procedure);
    RequireChange(library, options.Parent, {ItemChange::Import}); // before a long look at the folder
    if (!QFileInfo(folder).isReadable() || !QFileInfo(folder).isExecutable())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The folder '%1' can't be read; nothing was changed."_s.arg(QDir::toNativeSeparators(folder)), Procedure);
    std::vector<SkippedFile> skipped;
    const SourceFolder root = Survey(options.Globs, skipped).Read(QDir::cleanPath(folder), TitleOfFolder(folder));
    Transaction transaction(library);
    RequireChange(library, options.Parent, {ItemChange::Import});
    const FolderImportResult result = Import(library, options, root.FileCount(), std::move(skipped), work).Run(root);
    options.BeforeCommit(result);
    transaction.Commit();
    return result;
}

} // namespace qb
