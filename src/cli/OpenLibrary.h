#pragma once

#include "cli/Output.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "store/SideFolders.h"

#include <memory>

namespace qb::cli {

/// Opens a library for one command; raises an error that says what is wrong with the file.
inline std::unique_ptr<Library> OpenLibrary(const QString& path, DBEngine::Access access)
{
    std::unique_ptr<Library> library = Library::Open(path, access);
    if (const QString foreign = WhoseFoldersAreForeign(*library); !foreign.isEmpty())
        Complain(foreign);
    if (access == DBEngine::Access::ReadWrite) {
        FinishPendingFiles(*library);
        FinishPendingPages(*library);
    }
    return library;
}

} // namespace qb::cli
