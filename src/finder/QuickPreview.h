#pragma once

#include "finder/QuickRow.h"
#include "text/CTextFormat.h"

namespace qb {

class FindRequest;

/// What is shown of a row beside the list.
struct QuickPreview {
    QString Title;
    QString Caption;                           ///< which text it is: "Code", "Notes"
    RichText Content = RichText();             ///< without colours where there are rules
    std::shared_ptr<RuleScan> Rules = nullptr; ///< that colour it
    std::vector<TextRange> Marks;              ///< what was found
    int Line = 0;                              ///< that is brought into sight; 0: none
    QString Notice;                            ///< in the place of a text
};

/// Makes previews of rows, and copies of the code that they stand for.
class QuickPreviews {
public:
    explicit QuickPreviews(QuickOpenHost& host) : m_host(host) {}

    /// The preview of a row; @p request is the search that found it, or null. What can't be read is said in Notice.
    QuickPreview Of(const QuickRow& row, const FindRequest* request);
    /// The code of the row's item in its colours, as it is copied; empty when it has none, is gone, or the row is of
    /// no item.
    RichText CodeOf(const QuickRow& row);
    /// Languages and colours may be others by the next time. No preview that was made before is valid any more.
    void Forget();

private:
    /// Texts of an item, as they are stored.
    struct Texts {
        QString Title;
        QString Description;
        QString Code;
        QString Usage;
        QString Notes;
        std::optional<RichText> Unsaved; ///< of the code
    };

    std::optional<Texts> Read(qint64 item);
    QuickPreview OfItem(const QuickRow& row, const Texts& texts);
    QuickPreview OfHit(const QuickRow& row, const Texts& texts, const FindRequest& request);
    QuickPreview OfLine(const QuickRow& row);
    void ShowCode(const Texts& texts, const QString& rtf, QuickPreview& preview);
    void ShowPlain(const QString& stored, QuickPreview& preview) const;
    CTextFormat& Formatter();

    QuickOpenHost& m_host;
    std::unique_ptr<CTextFormat> m_formatter; ///< of the open library
};

} // namespace qb
