#pragma once

#include "printing/PrintSetup.h"
#include "printing/PrintedItem.h"
#include "text/CTextFormat.h"
#include "text/RecoveryFile.h"

#include <QHash>

namespace qb {

class CCodeItem;
class Library;

/// Gathers what is printed of items: reads, paints and changes nothing.
class ItemGatherer {
public:
    /// Only what @p parts name is read. The library must outlive it.
    ItemGatherer(Library& library, PrintParts parts);

    /// An item of the library by its ID. Raises an error when there is none, or when it can't be read.
    PrintedItem Gather(qint64 id);
    /// An item whose list of stored files has been read, with the path of its page. Texts that were typed and are not
    /// saved yet stand in the place of those that are. Raises an error when it can't be read.
    PrintedItem Gather(CCodeItem& item, const QString& pagePath, const UnsavedTexts& typed = {});

private:
    PrintedCode CodeOf(const QString& rtf);
    void AddTexts(PrintedItem& printed, CCodeItem& item, const UnsavedTexts& typed);
    void AddNotes(PrintedItem& printed, const QString& rtf) const;
    void AddFacts(PrintedItem& printed, CCodeItem& item, const QString& language) const;
    QStringList PathOf(qint64 id);
    bool Has(PrintPart part) const { return m_parts.testFlag(part); }

    Library& m_library;
    PrintParts m_parts;
    CTextFormat m_format;
    QString m_language;                 ///< of the library
    QHash<qint64, QStringList> m_paths; ///< of parents, with their own titles
};

} // namespace qb
