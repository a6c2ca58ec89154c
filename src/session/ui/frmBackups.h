#pragma once

#include "platform/system/Hook.h"
#include "session/BackupList.h"
#include "session/SessionState.h"

#include <QDialog>
#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

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
    Hook<void(const QString& file)> Restore;
    /// Items were added to the open library.
    Hook<void(qint64 id)> ItemBroughtBack;

private:
    void MakeList();
    void Fill();
    QString Chosen() const;
    void UpdateEnabled();
    void WithBackup(const QString& procedure, const std::function<void(const QString& file)>& body);
    void BringBack(const QString& file);
    void cmdFolder_Click();
    void cmdCheck_Click();
    void cmdItem_Click();
    void cmdRestore_Click();

    SessionState* m_session = nullptr;
    QString m_folder;
    QLabel* lblFolder;
    QStackedWidget* m_pages; ///< the list, or a notice where there is nothing to list
    QTreeWidget* lvBackups;
    QLabel* lblNotice;
    QLabel* lblDone; ///< what was done last
    QPushButton* cmdCheck;
    QPushButton* cmdItem;
    QPushButton* cmdRestore;
};

/// Chooses an item of a backup by a look at it.
class frmBackupItem : public QDialog {
    Q_OBJECT

public:
    /// @p backup must outlive the dialog. How its items are in @p library now is listed too.
    frmBackupItem(QWidget* parent, BackupItems& backup, Library& library);

    /// The number of the item that is selected; 0 when none is.
    qint64 Item() const;
    QString Title() const;

private:
    void MakeList();
    void FillTree();
    void Filter();
    void ShowItem();

    BackupItems& m_backup;
    bool m_isOfLibrary; ///< and not of another one
    std::vector<BackupItemLine> m_lines;
    std::vector<QTreeWidgetItem*> m_items; ///< of the lines
    QLineEdit* txtFilter;
    QCheckBox* chkOnlyOthers;
    QTreeWidget* tvItems;
    QLabel* lblNone; ///< nothing fits the filter
    QPlainTextEdit* txtPreview;
    QPushButton* cmdBringBack;
};

} // namespace qb
