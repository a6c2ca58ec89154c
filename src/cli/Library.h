#pragma once

#include "cli/Output.h"
#include "platform/dao/DBEngine.h"
#include "store/PendingFiles.h"
#include "store/SessionValues.h"
#include "store/SideFolders.h"

#include <QDir>
#include <memory>

namespace qb::cli {

/// Opens a library for one command; raises an error that says what is wrong with the file.
inline std::unique_ptr<Database> OpenLibrary(const QString& path, DBEngine::Access access)
{
    std::unique_ptr<Database> database = DBEngine::OpenDatabase(path, access);
    if (!IsLibrary(*database))
        throw RuntimeError(ErrorNumber::NotADatabase,
                           QStringLiteral("'%1' is not a KT Quillbase database.").arg(QDir::toNativeSeparators(path)),
                           QStringLiteral("OpenLibrary"));
    SetSessionValues(*database);
    if (const QString foreign = WhoseFoldersAreForeign(*database); !foreign.isEmpty())
        Complain(foreign);
    if (access == DBEngine::Access::ReadWrite)
        FinishPendingFiles(*database);
    return database;
}

} // namespace qb::cli
