#pragma once

#include "platform/system/Hook.h"

#include <QString>

class QWidget;

namespace qb {

class Library;
class RichTextBox;

/// What the details panel needs of the page that lists an item's stored files.
class FileDetailsView {
public:
    virtual ~FileDetailsView() = default;

    /// The page itself; the panel puts it on its tab for files, which owns it from then on.
    virtual QWidget* Page() = 0;
    /// Lists the files of the item of this key.
    virtual void Initialise(Library& library, const QString& key) = 0;
    /// No item is shown any more.
    virtual void Terminate() = 0;
    virtual bool Locked() const = 0;
    virtual void SetLocked(bool locked) = 0;

    /// Whether the user is asked before a description that was edited is saved.
    virtual bool AskToSaveFileDescChanges() const = 0;
    virtual void SetAskToSaveFileDescChanges(bool ask) = 0;
    /// Saves the description of the current file if it was edited and the user wants that; is not asked
    /// when @p mayAsk is false. False when it could not be written: it stays as it was typed.
    virtual bool SaveFileDescChanges(bool mayAsk = true) = 0;

    /// What was typed counts as a change no more, and is not shown again.
    virtual void ForgetFileDescChanges() = 0;

    /// Told when another description is shown.
    Hook<void()> DescriptionShown;

    /// The box of the current file's description.
    virtual RichTextBox& DescriptionTextBox() = 0;
    virtual void NotesSetFocus() = 0;

    // What is done with the files
    virtual void AddFile() = 0;
    virtual void DeleteFile() = 0;
    virtual void ExportFile() = 0;
    virtual void UnzipToDirectory() = 0;
};

} // namespace qb
