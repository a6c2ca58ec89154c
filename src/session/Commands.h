#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <span>

namespace qb {

/// A command of the main window: an entry of a menu, or a button of the toolbar `tlbMain`.
struct CommandRow {
    enum class Place {
        File,
        Edit,
        EditCode,
        Item,
        Tools,
        Replication,
        View,
        Help,
        Toolbar,
        AddLink,
        WebLinks,
        CodeToolbar
    };
    Place Where;
    const char* Name;    ///< the entry's name, or the button's key
    const char* Caption; ///< empty: a separator
    const char* Icon;    ///< name of the icon, or empty
    const char* Shortcut;
    const char* Tip; ///< one sentence for the status bar, or a button's tip
};

/// The state of the main window's commands, apart from any window: the session's rules write
/// it, the menus and the toolbar follow it.
class Commands : public QObject {
    Q_OBJECT

public:
    struct State {
        bool Enabled = true;
        bool Visible = true;
        bool Checked = false;
        QString Icon;
        QString Tip;
    };

    Commands();

    /// All commands in the order in which they are shown.
    static std::span<const CommandRow> Table();

    const State& Get(const QString& name) const;
    void SetEnabled(const QString& name, bool enabled);
    /// Nothing can be written: commands that write stay disabled whatever else enables them.
    void SetReadOnly(bool readOnly);
    bool IsReadOnly() const { return m_readOnly; }
    void SetVisible(const QString& name, bool visible);
    void SetChecked(const QString& name, bool checked);
    void SetImage(const QString& name, const QString& icon, const QString& tip);

    // Rules of the session

    /// All buttons of the toolbar at once.
    void EnableMainToolbar(bool enabled);
    /// Buttons that make sense for an item but not for the root.
    void DoToolBarLogic(bool rootSelected);
    /// What the item menu offers for an item in a state.
    struct ItemState {
        bool Root = false;
        bool Deleted = false;
        bool Conflict = false;
        bool Orphan = false;          ///< the folder of orphaned items, or below it
        bool OrphanUnderRoot = false; ///< the folder itself
        bool Exported = false;        ///< the library waits for its mother's answer
        bool IsChildReplica = false;
    };
    void EnableItemMenu(const ItemState& state);
    /// The entries for a deleted (@p keep) and for a conflicting item (@p resolve).
    void HideItemMenuItems(bool keep, bool resolve, bool rootSelected);
    /// The entries of the menu for replication by the library's part in it.
    void EnableDBToolsMenu(bool isChild, bool isMother, bool exported);

Q_SIGNALS:
    void Changed(const QString& name);

private:
    template <class Change>
    void Update(const QString& name, Change&& change);

    QHash<QString, State> m_states;
    QSet<QString> m_held; ///< of those that write, what would be enabled
    bool m_readOnly = false;
};

} // namespace qb
