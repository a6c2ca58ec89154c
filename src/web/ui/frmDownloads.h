#pragma once

#include "web/InetFileLoad.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QHash>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace qb {

/// One file in the window of downloads.
class DownloadRow : public QWidget {
    Q_OBJECT

public:
    DownloadRow(InetFileLoad& component, LoadingFile& file, QWidget* parent = nullptr);
    /// Shows how far it is.
    void Show();

private:
    QPushButton* AddButton(const QString& name, const QString& caption, const QString& icon);
    void ShowButtons();
    void StopOrGoOn();
    void SaveAs();
    void ShowFolder();
    QString StateText() const;
    QString Speed();

    InetFileLoad& m_component;
    LoadingFile& m_file;
    QLabel* lblName;
    QLabel* lblState;
    QProgressBar* m_progress;
    QPushButton* cmdStop;
    QPushButton* cmdCancel;
    QPushButton* cmdSaveAs;
    QPushButton* cmdOpenItem;
    QPushButton* cmdShowFolder;
    QElapsedTimer m_shown; ///< since the state was written
    QElapsedTimer m_measured;
    qint64 m_before = 0; ///< bytes when the speed was measured
    QString m_speed;
};

/// The window of downloads: a row for each file. It goes with the component, which is done when it is closed.
class frmDownloads : public QDialog {
    Q_OBJECT

public:
    explicit frmDownloads(InetFileLoad& component, QWidget* parent = nullptr);

    /// Whether all that would be lost may be, which is asked where there is something.
    bool MayClose();

protected:
    void closeEvent(QCloseEvent* event) override;
    void reject() override { close(); }

private:
    void Add(LoadingFile& file);
    void CloseWhenWanted();

    InetFileLoad& m_component;
    QVBoxLayout* m_rows;
    QHash<LoadingFile*, DownloadRow*> m_rowOf;
};

} // namespace qb
