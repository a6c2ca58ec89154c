// What rows say, and what a user does to them.

#include "replication/double/Twin.h"

#include <algorithm>

namespace qb::test::twin {

namespace {

const std::string OrphanTitle = "Orphaned Items";

} // namespace

bool Library::IsOrphanFolder(Number id) const
{
    const auto item = Items.find(id);
    return item != Items.end() && item->second.Parent == 0 && item->second.Texts[Title] == OrphanTitle;
}

Number Library::OrphanFolder() const
{
    for (const auto& [id, item] : Items) {
        if (IsOrphanFolder(id))
            return id;
    }
    return 0;
}

bool Library::IsOrphan(Number id) const
{
    const Number folder = OrphanFolder();
    return folder != 0 && IsInBranch(folder, id);
}

bool Library::IsInBranch(Number root, Number id) const
{
    std::set<Number> seen;
    while (id != 0 && seen.insert(id).second) {
        if (id == root)
            return true;
        const auto item = Items.find(id);
        id = item == Items.end() ? 0 : item->second.Parent;
    }
    return false;
}

bool Library::HasLoser(Number id) const
{
    return std::any_of(Losers.begin(), Losers.end(), [id](const Loser& loser) { return loser.Row.ID == id; });
}

const Item* Library::FindByMother(Number motherID) const
{
    if (motherID <= 0)
        return nullptr;
    for (const auto& [id, item] : Items) {
        if (item.MotherID == motherID)
            return &item;
    }
    return nullptr;
}

std::vector<Number> Library::Branch(Number id) const
{
    std::vector<Number> branch{id};
    for (size_t at = 0; at < branch.size(); ++at) {
        for (const auto& [child, item] : Items) {
            if (item.Parent == branch[at])
                branch.push_back(child);
        }
    }
    return branch;
}

// The clock

Moment Library::LastOwnStamp() const
{
    Moment last = IsChild ? std::max(LastSynchronized, LastExported) : 0;
    for (const auto& [child, synchronized] : Children)
        last = std::max(last, synchronized);
    for (const Event& event : Log) {
        if (event.What == Event::Exported)
            last = std::max(last, event.Date);
    }
    return last;
}

/// A change is later than all that this replica has exchanged with others, whatever its clock says, and has not the
/// date by which rows that it took over are known.
Moment Library::Stamp(Moment now) const
{
    if (!IsReplicated())
        return now;
    Moment stamp = std::max(now, LastOwnStamp() + 1);
    while (std::any_of(Log.begin(), Log.end(),
                       [stamp](const Event& event) { return event.What == Event::TakenOver && event.Date == stamp; }))
        ++stamp;
    return stamp;
}

Moment Library::DeletionCutOff() const
{
    Moment cutOff = IsChild ? LastSynchronized : 0;
    for (const auto& [child, synchronized] : Children)
        cutOff = std::max(cutOff, synchronized);
    return cutOff;
}

bool Library::IsTakenOver(Table table, Number id, Number second, Moment date) const
{
    return IsLogged(Event::TakenOver, table, id, second, date);
}

bool Library::IsLogged(Event::Kind what, Table table, Number id, Number second, Moment date) const
{
    return std::any_of(Log.begin(), Log.end(), [=](const Event& event) {
        return event.What == what && event.Of == table && event.ID == id && event.Second == second
               && event.Date == date;
    });
}

/// The clock is behind the last synchronization, or something is dated later than it says.
bool Library::ClockIsWrong(Moment now, Moment bound) const
{
    if (bound > now)
        return true;
    const auto isAhead = [&](Table table, Number id, Number second, Moment date) {
        return date > now && !IsTakenOver(table, id, second, date)
               && !IsLogged(Event::Changed, table, id, second, date);
    };
    for (const auto& [id, item] : Items) {
        for (const Moment date : {item.Changed, item.Created, item.PageChanged}) {
            if (isAhead(Table::Items, id, 0, date))
                return true;
        }
    }
    for (const auto& [id, file] : Files) {
        if (isAhead(Table::Files, id, 0, file.Updated) || isAhead(Table::Files, id, 0, file.Added))
            return true;
    }
    for (const auto& [ends, link] : Links) {
        if (isAhead(Table::Links, ends.first, ends.second, link.Added))
            return true;
    }
    for (const auto* list : {&DeletedItems, &DeletedFiles, &DeletedLinks}) {
        for (const Deletion& deletion : *list) {
            const bool wasMoved = IsChild && deletion.Date == LastSynchronized + 60;
            if (deletion.Date > now && !wasMoved)
                return true;
        }
    }
    for (const Loser& loser : Losers) {
        if (std::max({loser.Row.Changed, loser.Row.Created, loser.Row.PageChanged}) > now)
            return true;
        for (const File& file : loser.Files) {
            if (std::max(file.Added, file.Updated) > now)
                return true;
        }
    }
    return false;
}

// The log

/// An event of one record in one state is noted once, with the last moment.
void Library::Note(const Event& event)
{
    std::erase_if(Log, [&event](const Event& other) {
        return other.What == event.What && other.Of == event.Of && other.ID == event.ID && other.Second == event.Second
               && other.Origin == event.Origin && other.Date == event.Date;
    });
    Log.push_back(event);
}

bool Library::HasArrivedFromOther(Table table, Number id, Number second, Moment bound, const std::string& child,
                                  bool isAnew) const
{
    return std::any_of(Log.begin(), Log.end(), [&](const Event& event) {
        return event.What == Event::Arrived && event.Of == table && event.ID == id && event.Second == second
               && event.At > bound && event.Origin != child && (!isAnew || event.Date != Event::Described);
    });
}

bool Library::WasChangedAt(Number item, Moment bound) const
{
    return std::any_of(Log.begin(), Log.end(), [=](const Event& event) {
        return event.What == Event::Changed && event.Of == Table::Items && event.ID == item && event.At > bound;
    });
}

/// What every other replica has passed is not needed any more.
void Library::Trim()
{
    Moment passed = LastSynchronized;
    if (!IsChild) {
        passed = Children.empty() ? 0 : Children.begin()->second;
        for (const auto& [child, synchronized] : Children)
            passed = std::min(passed, synchronized);
    }
    std::erase_if(Log, [passed](const Event& event) { return std::max(event.At, event.Date) < passed; });
    if (IsChild)
        return;
    for (auto* list : {&DeletedItems, &DeletedFiles, &DeletedLinks})
        std::erase_if(*list, [passed](const Deletion& deletion) { return deletion.Date < passed; });
}

// Items

Number Library::AddItem(Number parent, const std::string& name, Moment now)
{
    Item item;
    item.ID = NextItem++;
    item.Parent = parent;
    item.Name = name;
    item.Texts[Title] = name;
    item.Created = item.Changed = Stamp(now);
    Items[item.ID] = item;
    ItemNames[item.ID] = name;
    return item.ID;
}

/// Orphans that are tidied at the mother keep their date, unless that decides about them.
void Library::Touch(Number id, Moment now, bool orphanKeepsDate)
{
    Item& item = Items.at(id);
    const bool isDecided = item.Changed == 0 || HasLoser(id);
    if (orphanKeepsDate && !IsChild && IsOrphan(id) && !isDecided)
        Note({.What = Event::Changed, .ID = id, .At = Stamp(now), .Date = item.Changed});
    else
        item.Changed = Stamp(now);
}

bool Library::MayEdit(Number id) const
{
    if (IsOrphanFolder(id) || HasLoser(id))
        return false;
    return IsChild ? !IsOrphan(id) : !IsWaiting(id);
}

void Library::EditItem(Number id, Text text, const std::string& value, Moment now)
{
    Items.at(id).Texts[text] = value;
    Touch(id, now, true);
}

bool Library::MayMove(Number id, Number parent) const
{
    if (!MayEdit(id) || (parent != 0 && (IsOrphan(parent) || IsInBranch(id, parent))))
        return false;
    return Items.at(id).Parent != parent;
}

void Library::MoveItem(Number id, Number parent, Moment now)
{
    Items.at(id).Parent = parent;
    Items.at(id).Changed = Stamp(now);
    RemoveEmptyOrphanFolder();
}

bool Library::MayDelete(Number id) const
{
    if (IsOrphanFolder(id) || HasLoser(id) || LastExported != 0)
        return false;
    return !IsChild || !IsOrphan(id);
}

/// Whether somebody else may have the record: it came from there, or was there when libraries met last.
bool Library::IsKnownElsewhere(Table table, Number id, bool isMothers, Moment added) const
{
    if (!IsReplicated())
        return false;
    return isMothers || added <= LastOwnStamp() || std::any_of(Log.begin(), Log.end(), [=](const Event& event) {
               return (event.What == Event::Arrived || event.What == Event::Changed) && event.Of == table
                      && event.ID == id;
           });
}

void Library::EraseItemByUser(Number id, Moment now)
{
    std::vector<Number> files;
    for (const auto& [file, row] : Files) {
        if (row.Owner == id)
            files.push_back(file);
    }
    for (const Number file : files)
        DeleteFile(file, now);
    const Item& item = Items.at(id);
    const Moment stamp = Stamp(now);
    if (item.Changed < DeletionCutOff())
        DeletedItems.push_back({.ID = id, .Date = stamp});
    if (IsKnownElsewhere(Table::Items, id, item.MotherID > 0, item.Created))
        Note({.What = Event::Deleted,
              .ID = id,
              .MotherID = std::max(item.MotherID, Number(0)),
              .At = stamp,
              .Date = stamp});
    Erase(id);
}

void Library::DeleteBranch(Number id, Moment now)
{
    const bool isOrphan = IsOrphan(id);
    for (const Number one : Branch(id))
        EraseItemByUser(one, now);
    if (isOrphan)
        RemoveEmptyOrphanFolder();
}

bool Library::MayKeep(Number id) const
{
    return !IsChild && IsWaiting(id) && !HasLoser(id);
}

void Library::Keep(Number id, Moment now)
{
    Items.at(id).Changed = Stamp(now);
}

/// All that waits goes; what stands below and does not wait becomes an orphan, with its date.
void Library::RemoveWaiting(Moment now)
{
    std::vector<Number> waiting;
    for (const auto& [id, item] : Items) {
        if (item.Changed == 0)
            waiting.push_back(id);
    }
    bool hasOrphans = false;
    for (const Number id : waiting) {
        for (auto& [child, item] : Items) {
            if (item.Parent == id && item.Changed != 0) {
                hasOrphans = true;
                break;
            }
        }
    }
    const Number folder = hasOrphans ? MakeOrphanFolder() : 0;
    for (const Number id : waiting) {
        for (auto& [child, item] : Items) {
            if (item.Parent == id && item.Changed != 0)
                item.Parent = folder;
        }
    }
    for (const Number id : waiting)
        EraseItemByUser(id, now);
    if (!hasOrphans)
        RemoveEmptyOrphanFolder();
}

Number Library::MakeOrphanFolder()
{
    if (const Number folder = OrphanFolder())
        return folder;
    constexpr Moment Year2000 = 36526LL * 86400;
    Item item;
    item.ID = NextItem++;
    item.Name = OrphanTitle;
    item.Texts[Title] = OrphanTitle;
    item.Created = item.Changed = Year2000;
    Items[item.ID] = item;
    ItemNames[item.ID] = OrphanTitle;
    return item.ID;
}

void Library::RemoveEmptyOrphanFolder()
{
    const Number folder = OrphanFolder();
    if (folder != 0 && Branch(folder).size() == 1)
        Items.erase(folder);
}

void Library::Erase(Number item)
{
    Items.erase(item);
    Pages.erase(item);
    WholeItems.erase(item);
    std::erase_if(Files, [item](const auto& file) { return file.second.Owner == item; });
    std::erase_if(Links, [item](const auto& link) { return link.first.first == item || link.first.second == item; });
}

// Files, links and pages

Number Library::AddFile(Number item, const std::string& title, const std::string& bytes, Moment now)
{
    File file;
    file.ID = NextFile++;
    file.Owner = item;
    file.Title = title;
    file.Bytes = bytes;
    file.Added = file.Updated = Stamp(now);
    Files[file.ID] = file;
    FileNames[file.ID] = title;
    return file.ID;
}

void Library::DescribeFile(Number id, const std::string& text, Moment now)
{
    Files.at(id).Description = text;
    Files.at(id).Updated = Stamp(now);
}

/// The table names a file as the other side does; a child that knows no such name leaves it out there.
void Library::DeleteFile(Number id, Moment now)
{
    const File& file = Files.at(id);
    const Moment stamp = Stamp(now);
    if (IsReplicated() && file.Added < DeletionCutOff())
        DeletedFiles.push_back({.ID = IsChild ? std::max(file.MotherID, Number(0)) : id, .Date = stamp});
    if (IsKnownElsewhere(Table::Files, id, file.MotherID > 0, file.Added))
        Note({.What = Event::Deleted,
              .Of = Table::Files,
              .ID = id,
              .MotherID = file.MotherID,
              .At = stamp,
              .Date = stamp,
              .Owner = file.Owner});
    WholeFiles.erase(id);
    Files.erase(id);
}

void Library::SetLink(Ends ends, const std::string& note, Moment now)
{
    const auto [link, isNew] = Links.try_emplace(ends);
    link->second.Note = note;
    link->second.Updated = Stamp(now);
    if (!isNew)
        return;
    link->second.Added = link->second.Updated;
    link->second.IsKnown = IsChild && Items.at(ends.first).MotherID > 0 && Items.at(ends.second).MotherID > 0;
}

void Library::DeleteLink(Ends ends, Moment now)
{
    const Link& link = Links.at(ends);
    const Moment stamp = Stamp(now);
    const Ends mothers = IsChild ? Ends{Items.at(ends.first).MotherID, Items.at(ends.second).MotherID} : ends;
    const bool hasNames = mothers.first > 0 && mothers.second > 0;
    const Deletion row{.ID = mothers.first, .Second = mothers.second, .Date = stamp};
    if (IsReplicated() && link.Added < DeletionCutOff() && hasNames && (!IsChild || link.IsKnown))
        DeletedLinks.push_back(row);
    if (IsKnownElsewhere(Table::Links, ends.first, IsChild && link.IsKnown, link.Added))
        Note({.What = Event::Deleted,
              .Of = Table::Links,
              .ID = ends.first,
              .Second = ends.second,
              .MotherID = IsChild && hasNames ? mothers.first : 0,
              .MotherSecond = IsChild && hasNames ? mothers.second : 0,
              .At = stamp,
              .Date = stamp});
    Links.erase(ends);
}

void Library::SetPage(Number item, const std::string& page, Moment now)
{
    Pages[item] = page;
    Items.at(item).HasPage = true;
    Items.at(item).PageChanged = Stamp(now);
    Touch(item, now, true);
}

void Library::DeletePage(Number item, Moment now)
{
    Pages.erase(item);
    Items.at(item).HasPage = false;
    Items.at(item).PageChanged = Stamp(now);
    Touch(item, now, true);
}

Library GiveOut(Library& mother, const std::string& identity, Moment now)
{
    Library child = mother;
    child.Identity = identity;
    child.IsChild = true;
    child.Children.clear();
    child.Lacking.clear();
    child.Incomplete.clear();
    child.Log.clear();
    child.Losers.clear();
    child.DeletedItems.clear();
    child.DeletedFiles.clear();
    child.DeletedLinks.clear();
    child.LastSynchronized = now;
    for (auto& [id, item] : child.Items) {
        item.MotherID = id;
        item.MotherParent = item.Parent;
    }
    for (auto& [id, file] : child.Files)
        file.MotherID = id;
    for (auto& [ends, link] : child.Links)
        link.IsKnown = true;
    mother.Children[identity] = now;
    return child;
}

std::string DayFirst(Moment moment)
{
    const Moment days = moment / 86400;
    const Moment second = moment % 86400;
    // Days from 1 March of the year 0, of which each four centuries have the same number.
    const Moment z = days - 25569 + 719468;
    const Moment era = z / 146097;
    const Moment ofEra = z - era * 146097;
    const Moment yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const Moment ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const Moment monthFromMarch = (5 * ofYear + 2) / 153;
    const Moment day = ofYear - (153 * monthFromMarch + 2) / 5 + 1;
    const Moment month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const Moment year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    const auto two = [](Moment number) { return std::string(number < 10 ? "0" : "") + std::to_string(number); };
    return two(day) + '/' + two(month) + '/' + two(year % 100) + ' ' + two(second / 3600) + ':' + two(second / 60 % 60)
           + ':' + two(second % 60);
}

std::string KeptNote(bool hasNewFiles)
{
    return hasNewFiles ? "[kept for its files]" : "[kept]";
}

} // namespace qb::test::twin
