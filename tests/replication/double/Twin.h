#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// What mothers, their children and the files between them come to, told once more: rows in maps, contents as strings,
/// slow and plain. It shares nothing with the program; a test plays both and compares them.
namespace qb::test::twin {

using Moment = long long; ///< whole seconds, as a library stores them; 0 is no date
using Number = long long; ///< of a record

enum class Table { Items, Files, Links, Pages };

/// The texts of an item, by their place in Item::Texts.
enum Text { Title, Description, Info, Code, Notes, Example, TextCount };

struct Item {
    Number ID = 0;
    Number Parent = 0; ///< 0 is the root
    std::string Name;  ///< what all libraries call it: a test's own, never changed and copied with the row
    std::array<std::string, TextCount> Texts;
    bool HasPage = false;
    Moment Created = 0;
    Moment Changed = 0; ///< 0: it waits for a decision
    Moment PageChanged = 0;
    Number MotherID = -1; ///< in a child: what the mother calls it; 0 or less where that isn't known
    Number MotherParent = -1;
    std::string WaitsFor; ///< in a mother: the child whose version came back after she had deleted it
};

struct File {
    Number ID = 0;
    Number Owner = 0;
    std::string Title; ///< in a test no two files have the same
    std::string Description;
    std::string Bytes;
    Moment Added = 0;
    Moment Updated = 0;
    Number MotherID = 0;
};

using Ends = std::pair<Number, Number>; ///< of a link: from, to

struct Link {
    std::string Note;
    Moment Added = 0;
    Moment Updated = 0;
    bool IsKnown = false; ///< in a child: the mother has it, by what she calls its ends
};

/// What happened to a record, as far as rows don't tell.
struct Event {
    static constexpr Moment Described = -1; ///< the date of a file's arrival that only brought a description
    enum Kind { Arrived, Deleted, TakenOver, Changed, Exported } What = Deleted;
    Table Of = Table::Items;
    Number ID = 0;
    Number Second = 0; ///< of a link the item that it leads to
    Number MotherID = 0;
    Number MotherSecond = 0;
    Moment At = 0;   ///< when it was noted here
    Moment Date = 0; ///< of the deletion; of what was taken over the date that it got
    std::string Origin = {};
    Number Owner = 0; ///< of a deleted file
};

/// A row of a table of deletions.
struct Deletion {
    Number ID = 0;
    Number Second = 0;
    Moment Date = 0;

    friend auto operator<=>(const Deletion&, const Deletion&) = default;
};

/// The version of an item that lost, as it waits for the solver.
struct Loser {
    Item Row; ///< its ID is the one here
    bool FromOther = false;
    std::vector<File> Files = {};
    std::string Page = {};
};

/// A library: a mother or a child.
struct Library {
    std::string Identity;
    bool IsChild = false;
    Moment LastSynchronized = 0; ///< of a child
    Moment LastExported = 0;
    std::map<std::string, Moment> Children; ///< of a mother: when each was synchronized last

    std::map<Number, Item> Items;
    std::map<Number, File> Files;
    std::map<Ends, Link> Links;
    std::map<Number, std::string> Pages; ///< by item
    std::vector<Deletion> DeletedItems;
    std::vector<Deletion> DeletedFiles;
    std::vector<Deletion> DeletedLinks;
    std::vector<Event> Log;
    std::vector<Loser> Losers;

    /// Of a mother, by child: items that the child does not have, since it deleted them or was not given them. They go
    /// to it whole once they go at all.
    std::map<std::string, std::set<Number>> Lacking;
    /// Of a mother, by child: items that go whole once they go, for something of them was not sent when it was new.
    std::map<std::string, std::set<Number>> Incomplete;
    std::map<Number, Moment> WholeItems; ///< of a child: items whose files, links and page go to the mother once more
    std::map<Number, Moment> WholeFiles; ///< and single files

    Number NextItem = 1;
    Number NextFile = 1;
    std::map<Number, std::string> ItemNames; ///< of all that ever were
    std::map<Number, std::string> FileNames;

    // What the rows say
    bool IsOrphanFolder(Number id) const;
    Number OrphanFolder() const;    ///< 0: there is none
    bool IsOrphan(Number id) const; ///< the folder itself, or below it
    bool IsWaiting(Number id) const { return Items.at(id).Changed == 0; }
    bool IsInBranch(Number root, Number id) const;
    bool IsReplicated() const { return IsChild || !Children.empty(); }
    bool HasLoser(Number id) const;
    const Item* FindByMother(Number motherID) const;
    std::vector<Number> Branch(Number id) const;

    // The clock
    Moment LastOwnStamp() const;
    Moment Stamp(Moment now) const; ///< of a change that is made now
    Moment DeletionCutOff() const;
    bool ClockIsWrong(Moment now, Moment bound) const;
    bool IsTakenOver(Table table, Number id, Number second, Moment date) const;
    bool IsLogged(Event::Kind what, Table table, Number id, Number second, Moment date) const;

    // The log
    void Note(const Event& event);
    bool HasArrivedFromOther(Table table, Number id, Number second, Moment bound, const std::string& child,
                             bool isAnew = false) const;
    bool WasChangedAt(Number item, Moment bound) const; ///< with its date kept
    void Trim();

    // What a user does. What may not be done is not called.
    Number AddItem(Number parent, const std::string& name, Moment now);
    void EditItem(Number id, Text text, const std::string& value, Moment now);
    bool MayMove(Number id, Number parent) const;
    void MoveItem(Number id, Number parent, Moment now);
    bool MayDelete(Number id) const;
    void DeleteBranch(Number id, Moment now);
    bool MayKeep(Number id) const;
    void Keep(Number id, Moment now);
    void RemoveWaiting(Moment now);
    bool MayEdit(Number id) const;
    Number AddFile(Number item, const std::string& title, const std::string& bytes, Moment now);
    void DescribeFile(Number id, const std::string& text, Moment now);
    void DeleteFile(Number id, Moment now);
    void SetLink(Ends ends, const std::string& note, Moment now); ///< adds it, or changes its note
    void DeleteLink(Ends ends, Moment now);
    void SetPage(Number item, const std::string& page, Moment now);
    void DeletePage(Number item, Moment now);
    void DiscardLosers() { Losers.clear(); }

    // Parts of a merge
    Number MakeOrphanFolder();
    void RemoveEmptyOrphanFolder();
    void Erase(Number item); ///< with all that belongs to it, told to nobody

private:
    void Touch(Number item, Moment now, bool orphanKeepsDate);
    void EraseItemByUser(Number id, Moment now);
    bool IsKnownElsewhere(Table table, Number id, bool isMothers, Moment added) const;
};

/// A file that goes out with an item: with the date its page has.
struct SentPage {
    Number Item = 0; ///< in the numbers of who sends it
    Number MotherItem = 0;
    std::string Page = {};
    Moment Changed = 0;
};
struct SentFile {
    File Row;
    bool HasBytes = false;
    Number MotherOwner = 0;
};
struct SentLink {
    Ends Here;
    Ends Mothers;
    Link Row;
};
struct SentItem {
    Item Row;
    bool BelowOrphanFolder = false; ///< its parent is the folder of orphans
};

/// What the child is told of what it sent: the mother's numbers of its records.
struct ToldItem {
    Number ID = 0;
    Number MotherID = 0;
    Number MotherParent = 0;
    bool IsOrphan = false;
};
struct ToldFile {
    Number ID = 0;
    Number MotherID = 0;
};
struct ToldConflict {
    Number ID = 0;
    Moment Changed = 0;
    bool IsPageGone = false; ///< its version won, but for the page, which the mother has deleted
};

/// The rows of one side.
struct Rows {
    std::vector<SentItem> Items;
    std::vector<SentFile> Files;
    std::vector<SentLink> Links;
    std::vector<SentPage> Pages;
    std::vector<Deletion> DeletedItems;
    std::vector<Deletion> DeletedFiles;
    std::vector<Deletion> DeletedLinks;
};

/// A synchronization file: from the child, and with the mother's answer after she has merged it.
struct ChangeFile {
    std::string Identity; ///< of the child
    Moment LastSynchronized = 0;
    Moment Exported = 0;
    Rows FromChild;
    Rows FromMother;
    std::vector<ToldItem> ToldItems;
    std::vector<ToldFile> ToldFiles;
    std::vector<Ends> ToldLinks;
    std::vector<ToldConflict> Conflicts;
};

/// What a synchronization came to: 0 the file is not for this library, or not now; 1 a child took the answer in; 2 a
/// mother merged it.
struct Outcome {
    int Result = 0;
    bool Done = false;
};

/// Writes the changes of a child; nothing when its clock can't be trusted. @p again: though they are on their way.
std::optional<ChangeFile> Export(Library& child, Moment now);

Outcome Synchronize(Library& library, ChangeFile& file, Moment now);
Outcome SynchronizeMother(Library& mother, ChangeFile& file, Moment now);
Outcome SynchronizeChild(Library& child, ChangeFile& file, Moment now);

/// A copy of a mother that she gives out; both are stamped now.
Library GiveOut(Library& mother, const std::string& identity, Moment now);

/// The date as a text, day first: "31/01/26 14:30:05".
std::string DayFirst(Moment moment);

/// What an item says that was kept although the other side has deleted it, in front of what it said before.
std::string KeptNote(bool hasNewFiles);

/// Every item whose parent is gone, and one of each circle, goes below the folder of orphans. Returns those that went.
std::set<Number> PutOrphansAway(Library& library, Number folder, const std::map<Number, Moment>& moved);

} // namespace qb::test::twin
