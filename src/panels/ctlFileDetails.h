#pragma once

#include "text/FileDetailsView.h"

#include <QWidget>

class QTreeView;

namespace qb {

class StoredFileList;

/// The page of the details panel that lists the files stored with the current item.
class ctlFileDetails : public QWidget, public FileDetailsView {
    Q_OBJECT

public:
    explicit ctlFileDetails(QWidget* parent = nullptr);

    QWidget* Page() override { return this; }
    void Initialise(Database& database, const QString& key) override;
    void Terminate() override;
    bool Locked() const override { return m_locked; }
    void SetLocked(bool locked) override { m_locked = locked; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    StoredFileList* m_files;
    QTreeView* lvFiles;
    bool m_locked = false;
};

} // namespace qb
