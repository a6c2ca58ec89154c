#pragma once

#include "platform/system/Hook.h"
#include "session/RemovedTools.h"

#include <QDialog>
#include <memory>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;

namespace qb {

/// The list of what was removed from the open library: found by words, looked at, brought back.
class frmRemovedItems : public QDialog {
    Q_OBJECT

public:
    /// @p library must outlive the dialog; with @p mayWrite false nothing can be brought back.
    frmRemovedItems(QWidget* parent, Library& library, bool mayWrite);

    /// Something was brought back to this item.
    Hook<void(qint64 id)> BroughtBack;
    /// Leads to an item; the dialog is closed before.
    Hook<void(qint64 id)> Show;
    /// Where to bring something whose place is gone: below an item, 0 for the top of the tree, -1 for nowhere.
    Hook<qint64()> AskPlace;

private:
    void MakeList();
    void Fill();
    void ShowEntry();
    QString Chosen() const;
    void cmdBringBack_Click();

    Library& m_library;
    bool m_mayWrite;
    std::unique_ptr<RemovedBrowser> m_browser;
    qint64 m_broughtBack = 0; ///< the item that came back last
    QLineEdit* txtSearch;
    QStackedWidget* m_pages; ///< the list, or a notice where there is nothing to list
    QTreeWidget* lvRemoved;
    QLabel* lblNotice;
    QPlainTextEdit* txtPreview;
    QLabel* lblDone; ///< what was done last, or how much is kept
    QPushButton* cmdBringBack;
    QPushButton* cmdShow;
};

} // namespace qb
