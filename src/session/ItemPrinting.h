#pragma once

#include "platform/system/Hook.h"
#include "printing/PrintRequest.h"
#include "session/Commands.h"
#include "session/SessionState.h"

#include <functional>
#include <memory>

namespace qb {

/// The printing of the current item: gathers what the print component is given.
class ItemPrinting {
public:
    /// Registers the commands. Session and commands must outlive this.
    ItemPrinting(SessionState& session, Commands& commands);

    /// Makes what prints, anew for each print.
    std::function<std::unique_ptr<PrintComponent>()> MakeComponent;
    /// What was typed into the current item and is not saved yet.
    Hook<std::optional<UnsavedTexts>()> TypedTexts;

    /// Prints the current item; returns when that is done. The list of its stored files is read anew for it and goes
    /// afterwards, whatever happens. An error is reported.
    void PrintCurrentItem();

private:
    QString LibraryName() const;

    SessionState& m_session;
};

} // namespace qb
