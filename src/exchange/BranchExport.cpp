#include "exchange/BranchExport.h"

#include "exchange/BranchStream.h"
#include "exchange/BranchWalk.h"
#include "exchange/PageNames.h"
#include "maintenance/Containers.h"
#include "maintenance/PhasedWork.h"
#include "maintenance/ReplacedFile.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/ItemBranch.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <optional>
#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"ExportItems"_s;

QString NodeKeyOf(qint64 item)
{
    return item == 0 ? u"ROOT"_s : QString::number(item) + u'C';
}

class Export {
public:
    Export(Library& library, const QString& stream, std::vector<BranchNode> nodes, Work& work)
        : m_library(library), m_nodes(std::move(nodes)), m_work(work), m_stream(stream, qint32(m_nodes.size()))
    {
    }

    BranchExportResult Run(bool whole)
    {
        for (const BranchNode& node : m_nodes) {
            ExportItem(node, whole);
            m_work.Advance(++m_result.Items, qint64(m_nodes.size()));
            if (m_work.IsCancelled())
                throw RuntimeError(ErrorNumber::Cancelled, u"The export was stopped; there is no file."_s, Procedure);
        }
        AddLinks();
        m_stream.Write(m_trailer);
        m_stream.Close();
        return m_result;
    }

private:
    void ExportItem(const BranchNode& node, bool whole)
    {
        CCodeItem item;
        item.Initialise(m_library, QString::number(node.Item));
        item.ReadWhole();
        if (item.ReadFailed())
            throw RuntimeError(ErrorNumber::Corrupt, u"The item %1 can't be read; there is no file."_s.arg(node.Item),
                               Procedure);
        // An item that has lost its place stands at the top of what is exported.
        const qint64 parent = node.Parent == 0 && whole ? 0 : item.ParentKey().toLongLong();
        const QStringList pages = item.HTMLPage() ? PageFilesOf(m_library, node.Item) : QStringList();
        m_stream.Write(
            BranchItem{.Title = item.Title().isEmpty() ? u" "_s : item.Title(), // an empty one ends the reading
                       .Key = item.Key(),
                       .ParentKey = QString::number(parent),
                       .Spare = {},
                       .ParentNodeKey = NodeKeyOf(parent),
                       .Description = item.Description(),
                       .Info = item.Info(),
                       .User = item.User(),
                       .ItemStatus = item.ItemStatus(),
                       .ItemRating = item.ItemRating(),
                       .Code = item.Code(),
                       .CodeHeaders = item.CodeHeaders(),
                       .Notes = item.Notes(),
                       .Example = item.Example(),
                       .UsageHeaders = item.UsageHeaders(),
                       .HTMLPage = !pages.isEmpty(),
                       .HTMLLastUpdated = item.HTMLLastUpdated()});
        ExportItemFiles(node.Item);
        if (!pages.isEmpty())
            ExportItemPages(node.Item, pages);
        AddLanguage(item);
    }

    void ExportItemFiles(qint64 item)
    {
        const std::vector<qint64> files = StoredFilesOf(m_library, item);
        m_stream.WriteCount(qint32(files.size()));
        for (const qint64 id : files) {
            CFileObject row;
            row.Initialise(m_library, QString::number(id));
            QFile file(ReadableStoredFile(m_library, id, row.Title()));
            if (file.fileName().isEmpty())
                m_result.Missing << row.Title();
            else
                Open(file);
            const qint64 size = file.isOpen() ? file.size() : 0;
            m_stream.Write(BranchFile{.Title = row.Title(),
                                      .OrigDateTime = row.OrigDateTime(),
                                      .DateAdded = row.DateAdded(),
                                      .Size = size,
                                      .Description = row.Description()});
            m_stream.WriteContents(file, size, m_work);
            ++m_result.Files;
        }
    }

    void ExportItemPages(qint64 item, const QStringList& pages)
    {
        m_stream.WriteCount(qint32(pages.size()));
        for (const QString& path : pages) {
            QFile file(m_library.HTMLFolder() + path);
            Open(file);
            const QString name = PageNameOf(path, item);
            m_stream.Write(
                BranchPage{.Name = name,
                           .Modified = Date::FromDateTime(QFileInfo(file).lastModified()),
                           .Number = name == path ? qint32(item) : QFileInfo(name).completeBaseName().toInt(),
                           .Size = file.size()});
            m_stream.WriteContents(file, file.size(), m_work);
            ++m_result.Pages;
        }
    }

    static void Open(QFile& file)
    {
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be read: %2. There is no export."_s.arg(
                                   QDir::toNativeSeparators(file.fileName()), file.errorString()),
                               Procedure);
    }

    /// What the code is coloured as where it names nothing is the library's language, which the next library may not
    /// share.
    void AddLanguage(CCodeItem& item)
    {
        const QString code = item.Code().isEmpty() ? item.Example() : item.Code();
        if (code.isEmpty())
            return;
        const QString named = LanguageInRtf(code);
        const QString language = named.isEmpty() ? m_language : named;
        if (!language.isEmpty())
            m_trailer.Languages.push_back({item.Key(), language});
    }

    void AddLinks()
    {
        std::unordered_set<qint64> inside;
        for (const BranchNode& node : m_nodes)
            inside.insert(node.Item);
        Statement links = m_library.Query(u"SELECT ItemID, LinkItemID, Note FROM ItemLinks ORDER BY ID"_s);
        while (links.Step()) {
            if (inside.contains(links.Long(0)) && inside.contains(links.Long(1)))
                m_trailer.Links.push_back(
                    {QString::number(links.Long(0)), QString::number(links.Long(1)), links.Text(2)});
        }
    }

    Library& m_library;
    std::vector<BranchNode> m_nodes;
    Work& m_work;
    QString m_language = m_library.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText();
    BranchWriter m_stream;
    BranchTrailer m_trailer;
    BranchExportResult m_result;
};

} // namespace

BranchExportResult ExportItems(Library& library, qint64 item, const QString& file, Work& watcher)
{
    constexpr qint64 Written = 300; // the other parts of a thousand go into packing, which takes longer
    RequireReplaceable(file, library.Name(), u"an export"_s);
    const QFileInfo target(file);
    StagedFiles stage(target.absolutePath());
    const QString staged = stage.PathFor(target.fileName());
    std::optional<Transaction> moment; // others wait, so that what is written is the library of one moment
    if (!library.IsReadOnly())
        moment.emplace(library);
    PhasedWork work(watcher);
    work.Begin(Written);
    work.Say(u"Exporting Code Items...."_s, 1);
    BranchExportResult result = Export(library, staged, NodesOfBranch(library, item), work).Run(item == 0);
    moment.reset();
    work.Begin(PhasedWork::Whole);
    KeepNoMoreRightsThan(library.Name(), staged);
    if (PackExport(staged, work).isEmpty())
        throw RuntimeError(ErrorNumber::Cancelled, u"The export was stopped; there is no file."_s, Procedure);
    KeepNoMoreRightsThan(library.Name(), staged);
    stage.Flush(work); // which may take its time
    if (work.IsCancelled())
        throw RuntimeError(ErrorNumber::Cancelled, u"The export was stopped; there is no file."_s, Procedure);
    stage.PutInPlace(false, work);
    stage.Flush(work); // what is reported as done outlives the machine
    work.Say({}, 100);
    result.File = target.absoluteFilePath();
    return result;
}

int CountBranchItems(Library& library, qint64 item)
{
    return int(NodesOfBranch(library, item).size());
}

} // namespace qb
