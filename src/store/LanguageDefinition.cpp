#include "store/LanguageDefinition.h"

#include "platform/system/RuntimeError.h"
#include "platform/system/TextEncoding.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int ReservedStrings = 21;

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

private:
    QByteArrayView m_rest;
};

} // namespace

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
    return language;
}

LanguageDefinition ReadLanguageFile(const QString& path)
{
    const QString shown = QDir::toNativeSeparators(path);
    if (!QFileInfo(path).isFile())
        throw RuntimeError(ErrorNumber::FileNotFound, u"The language definition file '%1' was not found."_s.arg(shown),
                           u"ReadLanguageFile"_s);
    // The largest record that the form can hold: 28 strings of 64 kB and three colours.
    constexpr qint64 LargestRecord = 28 * (2 + 65535) + 12;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The language definition file '%1' can't be read: %2."_s.arg(shown, file.errorString()),
                           u"ReadLanguageFile"_s);
    return LanguageFromBytes(file.read(LargestRecord));
}

} // namespace qb
