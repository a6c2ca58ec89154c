#include "session/ui/CommandFaces.h"

#include "support/ui/Icons.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct MenuRow {
    CommandRow::Place Place;
    const char* Name;
    const char* Caption;
};
constexpr MenuRow MenuRows[] = {
    {CommandRow::Place::File, "mnuFile", "&File"},
    {CommandRow::Place::Edit, "mnuEdit", "&Edit"},
    {CommandRow::Place::Item, "mnuItem", "&Item"},
    {CommandRow::Place::View, "mnuView", "&View"},
    {CommandRow::Place::Tools, "mnuTools", "&Tools"},
    {CommandRow::Place::Replication, "mnuReplication", "&Replication"},
    {CommandRow::Place::Help, "mnuHelp", "&Help"},
};

/// Menus below the menu Edit.
constexpr MenuRow EditMenuRows[] = {
    {CommandRow::Place::EditCode, "mnuEditCode", "&Code"},
    {CommandRow::Place::EditFormat, "mnuFormat", "F&ormat"},
    {CommandRow::Place::WebLinks, "mnuWebLinks", "&Web Page"},
};

/// Commands that are on or off.
const char* const Checkable[] = {"SAVE",
                                 "mnuAutoSaveItem",
                                 "mnuViewTreeItem",
                                 "mnuViewStatusBar",
                                 "mnuViewLineNumbers",
                                 "mnuViewWordWrap",
                                 "VIEWBOOKMARKS",
                                 "mnuViewBookmarks",
                                 "SINGLE_CLICK",
                                 "LOCK",
                                 "QUICK_LIST",
                                 "DETAIL_LIST",
                                 "mnuFindSingleClick"};

bool IsCheckable(const char* name)
{
    return std::any_of(std::begin(Checkable), std::end(Checkable),
                       [name](const char* one) { return QLatin1StringView(one) == QLatin1StringView(name); });
}

bool HasVisibleActions(const QMenu& menu)
{
    const QList<QAction*> actions = menu.actions();
    return std::any_of(actions.begin(), actions.end(),
                       [](const QAction* action) { return action->isVisible() && !action->isSeparator(); });
}

} // namespace

CommandFaces::CommandFaces(QMainWindow& window, Commands& commands)
    : QObject(&window), m_window(window), m_commands(commands)
{
    for (const MenuRow& row : MenuRows) {
        QMenu* menu = window.menuBar()->addMenu(QString::fromLatin1(row.Caption));
        menu->setObjectName(QString::fromLatin1(row.Name));
        m_menus.insert(int(row.Place), menu);
    }
    for (const CommandRow& row : Commands::Table()) {
        if (QMenu* menu = MenuOf(row.Where))
            menu->addAction(MakeAction(row));
    }
    for (const MenuRow& row : EditMenuRows)
        MakeSubMenu(row.Place, *MenuOf(CommandRow::Place::Edit)->addMenu(QString::fromLatin1(row.Caption)),
                    QString::fromLatin1(row.Name));
    auto* libraries = new QMenu(&window);
    m_actions[u"mnuFileDatabaseSelect"_s]->setMenu(libraries);
    auto* links = new QMenu(&window);
    MakeSubMenu(CommandRow::Place::AddLink, *links, {});
    m_actions[u"mnuAddLink"_s]->setMenu(links);
    auto* readers = new QMenu(&window);
    MakeSubMenu(CommandRow::Place::ExportForReaders, *readers, {});
    m_actions[u"mnuExportForReaders"_s]->setMenu(readers);
    for (const QString& name : {u"mnuFilterTree"_s, u"mnuQuickOpen"_s, u"mnuFullTextFind"_s, u"mnuFindNextOccurance"_s,
                                u"mnuFindPreviousOccurance"_s})
        window.addAction(m_actions[name]); // its key works where the menu doesn't
    connect(&commands, &Commands::Changed, this, &CommandFaces::Follow);
}

void CommandFaces::MakeSubMenu(CommandRow::Place place, QMenu& menu, const QString& name)
{
    menu.setObjectName(name);
    m_menus.insert(int(place), &menu);
    for (const CommandRow& row : Commands::Table()) {
        if (row.Where == place)
            menu.addAction(MakeAction(row));
    }
}

QAction* CommandFaces::MakeAction(const CommandRow& row)
{
    auto* action = new QAction(QString::fromLatin1(row.Caption), &m_window);
    if (!*row.Caption)
        action->setSeparator(true);
    if (!*row.Name)
        return action;
    const QString name = QString::fromLatin1(row.Name);
    action->setObjectName(name);
    action->setCheckable(IsCheckable(row.Name));
    if (*row.Shortcut)
        action->setShortcut(QKeySequence(QString::fromLatin1(row.Shortcut)));
    connect(action, &QAction::triggered, this, [this, name] {
        m_commands.Run(name);
        Follow(name); // a click has switched the look of what is on or off, whatever has come of it
    });
    m_actions.insert(name, action);
    Follow(name);
    return action;
}

void CommandFaces::FillToolbar(QToolBar& toolbar, CommandRow::Place place)
{
    for (const CommandRow& row : Commands::Table()) {
        if (row.Where != place)
            continue;
        QAction* action = MakeAction(row);
        action->setProperty("key", action->objectName());
        toolbar.addAction(action);
        if (QWidget* button = toolbar.widgetForAction(action))
            button->setProperty("key", action->objectName());
        Follow(action->objectName());
    }
}

QList<QAction*> CommandFaces::MakeActions(CommandRow::Place place)
{
    QList<QAction*> actions;
    for (const CommandRow& row : Commands::Table()) {
        if (row.Where == place)
            actions << MakeAction(row);
    }
    return actions;
}

void CommandFaces::Follow(const QString& name)
{
    QAction* action = m_actions.value(name);
    if (!action)
        return;
    const Commands::State& state = m_commands.Get(name);
    action->setEnabled(state.Enabled);
    action->setVisible(state.Visible && (action->isSeparator() || m_commands.HasProcedure(name)));
    if (action->isCheckable())
        action->setChecked(state.Checked);
    action->setText(state.Caption);
    ShowIcon(*action, state.Icon);
    action->setStatusTip(state.Tip);
    if (action->property("key").isValid())
        action->setToolTip(state.Tip);
    for (QMenu* menu : std::as_const(m_menus)) {
        if (menu->actions().contains(action))
            menu->menuAction()->setVisible(HasVisibleActions(*menu));
    }
}

} // namespace qb
