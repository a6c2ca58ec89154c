#include "replication/MergeContents.h"

#include "maintenance/CDBManipulate.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "store/PageReferences.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFileInfo>

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
    if (!m_pages.empty())
        m_changes.emplace(m_library);
    for (const MergedPage& page : m_pages) {
        if (page.Packed != 0)
            MakePage(page.Packed, page.Item, m_changes->Folder(page.Item));
        m_changes->Bind(page.Item, page.Packed == 0 ? PageChanges::Kind::Delete : PageChanges::Kind::Replace,
                        &page == &m_pages.back() ? PageChanges::Flush::Now : PageChanges::Flush::Later, m_work);
    }
}

/// What a page loads from its folder goes by the number of its item, which is another one here.
void MergeContents::MakePage(qint64 packed, qint64 item, const QString& folder)
{
    const QString unpacked = folder + u"unpacked/"_s;
    QDir().mkpath(unpacked);
    CDBManipulate contents(m_work);
    contents.Use(m_library);
    contents.ExportAllHTMLFiles(unpacked, {.Table = PackedPages, .Where = u"ItemIDRef = ?"_s, .WhereValues = {packed}});
    const QString old = QString::number(packed);
    if (QFileInfo::exists(unpacked + old + u".htm"_s)) {
        MoveOrRaise(unpacked + old + u".htm"_s, folder + u"page.htm"_s);
        RenameReferences(folder + u"page.htm"_s, old, QString::number(item));
    }
    if (QFileInfo(unpacked + old).isDir())
        MoveOrRaise(unpacked + old, folder + u"page"_s);
    QDir(unpacked).removeRecursively();
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
