#pragma once

#include "platform/richtext/RichTextDocument.h"
#include "platform/system/Date.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

/// A piece of a line of code that looks other than plain text.
struct PrintedSpan {
    int Begin = 0;
    int Length = 0;
    quint32 Color = 0; ///< an ink, red in its low byte
    bool Bold = false;
    bool Italic = false;
};

/// A line of code, with tabs as blanks.
struct PrintedLine {
    QString Text;
    std::vector<PrintedSpan> Spans; ///< in order, none over another
};
using PrintedCode = std::vector<PrintedLine>;

struct PrintedFile {
    QString Title;
    QString Size;
    QString Description; ///< plain text
    Date OrigDateTime;
    Date DateAdded;
};

struct PrintedLink {
    enum class Leads { There, Here, BothWays } Direction = Leads::There;
    qint64 Item = 0;
    QString Title;
    QString Note;
};

/// All that is printed of an item.
struct PrintedItem {
    qint64 Id = 0;
    QString Title;
    QStringList Path; ///< the titles that it stands below, the uppermost first
    QString Description;
    QString Info;
    QStringList Facts; ///< one short sentence each
    PrintedCode Code;
    PrintedCode Usage;
    RichTextDocument Notes;
    QString PlainNotes; ///< in the place of notes that are too large to be laid out with their looks
    std::vector<PrintedFile> Files;
    std::vector<PrintedLink> Links;
    QString PageText;
    qsizetype Characters = 0; ///< of all of it, as a measure of the memory it takes
};

} // namespace qb
