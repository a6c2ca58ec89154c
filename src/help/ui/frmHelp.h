#pragma once

#include "help/Handbook.h"

#include <QMainWindow>

class QLabel;
class QLineEdit;
class QToolBar;

namespace qb {

class HelpContents;
class HelpBrowser;

/// The window of the handbook: its contents with a search, the page that is shown, back and forward, and a find in
/// the page.
class frmHelp : public QMainWindow {
    Q_OBJECT

public:
    /// Reads the handbook; raises RuntimeError 3024 when that can't be.
    explicit frmHelp(QWidget* parent);

    /// Shows a topic in the help window of @p host, which is made when there is none yet. The one of a dialog goes with
    /// it; a dialog keeps the user from those of other windows.
    static void ShowTopicBeside(QWidget& host, const QString& topic);

    void ShowTopic(const QString& topic);
    QString Topic() const;

private:
    void MakeToolbar();
    void MakeFindBar();
    QAction* AddAction(const QString& name, const QString& caption, const QString& icon, const QKeySequence& key,
                       void (frmHelp::*run)());
    void GoBack();
    void GoForward();
    void GoHome();
    void FocusSearch();
    void OpenFind();
    void FindNext();
    void FindPrevious();
    void Find(bool backward, bool fromHere);
    void Escape();

    Handbook m_handbook;
    HelpContents* m_contents;
    HelpBrowser* m_page;
    QToolBar* tbrHelp;
    QToolBar* m_findBar;
    QLineEdit* txtFind;
    QLabel* lblFound;
};

} // namespace qb
