// The mother takes a child's changes in, and writes her own into the file.

#include "replication/double/Twin.h"

#include <algorithm>

namespace qb::test::twin {

namespace {

/// One merge at the mother.
class MotherMerge {
public:
    MotherMerge(Library& mother, ChangeFile& file, Moment now)
        : m_mother(mother), m_file(file), m_child(file.Identity), m_now(now), m_bound(file.LastSynchronized),
          m_moment(mother.Stamp(now))
    {
    }

    void Run()
    {
        NoteHerChanges();
        m_folder = m_mother.MakeOrphanFolder();
        DeleteItems();
        DeleteFiles();
        DeleteLinks();
        for (const SentItem& sent : m_file.FromChild.Items)
            TakeItem(sent);
        SettleParents();
        TakeFiles();
        TakeLinks();
        TakePages();
        CompleteLosers();
        PutOrphans();
        m_mother.RemoveEmptyOrphanFolder();
        Answer();
        Stamp();
    }

private:
    // Her own changes, before anything of the child's is taken in

    /// An item that the child does not have, or may not have, and that waits for a decision is nothing to it.
    bool IsHidden(Number item) const { return (Lacks(item) || IsIncomplete(item)) && m_mother.IsWaiting(item); }
    bool IsIncomplete(Number item) const
    {
        const auto incomplete = m_mother.Incomplete.find(m_child);
        return incomplete != m_mother.Incomplete.end() && incomplete->second.count(item) != 0;
    }
    bool Lacks(Number item) const
    {
        const auto lacking = m_mother.Lacking.find(m_child);
        return lacking != m_mother.Lacking.end() && lacking->second.count(item) != 0;
    }
    /// A file that came anew from others, not one that only was described there.
    bool HasArrivedAnew(Number file) const
    {
        return m_mother.HasArrivedFromOther(Table::Files, file, 0, m_bound, m_child, true);
    }
    bool HasArrived(Table table, Number id, Number second = 0) const
    {
        return m_mother.HasArrivedFromOther(table, id, second, m_bound, m_child);
    }

    void NoteHerChanges()
    {
        for (const auto& [id, item] : m_mother.Items) {
            // It waits, and the child may never have got it.
            if (item.Changed == 0 && (item.Created > m_bound || HasArrived(Table::Items, id)))
                m_mother.Incomplete[m_child].insert(id);
            const bool isChanged = item.Changed > m_bound || HasArrived(Table::Items, id)
                                   || m_mother.WasChangedAt(id, m_bound);
            if (isChanged && item.Changed != 0) { // what waits for a decision is for nobody else
                m_items.insert(id);
                if (Lacks(id))
                    m_whole.insert(id);
            }
            if (IsIncomplete(id) && item.Changed != 0) { // now it goes
                m_whole.insert(id);
                m_mother.Incomplete[m_child].erase(id);
            }
            const bool isNewPage = item.PageChanged > m_bound || HasArrived(Table::Items, id)
                                   || HasArrived(Table::Pages, id) || m_whole.count(id) != 0;
            if (item.HasPage && isNewPage && !IsHidden(id))
                m_pages.insert(id);
        }
        for (const auto& [id, file] : m_mother.Files) {
            const bool isNew = file.Added > m_bound || HasArrivedAnew(id) || m_whole.count(file.Owner) != 0;
            if ((isNew || file.Updated > m_bound || HasArrived(Table::Files, id)) && !IsHidden(file.Owner))
                m_files[id] = isNew;
        }
        for (const auto& [ends, link] : m_mother.Links) {
            const bool isWhole = m_whole.count(ends.first) != 0 || m_whole.count(ends.second) != 0;
            const bool isNews = isWhole || link.Added > m_bound || HasArrived(Table::Links, ends.first, ends.second);
            if (isNews && !IsHidden(ends.first) && !IsHidden(ends.second))
                m_links.insert(ends);
        }
    }

    /// Whether somebody else than this child has changed the item since mother and child met. One that waits is
    /// somebody's change too, unless it is this child's own version that waits.
    bool IsChangedHere(const Item& item) const
    {
        if (item.Changed == 0)
            return item.WaitsFor != m_child;
        return item.Changed > m_bound || HasArrived(Table::Items, item.ID) || m_mother.WasChangedAt(item.ID, m_bound);
    }

    // What the child has deleted

    /// Each listed item is judged by itself: what stands below one and is not listed was never deleted there.
    void DeleteItems()
    {
        for (const Deletion& deletion : m_file.FromChild.DeletedItems) {
            const auto item = m_mother.Items.find(deletion.ID);
            if (item == m_mother.Items.end())
                continue;
            const bool hasNewFiles = HasNewFiles(deletion.ID);
            const bool isLater = item->second.Changed == 0 || DayFirst(item->second.Changed) > DayFirst(deletion.Date);
            if ((IsChangedHere(item->second) && isLater) || hasNewFiles)
                KeepDeleted(item->second, hasNewFiles);
            else
                EraseItem(deletion.ID, deletion.Date);
        }
    }

    bool HasNewFiles(Number item) const
    {
        return std::any_of(m_mother.Files.begin(), m_mother.Files.end(), [&](const auto& file) {
            return file.second.Owner == item && (file.second.Added > m_bound || HasArrivedAnew(file.first));
        });
    }

    /// It stays, waits for a decision and says why. One that waits already says it already.
    void KeepDeleted(Item& item, bool hasNewFiles)
    {
        m_kept.insert(item.ID);
        m_mother.Lacking[m_child].insert(item.ID);
        if (item.Changed == 0)
            return;
        item.Texts[Info] = KeptNote(hasNewFiles) + item.Texts[Info];
        item.Changed = 0;
        item.WaitsFor.clear();
    }

    /// The deletion goes on to the other children, with the date that it has there.
    void EraseItem(Number id, Moment date)
    {
        for (const auto& [file, row] : m_mother.Files) {
            if (row.Owner == id)
                m_files.erase(file);
        }
        std::erase_if(m_links, [id](const Ends& ends) { return ends.first == id || ends.second == id; });
        m_items.erase(id);
        m_pages.erase(id);
        m_mother.Erase(id);
        Record(m_mother.DeletedItems, Table::Items, {.ID = id, .Date = date});
    }

    void Record(std::vector<Deletion>& list, Table table, Deletion deletion)
    {
        deletion.Date = Down(deletion.Date);
        list.push_back(deletion);
        m_mother.Note({.What = Event::Deleted,
                       .Of = table,
                       .ID = deletion.ID,
                       .Second = deletion.Second,
                       .At = m_moment,
                       .Date = deletion.Date,
                       .Origin = m_child});
    }

    /// Dates that are ahead of her clock come down to it.
    Moment Down(Moment date) const { return std::min(date, m_now); }

    void DeleteFiles()
    {
        for (const Deletion& deletion : m_file.FromChild.DeletedFiles) {
            const auto file = m_mother.Files.find(deletion.ID);
            if (file == m_mother.Files.end() || m_kept.count(file->second.Owner) != 0)
                continue; // of an item that is kept all files are
            if (file->second.Updated >= deletion.Date) {
                m_files[deletion.ID] = true; // the child gets it back
                continue;
            }
            m_files.erase(deletion.ID);
            m_mother.Files.erase(file);
            Record(m_mother.DeletedFiles, Table::Files, deletion);
        }
    }

    /// Whatever was noted of it here.
    void DeleteLinks()
    {
        for (const Deletion& deletion : m_file.FromChild.DeletedLinks) {
            const Ends ends{deletion.ID, deletion.Second};
            if (m_mother.Links.erase(ends) == 0)
                continue;
            m_links.erase(ends);
            Record(m_mother.DeletedLinks, Table::Links, deletion);
        }
    }

    // What it has changed or made

    void TakeItem(const SentItem& sent)
    {
        const Item& row = sent.Row;
        if (row.MotherID <= 0)
            return AddItem(sent);
        const auto item = m_mother.Items.find(row.MotherID);
        if (item == m_mother.Items.end())
            return TakeDeleted(sent);
        const bool childsPage = row.PageChanged > m_bound;
        if (!IsChangedHere(item->second))
            return Overwrite(item->second, sent, childsPage);
        m_file.Conflicts.push_back({.ID = row.ID, .Changed = row.Changed});
        const bool motherWins = item->second.Changed > row.Changed;
        if (motherWins) {
            m_lost.push_back({.Row = row, .FromOther = true});
            m_lost.back().Row.ID = item->first;
            m_refused.insert(row.ID);
            if (item->second.HasPage && row.PageChanged > m_bound)
                m_pages.insert(item->first); // the child has to lose its own
            return;
        }
        AddHerLoser(item->second);
        m_items.erase(item->first);
        if (childsPage)
            m_pages.erase(item->first);
        else
            m_file.Conflicts.back().IsPageGone = !item->second.HasPage && row.HasPage;
        Overwrite(item->second, sent, childsPage);
    }

    void AddHerLoser(const Item& item)
    {
        Loser loser{.Row = item};
        for (const auto& [id, file] : m_mother.Files) {
            if (file.Owner == item.ID)
                loser.Files.push_back(file);
        }
        if (const auto page = m_mother.Pages.find(item.ID); page != m_mother.Pages.end())
            loser.Page = page->second;
        m_mother.Losers.push_back(loser);
    }

    /// The contents of a row; a page goes with the version that won, and stays where only the other side has one.
    void Copy(Item& item, const Item& from, bool withPage)
    {
        item.Texts = from.Texts;
        item.Name = from.Name;
        item.Created = Down(from.Created);
        item.Changed = Down(from.Changed);
        if (withPage) {
            item.HasPage = from.HasPage;
            item.PageChanged = Down(from.PageChanged);
            if (!item.HasPage)
                m_mother.Pages.erase(item.ID);
        }
    }

    void Overwrite(Item& item, const SentItem& sent, bool withPage)
    {
        Copy(item, sent.Row, withPage);
        item.WaitsFor.clear();
        Arrive(Table::Items, item.ID);
        m_taken[sent.Row.ID] = item.ID;
        if (sent.Row.MotherParent != item.Parent)
            m_moved[item.ID] = sent.Row.Changed;
        m_parents.emplace_back(item.ID, &sent);
    }

    void Arrive(Table table, Number id, Number second = 0, Moment date = 0)
    {
        m_mother.Note({.What = Event::Arrived,
                       .Of = table,
                       .ID = id,
                       .Second = second,
                       .At = m_moment,
                       .Date = date,
                       .Origin = m_child});
    }

    Item& NewItem(const SentItem& sent)
    {
        const Number id = m_mother.NextItem++;
        Item& item = m_mother.Items[id];
        item.ID = id;
        Copy(item, sent.Row, true);
        m_mother.ItemNames[id] = item.Name;
        Arrive(Table::Items, id);
        m_taken[sent.Row.ID] = id;
        m_told.insert(sent.Row.ID);
        m_moved[id] = sent.Row.Changed;
        m_parents.emplace_back(id, &sent);
        return item;
    }

    void AddItem(const SentItem& sent) { NewItem(sent); }

    /// She has deleted it: a later change brings it back, to wait for a decision. Where she does not remember the
    /// deletion the child keeps its row, and sends it as a new one.
    void TakeDeleted(const SentItem& sent)
    {
        const Number former = sent.Row.MotherID;
        const Event* deletion = nullptr;
        for (const Event& event : m_mother.Log) {
            if (event.What == Event::Deleted && event.Of == Table::Items && event.ID == former
                && (!deletion || event.Date > deletion->Date))
                deletion = &event;
        }
        if (!deletion) {
            m_file.ToldItems.push_back({.ID = sent.Row.ID, .MotherID = -1, .MotherParent = sent.Row.MotherParent});
            return;
        }
        if (deletion->Date >= sent.Row.Changed)
            return;
        Item& item = NewItem(sent);
        item.Changed = 0;
        item.WaitsFor = m_child;
        m_resurrected[former] = item.ID;
        for (const auto& [child, stamp] : m_mother.Children) {
            if (child != m_child)
                m_mother.Lacking[child].insert(item.ID);
        }
    }

    /// Now that all items are there: where each one stands.
    void SettleParents()
    {
        for (const auto& [id, sent] : m_parents) {
            Item& item = m_mother.Items.at(id);
            const Number named = sent->Row.MotherParent;
            constexpr Number Gone = -1; // no item has it
            if (named >= 0) {
                const auto back = m_resurrected.find(named);
                item.Parent = back == m_resurrected.end() ? named : back->second;
            } else if (sent->BelowOrphanFolder) {
                item.Parent = m_folder;
            } else {
                const auto parent = m_taken.find(sent->Row.Parent);
                item.Parent = parent == m_taken.end() ? Gone : parent->second;
            }
        }
    }

    // Files, links and pages

    /// The item that a row of the child's belongs to; 0: it is not there.
    Number Target(Number childs, Number mothers) const
    {
        if (const auto taken = m_taken.find(childs); taken != m_taken.end())
            return taken->second;
        if (const auto back = m_resurrected.find(mothers); back != m_resurrected.end())
            return back->second;
        return m_mother.Items.count(mothers) != 0 ? mothers : 0;
    }

    void TakeFiles()
    {
        for (const SentFile& sent : m_file.FromChild.Files) {
            if (sent.Row.MotherID > 0)
                TakeDescription(sent.Row);
            else
                AddFile(sent);
        }
    }

    /// The later text stays on both sides.
    void TakeDescription(const File& sent)
    {
        const auto found = m_mother.Files.find(sent.MotherID);
        if (found == m_mother.Files.end())
            return;
        File& file = found->second;
        const bool isChangedHere = file.Updated > m_bound || HasArrived(Table::Files, file.ID);
        if (isChangedHere && file.Updated > sent.Updated)
            return;
        file.Description = sent.Description;
        file.Updated = Down(sent.Updated);
        m_files.erase(file.ID);
        Arrive(Table::Files, file.ID, 0, Event::Described);
    }

    void AddFile(const SentFile& sent)
    {
        const Number owner = Target(sent.Row.Owner, sent.MotherOwner);
        if (owner == 0 || !sent.HasBytes)
            return; // the child keeps it
        File file = sent.Row;
        file.ID = m_mother.NextFile++;
        file.Owner = owner;
        file.MotherID = 0;
        file.Added = Down(file.Added);
        file.Updated = Down(file.Updated);
        m_mother.Files[file.ID] = file;
        m_mother.FileNames[file.ID] = file.Title;
        Arrive(Table::Files, file.ID);
        m_file.ToldFiles.push_back({.ID = sent.Row.ID, .MotherID = file.ID});
    }

    /// Of two links between the same items there is one, with the later note.
    void TakeLinks()
    {
        for (const SentLink& sent : m_file.FromChild.Links) {
            const Ends ends{Target(sent.Here.first, sent.Mothers.first), Target(sent.Here.second, sent.Mothers.second)};
            if (ends.first == 0 || ends.second == 0)
                continue;
            m_file.ToldLinks.push_back(sent.Here);
            const auto [link, isNew] = m_mother.Links.try_emplace(ends);
            if (!isNew && link->second.Updated >= sent.Row.Updated)
                continue;
            if (isNew)
                link->second.Added = Down(sent.Row.Added);
            link->second.Note = sent.Row.Note;
            link->second.Updated = Down(sent.Row.Updated);
            Arrive(Table::Links, ends.first, ends.second);
        }
    }

    void TakePages()
    {
        for (const SentPage& sent : m_file.FromChild.Pages) {
            const Number id = Target(sent.Item, sent.MotherItem);
            if (id == 0)
                continue;
            const bool isMissing = m_mother.Items.at(id).HasPage
                                   && m_mother.Pages.count(id) == 0; // it came back without
            if (m_refused.count(sent.Item) != 0 && !isMissing) {
                for (Loser& loser : m_lost) {
                    if (loser.Row.ID == id)
                        loser.Page = sent.Page;
                }
                continue;
            }
            const auto& items = m_file.FromChild.Items;
            const bool isAlone = std::none_of(items.begin(), items.end(),
                                              [&sent](const SentItem& item) { return item.Row.ID == sent.Item; });
            if (isAlone && m_mother.Items.at(id).PageChanged > m_bound)
                continue; // hers goes back
            m_mother.Pages[id] = sent.Page;
            m_mother.Items.at(id).HasPage = true;
            if (!isAlone) // it travels without a date
                m_mother.Items.at(id).PageChanged = Down(sent.Changed);
            Arrive(isAlone ? Table::Pages : Table::Items, id);
        }
    }

    /// The child's versions that lost have all files that they have there, whether those travelled or not: what both
    /// had, as the child describes it, and what is new there. What is new here they don't have.
    void CompleteLosers()
    {
        for (Loser& loser : m_lost) {
            for (const auto& [id, file] : m_mother.Files) {
                const bool isNewHere = file.Added > m_bound || HasArrivedAnew(id);
                if (file.Owner == loser.Row.ID && (!isNewHere || WasSent(id)))
                    loser.Files.push_back(AsSent(file));
            }
            // A page that did not travel is known as long as she has no later one.
            const bool isKnown = loser.Row.HasPage && loser.Page.empty()
                                 && m_mother.Items.at(loser.Row.ID).PageChanged <= m_bound;
            if (const auto page = m_mother.Pages.find(loser.Row.ID); isKnown && page != m_mother.Pages.end())
                loser.Page = page->second;
            m_mother.Losers.push_back(loser);
        }
    }

    bool WasSent(Number file) const
    {
        return std::any_of(m_file.ToldFiles.begin(), m_file.ToldFiles.end(),
                           [file](const ToldFile& told) { return told.MotherID == file; });
    }

    File AsSent(const File& file) const
    {
        for (const SentFile& sent : m_file.FromChild.Files) {
            const bool isNew = std::any_of(m_file.ToldFiles.begin(), m_file.ToldFiles.end(), [&](const ToldFile& told) {
                return told.ID == sent.Row.ID && told.MotherID == file.ID;
            });
            if (isNew || sent.Row.MotherID == file.ID)
                return sent.Row;
        }
        return file;
    }

    // The end

    void PutOrphans()
    {
        for (const Number id : m_items) {
            if (m_moved.count(id) == 0 && m_mother.Items.count(id) != 0)
                m_moved[id] = m_mother.Items.at(id).Changed;
        }
        PutOrphansAway(m_mother, m_folder, m_moved);
        for (const Number id : m_kept) { // the child has deleted them, and learns nothing before she decides
            const size_t wereToGo = m_items.erase(id) + m_pages.erase(id)
                                    + std::erase_if(m_files, [&](const auto& file) {
                                          return m_mother.Files.at(file.first).Owner == id;
                                      });
            if (wereToGo != 0)
                m_mother.Incomplete[m_child].insert(id);
        }
        for (const SentItem& sent : m_file.FromChild.Items) {
            const auto taken = m_taken.find(sent.Row.ID);
            if (taken == m_taken.end())
                continue;
            const Item& item = m_mother.Items.at(taken->second);
            const bool isOrphan = item.Parent == m_folder;
            if (m_told.count(sent.Row.ID) != 0 || isOrphan)
                m_file.ToldItems.push_back(
                    {.ID = sent.Row.ID, .MotherID = item.ID, .MotherParent = item.Parent, .IsOrphan = isOrphan});
        }
    }

    void Answer()
    {
        Rows& rows = m_file.FromMother;
        for (const Number id : m_items) {
            const Item& item = m_mother.Items.at(id);
            rows.Items.push_back({.Row = item, .BelowOrphanFolder = m_mother.IsOrphanFolder(item.Parent)});
            m_mother.Lacking[m_child].erase(id);
            m_mother.Incomplete[m_child].erase(id);
        }
        for (const auto& [id, isNew] : m_files)
            rows.Files.push_back({.Row = m_mother.Files.at(id), .HasBytes = isNew});
        for (const Ends& ends : m_links)
            rows.Links.push_back({.Here = ends, .Mothers = ends, .Row = m_mother.Links.at(ends)});
        for (const Number id : m_pages) {
            const auto page = m_mother.Pages.find(id);
            if (page != m_mother.Pages.end())
                rows.Pages.push_back(
                    {.Item = id, .MotherItem = id, .Page = page->second, .Changed = m_mother.Items.at(id).PageChanged});
        }
        AnswerDeletions();
    }

    /// All but what the child has deleted itself, and what it has brought back.
    void AnswerDeletions()
    {
        for (const Event& event : m_mother.Log) {
            if (event.What != Event::Deleted || event.At <= m_bound || event.Origin == m_child)
                continue;
            const Deletion deletion{.ID = event.ID, .Second = event.Second, .Date = event.Date};
            if (event.Of == Table::Items && m_resurrected.count(event.ID) == 0)
                m_file.FromMother.DeletedItems.push_back(deletion);
            if (event.Of == Table::Files && m_resurrected.count(event.Owner) == 0)
                m_file.FromMother.DeletedFiles.push_back(deletion);
            if (event.Of == Table::Links && m_mother.Links.count({event.ID, event.Second}) == 0)
                m_file.FromMother.DeletedLinks.push_back(deletion);
        }
    }

    /// Later than the child's export in any case, so that no file is merged twice, and than what she has stamped.
    void Stamp()
    {
        m_file.LastSynchronized = std::max(m_moment, m_file.Exported + 1);
        m_mother.Children[m_child] = m_file.LastSynchronized;
        m_mother.Trim();
    }

    Library& m_mother;
    ChangeFile& m_file;
    std::string m_child;
    Moment m_now;
    Moment m_bound;
    Moment m_moment; ///< of what arrives
    Number m_folder = 0;

    // What goes to the child
    std::set<Number> m_items;
    std::set<Number> m_whole;
    std::map<Number, bool> m_files; ///< with their contents?
    std::set<Ends> m_links;
    std::set<Number> m_pages;

    std::set<Number> m_kept;                ///< though the child has deleted them
    std::map<Number, Number> m_taken;       ///< by the child's numbers, what they are here
    std::set<Number> m_told;                ///< of them those that got a number
    std::set<Number> m_refused;             ///< versions of the child's that lost
    std::map<Number, Number> m_resurrected; ///< by the number that was deleted
    std::map<Number, Moment> m_moved;       ///< what may have moved, and when
    std::vector<std::pair<Number, const SentItem*>> m_parents;
    std::vector<Loser> m_lost; ///< of the child's versions
};

} // namespace

Outcome SynchronizeMother(Library& mother, ChangeFile& file, Moment now)
{
    const Moment known = mother.Children.at(file.Identity);
    if (known != file.LastSynchronized || known >= file.Exported)
        return {};
    if (mother.ClockIsWrong(now, known))
        return {.Result = 2};
    MotherMerge(mother, file, now).Run();
    return {.Result = 2, .Done = true};
}

} // namespace qb::test::twin
