#pragma once

#include "platform/system/Date.h"
#include "store/Library.h"

#include <QHash>
#include <QMultiHash>
#include <QString>
#include <vector>

namespace qb {

/// An item as a branch that is published knows it before it is read.
struct PublishedNode {
    qint64 Item = 0;
    int Parent = -1; ///< its place among those before it; -1: it stands at the top
    int Depth = 0;
    QString Title;
    std::vector<int> Children; ///< their places
};

/// A link to an item of the same branch.
struct PublishedLink {
    int Place;
    QString Note;
};

/// The items of a branch by their places, each behind its parent, and the links between them. Links that lead out of
/// it are nobody's business who reads it.
class PublishedBranch {
public:
    /// With @p item 0 the whole library. Raises an error when there is no such item.
    PublishedBranch(Library& library, qint64 item);

    const std::vector<PublishedNode>& Nodes() const { return m_nodes; }
    const PublishedNode& Node(int place) const { return m_nodes[size_t(place)]; }
    std::vector<PublishedLink> LinksOf(int place) const;
    /// Of its first item, or of the library.
    const QString& Title() const { return m_title; }
    bool IsWholeLibrary() const { return m_isWhole; }

private:
    void ReadLinks(Library& library);

    bool m_isWhole;
    QString m_title;
    std::vector<PublishedNode> m_nodes;
    QHash<qint64, int> m_places;
    QMultiHash<int, PublishedLink> m_links;
};

struct PublishedFile {
    QString Title;
    QString Description;
    qint64 Size = 0;
    QString Path; ///< empty: it is missing in the library
};

/// An item, read whole.
struct PublishedItem {
    qint64 Item = 0;
    QString Title;
    QString Description;
    QString Info;
    QString User;
    QString Status; ///< in a word; empty: it says nothing
    int Rating = 0; ///< in half stars; 0: none
    Date Created;
    Date LastChanged;
    QString Code; ///< RTF, as Usage and Notes
    QString Usage;
    QString Notes;
    QString OwnLanguage; ///< that the item itself names
    QString Language;    ///< what its code is written in; empty where nobody says
    QStringList Pages;   ///< its web page and what belongs to that, below the folder of pages
    std::vector<PublishedFile> Files;
};

/// @p language is the library's, for items that name none. Raises an error when the item can't be read.
PublishedItem ReadPublishedItem(Library& library, qint64 item, const QString& language);

} // namespace qb
