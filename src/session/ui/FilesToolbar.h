#pragma once

#include <QToolBar>

namespace qb {

class ctlFileDetails;

/// The toolbar `tbrFiles` over the stored files: their buttons by their keys, which stand in a menu as well.
class FilesToolbar : public QToolBar {
public:
    FilesToolbar(const ctlFileDetails& files, QMenu& menu);
};

} // namespace qb
