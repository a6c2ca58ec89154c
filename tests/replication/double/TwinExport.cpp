// What a child writes for its mother.

#include "replication/double/Twin.h"

#include <algorithm>

namespace qb::test::twin {

namespace {

/// One export of a child.
class ChildExport {
public:
    ChildExport(Library& child, Moment exported) : m_child(child), m_bound(child.LastSynchronized)
    {
        m_file.Identity = child.Identity;
        m_file.LastSynchronized = child.LastSynchronized;
        m_file.Exported = exported;
    }

    ChangeFile Run()
    {
        for (const auto& [id, item] : m_child.Items)
            TakeItem(item);
        for (const auto& [id, file] : m_child.Files)
            TakeFile(file);
        for (const auto& [ends, link] : m_child.Links)
            TakeLink(ends, link);
        TakeDeletions();
        return m_file;
    }

private:
    /// What was taken over from the mother has a later date, and is no change.
    bool IsChange(Table table, Number id, Number second, Moment date) const
    {
        return date > m_bound && !m_child.IsTakenOver(table, id, second, date);
    }
    bool GoesWhole(Number item) const { return m_child.WholeItems.count(item) != 0; }

    void TakeItem(const Item& item)
    {
        if (m_child.IsOrphanFolder(item.ID))
            return;
        const bool isNew = item.MotherID <= 0; // to the mother, whatever its date
        if (isNew || IsChange(Table::Items, item.ID, 0, item.Changed) || m_child.WasChangedAt(item.ID, m_bound)) {
            SentItem sent{.Row = item};
            sent.Row.MotherParent = MotherOf(item.Parent);
            sent.BelowOrphanFolder = m_child.IsOrphanFolder(item.Parent);
            if (!IsChange(Table::Items, item.ID, 0, item.PageChanged))
                sent.Row.PageChanged = std::min(item.PageChanged, m_bound); // a page that was taken over is no change
            m_file.FromChild.Items.push_back(sent);
        }
        if (item.HasPage && (IsChange(Table::Items, item.ID, 0, item.PageChanged) || GoesWhole(item.ID)))
            m_file.FromChild.Pages.push_back(
                {.Item = item.ID, .MotherItem = item.MotherID, .Page = PageOf(item.ID), .Changed = item.PageChanged});
    }

    /// What the mother calls an item: 0 for the root, less where she does not know it.
    Number MotherOf(Number item) const
    {
        if (item == 0)
            return 0;
        const auto row = m_child.Items.find(item);
        return row == m_child.Items.end() || row->second.MotherID <= 0 ? -1 : row->second.MotherID;
    }

    std::string PageOf(Number item) const
    {
        const auto page = m_child.Pages.find(item);
        return page == m_child.Pages.end() ? std::string() : page->second;
    }

    void TakeFile(const File& file)
    {
        const bool isWhole = GoesWhole(file.Owner) || m_child.WholeFiles.count(file.ID) != 0;
        const bool isNew = isWhole || IsChange(Table::Files, file.ID, 0, file.Added);
        if (isNew || IsChange(Table::Files, file.ID, 0, file.Updated))
            m_file.FromChild.Files.push_back(
                {.Row = file, .HasBytes = isNew, .MotherOwner = std::max(MotherOf(file.Owner), Number(0))});
    }

    void TakeLink(const Ends& ends, const Link& link)
    {
        if (GoesWhole(ends.first) || GoesWhole(ends.second)
            || IsChange(Table::Links, ends.first, ends.second, link.Added))
            m_file.FromChild.Links.push_back(
                {.Here = ends, .Mothers = {MotherOf(ends.first), MotherOf(ends.second)}, .Row = link});
    }

    /// By the mother's names; what she never knew is no news to her.
    void TakeDeletions()
    {
        Rows& rows = m_file.FromChild;
        for (const Event& event : m_child.Log) {
            if (event.What != Event::Deleted || event.At <= m_bound || event.MotherID <= 0)
                continue;
            const Deletion deletion{.ID = event.MotherID, .Second = event.MotherSecond, .Date = event.Date};
            if (event.Of == Table::Items)
                Add(rows.DeletedItems, deletion);
            else if (event.Of == Table::Files)
                Add(rows.DeletedFiles, deletion);
            else if (event.MotherSecond > 0)
                Add(rows.DeletedLinks, deletion);
        }
        for (const Deletion& deletion : m_child.DeletedFiles) {
            if (deletion.ID > 0)
                Add(rows.DeletedFiles, deletion);
        }
        for (const Deletion& deletion : m_child.DeletedLinks)
            Add(rows.DeletedLinks, deletion);
    }

    /// One row a record, with the later date.
    static void Add(std::vector<Deletion>& list, const Deletion& deletion)
    {
        for (Deletion& one : list) {
            if (one.ID == deletion.ID && one.Second == deletion.Second) {
                one.Date = std::max(one.Date, deletion.Date);
                return;
            }
        }
        list.push_back(deletion);
    }

    Library& m_child;
    Moment m_bound;
    ChangeFile m_file;
};

} // namespace

std::optional<ChangeFile> Export(Library& child, Moment now)
{
    const Moment exported = child.Stamp(now);
    if (child.ClockIsWrong(now, child.LastSynchronized))
        return std::nullopt;
    ChangeFile file = ChildExport(child, exported).Run();
    child.LastExported = exported;
    child.Note({.What = Event::Exported, .At = exported, .Date = exported});
    return file;
}

Outcome Synchronize(Library& library, ChangeFile& file, Moment now)
{
    if (library.Children.count(file.Identity) != 0)
        return SynchronizeMother(library, file, now);
    if (library.Identity == file.Identity)
        return SynchronizeChild(library, file, now);
    return {};
}

std::set<Number> PutOrphansAway(Library& library, Number folder, const std::map<Number, Moment>& moved)
{
    std::set<Number> orphans;
    for (auto& [id, item] : library.Items) {
        if (item.Parent != 0 && library.Items.count(item.Parent) == 0) {
            item.Parent = folder;
            orphans.insert(id);
        }
    }
    for (auto& [start, unused] : library.Items) {
        std::vector<Number> path;
        Number at = start;
        while (at != 0 && std::find(path.begin(), path.end(), at) == path.end()) {
            path.push_back(at);
            at = library.Items.at(at).Parent;
        }
        if (at == 0)
            continue;
        // The circle begins where the path comes back to; it is broken at the move that was made first.
        path.erase(path.begin(), std::find(path.begin(), path.end(), at));
        Number first = 0;
        for (const Number id : path) {
            const auto move = moved.find(id);
            if (move == moved.end())
                continue;
            if (first == 0 || move->second < moved.at(first) || (move->second == moved.at(first) && id < first))
                first = id;
        }
        library.Items.at(first == 0 ? at : first).Parent = folder;
        orphans.insert(first == 0 ? at : first);
    }
    return orphans;
}

} // namespace qb::test::twin
