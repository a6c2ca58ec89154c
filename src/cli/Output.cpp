#include "cli/Output.h"

#include "platform/system/RuntimeError.h"

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

void Print(const QString& text)
{
    Write(text.toUtf8());
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
    std::fputs((text + u'\n').toUtf8().constData(), stderr);
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
