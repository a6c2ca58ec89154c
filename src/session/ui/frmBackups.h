#pragma once

#include "session/SessionState.h"

#include <QDialog>
#include <functional>

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;

namespace qb {

class BackupItems;
class Work;

/// The list of backups in a folder: when each was made, whether it is good, what has changed since. From here one is
/// checked, restored, or single items are brought back.
class frmBackups : public QDialog {
    Q_OBJECT

public:
    explicit frmBackups(QWidget* parent);

    /// Shows the backups of @p folder.
    void Initialize(SessionState& session, const QString& folder);

    /// Restores a backup; the dialog is closed before.
    std::function<void(const QString& file)> Restore = [](const QString&) {};
    /// Items were added to the open library.
    std::function<void(qint64 id)> ItemBroughtBack = [](qint64) {};

private:
    void Fill();
    QString Chosen() const;
    void UpdateEnabled();
    void cmdFolder_Click();
    void cmdCheck_Click();
    void cmdItem_Click();
    void cmdRestore_Click();

    SessionState* m_session = nullptr;
    QString m_folder;
    QLabel* lblFolder;
    QTreeWidget* lvBackups;
    QPushButton* cmdCheck;
    QPushButton* cmdItem;
    QPushButton* cmdRestore;
};

/// Chooses an item of a backup by a look at it.
class frmBackupItem : public QDialog {
    Q_OBJECT

public:
    /// @p backup must outlive the dialog.
    frmBackupItem(QWidget* parent, BackupItems& backup);

    /// The number of the item that is selected; 0 when none is.
    qint64 Item() const;

private:
    void FillTree();
    void ShowItem();

    BackupItems& m_backup;
    QTreeWidget* tvItems;
    QPlainTextEdit* txtPreview;
    QPushButton* cmdBringBack;
};

} // namespace qb
