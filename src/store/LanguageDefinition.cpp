#include "store/LanguageDefinition.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/TextEncoding.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <zlib.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int ReservedStrings = 21;
const QString ModuleName = u"LanguageDefinition"_s;

/// Takes the fields of a record from its front, one after another.
class RecordReader {
public:
    explicit RecordReader(QByteArrayView bytes) : m_rest(bytes) {}

    QString String()
    {
        if (m_rest.size() < qsizetype(sizeof(quint16))) {
            m_rest = {};
            return {};
        }
        const auto length = qFromLittleEndian<quint16>(m_rest.data());
        m_rest = m_rest.sliced(sizeof(quint16));
        const QByteArrayView text = m_rest.first(qMin(qsizetype(length), m_rest.size()));
        m_rest = m_rest.sliced(text.size());
        return FromWindows1252(text.toByteArray());
    }

    QStringList Words() { return String().split(u'|', Qt::SkipEmptyParts); }

    qint32 Colour()
    {
        if (m_rest.size() < qsizetype(sizeof(qint32))) {
            m_rest = {};
            return 0;
        }
        const auto colour = qFromLittleEndian<qint32>(m_rest.data());
        m_rest = m_rest.sliced(sizeof(qint32));
        return colour;
    }

    QByteArrayView Rest() const { return m_rest; }

private:
    QByteArrayView m_rest;
};

/// Puts the fields of a record together.
class RecordWriter {
public:
    void String(const QString& text)
    {
        constexpr qsizetype LongestString = 32767; // a reader may take the length for a signed number
        const QByteArray bytes = ToWindows1252(text);
        if (FromWindows1252(bytes) != text)
            throw RuntimeError(
                ErrorNumber::InvalidCall,
                u"A language definition file can't hold '%1', which has characters beyond Windows-1252."_s.arg(
                    text.left(60)),
                ModuleName);
        if (bytes.size() > LongestString)
            throw RuntimeError(
                ErrorNumber::InvalidCall,
                u"A language definition file can't hold a list of %1 bytes; %2 is the most."_s.arg(bytes.size())
                    .arg(LongestString),
                ModuleName);
        Append(quint16(bytes.size()));
        m_bytes += bytes;
    }
    void Words(const QStringList& words)
    {
        for (const QString& word : words) {
            if (word.contains(u'|'))
                throw RuntimeError(
                    ErrorNumber::InvalidCall,
                    u"A language definition file can't hold the word '%1', since '|' parts its words."_s.arg(word),
                    ModuleName);
        }
        String(words.join(u'|'));
    }
    template <class Number>
    void Append(Number number)
    {
        char bytes[sizeof(Number)];
        qToLittleEndian(number, bytes);
        m_bytes.append(bytes, sizeof bytes);
    }
    QByteArray Bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

// What stands behind the record: the mark, the version of its form, the CRC-32 of the record, the
// length of the rules and the rules as UTF-8.
const QByteArray TailMark = QByteArrayLiteral("QBRULES\n");
constexpr quint32 TailVersion = 1;
constexpr qsizetype LongestRules = 1024 * 1024;
constexpr qsizetype TailHeadSize = 8 + 3 * qsizetype(sizeof(quint32));

quint32 CrcOf(QByteArrayView bytes)
{
    return quint32(crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), uInt(bytes.size())));
}

QByteArray TailOf(const QByteArray& record, const QString& rules)
{
    const QByteArray text = rules.toUtf8();
    if (text.size() > LongestRules)
        throw RuntimeError(
            ErrorNumber::InvalidCall,
            u"A language definition file can't hold rules of %1 bytes; %2 is the most."_s.arg(text.size())
                .arg(LongestRules),
            ModuleName);
    RecordWriter head;
    for (const quint32 number : {TailVersion, CrcOf(record), quint32(text.size())})
        head.Append(number);
    return TailMark + head.Bytes() + text;
}

/// The rules in what stands behind a record; empty if it is anything else.
QString RulesInTail(QByteArrayView record, QByteArrayView tail)
{
    if (tail.size() < TailHeadSize || !tail.startsWith(TailMark))
        return {};
    const auto number = [&tail](qsizetype index) {
        return qFromLittleEndian<quint32>(tail.sliced(TailMark.size() + index * qsizetype(sizeof(quint32))).data());
    };
    const qsizetype length = number(2);
    if (number(0) != TailVersion || number(1) != CrcOf(record) || length > LongestRules
        || TailHeadSize + length > tail.size())
        return {};
    return QString::fromUtf8(tail.sliced(TailHeadSize, length));
}

const QString SpellingKept = u"spelling: keep"_s;

} // namespace

QByteArray BytesOf(const LanguageDefinition& language)
{
    RecordWriter record;
    for (const QString& text :
         {language.Version, language.Language, language.CommentStart, language.CommentEnd, language.Comment})
        record.String(text);
    for (int i = 0; i < ReservedStrings; ++i)
        record.String({});
    record.Words(language.ColouredWords);
    record.Words(language.PlainWords);
    for (const qint32 colour : {language.ColouredKeywordColour, language.KeywordColour, language.CommentColour})
        record.Append(colour);
    return language.Rules.isEmpty() ? record.Bytes() : record.Bytes() + TailOf(record.Bytes(), language.Rules);
}

LanguageDefinition LanguageFromBytes(const QByteArray& bytes)
{
    RecordReader record(bytes);
    LanguageDefinition language;
    language.Version = record.String();
    language.Language = record.String();
    language.CommentStart = record.String();
    language.CommentEnd = record.String();
    language.Comment = record.String();
    for (int i = 0; i < ReservedStrings; ++i)
        record.String();
    language.ColouredWords = record.Words();
    language.PlainWords = record.Words();
    language.ColouredKeywordColour = record.Colour();
    language.KeywordColour = record.Colour();
    language.CommentColour = record.Colour();
    language.Rules = RulesInTail(QByteArrayView(bytes).chopped(record.Rest().size()), record.Rest());
    return language;
}

LanguageDefinition ReadLanguageFile(const QString& path)
{
    const QString shown = QDir::toNativeSeparators(path);
    if (!QFileInfo(path).isFile())
        throw RuntimeError(ErrorNumber::FileNotFound, u"The language definition file '%1' was not found."_s.arg(shown),
                           u"ReadLanguageFile"_s);
    // The largest that the form can hold: 28 strings of 64 kB, three colours, and rules.
    constexpr qint64 Largest = 28 * (2 + 65535) + 12 + TailHeadSize + LongestRules;
    QFile file(path);
    QByteArray bytes;
    const QString why = file.open(QIODevice::ReadOnly) ? ReadAll(file, bytes, Largest) : file.errorString();
    if (!why.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The language definition file '%1' can't be read: %2."_s.arg(shown, why),
                           u"ReadLanguageFile"_s);
    return LanguageFromBytes(bytes);
}

void WriteLanguageFile(const QString& path, const LanguageDefinition& language)
{
    QByteArray bytes = BytesOf(language);
    QFile old(path);
    QByteArray before;
    QString why = old.open(QIODevice::ReadOnly) ? ReadAll(old, before) : QString();
    old.close();
    QByteArray tail = before.mid(bytes.size());
    if (tail.startsWith(TailMark)) // of a definition that was here before, and might fit by chance
        tail[0] = 0;
    bytes += tail;
    if (why.isEmpty())
        why = ReplaceContents(path, bytes);
    if (!why.isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The language definition file '%1' can't be written: %2."_s.arg(QDir::toNativeSeparators(path), why),
            u"WriteLanguageFile"_s);
}

QStringList ValuesOfRules(const QString& rules, const QString& key)
{
    QStringList values;
    for (const QStringView line : QStringView(rules).split(u'\n')) {
        if (line.startsWith(key) && line.sliced(key.size()).startsWith(u": "))
            values << line.sliced(key.size() + 2).trimmed().toString().split(u' ', Qt::SkipEmptyParts);
    }
    return values;
}

bool CorrectsSpelling(const QString& rules)
{
    return !ValuesOfRules(rules, u"spelling"_s).contains(u"keep"_s);
}

QString WithCorrectsSpelling(const QString& rules, bool corrects)
{
    if (CorrectsSpelling(rules) == corrects)
        return rules;
    if (!corrects)
        return SpellingKept + u'\n' + rules;
    QStringList lines = rules.split(u'\n');
    lines.removeAll(SpellingKept);
    const QString rest = lines.join(u'\n');
    return rest.trimmed().isEmpty() ? QString() : rest;
}

QString WhyNotStorable(const LanguageDefinition& language)
{
    const auto tooLong = [](const QString& what, const QString& text, int most) {
        return u"%1 '%2' has %3 characters; %4 is the most."_s.arg(what, text.left(60)).arg(text.size()).arg(most);
    };
    if (language.Language.size() > LongestLanguageName)
        return tooLong(u"The name of the language"_s, language.Language, LongestLanguageName);
    for (const QString& mark : {language.Comment, language.CommentStart, language.CommentEnd}) {
        if (mark.size() > LongestCommentMark)
            return tooLong(u"The comment delimiter"_s, mark, LongestCommentMark);
    }
    for (const QStringList* list : {&language.PlainWords, &language.ColouredWords}) {
        for (const QString& word : *list) {
            if (word.size() > LongestKeyword)
                return tooLong(u"The word"_s, word, LongestKeyword);
            if (word.contains(u'*'))
                return u"The word '%1' holds a '*', which no word can."_s.arg(word);
        }
    }
    return {};
}

} // namespace qb
