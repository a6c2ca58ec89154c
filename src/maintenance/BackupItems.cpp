#include "maintenance/BackupItems.h"

#include "maintenance/CDBManipulate.h"
#include "maintenance/PhasedWork.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "store/PageChanges.h"
#include "store/PageReferences.h"
#include "store/PendingFiles.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"BringBack"_s;

[[noreturn]] void Fail(const QString& why)
{
    throw RuntimeError(ErrorNumber::Engine, u"The item can't be brought back: %1. Nothing was changed."_s.arg(why),
                       Procedure);
}

} // namespace

BackupItems::BackupItems(const QString& backupFile, const QString& scratch, Work& work)
    : m_backup(backupFile), m_stage(scratch), m_path(UnpackBackup(backupFile, m_stage.Scratch(), work)),
      m_database(DBEngine::OpenDatabase(m_path))
{
    RefuseWhatIsNoBackup(*m_database);
}

QString BackupItems::Identity() const
{
    return LibraryIdentity(*m_database);
}

std::vector<BackupItemRow> BackupItems::All()
{
    std::vector<BackupItemRow> items;
    Statement rows = m_database->Query(u"SELECT ID, ParentID, Title, LastChanged FROM Items ORDER BY Title"_s);
    while (rows.Step())
        items.push_back({rows.Long(0), rows.Long(1), rows.Text(2), rows.Column(3).ToDate()});
    return items;
}

BackupItem BackupItems::Item(qint64 id)
{
    Statement row = m_database->Query(
        u"SELECT ID, ParentID, Title, Description, Info, Code, Notes, Example, LastChanged, "
        "HTMLPage FROM Items WHERE ID = ?"_s,
        {id});
    if (!row.Step())
        throw RuntimeError(ErrorNumber::ItemNotFound,
                           u"There is no item %1 in the backup; nothing was changed."_s.arg(id), Procedure);
    BackupItem item{.Id = row.Long(0),
                    .Parent = row.Long(1),
                    .Title = row.Text(2),
                    .Description = row.Text(3),
                    .Info = row.Text(4),
                    .Code = row.Text(5),
                    .Notes = row.Text(6),
                    .Usage = row.Text(7),
                    .LastChanged = row.Column(8).ToDate(),
                    .Files = {},
                    .HasPage = row.Long(9) != 0};
    Statement files = m_database->Query(u"SELECT Title FROM Files WHERE CodeID = ? ORDER BY Title"_s, {id});
    while (files.Step())
        item.Files << files.Text(0);
    return item;
}

/// One item on its way back.
class BackupItems::Return {
public:
    Return(BackupItems& from, qint64 id, Library& library, Work& work)
        : m_backup(*from.m_database), m_old(id), m_item(from.Item(id)), m_library(library), m_work(work)
    {
        m_isSameLibrary = LibraryIdentity(m_backup) == library.Identity();
    }
    Return(const Return&) = delete;
    Return& operator=(const Return&) = delete;

    qint64 Run(qint64 wantedParent)
    {
        const auto work = std::make_shared<PendingWork>(m_library);
        std::vector<std::unique_ptr<CFileObject>> files = TakeFiles(work);
        const qint64 parent = ParentFor(wantedParent);
        Transaction transaction(m_library);
        RequireChange(m_library, parent, {ItemChange::Add});
        RefuseReservedTitle(m_item.Title, parent);
        AddItem(parent);
        for (const auto& file : files)
            AddFile(*file);
        AddLinks();
        AddPage();
        transaction.Commit();
        if (m_page)
            m_page->PutInPlace();
        for (const auto& file : files)
            file->PutInPlace();
        return m_new;
    }

private:
    /// The number says where it stood in its own library only.
    qint64 ParentFor(qint64 wanted)
    {
        if (wanted >= 0)
            return wanted;
        const bool isThere = m_isSameLibrary
                             && !m_library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {m_item.Parent}).IsNull();
        return isThere ? m_item.Parent : 0;
    }

    std::vector<std::unique_ptr<CFileObject>> TakeFiles(const std::shared_ptr<PendingWork>& work)
    {
        std::vector<std::unique_ptr<CFileObject>> files;
        CDBManipulate contents(m_work);
        contents.Use(m_backup);
        contents.ExpectBytes(
            m_backup.QueryValue(u"SELECT total(length(File)) FROM Files WHERE CodeID = ?"_s, {m_old}).ToLong());
        Statement rows = m_backup.Query(
            u"SELECT rowid, Title, OrigDateTime, Description FROM Files WHERE CodeID = ? AND File IS NOT NULL"_s,
            {m_old});
        while (rows.Step()) {
            const QString name = rows.Text(1);
            if (StoredFilePath(QString(u'/'), 1, name).isEmpty())
                Fail(u"'%1' is no name of a file"_s.arg(name));
            const QString folder = work->PackingFolder() + QString::number(files.size()) + u'/';
            QDir().mkpath(folder);
            contents.SaveToFile({m_backup, u"Files"_s, rows.Long(0)}, folder + name);
            CFileObject& file = *files.emplace_back(std::make_unique<CFileObject>());
            file.Initialise(m_library, {});
            file.SetStoredFile(folder + name, CFileObject::Intake::Move);
            file.SetDescription(rows.Text(3));
            if (!file.TakeIn(work, qint64(files.size())))
                Fail(u"a file can't be stored"_s);
            file.SetOrigDateTime(rows.Column(2).ToDate());
        }
        return files;
    }

    void AddItem(qint64 parent)
    {
        CCodeItem item;
        item.Initialise(m_library, {});
        item.SetParentKey(QString::number(parent));
        item.SetTitle(m_item.Title);
        item.SetDescription(m_item.Description);
        item.SetInfo(m_item.Info);
        item.SetCode(m_item.Code);
        item.SetNotes(m_item.Notes);
        item.SetExample(m_item.Usage);
        if (!item.Commit())
            Fail(u"its row can't be written"_s);
        m_new = item.Key().toLongLong();
        Statement row = m_backup.Query(u"SELECT Created, User, ItemStatus, ItemRating, CodeHeaders, UsageHeaders FROM "
                                       "Items WHERE ID = ?"_s,
                                       {m_old});
        if (row.Step())
            m_library.Execute(
                u"UPDATE Items SET Created = ?, User = ?, ItemStatus = ?, ItemRating = ?, CodeHeaders = ?, "
                "UsageHeaders = ? WHERE ID = ?"_s,
                {row.Column(0), row.Column(1), row.Column(2), row.Column(3), row.Column(4), row.Column(5), m_new});
    }

    void AddFile(CFileObject& file)
    {
        file.SetCodeID(QString::number(m_new));
        if (!file.Commit())
            Fail(u"the row of a file can't be written"_s);
    }

    /// Only of an item that is gone: where it is still there its links are, too.
    void AddLinks()
    {
        const auto isThere = [this](qint64 id) {
            return !m_library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {id}).IsNull();
        };
        if (!m_isSameLibrary || isThere(m_old))
            return;
        Statement rows = m_backup.Query(
            u"SELECT ItemID, LinkItemID, Note, DateAdded FROM ItemLinks WHERE ItemID = ? OR "
            "LinkItemID = ?"_s,
            {m_old, m_old});
        while (rows.Step()) {
            const qint64 from = rows.Long(0) == m_old ? m_new : rows.Long(0);
            const qint64 to = rows.Long(1) == m_old ? m_new : rows.Long(1);
            // To the other replicas the link is a new one.
            const Value added = m_library.IsReplicated() ? Value(m_library.NextStamp()) : rows.Column(3);
            if (isThere(from) && isThere(to))
                m_library.Execute(u"INSERT OR IGNORE INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) "
                                  "VALUES (?, ?, ?, ?, ?)"_s,
                                  {from, to, rows.Column(2), added, added});
        }
    }

    /// Under its new number, which the page itself names for what lies in its folder.
    void AddPage()
    {
        if (!m_item.HasPage)
            return;
        m_page.emplace(m_library);
        const QString unpacked = m_page->Folder() + u"unpacked/"_s;
        QDir().mkpath(unpacked);
        CDBManipulate contents(m_work);
        contents.Use(m_backup);
        contents.ExportAllHTMLFiles(unpacked, {.Table = {}, .Where = u"ItemIDRef = ?"_s, .WhereValues = {m_old}});
        const QString old = unpacked + QString::number(m_old);
        const QString page = m_page->PageFile(m_new);
        if (!QFileInfo::exists(old + u".htm"_s))
            return m_page.reset(); // the page itself was not in the backup
        if (!QDir().rename(old + u".htm"_s, page)
            || (QFileInfo(old).isDir() && !QDir().rename(old, m_page->PageFolder(m_new).chopped(1))))
            Fail(u"its page can't be written"_s);
        RenameReferences(page, QString::number(m_old), QString::number(m_new));
        m_page->RenumberItems([this](const QString& number) {
            if (number.toLongLong() == m_old)
                return QString::number(m_new);
            return m_isSameLibrary ? number : u'-' + number; // there it is another item's
        });
        m_library.Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = LastChanged WHERE ID = ?"_s, {m_new});
        m_page->Bind(m_new, PageChanges::Kind::Replace, PageChanges::Flush::Now, m_work);
    }

    Database& m_backup;
    qint64 m_old;
    BackupItem m_item;
    Library& m_library;
    Work& m_work;
    bool m_isSameLibrary = false;
    qint64 m_new = 0;
    std::optional<PageChanges> m_page; ///< if there is one
};

qint64 BackupItems::BringBack(qint64 id, Library& library, qint64 parent, Work& work)
{
    return Return(*this, id, library, work).Run(parent);
}

} // namespace qb
