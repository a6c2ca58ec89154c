#pragma once

#include <QString>

namespace qb {

/// The program's version: major, minor and revision joined by points.
inline QString ProgramVersion()
{
    return QStringLiteral(QUILLBASE_VERSION);
}

} // namespace qb
