#pragma once

#include "conflicts/CConflict.h"
#include "platform/system/Prompts.h"
#include "store/CFileObject.h"
#include "store/PageChanges.h"
#include "store/PendingFiles.h"

#include <QList>
#include <memory>
#include <optional>
#include <vector>

namespace qb {

/// One decision between two versions of an item: the row, its stored files and its page in one transaction, whose files
/// get to their places once it is committed. For CConflict.
class ConflictDecision {
public:
    ConflictDecision(CConflict& conflict, ConflictSide winner);

    /// Raises what went wrong, with all as it was. What the user has to know is said after it, as what has to wait for
    /// the next opening of the library.
    void Run();

private:
    void Discard();
    void Discard(ConflictSide side, const QString& reason);
    bool StaysWhole();
    ConflictSide PageSide() const;
    void TakeTexts();
    void DecidePage();
    void ReplacePage();
    void DecideFiles();
    void TakeDescriptions();
    void DeleteFile(CConflictFileObject& file);
    void AddFile(CConflictFileObject& file);
    void Settle();

    CConflict& m_conflict;
    Library& m_library;
    CConflictCodeItem& m_item;
    CConflictCodeItem& m_tempItem;
    qint64 m_id;
    ConflictSide m_winner;
    std::unique_ptr<DiscardedVersions> m_discarded;
    StoredFileDeletion m_leaving;
    std::shared_ptr<PendingWork> m_work; ///< once a file arrives
    std::vector<std::unique_ptr<CFileObject>> m_arriving;
    std::unique_ptr<PageChanges> m_page; ///< once the page is another one
    QList<Message> m_messages;
};

} // namespace qb
