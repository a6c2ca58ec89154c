#pragma once

#include "session/SessionState.h"

#include <QDialog>
#include <optional>

class QTreeWidget;

namespace qb {

/// The list of libraries with their places, to read.
class frmDatabaseList : public QDialog {
    Q_OBJECT

public:
    explicit frmDatabaseList(QWidget* parent = nullptr);

    /// @p selected is the place of the open library in the list.
    void Initialize(const std::vector<LibraryEntry>& libraries, std::optional<int> selected);

private:
    QTreeWidget* m_list;
};

} // namespace qb
