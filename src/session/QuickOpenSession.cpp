#include "session/QuickOpenSession.h"

#include "finder/Finding.h"
#include "platform/system/Prompts.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Place = CommandRow::Place;

/// The places of commands, with what stands before their captions. A place that is missing has buttons only for
/// commands that stand in a menu too, or for what is no command by itself.
struct PlaceRow {
    Place Where;
    const char* Menu;
};
constexpr PlaceRow Places[] = {
    {Place::File, "File"},
    {Place::Edit, "Edit"},
    {Place::EditCode, "Code"},
    {Place::EditFormat, "Format"},
    {Place::Item, "Item"},
    {Place::Toolbar, "Item"},
    {Place::AddLink, "Add Link"},
    {Place::WebLinks, "Web Page"},
    {Place::Tools, "Tools"},
    {Place::Replication, "Replication"},
    {Place::View, "View"},
    {Place::BookmarkToolbar, "Bookmarks"},
    {Place::BookmarkMenu, "Bookmarks"},
    {Place::InfoToolbar, "Info"},
    {Place::SearchToolbar, "Find Results"},
    {Place::SearchMenu, "Find Results"},
    {Place::Help, "Help"},
};

/// Commands that only open a menu, this one, and buttons of commands that stand in a menu too.
constexpr const char* NotOffered[] = {"mnuFileDatabaseSelect",
                                      "mnuAddLink",
                                      "mnuQuickOpen",
                                      "NEW",
                                      "SAVE",
                                      "DELETE",
                                      "PRINT",
                                      "BACK",
                                      "FORWARD",
                                      "PREVIOUS",
                                      "NEXT",
                                      "BOOKMARK",
                                      "VIEWBOOKMARKS",
                                      "FIND"};

bool IsListed(const CommandRow& row)
{
    return *row.Name && std::none_of(std::begin(NotOffered), std::end(NotOffered), [&row](const char* name) {
        return QLatin1StringView(name) == QLatin1StringView(row.Name);
    });
}

/// As it is read in a list: without the mark of its letter.
QString CaptionOf(const char* menu, QString caption)
{
    return QLatin1StringView(menu) + u": "_s + caption.remove(u'&').trimmed();
}

std::optional<ItemText> TextOf(FindField field)
{
    switch (field) {
    case FindField::Code:
        return ItemText::Code;
    case FindField::Notes:
        return ItemText::Notes;
    case FindField::Usage:
        return ItemText::Usage;
    default:
        return std::nullopt;
    }
}

} // namespace

QuickOpenSession::QuickOpenSession(SessionState& session, ItemTreeView& view, ItemEditor& editor, ItemTree& tree,
                                   Commands& commands)
    : m_session(session), m_view(view), m_editor(editor), m_tree(tree), m_commands(commands)
{
}

qint64 QuickOpenSession::CurrentItem()
{
    return m_session.oCodeItem ? m_session.oCodeItem->Key().toLongLong() : 0;
}

std::vector<qint64> QuickOpenSession::RecentItems()
{
    std::vector<qint64> items;
    if (!m_session.moHistory)
        return items;
    const QStringList& keys = m_session.moHistory->Keys();
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        const qint64 item = IdOfKey(*key);
        if (std::find(items.begin(), items.end(), item) == items.end())
            items.push_back(item);
    }
    return items;
}

std::vector<QuickCommand> QuickOpenSession::RunnableCommands()
{
    UpdateCommands();
    std::vector<QuickCommand> commands;
    for (const PlaceRow& place : Places) {
        for (const CommandRow& row : Commands::Table()) {
            const QString name = QString::fromLatin1(row.Name);
            if (row.Where != place.Where || !IsListed(row) || !m_commands.HasProcedure(name))
                continue;
            const Commands::State& state = m_commands.Get(name);
            if (!state.Enabled || !state.Visible || !IsOffered(name))
                continue;
            commands.push_back({.Name = name,
                                .Caption = CaptionOf(place.Menu, state.Caption),
                                .Key = KeyOf(name),
                                .Icon = state.Icon,
                                .Tip = state.Tip});
        }
    }
    return commands;
}

// Code

std::optional<ShownCode> QuickOpenSession::CurrentCode()
{
    if (!m_editor.Item())
        return std::nullopt;
    const ItemTextBox& box = m_editor.Box(m_editor.ShownCode().value_or(ItemText::Code));
    RichText content = box.Content();
    const QString before = content.Text().left(content.SelStart());
    return ShownCode{.Item = CurrentItem(),
                     .Title = m_session.oCodeItem->Title(),
                     .Content = std::move(content),
                     .LineOfCaret = int(before.count(u'\n')) + 1};
}

std::optional<RichText> QuickOpenSession::UnsavedCode(qint64 item)
{
    if (!m_editor.Item() || item != CurrentItem() || !m_editor.Changed(ItemText::Code))
        return std::nullopt;
    return m_editor.Box(ItemText::Code).Content();
}

void QuickOpenSession::GoToLine(int line)
{
    if (!m_editor.ShownCode())
        ShowTab(DetailsTab::Code);
    ShowLine(line);
}

// Items

/// False when it is not shown: what was typed into another one could not be saved, or it is gone. It may be one that
/// another program has added since the tree was read.
bool QuickOpenSession::GoTo(qint64 item)
{
    if (!Nodes().Find(item) && m_tree.SaveItem())
        m_tree.Reload();
    if (!Nodes().Find(item)) {
        Prompts::Current().MsgBox({.Text = u"The item has no place in the tree any more."_s,
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Information});
        return false;
    }
    m_tree.GoToNode(NodeKey(item));
    return CurrentItem() == item;
}

void QuickOpenSession::OpenItem(qint64 item, bool inTree)
{
    if (inTree)
        ShowTree();
    if (GoTo(item) && !inTree)
        FocusText();
}

/// The place is that of the text as it was searched; the caret goes no further than the text does now.
void QuickOpenSession::OpenPlace(qint64 item, const FindPlace& place)
{
    if (!GoTo(item))
        return;
    if (const int page = PageOf(place.Field))
        ShowTab(DetailsTab(page));
    if (IsOfStoredFile(place.Field))
        return ShowFile(place.Source);
    if (const std::optional<ItemText> text = TextOf(place.Field)) {
        IRichTextBox& box = m_editor.Box(*text).TextBox();
        box.SetSelStart(std::min(place.Begin, box.Text().size()));
        box.SetSelLength(std::min(place.Length, box.Text().size() - box.SelStart()));
    }
    FocusText();
}

} // namespace qb
