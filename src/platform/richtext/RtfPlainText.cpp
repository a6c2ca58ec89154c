#include "platform/richtext/RtfPlainText.h"

#include "platform/richtext/Rtf.h"

namespace qb {

QString RtfFromPlainText(const QString& text, const RtfFont& font)
{
    if (text.isEmpty())
        return {};
    RichTextDocument document(font);
    document.Replace(0, 0, text, document.DefaultFormat());
    return WriteRtf(document);
}

QString PlainTextFromRtf(const QString& rtf)
{
    if (!rtf.startsWith(QLatin1StringView("{\\rtf")))
        return rtf;
    RichTextDocument document;
    ReadRtf(rtf, document);
    return document.Text();
}

} // namespace qb
