#pragma once

#include "find/FindTexts.h"
#include "store/Library.h"

#include <functional>
#include <unordered_map>

namespace qb {

/// An item as its rows hold it; made into texts later, on another thread.
struct LibraryItem {
    struct File {
        qint64 Id;
        QString Title;
        QString Description;
    };
    struct Link {
        qint64 To;
        QString Note;
    };

    FindItem Item;
    QString Title;
    QString Description;
    QString Info;
    QString Code;
    QString Notes;
    QString Usage;
    std::vector<File> Files;
    std::vector<Link> Links;
    bool HasPage = false;
};

/// Where the files of a library's items lie.
struct LibraryFolders {
    QString Files;
    QString Pages;
};

/// How a file that texts are read from stands now. @p file is 0 for the item's web page; @p title that of a stored
/// file.
FindSource SourceOf(const LibraryFolders& folders, qint64 item, qint64 file, const QString& title);

/// The texts of an item, read from its rows and its files.
FindItemTexts TextsOf(const LibraryItem& item, const LibraryFolders& folders);

/// Reads the items of a library in pieces, each in a read of its own, so that nobody who writes has to wait for long.
class LibraryTexts {
public:
    /// The library must outlive it.
    explicit LibraryTexts(Library& library) : m_library(&library) {}

    /// Whether the texts of an item are wanted, by what its rows have to say; asked for each one.
    using Filter = std::function<bool(const FindItem& item)>;
    /// Adds the next items after @p after, by ID, to @p items; returns the last ID that was looked at, or nothing when
    /// there are no more.
    std::optional<qint64> ReadNext(qint64 after, const Filter& filter, std::vector<LibraryItem>& items);
    /// Adds those of these items that there are.
    void Read(const std::vector<qint64>& ids, std::vector<LibraryItem>& items);

private:
    struct Belongings {
        std::vector<LibraryItem::File> Files;
        std::vector<LibraryItem::Link> Links;
    };

    std::unordered_map<qint64, Belongings> ReadBelongings(qint64 first, qint64 last);
    void ReadRange(qint64 first, qint64 last, const Filter& filter, std::vector<LibraryItem>& items);

    Library* m_library;
};

} // namespace qb
