#include "publishing/PublishedBranch.h"

#include "exchange/BranchWalk.h"
#include "exchange/PageNames.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/RuntimeError.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/ItemStatus.h"
#include "store/StoredFiles.h"

#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

PublishedBranch::PublishedBranch(Library& library, qint64 item) : m_isWhole(item == 0)
{
    for (const BranchNode& found : NodesOfBranch(library, item)) {
        const int place = int(m_nodes.size());
        PublishedNode node{.Item = found.Item, .Parent = m_places.value(found.Parent, -1), .Title = {}, .Children = {}};
        node.Title = library.QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {found.Item}).ToText();
        if (node.Parent >= 0) {
            node.Depth = Node(node.Parent).Depth + 1;
            m_nodes[size_t(node.Parent)].Children.push_back(place);
        }
        m_places.insert(found.Item, place);
        m_nodes.push_back(std::move(node));
    }
    m_title = m_isWhole || m_nodes.empty() ? QFileInfo(library.Name()).completeBaseName() : m_nodes.front().Title;
    ReadLinks(library);
}

void PublishedBranch::ReadLinks(Library& library)
{
    Statement links = library.Query(u"SELECT ItemID, LinkItemID, Note FROM ItemLinks ORDER BY ID"_s);
    while (links.Step()) {
        const int from = m_places.value(links.Long(0), -1);
        const int to = m_places.value(links.Long(1), -1);
        if (from >= 0 && to >= 0)
            m_links.insert(from, {to, links.Text(2)});
    }
}

std::vector<PublishedLink> PublishedBranch::LinksOf(int place) const
{
    const QList<PublishedLink> found = m_links.values(place); // the last one first
    return {found.rbegin(), found.rend()};
}

namespace {

std::vector<PublishedFile> FilesOf(Library& library, qint64 item)
{
    std::vector<PublishedFile> files;
    for (const qint64 id : StoredFilesOf(library, item)) {
        CFileObject row;
        row.Initialise(library, QString::number(id));
        PublishedFile file{.Title = row.Title(), .Description = row.Description(), .Size = row.Size(), .Path = {}};
        file.Path = ReadableStoredFile(library, id, file.Title);
        if (!file.Path.isEmpty())
            file.Size = QFileInfo(file.Path).size();
        files.push_back(std::move(file));
    }
    return files;
}

} // namespace

PublishedItem ReadPublishedItem(Library& library, qint64 item, const QString& language)
{
    CCodeItem row;
    row.Initialise(library, QString::number(item));
    row.ReadWhole();
    if (row.ReadFailed())
        throw RuntimeError(ErrorNumber::Corrupt, u"The item %1 can't be read; nothing was written."_s.arg(item),
                           u"PublishBranch"_s);
    PublishedItem read{.Item = item,
                       .Title = row.Title(),
                       .Description = row.Description(),
                       .Info = row.Info(),
                       .User = row.User(),
                       .Status = row.ItemStatus() == 0 ? QString() : NameOfStatus(row.ItemStatus()),
                       .Rating = std::clamp(row.ItemRating(), 0, BestRating),
                       .Created = row.Created(),
                       .LastChanged = row.LastChanged(),
                       .Code = row.Code(),
                       .Usage = row.Example(),
                       .Notes = row.Notes(),
                       .OwnLanguage = LanguageInRtf(row.Code()),
                       .Language = {},
                       .Pages = row.HTMLPage() ? PageFilesOf(library, item) : QStringList(),
                       .Files = FilesOf(library, item)};
    if (read.OwnLanguage.isEmpty())
        read.OwnLanguage = LanguageInRtf(read.Usage);
    read.Language = read.OwnLanguage.isEmpty() ? language : read.OwnLanguage;
    return read;
}

} // namespace qb
