#pragma once

#include "replication/double/Twin.h"

namespace qb::test::twin {

/// What may happen to a mother and her children.
enum class Do {
    AddItem,
    Edit,
    Move,
    Delete,
    Keep,
    RemoveWaiting,
    AddFile,
    Describe,
    DeleteFile,
    Link,
    Unlink,
    Page,
    DropPage,
    Tick,    ///< the clock goes on
    Export,  ///< a child writes its changes
    Again,   ///< and once more, though they are on their way
    Preview, ///< the mother looks what a file would do
    Merge,   ///< the mother takes a file in
    TakeIn,  ///< a child takes an answer in
    Discard, ///< of the versions that lost
    Count
};

/// One step. What it is done to is picked among all that it can be done to, so that a history stays one when steps are
/// left out: each number is taken modulo how many there are. A step that can't be done is passed over.
struct Step {
    Do What = Do::Tick;
    int Library = 0; ///< 0 is the mother
    unsigned A = 0;
    unsigned B = 0;
    unsigned C = 0;
};

using History = std::vector<Step>;

/// A history of @p length steps, the same for the same seed; with clocks of children that are off.
struct Plan {
    std::vector<Moment> Offsets; ///< of the clock of each library; one a library
    History Steps;
};
Plan RandomPlan(unsigned seed, size_t length);

/// As a test has it.
std::string Described(const Plan& plan);

/// Somebody who does the same with libraries of their own. Items are told by their names, files by their titles.
class Player {
public:
    virtual ~Player() = default;

    virtual void SetClock(Moment) {}
    virtual void AddItem(int, const std::string& /*parent*/, const std::string& /*name*/) {}
    virtual void EditItem(int, const std::string&, Text, const std::string&) {}
    virtual void MoveItem(int, const std::string&, const std::string& /*parent*/) {}
    virtual void DeleteBranch(int, const std::string&) {}
    virtual void Keep(int, const std::string&) {}
    virtual void RemoveWaiting(int) {}
    /// At the mother: keeps all that waits, and puts all that stands in the folder of orphans under the root.
    virtual void DecideAll() {}
    virtual void AddFile(int, const std::string& /*item*/, const std::string& /*title*/, const std::string& /*bytes*/)
    {
    }
    virtual void DescribeFile(int, const std::string&, const std::string&) {}
    virtual void DeleteFile(int, const std::string&) {}
    virtual void SetLink(int, const std::string&, const std::string&, const std::string& /*note*/) {}
    virtual void DeleteLink(int, const std::string&, const std::string&) {}
    virtual void SetPage(int, const std::string&, const std::string&) {}
    virtual void DeletePage(int, const std::string&) {}
    virtual void Discard(int) {}
    /// Into the file @p number; false: nothing was written.
    virtual bool Export(int, int /*number*/, bool /*again*/) { return true; }
    /// Takes a file in at the mother, which becomes an answer if that is done.
    virtual Outcome Merge(int /*file*/, int /*answer*/, const Outcome& expected) { return expected; }
    virtual void Preview(int /*file*/) {}
    virtual Outcome TakeIn(int, int /*answer*/, const Outcome& expected) { return expected; }
    /// What differs from these libraries; empty when nothing does.
    virtual std::string Difference(const std::vector<Library>&) { return {}; }
};

/// A mother with children, as they are at the beginning of each history: items P, Q, F, P2 below F, X below P2, and Y;
/// a file of X, a link from X to Y, a page of Y.
class World {
public:
    /// @p player may be null.
    World(const std::vector<Moment>& offsets, Player* player);

    /// Does a step here and there. Returns what differs after it; empty when nothing does.
    std::string Apply(const Step& step);
    /// Lets rounds go by, with all decisions made, until nothing travels. Returns what differs then between libraries,
    /// or after one of the steps.
    std::string Settle();

    const std::vector<Library>& Libraries() const { return m_libraries; }
    static constexpr Moment Begin = 3'981'000'000; ///< the clock, when the mother is made
    static constexpr Moment Given = Begin + 60;    ///< when she gives her children out

private:
    struct Sent {
        int Child;
        ChangeFile File;
    };
    Library& Of(const Step& step) { return m_libraries[size_t(step.Library) % m_libraries.size()]; }
    int IndexOf(const Step& step) const { return int(size_t(step.Library) % m_libraries.size()); }
    Moment Now(int library) const { return m_clock + m_offsets[size_t(library)]; }
    void SetClockOf(int library);
    std::string NameOf(int library, Number item) const;

    void Perform(const Step& step);
    void AddItem(const Step& step);
    void Edit(const Step& step);
    void Move(const Step& step);
    void Delete(const Step& step);
    void Keep(const Step& step);
    void RemoveWaiting(const Step& step);
    void AddFile(const Step& step);
    void Describe(const Step& step);
    void DeleteFile(const Step& step);
    void SetLink(const Step& step);
    void Unlink(const Step& step);
    void SetPage(const Step& step);
    void DropPage(const Step& step);
    void Tick(const Step& step);
    void Export(const Step& step);
    void Again(const Step& step);
    void Preview(const Step& step);
    void Merge(const Step& step);
    void TakeIn(const Step& step);
    void Discard(const Step& step);

    template <class May>
    std::vector<Number> Items(int library, May&& may) const;
    void WriteFile(int child, bool again);
    void Compare(const char* what, const Outcome& outcome, const Outcome& expected);
    void MergeFile(size_t file);
    void TakeInAnswer(size_t answer);
    void Decide();
    void TakeInLastAnswer(int child);
    bool Round(int child);
    std::string Inequality() const;

    Player* m_player;
    std::vector<Library> m_libraries;
    std::vector<Moment> m_offsets;
    Moment m_clock = Given + 60;
    std::vector<Sent> m_files;
    std::vector<Sent> m_answers;
    int m_made = 0; ///< names that were given
    std::string m_wrong;
};

/// Plays a plan; returns what differs, and after which step. Empty when nothing does.
std::string Play(const Plan& plan, Player* player);

/// The shortest plan that still fails, by leaving steps out. @p fails plays one.
template <class Fails>
Plan Shrunk(Plan plan, Fails&& fails)
{
    for (size_t part = plan.Steps.size() / 2; part > 0; part /= 2) {
        for (size_t at = 0; at + part <= plan.Steps.size();) {
            Plan shorter = plan;
            shorter.Steps.erase(shorter.Steps.begin() + long(at), shorter.Steps.begin() + long(at + part));
            if (fails(shorter))
                plan = shorter;
            else
                at += part;
        }
    }
    return plan;
}

/// What all libraries have in common when nothing travels any more: all but numbers, dates and notes of links.
std::vector<std::string> Contents(const Library& library);

} // namespace qb::test::twin
