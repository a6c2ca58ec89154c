#pragma once

#include "session/Commands.h"

#include <QHash>
#include <QObject>

class QAction;
class QMainWindow;
class QMenu;
class QToolBar;

namespace qb {

/// The faces of the commands in the main window: an action each, in menus and toolbars, that runs the command and
/// follows its state.
class CommandFaces : public QObject {
    Q_OBJECT

public:
    /// Makes the menus of @p window.
    CommandFaces(QMainWindow& window, Commands& commands);

    QAction* Action(const QString& name) const { return m_actions.value(name); }
    QMenu* MenuOf(CommandRow::Place place) const { return m_menus.value(int(place)); }
    /// Adds the buttons of a place, each with its key.
    void FillToolbar(QToolBar& toolbar, CommandRow::Place place);
    /// The actions of a place that has no menu of its own, in their order.
    QList<QAction*> MakeActions(CommandRow::Place place);

private:
    void MakeSubMenu(CommandRow::Place place, QMenu& menu, const QString& name);
    QAction* MakeAction(const CommandRow& row);
    void Follow(const QString& name);

    QMainWindow& m_window;
    Commands& m_commands;
    QHash<QString, QAction*> m_actions;
    QHash<int, QMenu*> m_menus;
};

} // namespace qb
