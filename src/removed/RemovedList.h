#pragma once

#include "exchange/BranchStream.h"
#include "platform/system/Work.h"
#include "removed/RemovedIndex.h"
#include "store/Library.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

/// An event as it lies beside the library.
struct ListedEvent {
    QString Name;     ///< of its files, without extension
    QString Stamp;    ///< digits, by which it is known: "20260302143005"
    qint64 Bytes = 0; ///< of both files
    RemovedIndex Index;
};

/// Something that can be brought back, in its event.
struct ListedEntry {
    const ListedEvent* Event = nullptr;
    const RemovedEntry* Entry = nullptr;
    int Below = 0; ///< items of the same event that stood below it

    /// By which it is known: the event's stamp, ".", and the number of the entry.
    QString Id() const { return Event->Stamp + u'.' + QString::number(Entry->Number); }
};

/// What was removed from a library and can be brought back, as it was when it was read.
class RemovedList {
public:
    /// Of the library at that path, which need not be open. Nothing raises: what can't be read is in Problems().
    explicit RemovedList(const QString& libraryPath);
    // Entries point into it.
    RemovedList(const RemovedList&) = delete;
    RemovedList& operator=(const RemovedList&) = delete;

    /// The latest first.
    const std::vector<ListedEvent>& Events() const { return m_events; }
    /// A sentence for each event that can't be read.
    const QStringList& Problems() const { return m_problems; }
    qint64 Bytes() const; ///< of all events

    /// With words: the entries that have all of them in their title or path, whatever their case; without: all, but of
    /// a branch its top alone. The latest event first.
    std::vector<ListedEntry> Find(const QString& words) const;
    /// Raises RuntimeError 3265 when there is none of that Id.
    ListedEntry At(const QString& id) const;

    /// The file with the items of an event.
    QString ItemsFile(const ListedEvent& event) const;

private:
    void Read(const QString& name);

    QString m_folder; ///< ends in a separator
    std::vector<ListedEvent> m_events;
    QStringList m_problems;
};

/// What of an entry can be looked at. Texts are RTF.
struct RemovedContents {
    BranchItem Item;
    std::vector<BranchFile> Files;
    QStringList Pages; ///< names of the files of its web page
};
/// Raises an error for a file of items that is not there, is cut, or says what can't be.
RemovedContents ReadRemoved(const RemovedList& list, const ListedEntry& entry, Work& work = NoWork());

/// An entry as plain text, to be looked at before it is brought back.
QString PreviewOf(const ListedEntry& entry, const RemovedContents& contents);

} // namespace qb
