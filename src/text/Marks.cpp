#include "text/Marks.h"

namespace qb {

using namespace Qt::StringLiterals;

QString MarksOf(QStringView line, const std::vector<Token>& tokens)
{
    QString marks(line.size(), u' ');
    for (const Token& token : tokens) {
        for (int i = 0; i < token.Length; ++i)
            marks[token.Begin + i] = QLatin1Char(RowOf(token.Kind).Mark);
    }
    while (marks.endsWith(u' '))
        marks.chop(1);
    return marks;
}

QString MarkedText(const QString& text, RuleScan& scan)
{
    QString marked;
    int state = RuleScan::Begin;
    std::vector<Token> tokens;
    QList<QStringView> lines = QStringView(text).split(u'\n');
    if (lines.size() > 1 && lines.back().isEmpty())
        lines.removeLast();
    for (QStringView line : lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        state = scan.ScanLine(line, state, tokens);
        marked += line;
        marked += u'\n' + MarksOf(line, tokens) + u'\n';
    }
    return marked;
}

TextAndMarks FromMarkedText(const QString& marked)
{
    TextAndMarks apart;
    const QStringList lines = marked.split(u'\n');
    for (qsizetype i = 0; i + 1 < lines.size(); i += 2) {
        apart.Text += lines[i] + u'\n';
        apart.Marks << lines[i + 1];
    }
    return apart;
}

} // namespace qb
