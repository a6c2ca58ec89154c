#include "components/PageColours.h"

#include "publishing/StyleSheet.h"
#include "store/ShippedLanguages.h"
#include "text/CTextFormat.h"
#include "text/RuleScan.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString LanguageCalled(const QString& name)
{
    if (name.isEmpty())
        return {};
    const ShippedLanguage* found = ShippedLanguageNamed(name);
    if (!found)
        found = ShippedLanguageOfFile(u"x."_s + name, {});
    return found ? found->Name : QString();
}

QString Rules(const TokenColors& colors)
{
    QString rules;
    for (const TokenKindRow& row : TokenKindRows) {
        if (row.Kind != TokenKind::Text)
            rules += u".qb-%1 { color: %2; }\n"_s.arg(QLatin1StringView(row.Name),
                                                      QString::fromLatin1(HtmlColor(colors[size_t(row.Kind)])));
    }
    return rules;
}

} // namespace

ColouredPieces ColourCode(const QString& text, const QString& language)
{
    static CTextFormat format; // keeps the languages that were used
    format.SetItemLanguage(LanguageCalled(language));
    const std::shared_ptr<RuleScan> scan = format.Rules();
    if (!scan)
        return {};
    ColouredPieces pieces;
    std::vector<Token> tokens;
    int state = RuleScan::Begin;
    const auto plain = [&pieces](qsizetype length) {
        if (length > 0)
            pieces.emplace_back(length, QString());
    };
    for (const QStringView line : QStringView(text).split(u'\n')) {
        qsizetype at = 0;
        state = scan->ScanLine(line, state, tokens);
        for (const Token& token : tokens) {
            plain(token.Begin - at);
            const bool isPlain = token.Kind == TokenKind::Text;
            pieces.emplace_back(token.Length, isPlain ? QString() : QString::fromLatin1(RowOf(token.Kind).Name));
            at = token.Begin + token.Length;
        }
        plain(line.size() - at + 1);
    }
    return pieces;
}

QString ScreenColours(const TokenPalette& palette, bool isDark)
{
    return isDark ? Rules(palette.Light) + u":root[data-scheme=dark] "_s
                        + Rules(palette.Dark).trimmed().replace(u"\n"_s, u"\n:root[data-scheme=dark] "_s)
                  : Rules(palette.Light);
}

QString PageColours(const TokenPalette& palette)
{
    return Rules(palette.Light);
}

QString DarkPageColours(const TokenPalette& palette)
{
    return u"@media (prefers-color-scheme: dark) {\n"_s + Rules(palette.Dark) + u"}\n"_s;
}

} // namespace qb
