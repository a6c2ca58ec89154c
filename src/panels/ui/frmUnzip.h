#pragma once

#include "platform/archive/BrindletonZip.h"

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QLabel;
class QLayout;
class QTreeWidget;
class QTreeWidgetItem;

namespace qb {

/// The zip engine's dialog: what an archive holds, what of it to extract, and where to.
class frmUnzip : public QDialog, public UnzipDialog {
    Q_OBJECT

public:
    explicit frmUnzip(QWidget* parent = nullptr);

    /// Folders to offer beside the one that is proposed.
    void SetFolders(const QStringList& folders) { m_folders = folders; }
    bool Run(BrindletonZip& engine, const QString& folder, const QString& title) override;

    void accept() override;

Q_SIGNALS:
    /// Told while files are extracted, as the engine tells it.
    void Progress(int fileNo, const QString& text, int files);

private:
    void MakeList();
    QLayout* MakeChosenRow();
    QLayout* MakeFolderRow();
    void ListEntries(const std::vector<ArchiveEntry>& entries);
    QTreeWidgetItem* MakeRow(const ArchiveEntry& entry) const;
    QList<quint64> Chosen() const;
    void SetAllChosen(bool chosen);
    void Browse();
    void UpdateControls();
    bool Extract(const QList<quint64>& indexes);

    BrindletonZip* m_engine = nullptr; ///< while the dialog runs
    QStringList m_folders;
    QTreeWidget* lvEntries;
    QLabel* lblChosen;
    QComboBox* cboFolder;
    QCheckBox* chkReplace;
    QCheckBox* chkOpenFolder;
    QPushButton* m_ok;
};

} // namespace qb
