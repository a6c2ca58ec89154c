#include "session/ItemPrinting.h"

#include "support/ErrorRoutine.h"

#include <QScopeGuard>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

ItemPrinting::ItemPrinting(SessionState& session, Commands& commands) : m_session(session)
{
    for (const QString& command : {u"PRINT"_s, u"mnuFilePrint"_s}) {
        commands.Register(command, this, &ItemPrinting::PrintCurrentItem);
        commands.SetEnabled(command, false); // until a node is selected
    }
}

void ItemPrinting::PrintCurrentItem()
{
    Guarded(u"MainForm"_s, u"PrintItem"_s, [this] {
        CCodeItem* item = m_session.oCodeItem.get();
        if (!item || !m_session.CurrentDatabase)
            return;
        const auto release = qScopeGuard([item] { item->ReleasePrintFiles(); });
        item->PrintFiles().InitializeItemFilesList(*m_session.CurrentDatabase, item->Key().toLongLong());
        const std::unique_ptr<PrintComponent> component = MakeComponent();
        component->Print({.Database = *m_session.CurrentDatabase,
                          .Item = *item,
                          .PagePath = m_session.CurrentHTMLFolder() + item->Key() + u".htm"_s,
                          .LibraryName = LibraryName(),
                          .Typed = TypedTexts().value_or(UnsavedTexts())});
    });
}

/// Its alias in the list.
QString ItemPrinting::LibraryName() const
{
    const QString path = m_session.CurrentDatabase->Name();
    const auto entry = std::find_if(m_session.DatabaseList.begin(), m_session.DatabaseList.end(),
                                    [&path](const LibraryEntry& one) { return one.Path == path; });
    return entry != m_session.DatabaseList.end() && !entry->Alias.isEmpty() ? entry->Alias
                                                                            : QFileInfo(path).completeBaseName();
}

} // namespace qb
