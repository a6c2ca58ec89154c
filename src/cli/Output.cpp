#include "cli/Output.h"

#include "platform/system/RuntimeError.h"
#include "support/DateFormatCustom.h"

#include <QJsonDocument>

#include <cstdio>
#include <unistd.h>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

void Write(const QByteArray& bytes)
{
    const size_t size = size_t(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        throw RuntimeError(ErrorNumber::PathAccess, u"The output could not be written."_s, u"Print"_s);
}

} // namespace

QString MomentText(Date moment, Reader reader)
{
    if (reader == Reader::Program)
        return moment.ToIso();
    return moment.IsNone() ? QString() : DateFormatCustom(moment, u"yyyy-mm-dd hh:nn:ss"_s);
}

QString ForTerminal(QString text)
{
    constexpr char16_t Pictures = 0x2400; // of the characters below the blank
    constexpr char16_t PictureOfDelete = 0x2421;
    for (QChar& character : text) {
        if (character == u'\t' || character == u'\n')
            continue;
        if (character < u' ')
            character = QChar(char16_t(Pictures + character.unicode()));
        else if (character.category() == QChar::Other_Control)
            character = QChar(character.unicode() == 0x7f ? PictureOfDelete : char16_t(QChar::ReplacementCharacter));
    }
    return text;
}

void Print(const QString& text)
{
    Write((OutputIsTerminal() ? ForTerminal(text) : text).toUtf8());
}

void Print(const QByteArray& bytes)
{
    Write(OutputIsTerminal() ? ForTerminal(QString::fromUtf8(bytes)).toUtf8() : bytes);
}

void Print(const QJsonObject& object)
{
    Write(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

void Print(const QJsonArray& array)
{
    Write(QJsonDocument(array).toJson(QJsonDocument::Indented));
}

void Complain(const QString& text)
{
    std::fputs((ForTerminal(text) + u'\n').toUtf8().constData(), stderr);
}

bool OutputIsTerminal()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool ErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

} // namespace qb::cli
