#pragma once

#include "platform/system/Hook.h"
#include "session/Commands.h"

#include <QObject>

namespace qb {

class ctlCodeDetails;
class CSettings;
class CTextEdit;
enum class CopyForm;

/// The commands on the text, the view of it and the web page that the details panel shows.
class EditCommands : public QObject {
    Q_OBJECT

public:
    EditCommands(Commands& commands, ctlCodeDetails& details, QObject* parent);

    /// Undo, copy and the like, before their menu opens.
    void ShowState();
    /// Each tab has a state of its own: there is something to colour where the text shown has no colours.
    void ShowColorizeState();

    /// The name of the open library's language.
    Hook<QString()> LibraryLanguage;

    /// How texts are seen, in the user's settings.
    void ReadTextView(const CSettings& settings);
    void SaveTextView(CSettings& settings);

private:
    void RegisterText();
    void RegisterCopies();
    void CopyAs(CopyForm form);
    void RegisterView();
    void RegisterWeb();
    void EditCurrentBox(void (CTextEdit::*edit)());
    /// Turns the tick of an entry over. Returns whether it is set now.
    bool Switched(const QString& entry);

    Commands& m_commands;
    ctlCodeDetails& m_details;
};

} // namespace qb
