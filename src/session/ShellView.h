#pragma once

#include "store/LanguageDefinition.h"

#include <QString>
#include <memory>

namespace qb {

/// The language chosen for a new library.
struct LanguageChoice {
    LanguageType Type = LanguageType::None; ///< None: cancelled
    QString File;                           ///< for LanguageType::File
};

/// What the session needs of the main window beside its panels.
class ShellView {
public:
    virtual ~ShellView() = default;

    // Status bar
    virtual void SetStatusText(const QString& text) = 0;
    virtual void SetItemDate(const QString& text, const QString& tip) = 0;

    // The combo box of libraries. A change of its index, by the user or from here, runs
    // LibraryList::cboDatabase_Click.
    virtual int ComboCount() const = 0;
    virtual int ComboIndex() const = 0;
    virtual void SetComboIndex(int index) = 0;
    virtual QString ComboText() const = 0;
    virtual void SetComboText(const QString& text) = 0;
    virtual void InsertComboEntry(int index, const QString& alias) = 0;
    virtual void RemoveComboEntry(int index) = 0;
    virtual void SetComboToolTip(const QString& tip) = 0;

    /// The progress bar, from 1 to @p maximum; hidden when it is 0. The window paints itself.
    virtual void ShowProgressStatusBar(int value, int maximum) = 0;
    /// The wait cursor, for as long as what comes back is held.
    [[nodiscard]] virtual std::shared_ptr<void> WaitCursor() = 0;
    /// The commands that edit the item that is shown, and the toolbars of its texts.
    virtual void EnableEditing(bool enabled) = 0;

    /// Asks for the language of a library that is about to be made; its path is asked for afterwards.
    virtual LanguageChoice AskForLanguage() = 0;
    /// Enables the menus that need an open library.
    virtual void EnableMenus(bool enabled) = 0;
};

} // namespace qb
