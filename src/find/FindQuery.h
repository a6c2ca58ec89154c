#pragma once

#include "platform/system/Date.h"

#include <QString>
#include <QStringList>
#include <array>
#include <chrono>
#include <optional>

namespace qb {

/// The texts of an item, in the order of the counters of a find.
enum class FindField : quint8 {
    Title,
    Description,
    Code,
    Notes,
    Usage,
    FileNames, ///< and descriptions of its stored files
    FileTexts, ///< what stands in those of its stored files that are text
    Links,     ///< notes of the links that lead from it, and its info, which is shown beside them
    WebPage
};
inline constexpr size_t FindFields = 9;

/// A set of fields: bit n is field n.
using FindFieldSet = quint16;
constexpr FindFieldSet BitOf(FindField field)
{
    return FindFieldSet(1u << unsigned(field));
}
inline constexpr FindFieldSet AllFindFields = (1u << FindFields) - 1;

/// The letter of a field: T, D, C, N, U, F, O, L or W.
QChar LetterOf(FindField field);
/// Its name in a command: "title", "description", "code", "notes", "usage", "files", "file-texts", "links", "page".
QString NameOf(FindField field);
std::optional<FindField> FindFieldNamed(const QString& name);

/// How the text of a query is understood; the numbers of the first two are those of the modes of a find.
enum class FindMode { Phrase = 1, AllWords = 2, Expression = 3 };

enum class FindCase {
    Smart, ///< counts when the query has a capital letter
    Exact,
    Folds
};

/// What is looked for, and where.
struct FindQuery {
    QString Text;
    FindMode Mode = FindMode::Phrase;
    FindCase Case = FindCase::Smart;
    bool WholeWord = false;
    bool FoldAccents = false; ///< "é" and "e" are the same; expressions are not folded
    FindFieldSet Fields = AllFindFields;
    qint64 Branch = 0; ///< the item with all below it; 0: everywhere
    Date ChangedSince; ///< "none": whenever
    std::optional<qint32> Status;
    std::optional<qint32> Rating;
    QString Language;                      ///< empty: any
    std::chrono::milliseconds Deadline{0}; ///< how long it may take; 0: as long as it does
};

/// The query's text as texts are searched for it: lines end with LF.
QString NormalText(const QString& text);
/// Whether capitals and small letters differ for this query.
bool CountsCase(const FindQuery& query);
/// What is looked for one by one: the phrase, or the distinct words.
QStringList NeedlesOf(const FindQuery& query);

} // namespace qb
