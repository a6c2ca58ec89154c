#pragma once

#include "store/ItemRules.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <functional>
#include <span>
#include <type_traits>
#include <utility>

namespace qb {

/// A command of the main window: an entry of a menu, or a button of a toolbar.
struct CommandRow {
    enum class Place {
        File,
        Edit,
        EditCode,
        EditFormat,
        Item,
        Tools,
        Replication,
        View,
        Help,
        Toolbar,
        AddLink,
        ExportForReaders,
        WebLinks,
        CodeToolbar,
        TreeToolbar, ///< of the tree's own panel, which has the buttons
        BookmarkToolbar,
        BookmarkMenu, ///< of the list of bookmarks, with the buttons
        InfoToolbar,
        SearchToolbar, ///< of the list of find results
        SearchMenu     ///< of that list, with the buttons
    };
    Place Where;
    const char* Name;    ///< the entry's name, or the button's key
    const char* Caption; ///< empty: a separator
    const char* Icon;    ///< name of the icon, or empty
    const char* Shortcut;
    const char* Tip; ///< one sentence for the status bar, or a button's tip
};

/// The commands of the main window, apart from any window: what each runs and the one state that all its faces
/// show. Collaborators of the session register what is theirs and write the states; menus, keys, toolbars and
/// panels follow.
class Commands : public QObject {
    Q_OBJECT

public:
    struct State {
        bool Enabled = true;
        bool Visible = true;
        bool Checked = false;
        QString Caption;
        QString Icon;
        QString Tip;
    };

    Commands();

    /// All commands in the order in which they are shown.
    static std::span<const CommandRow> Table();

    // Procedures

    /// What a command runs. One without a procedure is not shown.
    void Register(const QString& name, std::function<void()> procedure);
    /// The same, a method of @p object with the arguments that it gets each time.
    template <class Object, class Method, class... Arguments>
    requires std::is_member_function_pointer_v<Method>
    void Register(const QString& name, Object* object, Method method, Arguments... arguments)
    {
        Register(name, std::bind_front(method, object, std::move(arguments)...));
    }
    bool HasProcedure(const QString& name) const { return m_procedures.contains(name); }
    /// Runs a command, unless its state forbids it, whatever face it was given by. An error is reported.
    void Run(const QString& name);

    // States

    const State& Get(const QString& name) const;
    /// What the session wants of a command; it stays disabled while something bars it.
    void SetEnabled(const QString& name, bool enabled);
    void SetVisible(const QString& name, bool visible);
    void SetChecked(const QString& name, bool checked);
    void SetCaption(const QString& name, const QString& caption);
    void SetImage(const QString& name, const QString& icon, const QString& tip);

    /// How the library and the current item stand, which bars commands and shows those for problems.
    void SetStanding(const ItemStanding& standing);
    const ItemStanding& Standing() const { return m_standing; }
    /// All buttons of the main toolbar at once.
    void EnableMainToolbar(bool enabled);
    /// The current item is the root, or is not.
    void DoToolBarLogic(bool rootSelected);
    /// The current item is one that a child has deleted (@p keep), or that is in conflict (@p resolve).
    void HideItemMenuItems(bool keep, bool resolve);

Q_SIGNALS:
    /// Its state, or whether it has a procedure.
    void Changed(const QString& name);

private:
    template <class Value>
    void Update(const QString& name, Value State::*part, const Value& value);

    void ShowEnabled(const QString& name);

    QHash<QString, State> m_states;
    QHash<QString, bool> m_wanted; ///< enabled, as far as the session is concerned
    QHash<QString, std::function<void()>> m_procedures;
    ItemStanding m_standing;
};

} // namespace qb
