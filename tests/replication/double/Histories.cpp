#include "replication/double/Histories.h"

#include <algorithm>
#include <random>

namespace qb::test::twin {

namespace {

const char* const StepNames[] = {"AddItem",  "Edit",       "Move",    "Delete", "Keep",   "RemoveWaiting", "AddFile",
                                 "Describe", "DeleteFile", "Link",    "Unlink", "Page",   "DropPage",      "Tick",
                                 "Export",   "Again",      "Preview", "Merge",  "TakeIn", "Discard"};
static_assert(std::size(StepNames) == size_t(Do::Count));

/// How often each happens.
constexpr int Weights[] = {8, 12, 8, 5, 2, 1, 5, 4, 3, 6, 2, 4, 1, 10, 8, 2, 2, 12, 12, 2};
static_assert(std::size(Weights) == size_t(Do::Count));

constexpr Moment Hour = 3600;
constexpr Moment Day = 24 * Hour;
constexpr Moment Ticks[] = {1, 5, 61, 61, 61, 10 * 60, Hour, Day, 3 * Day};
constexpr Moment ChildOffsets[] = {0, 0, 0, -30, -Hour, 20, 15 * 60};

Library Beginning()
{
    Library mother;
    mother.Identity = "mother";
    const Moment now = World::Begin;
    for (const char* name : {"P", "Q", "F"})
        mother.AddItem(0, name, now);
    mother.AddItem(3, "P2", now);
    mother.AddItem(4, "X", now);
    mother.AddItem(0, "Y", now);
    mother.SetLink({5, 6}, "old", now);
    mother.AddFile(5, "f.bin", "file f", now);
    mother.SetPage(6, "<img src=\"{}/bild.png\">", now);
    return mother;
}

} // namespace

Plan RandomPlan(unsigned seed, size_t length)
{
    std::mt19937 random(seed);
    const auto below = [&random](size_t count) { return unsigned(random() % count); };
    Plan plan;
    const size_t children = 1 + below(3);
    plan.Offsets.push_back(0);
    for (size_t i = 0; i < children; ++i)
        plan.Offsets.push_back(ChildOffsets[below(std::size(ChildOffsets))]);
    int sum = 0;
    for (const int weight : Weights)
        sum += weight;
    for (size_t i = 0; i < length; ++i) {
        int at = int(below(size_t(sum)));
        size_t what = 0;
        while (at >= Weights[what])
            at -= Weights[what++];
        plan.Steps.push_back(
            {.What = Do(what), .Library = int(below(children + 1)), .A = below(64), .B = below(64), .C = below(64)});
    }
    return plan;
}

std::string Described(const Plan& plan)
{
    std::string text = "{{";
    for (const Moment offset : plan.Offsets)
        text += std::to_string(offset) + ", ";
    text += "},\n {";
    for (const Step& step : plan.Steps)
        text += "{Do::" + std::string(StepNames[size_t(step.What)]) + ", " + std::to_string(step.Library) + ", "
                + std::to_string(step.A) + ", " + std::to_string(step.B) + ", " + std::to_string(step.C) + "},\n  ";
    return text + "}}";
}

World::World(const std::vector<Moment>& offsets, Player* player) : m_player(player), m_offsets(offsets)
{
    m_libraries.push_back(Beginning());
    for (size_t child = 1; child < offsets.size(); ++child) {
        Library given = GiveOut(m_libraries[0], "child" + std::to_string(child), Given);
        m_libraries.push_back(given);
    }
}

std::string World::NameOf(int library, Number item) const
{
    return item == 0 ? std::string() : m_libraries[size_t(library)].Items.at(item).Name;
}

void World::SetClockOf(int library)
{
    if (m_player)
        m_player->SetClock(Now(library));
}

std::string World::Apply(const Step& step)
{
    m_wrong.clear();
    SetClockOf(IndexOf(step));
    Perform(step);
    if (m_player && m_wrong.empty())
        m_wrong = m_player->Difference(m_libraries);
    return m_wrong;
}

void World::Perform(const Step& step)
{
    using Member = void (World::*)(const Step&);
    static constexpr Member Members[] = {&World::AddItem,    &World::Edit,          &World::Move,    &World::Delete,
                                         &World::Keep,       &World::RemoveWaiting, &World::AddFile, &World::Describe,
                                         &World::DeleteFile, &World::SetLink,       &World::Unlink,  &World::SetPage,
                                         &World::DropPage,   &World::Tick,          &World::Export,  &World::Again,
                                         &World::Preview,    &World::Merge,         &World::TakeIn,  &World::Discard};
    static_assert(std::size(Members) == size_t(Do::Count));
    (this->*Members[size_t(step.What)])(step);
}

/// The items of which something can be done, and that are alone of their name: the other player goes by names.
template <class May>
std::vector<Number> World::Items(int library, May&& may) const
{
    const auto& items = m_libraries[size_t(library)].Items;
    std::map<std::string, int> names;
    for (const auto& [id, item] : items)
        ++names[item.Name];
    std::vector<Number> found;
    for (const auto& [id, item] : items) {
        if (names[item.Name] == 1 && may(id))
            found.push_back(id);
    }
    return found;
}

void World::AddItem(const Step& step)
{
    Library& library = Of(step);
    std::vector<Number> parents = Items(
        IndexOf(step), [&](Number id) { return !library.IsOrphan(id) && (library.IsChild || !library.IsWaiting(id)); });
    parents.push_back(0);
    const Number parent = parents[step.A % parents.size()];
    const std::string name = "n" + std::to_string(++m_made);
    library.AddItem(parent, name, Now(IndexOf(step)));
    if (m_player)
        m_player->AddItem(IndexOf(step), NameOf(IndexOf(step), parent), name);
}

void World::Edit(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) { return library.MayEdit(id); });
    if (items.empty())
        return;
    const Number id = items[step.A % items.size()];
    const Text text = Text(step.B % TextCount);
    const std::string value = "text " + std::to_string(++m_made);
    library.EditItem(id, text, value, Now(IndexOf(step)));
    if (m_player)
        m_player->EditItem(IndexOf(step), NameOf(IndexOf(step), id), text, value);
}

void World::Move(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) { return library.MayEdit(id); });
    if (items.empty())
        return;
    const Number id = items[step.A % items.size()];
    std::vector<Number> parents = Items(IndexOf(step), [&](Number parent) { return library.MayMove(id, parent); });
    if (library.MayMove(id, 0))
        parents.push_back(0);
    if (parents.empty())
        return;
    const Number parent = parents[step.B % parents.size()];
    const std::string name = NameOf(IndexOf(step), id);
    library.MoveItem(id, parent, Now(IndexOf(step)));
    if (m_player)
        m_player->MoveItem(IndexOf(step), name, NameOf(IndexOf(step), parent));
}

void World::Delete(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) { return library.MayDelete(id); });
    if (items.empty())
        return;
    const Number id = items[step.A % items.size()];
    const std::string name = NameOf(IndexOf(step), id);
    library.DeleteBranch(id, Now(IndexOf(step)));
    if (m_player)
        m_player->DeleteBranch(IndexOf(step), name);
}

void World::Keep(const Step& step)
{
    const auto items = Items(0, [&](Number id) { return m_libraries[0].MayKeep(id); });
    if (items.empty())
        return;
    const Number id = items[step.A % items.size()];
    SetClockOf(0);
    m_libraries[0].Keep(id, Now(0));
    if (m_player)
        m_player->Keep(0, NameOf(0, id));
}

void World::RemoveWaiting(const Step&)
{
    const bool hasLosers = !m_libraries[0].Losers.empty();
    if (hasLosers)
        return;
    SetClockOf(0);
    m_libraries[0].RemoveWaiting(Now(0));
    if (m_player)
        m_player->RemoveWaiting(0);
}

void World::AddFile(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) { return library.MayEdit(id); });
    if (items.empty())
        return;
    const Number item = items[step.A % items.size()];
    const std::string title = "f" + std::to_string(++m_made) + ".txt";
    library.AddFile(item, title, "contents of " + title, Now(IndexOf(step)));
    if (m_player)
        m_player->AddFile(IndexOf(step), NameOf(IndexOf(step), item), title, "contents of " + title);
}

namespace {

/// The files of items that may be changed, and that are alone of their title.
std::vector<Number> FilesOf(const Library& library)
{
    std::map<std::string, int> titles;
    for (const auto& [id, file] : library.Files)
        ++titles[file.Title];
    std::vector<Number> files;
    for (const auto& [id, file] : library.Files) {
        if (titles[file.Title] == 1 && library.MayEdit(file.Owner))
            files.push_back(id);
    }
    return files;
}

} // namespace

void World::Describe(const Step& step)
{
    const auto files = FilesOf(Of(step));
    if (files.empty())
        return;
    const Number id = files[step.A % files.size()];
    const std::string text = "described " + std::to_string(++m_made);
    Of(step).DescribeFile(id, text, Now(IndexOf(step)));
    if (m_player)
        m_player->DescribeFile(IndexOf(step), Of(step).Files.at(id).Title, text);
}

void World::DeleteFile(const Step& step)
{
    const auto files = FilesOf(Of(step));
    if (files.empty())
        return;
    const Number id = files[step.A % files.size()];
    const std::string title = Of(step).Files.at(id).Title;
    Of(step).DeleteFile(id, Now(IndexOf(step)));
    if (m_player)
        m_player->DeleteFile(IndexOf(step), title);
}

void World::SetLink(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) { return !library.IsOrphan(id) && library.MayEdit(id); });
    if (items.size() < 2)
        return;
    const Number from = items[step.A % items.size()];
    const Number to = items[(step.A + 1 + step.B % (items.size() - 1)) % items.size()];
    const std::string note = "note " + std::to_string(++m_made);
    library.SetLink({from, to}, note, Now(IndexOf(step)));
    if (m_player)
        m_player->SetLink(IndexOf(step), NameOf(IndexOf(step), from), NameOf(IndexOf(step), to), note);
}

void World::Unlink(const Step& step)
{
    Library& library = Of(step);
    const auto alone = Items(IndexOf(step), [&](Number id) { return !library.IsOrphan(id) && library.MayEdit(id); });
    const std::set<Number> items(alone.begin(), alone.end());
    std::vector<Ends> links;
    for (const auto& [ends, link] : library.Links) {
        if (items.count(ends.first) != 0 && items.count(ends.second) != 0)
            links.push_back(ends);
    }
    if (links.empty())
        return;
    const Ends ends = links[step.A % links.size()];
    library.DeleteLink(ends, Now(IndexOf(step)));
    if (m_player)
        m_player->DeleteLink(IndexOf(step), NameOf(IndexOf(step), ends.first), NameOf(IndexOf(step), ends.second));
}

void World::SetPage(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) { return library.MayEdit(id); });
    if (items.empty())
        return;
    const Number id = items[step.A % items.size()];
    const std::string page = "<img src=\"{}/bild.png\">page " + std::to_string(++m_made);
    library.SetPage(id, page, Now(IndexOf(step)));
    if (m_player)
        m_player->SetPage(IndexOf(step), NameOf(IndexOf(step), id), page);
}

void World::DropPage(const Step& step)
{
    Library& library = Of(step);
    const auto items = Items(IndexOf(step), [&](Number id) {
        return library.MayEdit(id) && library.Items.at(id).HasPage && library.Pages.count(id) != 0;
    });
    if (items.empty())
        return;
    const Number id = items[step.A % items.size()];
    library.DeletePage(id, Now(IndexOf(step)));
    if (m_player)
        m_player->DeletePage(IndexOf(step), NameOf(IndexOf(step), id));
}

void World::Tick(const Step& step)
{
    m_clock += Ticks[step.A % std::size(Ticks)];
}

void World::Discard(const Step& step)
{
    if (Of(step).Losers.empty())
        return;
    Of(step).DiscardLosers();
    if (m_player)
        m_player->Discard(IndexOf(step));
}

// Files between libraries

void World::WriteFile(int child, bool again)
{
    SetClockOf(child);
    const std::optional<ChangeFile> file = twin::Export(m_libraries[size_t(child)], Now(child));
    const bool isWritten = !m_player || m_player->Export(child, int(m_files.size()), again) == file.has_value();
    if (!isWritten)
        m_wrong = file ? "the program did not export" : "the program exported, with a clock that is wrong";
    if (file)
        m_files.push_back({child, *file});
}

void World::Export(const Step& step)
{
    const int child = IndexOf(step);
    if (child != 0 && Of(step).LastExported == 0)
        WriteFile(child, false);
}

void World::Again(const Step& step)
{
    const int child = IndexOf(step);
    if (child != 0 && Of(step).LastExported != 0)
        WriteFile(child, true);
}

void World::Compare(const char* what, const Outcome& outcome, const Outcome& expected)
{
    const auto told = [](const Outcome& one) {
        return std::to_string(one.Result) + (one.Done ? " done" : " not done");
    };
    if (told(outcome) != told(expected))
        m_wrong = std::string(what) + " came to " + told(outcome) + " instead of " + told(expected);
}

/// Of the files that were written lately; older ones are replayed.
void World::MergeFile(size_t file)
{
    SetClockOf(0);
    if (!m_libraries[0].Losers.empty()) {
        m_libraries[0].DiscardLosers();
        if (m_player)
            m_player->Discard(0);
    }
    Sent sent = m_files[file];
    const Outcome expected = twin::Synchronize(m_libraries[0], sent.File, Now(0));
    const Outcome outcome = m_player ? m_player->Merge(int(file), int(m_answers.size()), expected) : expected;
    Compare("the mother's merge", outcome, expected);
    if (expected.Done)
        m_answers.push_back(sent);
}

void World::Merge(const Step& step)
{
    if (m_files.empty())
        return;
    const size_t recent = std::min<size_t>(m_files.size(), 3);
    MergeFile(m_files.size() - 1 - step.A % recent);
}

void World::Preview(const Step& step)
{
    if (m_files.empty() || !m_libraries[0].Losers.empty() || !m_player)
        return;
    SetClockOf(0);
    const size_t recent = std::min<size_t>(m_files.size(), 3);
    m_player->Preview(int(m_files.size() - 1 - step.A % recent));
}

void World::TakeInAnswer(size_t answer)
{
    Sent& sent = m_answers[answer];
    Library& child = m_libraries[size_t(sent.Child)];
    SetClockOf(sent.Child);
    if (!child.Losers.empty()) {
        child.DiscardLosers();
        if (m_player)
            m_player->Discard(sent.Child);
    }
    const Outcome expected = twin::Synchronize(child, sent.File, Now(sent.Child));
    const Outcome outcome = m_player ? m_player->TakeIn(sent.Child, int(answer), expected) : expected;
    Compare("the child's merge", outcome, expected);
}

void World::TakeIn(const Step& step)
{
    if (m_answers.empty())
        return;
    const size_t recent = std::min<size_t>(m_answers.size(), 3);
    TakeInAnswer(m_answers.size() - 1 - step.A % recent);
}

// Until nothing travels

/// Whoever has to decide does: what waits is kept, what has no parent goes under the root.
void World::Decide()
{
    for (size_t i = 0; i < m_libraries.size(); ++i)
        Discard({.What = Do::Discard, .Library = int(i)});
    SetClockOf(0);
    Library& mother = m_libraries[0];
    std::vector<Number> orphans;
    for (const auto& [id, item] : mother.Items) {
        if (mother.MayKeep(id))
            mother.Keep(id, Now(0));
        if (item.Parent != 0 && item.Parent == mother.OrphanFolder())
            orphans.push_back(id);
    }
    for (const Number id : orphans)
        mother.MoveItem(id, 0, Now(0));
    if (m_player)
        m_player->DecideAll();
}

/// An answer that its child has not taken in yet. The mother merges nothing of the child's before that.
void World::TakeInLastAnswer(int child)
{
    const auto last = std::find_if(m_answers.rbegin(), m_answers.rend(),
                                   [child](const Sent& answer) { return answer.Child == child; });
    if (last != m_answers.rend() && last->File.LastSynchronized > m_libraries[size_t(child)].LastSynchronized)
        TakeInAnswer(size_t(m_answers.rend() - last) - 1);
}

/// Whether anything travelled.
bool World::Round(int child)
{
    TakeInLastAnswer(child);
    m_clock += Hour;
    WriteFile(child, m_libraries[size_t(child)].LastExported != 0);
    if (!m_wrong.empty() || m_files.empty())
        return false;
    m_clock += Hour;
    const size_t answers = m_answers.size();
    MergeFile(m_files.size() - 1);
    if (!m_wrong.empty() || m_answers.size() == answers)
        return false;
    m_clock += Hour;
    TakeInAnswer(m_answers.size() - 1);
    const auto count = [](const Rows& rows) {
        return rows.Items.size() + rows.Files.size() + rows.Links.size() + rows.Pages.size() + rows.DeletedItems.size()
               + rows.DeletedFiles.size() + rows.DeletedLinks.size();
    };
    const ChangeFile& file = m_answers.back().File;
    return count(file.FromChild) + count(file.FromMother) + file.ToldItems.size() != 0;
}

std::string World::Settle()
{
    m_wrong.clear();
    constexpr int MostRounds = 12;
    for (int round = 0; round < MostRounds; ++round) {
        m_clock += Day;
        Decide();
        bool travels = false;
        for (int child = 1; child < int(m_libraries.size()); ++child) {
            m_clock += Hour;
            travels = Round(child) || travels;
            if (m_wrong.empty() && m_player)
                m_wrong = m_player->Difference(m_libraries);
            if (!m_wrong.empty())
                return "while rounds go by: " + m_wrong;
        }
        if (!travels)
            return Inequality();
    }
    return "it never comes to rest";
}

std::string World::Inequality() const
{
    const std::vector<std::string> mothers = Contents(m_libraries[0]);
    for (size_t child = 1; child < m_libraries.size(); ++child) {
        const std::vector<std::string> childs = Contents(m_libraries[child]);
        std::vector<std::string> different;
        std::set_symmetric_difference(mothers.begin(), mothers.end(), childs.begin(), childs.end(),
                                      std::back_inserter(different));
        if (different.empty())
            continue;
        std::string text = "at rest child " + std::to_string(child) + " and mother differ in";
        for (const std::string& row : different)
            text += (std::binary_search(mothers.begin(), mothers.end(), row) ? "\n  mother: " : "\n  child:  ") + row;
        return text;
    }
    return {};
}

std::vector<std::string> Contents(const Library& library)
{
    std::vector<std::string> contents;
    const auto name = [&](Number id) {
        const auto item = library.Items.find(id);
        return item == library.Items.end() ? std::string("-") : item->second.Name;
    };
    for (const auto& [id, item] : library.Items) {
        std::string row = "item " + item.Name + " below " + name(item.Parent) + ":";
        for (const std::string& text : item.Texts)
            row += ' ' + text + ';';
        const auto page = library.Pages.find(id);
        contents.push_back(row + (item.HasPage ? " page " : " no page")
                           + (page == library.Pages.end() ? std::string() : page->second));
    }
    for (const auto& [id, file] : library.Files)
        contents.push_back("file " + file.Title + " of " + name(file.Owner) + ": " + file.Description + "; "
                           + file.Bytes);
    for (const auto& [ends, link] : library.Links)
        contents.push_back("link " + name(ends.first) + " to " + name(ends.second));
    std::sort(contents.begin(), contents.end());
    return contents;
}

std::string Play(const Plan& plan, Player* player)
{
    World world(plan.Offsets, player);
    for (size_t i = 0; i < plan.Steps.size(); ++i) {
        const std::string different = world.Apply(plan.Steps[i]);
        if (!different.empty())
            return "after step " + std::to_string(i + 1) + ": " + different;
    }
    return world.Settle();
}

} // namespace qb::test::twin
