#include "exchange/BranchImport.h"

#include "exchange/BranchLinks.h"
#include "exchange/PageNames.h"
#include "maintenance/Containers.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/Clock.h"
#include "platform/system/RuntimeError.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "store/PageChanges.h"
#include "store/PageReferences.h"
#include "store/PendingFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <memory>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"ImportItems"_s;

[[noreturn]] void Refuse(const QString& why)
{
    throw RuntimeError(ErrorNumber::Corrupt, u"The export can't be read: %1."_s.arg(why), Procedure);
}

} // namespace

// Looking at it

UnpackedBranch::UnpackedBranch(const QString& file, Work& work)
{
    if (!m_folder.isValid())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"There is no place to unpack the export: %1."_s.arg(m_folder.errorString()), Procedure);
    m_stream = UnpackExportTo(file, m_folder.path(), work);
    if (m_stream.isEmpty())
        throw RuntimeError(ErrorNumber::Cancelled, u"The import was stopped; nothing was changed."_s, Procedure);
    Survey(work);
}

void UnpackedBranch::Survey(Work& work)
{
    BranchReader reader(m_stream);
    for (qint32 left = reader.Count(); left > 0; --left) {
        BranchItem item;
        reader.Read(item);
        if (item.Title.isEmpty())
            return; // what comes behind it nobody reads
        SurveyItem(reader, item, work);
    }
    m_trailer = reader.ReadTrailer();
}

void UnpackedBranch::SurveyItem(BranchReader& reader, const BranchItem& item, Work& work)
{
    if (m_places.contains(item.Key))
        Refuse(u"it has two items of the key '%1'"_s.arg(item.Key));
    OutlinedItem outlined{.Key = item.Key, .Parent = PlaceOfParent(item), .Title = item.Title};
    outlined.TextBytes = item.Code.size() + item.Notes.size() + item.Example.size();
    for (qint32 left = reader.ReadCount(); left > 0; --left) {
        BranchFile file;
        reader.Read(file);
        reader.ReadContents(nullptr, file.Size, work);
        ++outlined.Files;
        outlined.FileBytes += file.Size;
    }
    for (qint32 left = item.HTMLPage ? reader.ReadCount() : 0; left > 0; --left) {
        BranchPage page;
        reader.Read(page);
        if (!PlaceOfPage(page.Name, item.Key, outlined.Pages == 0))
            Refuse(u"a file of a web page in it is called '%1', which is no name"_s.arg(page.Name));
        reader.ReadContents(nullptr, page.Size, work);
        ++outlined.Pages;
        outlined.PageBytes += page.Size;
    }
    m_places.insert(item.Key, int(m_items.size()));
    m_items.push_back(outlined);
}

/// The first item stands at the top whatever its parent was.
int UnpackedBranch::PlaceOfParent(const BranchItem& item) const
{
    if (m_items.empty() || item.ParentKey.isEmpty() || item.ParentKey == u"0"_s)
        return -1;
    const auto place = m_places.find(item.ParentKey);
    if (place == m_places.end())
        Refuse(u"the item '%1' stands below one that is not there"_s.arg(item.Title));
    return *place;
}

// Taking it in

namespace {

class Import {
public:
    Import(Library& library, const UnpackedBranch& branch, const BranchImportOptions& options, Work& work)
        : m_library(library), m_branch(branch), m_options(options), m_work(work), m_reader(branch.Stream()),
          m_newItems(branch.Items().size())
    {
        for (const BranchLanguage& language : branch.Trailer().Languages)
            m_languages.insert(language.Key, language.Language);
    }

    BranchImportResult Run()
    {
        Choose();
        for (size_t place = 0; place < m_newItems.size(); ++place) {
            ImportItem(place);
            m_work.Advance(qint64(place) + 1, qint64(m_newItems.size()));
            if (m_work.IsCancelled())
                throw RuntimeError(ErrorNumber::Cancelled, u"The import was stopped; nothing was changed."_s,
                                   Procedure);
        }
        const QHash<QString, qint64> items = NewItems();
        AddLinks(items);
        BindPages(items);
        return m_result;
    }

    /// Once the rows are committed.
    void PutFilesInPlace()
    {
        for (const std::unique_ptr<CFileObject>& file : m_files)
            file->PutInPlace();
        if (m_pages)
            m_pages->PutInPlace();
    }

private:
    void Choose()
    {
        const std::vector<OutlinedItem>& items = m_branch.Items();
        for (size_t place = 0; place < items.size(); ++place) {
            const OutlinedItem& item = items[place];
            m_chosen.push_back(m_options.Only.isEmpty() || m_options.Only.contains(item.Key)
                               || (item.Parent >= 0 && m_chosen[size_t(item.Parent)]));
        }
        for (const QString& key : m_options.Only) {
            if (std::none_of(items.begin(), items.end(), [&key](const OutlinedItem& item) { return item.Key == key; }))
                throw RuntimeError(ErrorNumber::ItemNotFound,
                                   u"The export has no item '%1'; nothing was changed."_s.arg(key), Procedure);
        }
    }

    void ImportItem(size_t place)
    {
        BranchItem record;
        m_reader.Read(record);
        if (m_chosen[place]) {
            m_newItems[place] = AddItem(record, m_branch.Items()[place]);
            if (m_result.Items++ == 0)
                m_result.Top = m_newItems[place];
        }
        for (qint32 left = m_reader.ReadCount(); left > 0; --left)
            ImportItemFile(m_newItems[place]);
        const qint32 pages = record.HTMLPage ? m_reader.ReadCount() : 0;
        if (pages > 0 && m_chosen[place] && !m_pages)
            m_pages.emplace(m_library);
        for (qint32 page = 0; page < pages; ++page)
            ImportItemPage(m_newItems[place], record.Key, page == 0);
    }

    qint64 AddItem(const BranchItem& record, const OutlinedItem& outlined)
    {
        const qint64 above = outlined.Parent >= 0 ? m_newItems[size_t(outlined.Parent)] : 0;
        const qint64 parent = above != 0 ? above : m_options.Parent;
        const bool isReserved = parent == 0 && record.Title == OrphanedItemsTitle;
        CCodeItem item;
        item.Initialise(m_library, {});
        item.SetTitle(isReserved ? OrphanedItemsTitle + u" Copy"_s : record.Title);
        item.SetParentKey(QString::number(parent));
        item.SetDescription(record.Description);
        item.SetInfo(record.Info);
        item.SetUser(record.User);
        item.SetItemStatus(record.ItemStatus);
        item.SetItemRating(record.ItemRating);
        item.SetCode(WithLanguage(record.Code, record.Key));
        item.SetCodeHeaders(record.CodeHeaders);
        item.SetNotes(record.Notes);
        item.SetExample(WithLanguage(record.Example, record.Key));
        item.SetUsageHeaders(record.UsageHeaders);
        item.SetHTMLPage(record.HTMLPage);
        // A page is new to the other replicas, however old it is.
        item.SetHTMLLastUpdated(record.HTMLPage && m_library.IsReplicated() ? m_library.NextStamp()
                                                                            : record.HTMLLastUpdated);
        if (!item.Commit())
            throw RuntimeError(ErrorNumber::Engine,
                               u"'%1' could not be stored; nothing was changed."_s.arg(record.Title), Procedure);
        return item.Key().toLongLong();
    }

    /// A text that names no language was coloured as its library's, which this one may not share.
    QString WithLanguage(const QString& rtf, const QString& key) const
    {
        const QString language = m_languages.value(key);
        if (rtf.isEmpty() || language.isEmpty() || language == m_language || !LanguageInRtf(rtf).isEmpty())
            return rtf;
        return WithLanguageInRtf(rtf, language);
    }

    void ImportItemFile(qint64 item)
    {
        BranchFile record;
        m_reader.Read(record);
        if (item == 0)
            return m_reader.ReadContents(nullptr, record.Size, m_work);
        if (!m_pending)
            m_pending = std::make_shared<PendingWork>(m_library);
        const qint64 number = qint64(m_files.size()) + 1;
        QFile contents(m_pending->PackingFolder() + QString::number(number));
        ReadInto(contents, record.Size);
        CFileObject& file = *m_files.emplace_back(std::make_unique<CFileObject>());
        file.Initialise(m_library, {});
        file.SetCodeID(QString::number(item));
        file.SetStoredFile(contents.fileName(), CFileObject::Intake::Move);
        file.SetTitle(record.Title);
        file.SetDescription(record.Description);
        if (!file.TakeIn(m_pending, number))
            Refuse(u"the file '%1' could not be stored"_s.arg(record.Title));
        file.SetOrigDateTime(record.OrigDateTime);
        if (!file.Commit())
            Refuse(u"the file '%1' could not be stored"_s.arg(record.Title));
        ++m_result.Files;
    }

    void ImportItemPage(qint64 item, const QString& oldKey, bool isFirst)
    {
        BranchPage record;
        m_reader.Read(record);
        if (item == 0)
            return m_reader.ReadContents(nullptr, record.Size, m_work);
        const QString place = *PlaceOfPage(record.Name, oldKey, isFirst); // looked at before
        QFile contents(place.isEmpty() ? m_pages->PageFile(item) : m_pages->PageFolder(item) + place);
        QDir().mkpath(QFileInfo(contents).absolutePath());
        ReadInto(contents, record.Size);
        if (place.isEmpty())
            RenameReferences(contents.fileName(), oldKey, QString::number(item));
        ++m_result.Pages;
    }

    /// The IDs that items have got, by their keys.
    QHash<QString, qint64> NewItems() const
    {
        QHash<QString, qint64> items;
        for (size_t place = 0; place < m_newItems.size(); ++place) {
            if (m_newItems[place] != 0)
                items.insert(m_branch.Items()[place].Key, m_newItems[place]);
        }
        return items;
    }

    /// What stayed behind keeps its address.
    void BindPages(const QHash<QString, qint64>& items)
    {
        const auto newNumber = [&items](const QString& number) {
            const auto item = items.constFind(number);
            return item == items.constEnd() ? number : QString::number(*item);
        };
        if (!m_pages)
            return;
        m_pages->RenumberItems(newNumber);
        m_pages->BindAll(PageChanges::Kind::Replace, m_work);
    }

    void ReadInto(QFile& file, qint64 size)
    {
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be written: %2; nothing was changed."_s.arg(
                                   QDir::toNativeSeparators(file.fileName()), file.errorString()),
                               Procedure);
        m_reader.ReadContents(&file, size, m_work);
        if (!file.flush())
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be written: %2; nothing was changed."_s.arg(
                                   QDir::toNativeSeparators(file.fileName()), file.errorString()),
                               Procedure);
        file.close();
    }

    void AddLinks(const QHash<QString, qint64>& items)
    {
        const Date now = m_library.NextStamp();
        for (const BranchLink& link : m_branch.Trailer().Links) {
            const qint64 from = items.value(link.From);
            const qint64 to = items.value(link.To);
            if (from == 0 || to == 0)
                continue; // the other one stays behind
            AddBranchLink(m_library, from, to, link.Note, now, now);
            ++m_result.Links;
        }
    }

    Library& m_library;
    const UnpackedBranch& m_branch;
    const BranchImportOptions& m_options;
    Work& m_work;
    BranchReader m_reader;
    QString m_language = m_library.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText(); ///< of the library
    QHash<QString, QString> m_languages;                                                          ///< by key
    std::vector<bool> m_chosen;
    std::vector<qint64> m_newItems; ///< IDs, by place; 0: none
    std::shared_ptr<PendingWork> m_pending;
    std::vector<std::unique_ptr<CFileObject>> m_files;
    std::optional<PageChanges> m_pages; ///< once there is one
    BranchImportResult m_result;
};

} // namespace

BranchImportResult ImportItems(Library& library, const UnpackedBranch& branch, const BranchImportOptions& options,
                               Work& work)
{
    Transaction transaction(library);
    RequireChange(library, options.Parent, {ItemChange::Import});
    work.Say(u"Importing Items...."_s, 1);
    Import import(library, branch, options, work);
    const BranchImportResult result = import.Run();
    options.BeforeCommit(result);
    transaction.Commit();
    import.PutFilesInPlace();
    work.Say({}, 100);
    return result;
}

} // namespace qb
