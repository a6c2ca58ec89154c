#include "platform/system/SourceForm.h"

#include "platform/system/TextEncoding.h"

#include <QStringEncoder>
#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestForm = 1024;
constexpr qlonglong MostEnds = 1 << 30; ///< that are named at a time
const QString MarkEnding = u"-bom"_s;

struct Encoding {
    const char* Name;
    std::optional<QStringConverter::Encoding> Converter; ///< none: the Windows code page
    QByteArray Mark;                                     ///< empty: it has none
};

const std::array<Encoding, 7>& Encodings()
{
    using enum QStringConverter::Encoding;
    static const std::array<Encoding, 7> all{{{"utf-8", Utf8, "\xEF\xBB\xBF"_ba},
                                              {"utf-32le", Utf32LE, QByteArray("\xFF\xFE\0\0", 4)},
                                              {"utf-32be", Utf32BE, QByteArray("\0\0\xFE\xFF", 4)},
                                              {"utf-16le", Utf16LE, "\xFF\xFE"_ba},
                                              {"utf-16be", Utf16BE, "\xFE\xFF"_ba},
                                              {"latin1", Latin1, {}},
                                              {"windows-1252", {}, {}}}};
    return all;
}

/// Nothing when the encoding lacks a character.
std::optional<QByteArray> Encoded(const QString& text, const Encoding& encoding)
{
    if (!encoding.Converter) {
        QByteArray bytes = ToWindows1252(text);
        return FromWindows1252(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
    }
    QStringEncoder encoder(*encoding.Converter, QStringConverter::Flag::Stateless);
    QByteArray bytes = encoder(text);
    const bool isWhole = encoding.Converter != QStringConverter::Latin1 || QString::fromLatin1(bytes) == text;
    return encoder.hasError() || !isWhole ? std::nullopt : std::optional(std::move(bytes));
}

/// The name of the encoding in which a text gives these bytes; empty when there is none.
QString EncodingOf(const QByteArray& bytes, const QString& text)
{
    for (const Encoding& encoding : Encodings()) {
        const bool isMarked = !encoding.Mark.isEmpty() && bytes.startsWith(encoding.Mark);
        const auto encoded = Encoded(text, encoding);
        if (!encoded)
            continue;
        if (*encoded == bytes)
            return QLatin1StringView(encoding.Name);
        if (isMarked && encoding.Mark + *encoded == bytes)
            return QLatin1StringView(encoding.Name) + MarkEnding;
    }
    return {};
}

// Line ends

struct Ends {
    char16_t Kind; ///< n, r or w
    qsizetype Count;
};

std::vector<Ends> EndsIn(const QString& text)
{
    std::vector<Ends> runs;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] != u'\r' && text[at] != u'\n')
            continue;
        const bool isPair = text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n';
        const char16_t kind = isPair ? u'w' : text[at] == u'\r' ? u'r' : u'n';
        at += isPair ? 1 : 0;
        if (runs.empty() || runs.back().Kind != kind)
            runs.push_back({kind, 0});
        ++runs.back().Count;
    }
    return runs;
}

QString TextOf(const std::vector<Ends>& runs)
{
    if (runs.empty())
        return u"n"_s;
    if (runs.size() == 1)
        return QChar(runs.front().Kind);
    QString text;
    for (const Ends& run : runs) {
        text += QChar(run.Kind) + QString::number(run.Count);
        if (text.size() > LongestForm)
            break; // nobody keeps so much
    }
    return text;
}

std::vector<Ends> EndsNamed(QStringView text)
{
    std::vector<Ends> runs;
    for (qsizetype at = 0; at < text.size();) {
        const char16_t kind = text[at++].unicode();
        const qsizetype digits = at;
        while (at < text.size() && text[at].isDigit())
            ++at;
        if (kind == u'n' || kind == u'r' || kind == u'w')
            runs.push_back({kind, qsizetype(std::clamp(text.sliced(digits, at - digits).toLongLong(), 1LL, MostEnds))});
    }
    return runs;
}

/// The one that most lines end with.
char16_t UsualOf(const std::vector<Ends>& runs)
{
    qsizetype most = 0;
    char16_t usual = u'n';
    for (const char16_t kind : {u'n', u'w', u'r'}) {
        qsizetype count = 0;
        for (const Ends& run : runs)
            count += run.Kind == kind ? run.Count : 0;
        if (count > most) {
            most = count;
            usual = kind;
        }
    }
    return usual;
}

QLatin1StringView EndOf(char16_t kind)
{
    return kind == u'w' ? "\r\n"_L1 : kind == u'r' ? "\r"_L1 : "\n"_L1;
}

QString WithEnds(const QString& text, std::vector<Ends> runs)
{
    const qsizetype lines = text.count("\r\n"_L1);
    qsizetype named = 0;
    for (const Ends& run : runs)
        named += run.Count;
    if (runs.size() < 2 || named != lines) {
        const char16_t usual = UsualOf(runs);
        return usual == u'w' ? text : QString(text).replace("\r\n"_L1, EndOf(usual));
    }
    QString result;
    result.reserve(text.size());
    qsizetype from = 0;
    for (const Ends& run : runs) {
        for (qsizetype left = run.Count; left > 0; --left) {
            const qsizetype end = text.indexOf("\r\n"_L1, from);
            result += QStringView(text).sliced(from, end - from);
            result += EndOf(run.Kind);
            from = end + 2;
        }
    }
    return result += QStringView(text).sliced(from);
}

} // namespace

QString SourceFormOf(const QByteArray& bytes, const QString& text)
{
    const QString encoding = EncodingOf(bytes, text);
    const QString form = encoding + u' ' + TextOf(EndsIn(text));
    return encoding.isEmpty() || form == u"utf-8 n" || form.size() > LongestForm ? QString() : form;
}

QByteArray EncodeSource(const QString& text, const QString& form)
{
    const QString name = form.section(u' ', 0, 0);
    const QString lines = WithEnds(text, EndsNamed(form.section(u' ', 1, 1)));
    const bool isMarked = name.endsWith(MarkEnding);
    for (const Encoding& encoding : Encodings()) {
        if (QStringView(name).chopped(isMarked ? MarkEnding.size() : 0) != QLatin1StringView(encoding.Name))
            continue;
        if (const auto encoded = Encoded(lines, encoding))
            return (isMarked ? encoding.Mark : QByteArray()) + *encoded;
    }
    return lines.toUtf8();
}

} // namespace qb
