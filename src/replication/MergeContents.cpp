#include "replication/MergeContents.h"

#include "maintenance/CDBManipulate.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "store/PageReferences.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString PackedFiles = u"synchro.Files"_s;
const QString PackedPages = u"synchro.HTMLFiles"_s;

void MoveOrRaise(const QString& from, const QString& to)
{
    if (!RenameFile(from, to))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' can't be written; nothing was changed."_s.arg(QDir::toNativeSeparators(to)),
                           u"MergeContents"_s);
}

} // namespace

void MergeContents::MakeNew()
{
    MakeFiles();
    MakePages();
}

QMap<qint64, quint32> MergeContents::MadeFiles() const
{
    QMap<qint64, quint32> sums;
    for (size_t i = 0; i < m_arriving.size(); ++i)
        sums[m_addedFiles[i].ID] = m_arriving[i]->Checksum();
    return sums;
}

void MergeContents::TakeOld()
{
    for (const NamedFile& file : m_deletedFiles) {
        const QString place = StoredFilePath(m_library, file.ID, file.Title);
        m_undo.KeepFile(place);
        m_leavingFiles.Take(m_library, file.ID, place);
    }
    for (const MergedPage& page : m_pages)
        m_undo.KeepPage(page.Item);
    for (const qint64 item : m_goneItems) {
        m_undo.KeepPage(item);
        m_leavingPages.Delete(m_library, item);
    }
}

void MergeContents::MakeFiles()
{
    if (m_addedFiles.empty())
        return;
    m_pending = std::make_shared<PendingWork>(m_library);
    CDBManipulate contents(m_work);
    contents.Use(m_library);
    for (const NamedFile& file : m_addedFiles) {
        const qint64 number = qint64(m_arriving.size()) + 1;
        const QString made = m_pending->PackingFolder() + QString::number(number);
        contents.SaveToFile({m_library, PackedFiles, file.Packed}, made);
        m_arriving.push_back(std::make_unique<ArrivingFile>(m_pending, number, made, true, m_work));
        m_arriving.back()->Bind(file.ID, file.Title);
    }
}

void MergeContents::MakePages()
{
    if (m_pages.empty())
        return;
    m_changes.emplace(m_library);
    const QString unpacked = m_changes->Folder() + u"unpacked/"_s;
    UnpackPages(unpacked);
    for (const MergedPage& page : m_pages) {
        if (page.Packed != 0)
            MakePage(unpacked + QString::number(page.Packed), page);
        m_changes->Bind(page.Item, page.Packed == 0 ? PageChanges::Kind::Delete : PageChanges::Kind::Replace,
                        &page == &m_pages.back() ? PageChanges::Flush::Now : PageChanges::Flush::Later, m_work);
    }
}

void MergeContents::UnpackPages(const QString& folder)
{
    QJsonArray packed;
    for (const MergedPage& page : m_pages)
        packed.append(page.Packed);
    QDir().mkpath(folder);
    CDBManipulate contents(m_work);
    contents.Use(m_library);
    contents.ExportAllHTMLFiles(folder, {.Table = PackedPages,
                                         .Where = u"ItemIDRef > 0 AND ItemIDRef IN (SELECT value FROM json_each(?))"_s,
                                         .WhereValues = {QString::fromLatin1(QJsonDocument(packed).toJson())}});
}

/// What a page loads from its folder goes by the number of its item, which is another one here.
void MergeContents::MakePage(const QString& unpacked, const MergedPage& page)
{
    if (QFileInfo::exists(unpacked + u".htm"_s)) {
        const QString made = m_changes->PageFile(page.Item);
        MoveOrRaise(unpacked + u".htm"_s, made);
        RenameReferences(made, QString::number(page.Packed), QString::number(page.Item));
    }
    if (QFileInfo(unpacked).isDir())
        MoveOrRaise(unpacked, m_changes->PageFolder(page.Item).chopped(1));
}

QStringList MergeContents::Place()
{
    // The rows count now. Whatever can't be placed waits for the next opening, and keeps nothing else from its place.
    QStringList waiting;
    const auto attempt = [&waiting](const auto& place) {
        try {
            place();
        } catch (const RuntimeError& error) {
            waiting << error.Description();
        }
    };
    for (size_t i = 0; i < m_arriving.size(); ++i)
        attempt([&] {
            m_arriving[i]->PutInPlace(StoredFilePath(m_library, m_addedFiles[i].ID, m_addedFiles[i].Title), false);
        });
    attempt([&] { m_leavingFiles.Complete(); });
    attempt([&] { m_leavingPages.Complete(); });
    if (m_changes)
        attempt([&] { m_changes->PutInPlace(); });
    return waiting;
}

} // namespace qb
