#pragma once

#include "find/FindPlaces.h"
#include "platform/richtext/RichText.h"

#include <QString>
#include <optional>
#include <vector>

namespace qb {

class Library;
class TreeNodes;

/// What quick open offers: one row of its list.
struct QuickRow {
    enum class Kind {
        Item,
        Command,
        Hit,   ///< a line of an item's texts
        Line,  ///< one of the code that is shown
        Search ///< to look for what was typed in all texts
    };
    Kind What = Kind::Item;
    qint64 Item = 0;                ///< of an item or a hit; of a line: the item that is shown
    QString Command;                ///< its name
    std::optional<FindPlace> Place; ///< of a hit
    int Line = 0;                   ///< of a line
    QString Icon;
    QString Text;                   ///< a title, a caption, a line
    std::vector<qsizetype> Letters; ///< places of the characters of Text that match, in order
    QString Beside;                 ///< where it stands
    QString Mark;                   ///< at the right: a key, or a field with the number of its line
    bool IsGone = false;            ///< the item was deleted since
};

/// A command that can run now.
struct QuickCommand {
    QString Name;
    QString Caption;  ///< with the name of its menu, as "File: Exit"
    QString Key = {}; ///< as a user reads it; may be empty
    QString Icon = {};
    QString Tip = {};
};

/// The code of the item that is shown, as it stands in its box.
struct ShownCode {
    qint64 Item = 0;
    QString Title;
    RichText Content = RichText();
    int LineOfCaret = 1;
};

/// What quick open needs of the session.
class QuickOpenHost {
public:
    virtual ~QuickOpenHost() = default;

    /// The open library, or null.
    virtual Library* OpenLibrary() = 0;
    virtual TreeNodes& Nodes() = 0;
    /// The item that is shown; 0: none.
    virtual qint64 CurrentItem() = 0;
    /// The items that were shown, the last one first.
    virtual std::vector<qint64> RecentItems() = 0;
    /// The commands that the user could give at this moment, in the order of the menus.
    virtual std::vector<QuickCommand> RunnableCommands() = 0;
    /// The code on the tab that is shown, or else the code of the item; nothing without an item.
    virtual std::optional<ShownCode> CurrentCode() = 0;
    /// The code of an item as it was typed and not saved yet; nothing where it is as it is stored.
    virtual std::optional<RichText> UnsavedCode(qint64 item) = 0;

    // What was chosen

    /// Goes to an item: to its text, or, with @p inTree, to its place in the tree.
    virtual void OpenItem(qint64 item, bool inTree) = 0;
    /// Goes to an item, and to a place in its texts.
    virtual void OpenPlace(qint64 item, const FindPlace& place) = 0;
    /// Goes to a line of the code that is shown, counted from 1.
    virtual void GoToLine(int line) = 0;
    virtual void RunCommand(const QString& name) = 0;
};

} // namespace qb
