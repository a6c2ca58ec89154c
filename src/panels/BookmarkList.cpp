#include "panels/BookmarkList.h"

#include "platform/system/Prompts.h"
#include "store/CBookmark.h"
#include "support/ErrorRoutine.h"

#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlBookmarks"_s;

bool Asked(const QString& text, const QString& caption)
{
    return Prompts::Current().MsgBox({.Text = text,
                                      .Caption = caption,
                                      .Buttons = MsgBoxButtons::YesNo,
                                      .Icon = MsgBoxIcon::Question,
                                      .Default = MsgBoxResult::No})
           == MsgBoxResult::Yes;
}

} // namespace

BookmarkList::BookmarkList()
{
    QObject::connect(&m_rows, &BookmarkTree::MoveAsked, &m_rows, std::bind_front(&BookmarkList::MoveToGroup, this));
}

void BookmarkList::Initialise(Library& library)
{
    m_library = &library;
    m_rows.Clear(); // of the library before, whatever becomes of this one
    Refresh();
}

void BookmarkList::Terminate()
{
    m_library = nullptr;
    m_rows.Clear();
}

void BookmarkList::Refresh()
{
    if (!m_library)
        return;
    Guarded(ModuleName, u"Initialise"_s, [this] {
        std::vector<BookmarkGroup> groups = ReadBookmarkGroups(*m_library);
        m_rows.Show(std::move(groups), ReadBookmarks(*m_library));
    });
}

/// Whatever becomes of a change, the list shows what is stored.
void BookmarkList::Change(const QString& procedure, const std::function<void()>& change)
{
    if (!m_library)
        return;
    Guarded(ModuleName, procedure, [&] {
        Transaction transaction(*m_library);
        change();
        transaction.Commit();
    });
    Refresh();
}

bool BookmarkList::RemoveBookMark(qint64 bookmark)
{
    if (!m_library || bookmark == 0)
        return false;
    CBookmark row;
    row.Initialise(*m_library, QString::number(bookmark));
    row.Delete();
    const bool removed = row.Commit(); // which reports
    Refresh();
    return removed;
}

void BookmarkList::RemoveAllBookmarks()
{
    if (!m_library
        || !Asked(u"Do you really want to remove ALL bookmarks from the list?"_s, u"Delete ALL bookmarks?"_s))
        return;
    // The rows decide: others may have added some that the list does not show.
    Change(u"mnuRemoveAllItem_Click"_s, [this] {
        for (const BookmarkRow& one : ReadBookmarks(*m_library)) {
            CBookmark row;
            row.Initialise(*m_library, QString::number(one.Id));
            row.Delete();
            if (!row.Commit())
                throw RuntimeError(ErrorNumber::Engine, u"The bookmarks could not be removed; all are still there."_s,
                                   ModuleName);
        }
    });
}

void BookmarkList::MoveToGroup(qint64 bookmark, qint64 group)
{
    Change(u"MoveToGroup"_s, [&] {
        CBookmark row;
        row.Initialise(*m_library, QString::number(bookmark));
        row.SetGroupNo(group);
        row.Commit(); // which reports
    });
}

void BookmarkList::RenameGroup(qint64 group)
{
    if (!m_library || group == 0)
        return;
    const std::optional<QString> name = Prompts::Current().InputBox(
        u"Name of the bookmark group:"_s, u"Rename Bookmark Group"_s, m_rows.GroupName(group));
    if (name)
        Change(u"mnuRenameBookmarkGroup_Click"_s, [&] { RenameBookmarkGroup(*m_library, group, *name); });
}

int BookmarkList::CountIn(qint64 group) const
{
    return m_rows.rowCount(m_rows.IndexOfKey(BookmarkTree::KeyOfGroup(group)));
}

void BookmarkList::RemoveGroup(qint64 group)
{
    if (!m_library || group == 0)
        return;
    const int count = CountIn(group);
    const QString text = count == 1 ? u"Do you really want to remove the group '%1' with its bookmark?"_s
                                    : u"Do you really want to remove the group '%1' with its %2 bookmarks?"_s;
    if (count > 0
        && !Asked(count == 1 ? text.arg(m_rows.GroupName(group)) : text.arg(m_rows.GroupName(group)).arg(count),
                  u"Remove Bookmark Group"_s))
        return;
    Change(u"mnuRemoveBookmarkGroup_Click"_s, [&] { RemoveBookmarkGroup(*m_library, group); });
}

} // namespace qb
