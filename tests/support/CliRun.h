#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace qb::test {

/// What a run of the command-line program left.
struct Outcome {
    int Status = -1;
    QString Out;
    QString Error;

    QJsonObject Object() const { return QJsonDocument::fromJson(Out.toUtf8()).object(); }
    QJsonArray Array() const { return QJsonDocument::fromJson(Out.toUtf8()).array(); }
};

/// Runs the command-line program with @p input on its standard input.
inline Outcome Cli(const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace qb::test
