#include "removed/RemovedReturn.h"

#include "exchange/BranchImport.h"
#include "exchange/BranchLinks.h"
#include "exchange/PageNames.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SafeNames.h"
#include "store/Bookmarks.h"
#include "store/CBookmark.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/Checksums.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "store/PageChanges.h"
#include "store/PageReferences.h"
#include "store/PendingFiles.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <algorithm>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"ReturnRemoved"_s;
constexpr int LongestTitle = 255;

[[noreturn]] void Fail(const QString& why, long number = ErrorNumber::Engine)
{
    throw RuntimeError(number, u"It can't be brought back: %1. Nothing was changed."_s.arg(why), Procedure);
}

bool IsItemThere(Library& library, qint64 id)
{
    return id > 0 && !library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {id}).IsNull();
}

/// Numbers of another library say nothing here.
bool IsOfLibrary(const Library& library, const ListedEntry& entry)
{
    return entry.Event->Index.Header.Library == library.Identity();
}

QString TitleWith(const QString& title, const QString& end)
{
    return title.left(LongestTitle - end.size()) + end;
}

/// What stands behind the title of what comes beside its former self.
QString EndOf(RemovedPart part)
{
    switch (part) {
    case RemovedPart::Item:
        return u" (removed version)"_s;
    case RemovedPart::Page:
        return u" (removed page)"_s;
    default:
        return u" (removed file)"_s;
    }
}

/// An entry on its way back.
class Return {
public:
    Return(Library& library, const RemovedList& list, const ListedEntry& entry, const ReturnOptions& options,
           Work& work)
        : m_library(library), m_entries(entry.Event->Index.Entries), m_top(size_t(entry.Entry->Number) - 1),
          m_place(PlaceOfReturn(library, entry)), m_options(options), m_work(work),
          m_isOfLibrary(IsOfLibrary(library, entry)), m_branch(list.ItemsFile(*entry.Event), work),
          m_reader(m_branch.Stream()), m_new(m_entries.size())
    {
        if (m_branch.Items().size() != m_entries.size())
            Fail(u"the file with the items does not hold what its list says"_s, ErrorNumber::Corrupt);
    }

    ReturnResult Run()
    {
        Choose();
        for (size_t place = 0; place < m_entries.size(); ++place)
            TakeRecord(place);
        AddLinks();
        BindPages();
        m_result.Item = m_new[m_top];
        return m_result;
    }

    /// Once the rows are committed.
    void PutFilesInPlace()
    {
        for (const auto& file : m_files)
            file->PutInPlace();
        if (m_pages)
            m_pages->PutInPlace();
    }

private:
    /// With an item that is gone comes what stood below it; but not what is there again, or still.
    void Choose()
    {
        m_chosen.assign(m_entries.size(), false);
        m_chosen[m_top] = true;
        const bool isBranch = m_options.WithBranch && m_place != ReturnPlace::Beside
                              && m_entries[m_top].Part == RemovedPart::Item;
        for (size_t place = m_top + 1; isBranch && place < m_entries.size(); ++place) {
            const int above = m_branch.Items()[place].Parent;
            const bool isThere = m_isOfLibrary && IsItemThere(m_library, m_entries[place].Item);
            m_chosen[place] = above >= 0 && m_chosen[size_t(above)] && !isThere
                              && m_entries[place].Part == RemovedPart::Item;
        }
    }

    void TakeRecord(size_t place)
    {
        BranchItem record;
        m_reader.Read(record);
        if (m_chosen[place])
            m_new[place] = PlaceFor(record, place);
        std::vector<RemovedFile> files = m_entries[place].Files;
        const qint32 count = m_reader.ReadCount();
        files.resize(size_t(std::max(0, count)));
        for (const RemovedFile& file : files)
            TakeFile(place, file);
        for (qint32 left = record.HTMLPage ? m_reader.ReadCount() : 0; left > 0; --left)
            TakePage(place, record.Key, !m_chosen[place] || !m_pages || !m_pages->Items().contains(m_new[place]));
        if (!m_chosen[place])
            return;
        AddBookmarks(place);
        m_work.Advance(m_result.Items, qint64(m_entries.size()));
        if (m_work.IsCancelled())
            throw RuntimeError(ErrorNumber::Cancelled, u"Nothing was brought back."_s, Procedure);
    }

    /// The item that gets a record: a new one, but for a part of an item that is there.
    qint64 PlaceFor(const BranchItem& record, size_t place)
    {
        if (m_place == ReturnPlace::OwnItem) {
            const qint64 item = m_entries[m_top].Item;
            RequireChange(m_library, item, {ItemChange::EditUnasked});
            return item;
        }
        return AddItem(record, place);
    }

    qint64 ParentFor(size_t place)
    {
        if (place != m_top)
            return m_new[size_t(m_branch.Items()[place].Parent)];
        if (m_options.Parent >= 0)
            return m_options.Parent;
        const RemovedEntry& entry = m_entries[m_top];
        if (m_place == ReturnPlace::Beside)
            return m_library.QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {entry.Item}).ToLong();
        return m_place == ReturnPlace::Former ? entry.Parent : 0;
    }

    qint64 AddItem(const BranchItem& record, size_t place)
    {
        const RemovedEntry& entry = m_entries[place];
        const qint64 parent = ParentFor(place);
        if (place == m_top)
            RequireChange(m_library, parent, {ItemChange::Add});
        QString title = record.Title;
        if (place == m_top && (m_place == ReturnPlace::Beside || entry.Part != RemovedPart::Item))
            title = TitleWith(title, EndOf(entry.Part));
        if (parent == 0 && title == OrphanedItemsTitle)
            title = TitleWith(title, u" Copy"_s);
        CCodeItem item;
        item.Initialise(m_library, {});
        item.SetTitle(title);
        item.SetParentKey(QString::number(parent));
        item.SetDescription(record.Description);
        item.SetInfo(record.Info);
        item.SetUser(record.User);
        item.SetItemStatus(record.ItemStatus);
        item.SetItemRating(record.ItemRating);
        item.SetCode(record.Code);
        item.SetCodeHeaders(record.CodeHeaders);
        item.SetNotes(record.Notes);
        item.SetExample(record.Example);
        item.SetUsageHeaders(record.UsageHeaders);
        item.SetHTMLPage(record.HTMLPage);
        LetDates(item, record, entry);
        if (!item.Commit())
            Fail(u"'%1' can't be stored"_s.arg(record.Title));
        ++m_result.Items;
        return Renumbered(item.Key().toLongLong(), entry);
    }

    /// To the other replicas it is new. A date of "none" would have it wait for removal.
    void LetDates(CCodeItem& item, const BranchItem& record, const RemovedEntry& entry)
    {
        const bool isReplica = m_library.IsReplicated();
        if (!entry.Created.IsNone() && !isReplica)
            item.SetCreated(entry.Created);
        if (!entry.Changed.IsNone() && !isReplica)
            item.SetLastChanged(entry.Changed);
        item.SetHTMLLastUpdated(record.HTMLPage && isReplica ? m_library.NextStamp() : record.HTMLLastUpdated);
    }

    /// Under the former number, where links of texts and scripts know the item, if that is to be had.
    qint64 Renumbered(qint64 id, const RemovedEntry& entry)
    {
        const bool isFree = m_isOfLibrary && !m_library.IsReplicated() && entry.Part == RemovedPart::Item
                            && entry.Item > 0 && !IsItemThere(m_library, entry.Item);
        if (!isFree) {
            m_result.IsBeside = m_result.IsBeside || (m_isOfLibrary && IsItemThere(m_library, entry.Item));
            return id;
        }
        const auto noted = ReadChecksums(m_library, u"Items"_s, id);
        m_library.Execute(u"UPDATE Items SET ID = ? WHERE ID = ?"_s, {entry.Item, id});
        if (noted) {
            ForgetChecksums(m_library, u"Items"_s, id);
            WriteChecksums(m_library, u"Items"_s, entry.Item, noted->Stamp, noted->Sums);
        }
        return entry.Item;
    }

    // Stored files

    void TakeFile(size_t place, const RemovedFile& entry)
    {
        BranchFile record;
        m_reader.Read(record);
        const bool isDescription = m_entries[place].Part == RemovedPart::Description;
        if (m_chosen[place] && entry.IsMissing)
            m_result.Missing << record.Title;
        if (m_chosen[place] && isDescription)
            ReturnDescription(place, record);
        if (!m_chosen[place] || entry.IsMissing || isDescription)
            return m_reader.ReadContents(nullptr, record.Size, m_work);
        if (!m_pending)
            m_pending = std::make_shared<PendingWork>(m_library);
        const qint64 number = qint64(m_files.size()) + 1;
        QFile contents(m_pending->PackingFolder() + QString::number(number));
        ReadInto(contents, record.Size);
        const bool isName = !StoredFilePath(m_library, 1, record.Title).isEmpty();
        CFileObject& file = *m_files.emplace_back(std::make_unique<CFileObject>());
        file.Initialise(m_library, {});
        file.SetCodeID(QString::number(m_new[place]));
        file.SetStoredFile(contents.fileName(), CFileObject::Intake::Move);
        file.SetTitle(isName ? record.Title : FileNameOf(record.Title));
        file.SetDescription(record.Description);
        if (!file.TakeIn(m_pending, number))
            Fail(u"the file '%1' can't be stored"_s.arg(record.Title));
        file.SetOrigDateTime(record.OrigDateTime);
        if (!file.Commit())
            Fail(u"the file '%1' can't be stored"_s.arg(record.Title));
        if (!m_library.IsReplicated() && !record.DateAdded.IsNone())
            m_library.Execute(u"UPDATE Files SET DateAdded = ? WHERE ID = ?"_s,
                              {record.DateAdded, file.Key().toLongLong()});
        ++m_result.Files;
    }

    void ReturnDescription(size_t place, const BranchFile& record)
    {
        const qint64 id = m_entries[place].Files.empty() ? 0 : m_entries[place].Files.front().Id;
        CFileObject file;
        file.Initialise(m_library, QString::number(id));
        if (m_library.QueryValue(u"SELECT 1 FROM Files WHERE ID = ? AND CodeID = ?"_s, {id, m_new[place]}).IsNull())
            Fail(u"the stored file '%1' is not there any more"_s.arg(record.Title), ErrorNumber::ItemNotFound);
        const QString there = file.Description();
        file.SetDescription(there.isEmpty() ? record.Description : there + u"\r\n"_s + record.Description);
        file.SetDescriptionChanged(true);
        if (!file.Commit())
            Fail(u"the description of '%1' can't be stored"_s.arg(record.Title));
    }

    // Web pages

    void TakePage(size_t place, const QString& key, bool isFirst)
    {
        BranchPage record;
        m_reader.Read(record);
        if (!m_chosen[place])
            return m_reader.ReadContents(nullptr, record.Size, m_work);
        if (!m_pages)
            m_pages.emplace(m_library);
        const QString below = *PlaceOfPage(record.Name, key, isFirst); // looked at when it was unpacked
        QFile contents(below.isEmpty() ? m_pages->PageFile(m_new[place]) : m_pages->PageFolder(m_new[place]) + below);
        QDir().mkpath(QFileInfo(contents).absolutePath());
        ReadInto(contents, record.Size);
        // The number of a page is what it had in the file that it came from.
        if (below.isEmpty() && record.Number > 0 && record.Number != m_new[place])
            RenameReferences(contents.fileName(), QString::number(record.Number), QString::number(m_new[place]));
        if (isFirst && m_place == ReturnPlace::OwnItem)
            m_library.Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = ? WHERE ID = ?"_s,
                              {m_library.NextStamp(), m_new[place]});
        m_result.Pages += isFirst ? 1 : 0;
    }

    /// What comes back with a page is led to where it is now. Numbers of another library lead nowhere.
    void BindPages()
    {
        const QHash<qint64, qint64> items = m_place == ReturnPlace::Beside ? QHash<qint64, qint64>() : ReturnedItems();
        const auto newNumber = [&](const QString& number) {
            const qint64 item = items.value(number.toLongLong());
            if (item != 0)
                return QString::number(item);
            return m_isOfLibrary ? number : u'-' + number;
        };
        if (!m_pages)
            return;
        m_pages->RenumberItems(newNumber);
        m_pages->BindAll(PageChanges::Kind::Replace, m_work);
    }

    void ReadInto(QFile& file, qint64 size)
    {
        const auto fail = [&file] {
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be written: %2; nothing was changed."_s.arg(
                                   QDir::toNativeSeparators(file.fileName()), file.errorString()),
                               Procedure);
        };
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            fail();
        m_reader.ReadContents(&file, size, m_work);
        if (!file.flush())
            fail();
        file.close();
    }

    // Relations

    /// The IDs of what comes back, by those that it had.
    QHash<qint64, qint64> ReturnedItems() const
    {
        QHash<qint64, qint64> items;
        for (size_t place = 0; place < m_entries.size(); ++place) {
            if (m_chosen[place])
                items.insert(m_entries[place].Item, m_new[place]);
        }
        return items;
    }

    void AddBookmarks(size_t place)
    {
        if (m_place == ReturnPlace::Beside)
            return; // its former self has them
        for (const RemovedBookmark& entry : m_entries[place].Bookmarks) {
            const QString name = entry.Group.trimmed().isEmpty() ? u"Removed"_s : entry.Group.left(LongestGroupName);
            const qint64 known = FindBookmarkGroup(m_library, name);
            CBookmark bookmark;
            bookmark.Initialise(m_library, {});
            bookmark.SetCodeItemKey(QString::number(m_new[place]));
            bookmark.SetGroupNo(known != 0 ? known : AddBookmarkGroup(m_library, name));
            bookmark.SetDescription(entry.Description.left(CBookmark::LongestDescription));
            if (!bookmark.Commit())
                Fail(u"a bookmark of '%1' can't be stored"_s.arg(m_entries[place].Title));
            ++m_result.Bookmarks;
        }
    }

    void AddLinks()
    {
        if (m_place == ReturnPlace::Beside || m_place == ReturnPlace::OwnItem)
            return; // its former self has them
        const QHash<qint64, qint64> items = ReturnedItems();
        const auto endOf = [&](qint64 former) {
            const qint64 end = items.value(former, m_isOfLibrary ? former : 0);
            return IsItemThere(m_library, end) ? end : 0;
        };
        for (size_t place = 0; place < m_entries.size(); ++place) {
            for (const RemovedLink& link : m_chosen[place] ? m_entries[place].Links : std::vector<RemovedLink>())
                AddLink(endOf(link.From), endOf(link.To), link);
        }
    }

    /// Nothing where one end is gone, or the link is there: one between two that come back is known to both.
    void AddLink(qint64 from, qint64 to, const RemovedLink& link)
    {
        const bool isThere =
            !m_library.QueryValue(u"SELECT 1 FROM ItemLinks WHERE ItemID = ? AND LinkItemID = ?"_s, {from, to})
                 .IsNull();
        if (from == 0 || to == 0 || isThere)
            return;
        const Date now = m_library.NextStamp();
        AddBranchLink(m_library, from, to, link.Note,
                      m_library.IsReplicated() || link.Added.IsNone() ? now : link.Added, now);
        ++m_result.Links;
    }

    Library& m_library;
    const std::vector<RemovedEntry>& m_entries;
    size_t m_top; ///< place of the entry
    ReturnPlace m_place;
    const ReturnOptions& m_options;
    Work& m_work;
    bool m_isOfLibrary;
    UnpackedBranch m_branch;
    BranchReader m_reader;
    std::vector<qint64> m_new; ///< IDs, by place; 0: none
    std::vector<bool> m_chosen;
    std::shared_ptr<PendingWork> m_pending;
    std::vector<std::unique_ptr<CFileObject>> m_files;
    std::optional<PageChanges> m_pages; ///< once there is one
    ReturnResult m_result;
};

} // namespace

ReturnPlace PlaceOfReturn(Library& library, const ListedEntry& entry)
{
    const RemovedEntry& removed = *entry.Entry;
    const bool isOfLibrary = IsOfLibrary(library, entry);
    if (isOfLibrary && IsItemThere(library, removed.Item)) {
        const bool hasPage =
            library.QueryValue(u"SELECT HTMLPage FROM Items WHERE ID = ?"_s, {removed.Item}).ToBoolean();
        const bool fits = removed.Part == RemovedPart::Page ? !hasPage : removed.Part != RemovedPart::Item;
        return fits ? ReturnPlace::OwnItem : ReturnPlace::Beside;
    }
    return isOfLibrary && IsItemThere(library, removed.Parent) ? ReturnPlace::Former : ReturnPlace::None;
}

ReturnResult ReturnRemoved(Library& library, const RemovedList& list, const ListedEntry& entry,
                           const ReturnOptions& options, Work& work)
{
    Transaction transaction(library);
    work.Say(u"Bringing items back..."_s, 1);
    Return way(library, list, entry, options, work);
    const ReturnResult result = way.Run();
    options.BeforeCommit(result);
    transaction.Commit();
    way.PutFilesInPlace();
    work.Say({}, 100);
    return result;
}

} // namespace qb
