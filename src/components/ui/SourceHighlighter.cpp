#include "components/ui/SourceHighlighter.h"

#include "store/ShippedLanguages.h"
#include "support/ui/Colors.h"
#include "text/RuleScan.h"

#include <QPlainTextEdit>

namespace qb {

SourceHighlighter::SourceHighlighter(QPlainTextEdit& box, const QString& language)
    : QSyntaxHighlighter(box.document()), m_box(box)
{
    const ShippedLanguage* found = ShippedLanguageNamed(language);
    m_format.SetItemLanguage(found ? found->Name : QString());
}

void SourceHighlighter::highlightBlock(const QString& line)
{
    const std::shared_ptr<RuleScan> scan = m_format.Rules();
    if (!scan)
        return;
    const bool isDark = IsDark(m_box.palette().color(QPalette::Base));
    const TokenColors& colors = isDark ? m_format.Palette().Dark : m_format.Palette().Light;
    setCurrentBlockState(scan->ScanLine(line, qMax(previousBlockState(), int(RuleScan::Begin)), m_tokens));
    for (const Token& token : m_tokens) {
        const quint32 color = colors[size_t(token.Kind)];
        if (token.Kind != TokenKind::Text)
            setFormat(token.Begin, token.Length,
                      QColor(int(color & 0xff), int(color >> 8 & 0xff), int(color >> 16 & 0xff)));
    }
}

} // namespace qb
