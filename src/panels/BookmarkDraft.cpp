#include "panels/BookmarkDraft.h"

#include "platform/system/Prompts.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"frmAddBookmark"_s;

} // namespace

BookmarkDraft::BookmarkDraft(Library& library, qint64 item)
    : m_library(&library), m_item(item),
      m_title(library.QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {item}).ToText()),
      m_groups(ReadBookmarkGroups(library))
{
}

BookmarkDraft BookmarkDraft::Of(Library& library, qint64 bookmark)
{
    CBookmark stored;
    stored.Initialise(library, QString::number(bookmark));
    BookmarkDraft draft(library, stored.CodeItemKey().toLongLong());
    draft.m_bookmark = bookmark;
    draft.m_text = stored.Description().replace(u"\r\n"_s, u"\n"_s);
    draft.m_group = stored.GroupNo();
    return draft;
}

QStringList BookmarkDraft::Groups() const
{
    QStringList names;
    for (const BookmarkGroup& group : m_groups)
        names << group.Name;
    return names;
}

int BookmarkDraft::GroupIndex() const
{
    const auto found = std::find_if(m_groups.begin(), m_groups.end(),
                                    [this](const BookmarkGroup& group) { return group.Id == m_group; });
    return found == m_groups.end() ? -1 : int(found - m_groups.begin());
}

void BookmarkDraft::SelectGroup(qint64 group)
{
    m_group = group;
}

bool BookmarkDraft::AddGroup(const QString& name)
{
    return Guarded(ModuleName, u"cboGroups_Validate"_s, [&] {
        const qint64 known = FindBookmarkGroup(*m_library, name); // another program may have added it meanwhile
        m_group = known != 0 ? known : AddBookmarkGroup(*m_library, name);
        m_groups = ReadBookmarkGroups(*m_library);
    });
}

/// A box that was emptied chooses nothing, which is told when the bookmark is to be written.
bool BookmarkDraft::cboGroups_Validate(const QString& text)
{
    const QString name = text.simplified();
    const auto known = std::find_if(m_groups.begin(), m_groups.end(), [&name](const BookmarkGroup& group) {
        return group.Name.compare(name, Qt::CaseInsensitive) == 0;
    });
    m_group = known == m_groups.end() ? 0 : known->Id;
    if (m_group != 0 || name.isEmpty())
        return true;
    const MsgBoxResult answer = Prompts::Current().MsgBox(
        {.Text = u"Do you wish to add a new bookmark group '%1' to the database?"_s.arg(name),
         .Caption = u"Group item not found"_s,
         .Buttons = MsgBoxButtons::YesNo,
         .Icon = MsgBoxIcon::Question});
    return answer == MsgBoxResult::Yes && AddGroup(name);
}

bool BookmarkDraft::cmdOK_Click(const QString& group, const QString& text)
{
    if (!cboGroups_Validate(group)) // Enter is pressed without leaving the box
        return false;
    if (m_group == 0) {
        Prompts::Current().MsgBox({.Text = u"You have to select a group for the bookmark."_s,
                                   .Caption = u"No group selected"_s,
                                   .Icon = MsgBoxIcon::Information});
        return false;
    }
    return Write(text);
}

bool BookmarkDraft::Write(const QString& text)
{
    return Guarded(
        ModuleName, u"cmdOK_Click"_s,
        [&] {
            const QString stored = QString(text).replace(u"\r\n"_s, u"\n"_s).replace(u'\n', u"\r\n"_s);
            CBookmark bookmark;
            bookmark.Initialise(*m_library, IsNew() ? QString() : QString::number(m_bookmark));
            if (IsNew())
                bookmark.SetCodeItemKey(QString::number(m_item));
            bookmark.SetDescription(stored);
            bookmark.SetGroupNo(m_group);
            if (!bookmark.Commit())
                return false;
            m_bookmark = bookmark.Key().toLongLong();
            return true;
        },
        false);
}

} // namespace qb
