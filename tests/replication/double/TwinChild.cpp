// A child takes its mother's answer in.

#include "replication/double/Twin.h"

#include <algorithm>

namespace qb::test::twin {

namespace {

/// One merge at a child.
class ChildMerge {
public:
    ChildMerge(Library& child, const ChangeFile& file)
        : m_child(child), m_file(file), m_former(child.LastSynchronized), m_exported(file.Exported),
          m_synchronized(file.LastSynchronized), m_later(file.LastSynchronized + 60)
    {
    }

    void Run()
    {
        for (const auto& [id, item] : m_child.Items) {
            if (IsOwnChange(Table::Items, id, item.Changed, m_exported))
                m_changedSince.insert(id);
            if (IsOwnChange(Table::Items, id, item.PageChanged, m_exported))
                m_pageSince.insert(id);
        }
        MoveNewOnes();
        m_folder = m_child.MakeOrphanFolder();
        DeleteItems();
        DeleteFiles();
        DeleteLinks();
        TakeNumbers();
        for (const SentItem& sent : m_file.FromMother.Items)
            TakeItem(sent);
        TakeConflicts();
        TakeLinks();
        SettleParents();
        TakeFiles();
        TakePages();
        CompleteLosers();
        PutOrphans();
        m_child.RemoveEmptyOrphanFolder();
        MoveDates();
        Finish();
    }

private:
    /// Changed here after @p bound: what was taken over is no change.
    bool IsOwnChange(Table table, Number id, Moment date, Moment bound) const
    {
        return date > bound && !m_child.IsTakenOver(table, id, 0, date);
    }
    bool IsBetween(Moment date) const { return date > m_exported && date <= m_synchronized; }

    /// What was made here since the export is to go with the next one: it gets a date after the mother's stamp.
    void MoveNewOnes()
    {
        for (auto& [id, item] : m_child.Items) {
            if (IsBetween(item.Created) && item.Created < m_synchronized && !m_child.IsOrphanFolder(id)) {
                item.Created = m_later;
                MoveDate(Table::Items, id, item.Changed, false);
            }
        }
        for (auto& [id, file] : m_child.Files) {
            if (IsBetween(file.Added)) {
                file.Added = m_later;
                MoveDate(Table::Files, id, file.Updated, false);
            }
        }
        for (auto& [ends, link] : m_child.Links) {
            if (IsBetween(link.Added)) {
                link.Added = m_later;
                m_child.Note({.What = Event::Changed,
                              .Of = Table::Links,
                              .ID = ends.first,
                              .Second = ends.second,
                              .At = m_later,
                              .Date = m_later});
                m_linksSince.insert(ends);
            }
        }
        for (auto* list : {&m_child.DeletedItems, &m_child.DeletedFiles, &m_child.DeletedLinks}) {
            std::erase_if(*list, [this](const Deletion& deletion) { return deletion.Date <= m_exported; });
            for (Deletion& deletion : *list)
                deletion.Date = m_later;
        }
        for (Event& event : m_child.Log) {
            if (event.What == Event::Deleted && event.At > m_exported && event.At < m_later)
                event.At = m_later;
        }
    }

    // What the mother has deleted

    /// A row that is kept is hers no more, and goes to her as a new one. What stands below one that goes and is not
    /// listed stays, as an orphan.
    void DeleteItems()
    {
        for (const Deletion& deletion : m_file.FromMother.DeletedItems) {
            const Item* found = m_child.FindByMother(deletion.ID);
            if (!found)
                continue;
            Item& item = m_child.Items.at(found->ID);
            const bool hasNewFiles = HasNewFiles(item.ID);
            const bool isChanged = IsOwnChange(Table::Items, item.ID, item.Changed, m_former);
            if (!(isChanged && DayFirst(item.Changed) > DayFirst(deletion.Date)) && !hasNewFiles) {
                m_child.Erase(item.ID);
                continue;
            }
            item.Texts[Info] = KeptNote(hasNewFiles) + item.Texts[Info];
            SendAsNew(item);
        }
    }

    bool HasNewFiles(Number item) const
    {
        return std::any_of(m_child.Files.begin(), m_child.Files.end(), [&](const auto& file) {
            return file.second.Owner == item && IsOwnChange(Table::Files, file.first, file.second.Added, m_former);
        });
    }

    void SendAsNew(Item& item)
    {
        item.MotherID = -1;
        SendParts(item.ID);
    }

    /// Files, links and page of an item that the mother has under a number that is new.
    void SendParts(Number item)
    {
        m_child.WholeItems[item] = m_synchronized + 1;
        for (auto& [id, file] : m_child.Files) {
            if (file.Owner == item)
                file.MotherID = 0;
        }
        for (auto& [ends, link] : m_child.Links) {
            if (ends.first == item || ends.second == item)
                link.IsKnown = false;
        }
    }

    /// A file that was described here since the deletion stays, and the mother gets it again.
    void DeleteFiles()
    {
        for (const Deletion& deletion : m_file.FromMother.DeletedFiles) {
            const auto found = std::find_if(m_child.Files.begin(), m_child.Files.end(), [&](const auto& file) {
                return deletion.ID > 0 && file.second.MotherID == deletion.ID;
            });
            if (found == m_child.Files.end())
                continue;
            File& file = found->second;
            if (IsOwnChange(Table::Files, file.ID, file.Updated, m_former) && file.Updated >= deletion.Date) {
                file.MotherID = 0;
                m_child.WholeFiles[file.ID] = m_synchronized + 1;
            } else {
                m_child.WholeFiles.erase(file.ID);
                m_child.Files.erase(found);
            }
        }
    }

    /// A link that was made here since the export is another one.
    void DeleteLinks()
    {
        for (const Deletion& deletion : m_file.FromMother.DeletedLinks) {
            const Item* from = m_child.FindByMother(deletion.ID);
            const Item* to = m_child.FindByMother(deletion.Second);
            if (from && to && m_linksSince.count({from->ID, to->ID}) == 0)
                m_child.Links.erase({from->ID, to->ID});
        }
    }

    // What the mother calls what she got

    void TakeNumbers()
    {
        for (const ToldItem& told : m_file.ToldItems) {
            const auto found = m_child.Items.find(told.ID);
            if (found == m_child.Items.end())
                continue;
            Item& item = found->second;
            if (told.MotherID <= 0)
                SendAsNew(item);
            else if (item.MotherID > 0 && item.MotherID != told.MotherID)
                SendParts(item.ID);
            item.MotherID = told.MotherID;
            if (told.IsOrphan)
                item.Parent = m_folder;
            item.MotherParent = told.IsOrphan ? 0 : told.MotherParent;
        }
        for (const Ends& ends : m_file.ToldLinks) {
            if (const auto link = m_child.Links.find(ends);
                link != m_child.Links.end() && m_linksSince.count(ends) == 0)
                link->second.IsKnown = true;
        }
        for (const ToldFile& told : m_file.ToldFiles) {
            if (const auto file = m_child.Files.find(told.ID); file != m_child.Files.end())
                file->second.MotherID = told.MotherID;
            else
                TellDeletion(told);
        }
        CompleteDeletedLinks();
    }

    /// It was deleted here since the export, when nobody knew what the mother would call it.
    void TellDeletion(const ToldFile& told)
    {
        for (Event& event : m_child.Log) {
            if (event.What == Event::Deleted && event.Of == Table::Files && event.ID == told.ID)
                event.MotherID = told.MotherID;
        }
    }
    void CompleteDeletedLinks()
    {
        for (Event& event : m_child.Log) {
            if (event.What != Event::Deleted || event.Of != Table::Links || event.At <= m_synchronized)
                continue;
            const auto from = m_child.Items.find(event.ID);
            const auto to = m_child.Items.find(event.Second);
            if (from == m_child.Items.end() || to == m_child.Items.end())
                continue;
            event.MotherID = std::max(from->second.MotherID, Number(0));
            event.MotherSecond = std::max(to->second.MotherID, Number(0));
        }
    }

    // What the mother has changed or made

    void TakeItem(const SentItem& sent)
    {
        const Item* found = m_child.FindByMother(sent.Row.ID);
        if (found && m_changedSince.count(found->ID) != 0) {
            if (found->Changed > sent.Row.Changed)
                return KeepOwn(m_child.Items.at(found->ID), sent.Row);
            AddOwnLoser(*found);
        }
        const Number id = found ? found->ID : m_child.NextItem++;
        Item& item = m_child.Items[id];
        const Item former = item;
        const Number parent = found ? item.Parent : 0;
        item = sent.Row;
        item.ID = id;
        item.Parent = parent;
        item.MotherID = sent.Row.ID;
        item.MotherParent = sent.Row.Parent;
        m_child.ItemNames[id] = item.Name;
        m_taken[id] = &sent;
        if (m_pageSince.count(id) != 0 && !HasNewPage(sent)) {
            item.HasPage = former.HasPage;
            item.PageChanged = former.PageChanged;
            m_ownPages.insert(id);
        } else if (former.HasPage && !item.HasPage) {
            m_child.Pages.erase(id);
        }
    }

    /// Somebody but this child has changed the page, too.
    bool HasNewPage(const SentItem& sent) const
    {
        const auto& pages = m_file.FromMother.Pages;
        return sent.Row.PageChanged > m_former
               || std::any_of(pages.begin(), pages.end(),
                              [&sent](const SentPage& page) { return page.Item == sent.Row.ID; });
    }

    /// The child's version stays and goes to the mother; hers waits for the solver. A page that the child has not
    /// changed is as the mother has it.
    void KeepOwn(Item& item, const Item& mothers)
    {
        Loser loser{.Row = mothers, .FromOther = true};
        loser.Row.ID = item.ID;
        m_lost.push_back(loser);
        m_kept.insert(item.ID);
        if (m_pageSince.count(item.ID) != 0)
            return;
        item.HasPage = mothers.HasPage;
        item.PageChanged = mothers.PageChanged;
        m_takenPages.insert(item.ID);
        if (!item.HasPage)
            m_child.Pages.erase(item.ID);
    }

    void AddOwnLoser(const Item& item)
    {
        Loser loser{.Row = item};
        for (const auto& [id, file] : m_child.Files) {
            if (file.Owner == item.ID)
                loser.Files.push_back(file);
        }
        if (const auto page = m_child.Pages.find(item.ID); page != m_child.Pages.end())
            loser.Page = page->second;
        m_child.Losers.push_back(loser);
    }

    /// What the mother found in conflict is decided: it is no change any more, unless it was changed since.
    void TakeConflicts()
    {
        for (const ToldConflict& conflict : m_file.Conflicts) {
            const auto item = m_child.Items.find(conflict.ID);
            if (item == m_child.Items.end())
                continue;
            if (m_changedSince.count(conflict.ID) == 0)
                item->second.Changed = conflict.Changed;
            if (conflict.IsPageGone && m_pageSince.count(conflict.ID) == 0) {
                item->second.HasPage = false;
                m_child.Pages.erase(conflict.ID);
            }
        }
    }

    void TakeLinks()
    {
        for (const SentLink& sent : m_file.FromMother.Links) {
            const Item* from = m_child.FindByMother(sent.Mothers.first);
            const Item* to = m_child.FindByMother(sent.Mothers.second);
            if (!from || !to || WasDeletedSince(Table::Links, sent.Mothers.first, sent.Mothers.second))
                continue;
            const auto [link, isNew] = m_child.Links.try_emplace({from->ID, to->ID});
            if (isNew || link->second.Updated < sent.Row.Updated) {
                link->second.Note = sent.Row.Note;
                link->second.Updated = sent.Row.Updated;
            }
            if (isNew)
                link->second.Added = sent.Row.Added;
            link->second.IsKnown = true;
        }
    }

    void SettleParents()
    {
        for (const auto& [id, sent] : m_taken) {
            Item& item = m_child.Items.at(id);
            const Item* parent = m_child.FindByMother(sent->Row.Parent);
            if (sent->BelowOrphanFolder)
                item.Parent = m_folder;
            else if (sent->Row.Parent == 0)
                item.Parent = 0;
            else
                item.Parent = parent ? parent->ID : m_folder;
            m_moved[id] = sent->Row.Changed;
        }
    }

    void TakeFiles()
    {
        for (const SentFile& sent : m_file.FromMother.Files) {
            const auto found = std::find_if(m_child.Files.begin(), m_child.Files.end(),
                                            [&](const auto& file) { return file.second.MotherID == sent.Row.ID; });
            if (found != m_child.Files.end())
                TakeDescription(found->second, sent.Row);
            else if (sent.HasBytes && !WasDeletedSince(Table::Files, sent.Row.ID, 0))
                AddFile(sent.Row);
        }
    }

    /// What was deleted here since the export is told next time, and does not come back meanwhile.
    bool WasDeletedSince(Table table, Number mothers, Number second) const
    {
        return std::any_of(m_child.Log.begin(), m_child.Log.end(), [&](const Event& event) {
            return event.What == Event::Deleted && event.Of == table && event.MotherID == mothers
                   && event.MotherSecond == second && event.At > m_synchronized;
        });
    }

    void TakeDescription(File& file, const File& mothers)
    {
        if (IsOwnChange(Table::Files, file.ID, file.Updated, m_exported) && file.Updated > mothers.Updated)
            return;
        file.Description = mothers.Description;
        file.Updated = mothers.Updated;
        m_takenFiles.insert(file.ID);
    }

    void AddFile(const File& mothers)
    {
        const Item* owner = m_child.FindByMother(mothers.Owner);
        if (!owner)
            return;
        File file = mothers;
        file.ID = m_child.NextFile++;
        file.Owner = owner->ID;
        file.MotherID = mothers.ID;
        m_child.Files[file.ID] = file;
        m_child.FileNames[file.ID] = file.Title;
        m_takenFiles.insert(file.ID);
    }

    /// A page goes with the version that won, unless the child has changed its own since.
    void TakePages()
    {
        for (const SentPage& sent : m_file.FromMother.Pages) {
            const Item* found = m_child.FindByMother(sent.Item);
            if (!found)
                continue;
            if (m_taken.count(found->ID) == 0 && m_pageSince.count(found->ID) != 0) {
                for (Loser& loser : m_lost) {
                    if (loser.Row.ID == found->ID)
                        loser.Page = sent.Page;
                }
                continue;
            }
            m_child.Pages[found->ID] = sent.Page;
            Item& item = m_child.Items.at(found->ID);
            item.HasPage = true;
            const bool hasRow = m_taken.count(found->ID) != 0 || m_kept.count(found->ID) != 0;
            item.PageChanged = hasRow ? sent.Changed : DateOfPageAlone(found->ID, sent.Changed);
            m_takenPages.insert(found->ID);
        }
    }

    /// A page travels without a date; without the mother's row it is one that is no change of the child's.
    Moment DateOfPageAlone(Number item, Moment mothers) const
    {
        const bool isTold = std::any_of(m_file.Conflicts.begin(), m_file.Conflicts.end(),
                                        [item](const ToldConflict& conflict) { return conflict.ID == item; });
        return isTold ? std::min(m_exported, mothers) : m_exported;
    }

    /// The mother's versions that lost have the files that she has of them.
    void CompleteLosers()
    {
        for (Loser& loser : m_lost) {
            for (const auto& [id, file] : m_child.Files) {
                if (file.Owner == loser.Row.ID && file.MotherID > 0)
                    loser.Files.push_back(file);
            }
            if (const auto page = m_child.Pages.find(loser.Row.ID); loser.Row.HasPage && loser.Page.empty()
                                                                    && page != m_child.Pages.end()
                                                                    && m_pageSince.count(loser.Row.ID) == 0)
                loser.Page = page->second;
            m_child.Losers.push_back(loser);
        }
    }

    // The end

    /// An orphan whose parent has come back goes below it again.
    void PutOrphans()
    {
        for (auto& [id, item] : m_child.Items) {
            const Item* parent = item.Parent == m_folder ? m_child.FindByMother(item.MotherParent) : nullptr;
            const bool isTold = std::any_of(m_file.ToldItems.begin(), m_file.ToldItems.end(),
                                            [&](const ToldItem& told) { return told.ID == id && told.IsOrphan; });
            if (parent && !isTold && !m_child.IsInBranch(id, parent->ID))
                item.Parent = parent->ID;
        }
        for (const Number id : m_changedSince) {
            if (const auto item = m_child.Items.find(id); item != m_child.Items.end() && m_taken.count(id) == 0)
                m_moved[id] = item->second.Changed;
        }
        PutOrphansAway(m_child, m_folder, m_moved);
    }

    /// What has a date between the export and the mother's stamp gets one after it: what was taken over, which is
    /// noted as no change, and what was changed here, which so goes with the next export. A version of the mother's
    /// that won over a change keeps hers.
    void MoveDates()
    {
        for (auto& [id, item] : m_child.Items) {
            const bool isTaken = m_taken.count(id) != 0;
            const bool isDecided = m_child.HasLoser(id) && m_kept.count(id) == 0;
            if (IsBetween(item.Changed) && !isDecided)
                MoveDate(Table::Items, id, item.Changed, isTaken);
            if (IsBetween(item.PageChanged) && !isDecided)
                MoveDate(Table::Items, id, item.PageChanged,
                         isTaken || (m_takenPages.count(id) != 0 && m_kept.count(id) == 0));
        }
        for (const Number id : m_ownPages) { // another date than what was taken over with it
            m_child.Items.at(id).PageChanged = m_later + 1;
            NoteOwn(Table::Items, id, m_later + 1);
        }
        for (auto& [id, file] : m_child.Files) {
            if (IsBetween(file.Updated))
                MoveDate(Table::Files, id, file.Updated, m_takenFiles.count(id) != 0);
        }
    }
    /// It is the child's own, though its date was given to it here.
    void NoteOwn(Table table, Number id, Moment date)
    {
        m_child.Note({.What = Event::Changed, .Of = table, .ID = id, .At = date, .Date = date});
    }
    void MoveDate(Table table, Number id, Moment& date, bool isTaken)
    {
        date = m_later;
        if (isTaken)
            m_child.Note({.What = Event::TakenOver, .Of = table, .ID = id, .At = m_synchronized, .Date = m_later});
        else
            NoteOwn(table, id, m_later);
    }

    /// The child is free again.
    void Finish()
    {
        const auto wasSent = [this](const auto& whole) { return whole.second <= m_exported; };
        std::erase_if(m_child.WholeItems, wasSent);
        std::erase_if(m_child.WholeFiles, wasSent);
        m_child.LastExported = 0;
        m_child.LastSynchronized = m_synchronized;
        m_child.Trim();
    }

    Library& m_child;
    const ChangeFile& m_file;
    Moment m_former;       ///< when mother and child met before
    Moment m_exported;     ///< what the file has
    Moment m_synchronized; ///< the mother's stamp
    Moment m_later;
    Number m_folder = 0;

    std::set<Number> m_changedSince; ///< items that were changed here since the export
    std::set<Number> m_pageSince;
    std::set<Ends> m_linksSince;
    std::map<Number, const SentItem*> m_taken; ///< items that are as the mother has them now
    std::set<Number> m_takenFiles;
    std::set<Number> m_takenPages;
    std::set<Number> m_ownPages; ///< of items that are the mother's otherwise
    std::set<Number> m_kept;     ///< versions that won over hers
    std::map<Number, Moment> m_moved;
    std::vector<Loser> m_lost; ///< of the mother's versions
};

} // namespace

Outcome SynchronizeChild(Library& child, ChangeFile& file, Moment)
{
    const bool wasExported = std::any_of(child.Log.begin(), child.Log.end(), [&file](const Event& event) {
        return event.What == Event::Exported && event.Date == file.Exported;
    });
    if (child.LastSynchronized >= file.LastSynchronized || !(wasExported || child.LastExported == file.Exported))
        return {};
    ChildMerge(child, file).Run();
    return {.Result = 1, .Done = true};
}

} // namespace qb::test::twin
