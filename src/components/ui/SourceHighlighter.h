#pragma once

#include "text/CTextFormat.h"

#include <QSyntaxHighlighter>

class QPlainTextEdit;

namespace qb {

/// Colours the text of a plain box by the rules of a language.
class SourceHighlighter : public QSyntaxHighlighter {
public:
    /// The box owns it. @p language is a name or a key.
    SourceHighlighter(QPlainTextEdit& box, const QString& language);

protected:
    void highlightBlock(const QString& line) override;

private:
    QPlainTextEdit& m_box;
    CTextFormat m_format;
    std::vector<Token> m_tokens;
};

} // namespace qb
