#include "printing/PrintHelperJob.h"

#include "platform/system/RuntimeError.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QByteArray LineOf(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QString NameOf(PrintHelperAnswer::Kind kind)
{
    static const QString names[] = {u"progress"_s, u"done"_s, u"failed"_s, u""_s};
    return names[size_t(kind)];
}

} // namespace

QByteArray PrintHelperJob::ToLine() const
{
    return LineOf({{u"library"_s, Library},
                   {u"item"_s, Item},
                   {u"branch"_s, Branch},
                   {u"file"_s, File},
                   {u"printer"_s, Printer}});
}

PrintHelperJob PrintHelperJob::FromLine(const QByteArray& line)
{
    const QJsonObject job = QJsonDocument::fromJson(line).object();
    if (!job.contains(u"library"_s))
        throw RuntimeError(ErrorNumber::InvalidCall, u"There is no print job on standard input."_s, u"PrintHelper"_s);
    return {.Library = job[u"library"_s].toString(),
            .Item = job[u"item"_s].toInteger(),
            .Branch = job[u"branch"_s].toBool(),
            .File = job[u"file"_s].toString(),
            .Printer = job[u"printer"_s].toString()};
}

QByteArray PrintHelperAnswer::ToLine() const
{
    return LineOf({{u"what"_s, NameOf(What)},
                   {u"pages"_s, Pages},
                   {u"of"_s, Of},
                   {u"printer"_s, Printer},
                   {u"error"_s, qint64(Error)},
                   {u"reason"_s, Reason}});
}

PrintHelperAnswer PrintHelperAnswer::FromLine(const QByteArray& line)
{
    const QJsonObject answer = QJsonDocument::fromJson(line).object();
    Kind kind = Nothing;
    for (const Kind one : {Progress, Done, Failed}) {
        if (answer[u"what"_s].toString() == NameOf(one))
            kind = one;
    }
    return {.What = kind,
            .Pages = answer[u"pages"_s].toInteger(),
            .Of = answer[u"of"_s].toInteger(),
            .Printer = answer[u"printer"_s].toString(),
            .Error = long(answer[u"error"_s].toInteger()),
            .Reason = answer[u"reason"_s].toString()};
}

} // namespace qb
