#include "finder/ContextColours.h"

#include "platform/richtext/RichText.h"

namespace qb {

using namespace Qt::StringLiterals;

void ContextColours::SetLibrary(Library& library)
{
    m_format.ColorizeInit(library);
}

std::vector<ContextColours::Line> ContextColours::ColoursOf(const QStringList& lines, const QString& language)
{
    m_format.SetItemLanguage(language);
    const std::shared_ptr<RuleScan> scan = m_format.Rules();
    return scan ? ByRules(lines, *scan) : ByWords(lines);
}

std::vector<ContextColours::Line> ContextColours::ByRules(const QStringList& lines, RuleScan& scan) const
{
    std::vector<Line> all;
    std::vector<Token> tokens;
    int state = RuleScan::Begin;
    for (const QString& text : lines) {
        state = scan.ScanLine(text, state, tokens);
        Line line;
        for (const Token& token : tokens)
            line.push_back({token.Begin, token.Length, m_format.Palette().Light[size_t(token.Kind)],
                            m_format.Palette().Dark[size_t(token.Kind)]});
        all.push_back(std::move(line));
    }
    return all;
}

/// Such a language corrects the spelling of words too, which is not wanted here.
std::vector<ContextColours::Line> ContextColours::ByWords(const QStringList& lines)
{
    RichText text;
    text.SetText(lines.join(u"\r\n"_s));
    m_format.ColorizeCode(text);
    std::vector<Line> all;
    qsizetype at = 0;
    for (const QString& one : lines) {
        Line line;
        for (qsizetype i = 0; i < one.size(); ++i) {
            text.SetSelStart(at + i);
            text.SetSelLength(1);
            const quint32 color = text.SelColor().value_or(0);
            if (color == 0)
                continue;
            if (!line.empty() && line.back().Light == color && line.back().Begin + line.back().Length == i)
                ++line.back().Length;
            else
                line.push_back({i, 1, color, {}});
        }
        all.push_back(std::move(line));
        at += one.size() + 2;
    }
    return all;
}

} // namespace qb
