#pragma once

#include "store/Bookmarks.h"
#include "store/CBookmark.h"

#include <QStringList>
#include <optional>

namespace qb {

/// A bookmark that is being made, or changed: the groups it can go to, and the rules of what it needs.
class BookmarkDraft {
public:
    /// A new one, of an item that has a row.
    BookmarkDraft(Library& library, qint64 item);
    /// One that is there.
    static BookmarkDraft Of(Library& library, qint64 bookmark);

    bool IsNew() const { return m_bookmark == 0; }
    QString Title() const { return m_title; } ///< of the item
    QString Text() const { return m_text; }   ///< of the bookmark, with lines that end as in a text box
    /// The names of the groups in the order in which they were made.
    QStringList Groups() const;
    /// The place of the group that is chosen in that list; -1: none is.
    int GroupIndex() const;
    void SelectGroup(qint64 group);
    qint64 Group() const { return m_group; }

    /// The user leaves the box of groups with this text in it. One that is not in the list is asked about and, if it
    /// is wanted, added and chosen. False when the box is to keep the focus.
    bool cboGroups_Validate(const QString& text);
    /// Writes the bookmark, into the group of the text in the box. False when the dialog is to stay open, which the
    /// user has been told why.
    bool cmdOK_Click(const QString& group, const QString& text);
    /// The ID of the bookmark that was written.
    qint64 Bookmark() const { return m_bookmark; }

private:
    bool AddGroup(const QString& name);
    bool Write(const QString& text);

    Library* m_library;
    qint64 m_item = 0;
    qint64 m_bookmark = 0; ///< 0: new
    QString m_title;
    QString m_text;
    std::vector<BookmarkGroup> m_groups;
    qint64 m_group = 0; ///< that is chosen; 0: none
};

} // namespace qb
