#pragma once

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QByteArray>
#include <QFile>
#include <cstdio>

namespace qb::cli {

/// The bytes of a file, or of standard input for "-"; raises RuntimeError 3024 when it can't be read.
inline QByteArray ReadInput(const QString& name)
{
    QFile file(name);
    const bool opened = name == QLatin1StringView("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                       : file.open(QIODevice::ReadOnly);
    QByteArray bytes;
    const QString reason = opened ? ReadAll(file, bytes) : file.errorString();
    if (!reason.isEmpty())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           QStringLiteral("'%1' can't be read: %2; nothing was changed.").arg(name, reason),
                           QStringLiteral("ReadInput"));
    return bytes;
}

} // namespace qb::cli
