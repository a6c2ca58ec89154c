// A fuzzer of the scan by rules. Whatever rules and texts come in: no crash, no hang, tokens in order
// within their line, and a text that is painted keeps every character. Rules and text are parted by a
// NUL.

#include "platform/richtext/RichText.h"
#include "text/RulePaint.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qb;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const qsizetype part = bytes.indexOf('\0');
    const QString rules = QString::fromUtf8(bytes.left(part < 0 ? size_t(0) : size_t(part)));
    const QString text = QString::fromUtf8(bytes.mid(part + 1));
    RuleScan scan(std::make_shared<LanguageRules>(rules, QStringList{QStringLiteral("if")}, QStringList()));
    std::vector<Token> tokens;
    int state = RuleScan::Begin;
    for (const QStringView line : QStringView(text).split(u'\n')) {
        state = scan.ScanLine(line, state, tokens);
        qsizetype end = 0;
        for (const Token& token : tokens) {
            if (token.Begin < end || token.Length <= 0)
                std::abort();
            end = token.Begin + token.Length;
        }
        if (end > line.size())
            std::abort();
    }
    RichText box;
    box.SetText(text);
    const QString before = box.Text();
    PaintByRules(box, scan, TokenPalette::Default().Light, NoWork());
    if (box.Text() != before)
        std::abort();
    return 0;
}
