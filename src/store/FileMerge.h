#pragma once

#include "store/CFileObject.h"

namespace qb {

/// What a save of a stored file's description has come to.
struct DescriptionSave {
    bool Saved = false; ///< otherwise the row is as it was, and what was written here still waits
    bool Taken = false; ///< the description says now what another program had written
};

/// Commits a stored file whose row another program may have written to since it was read. Where both have changed the
/// description the user is asked, with both side by side. Raises 3167 when the row is gone.
DescriptionSave SaveDescription(CFileObject& file, Library& library);

} // namespace qb
