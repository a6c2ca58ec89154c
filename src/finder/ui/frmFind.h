#pragma once

#include "finder/FindHitList.h"
#include "finder/Finding.h"
#include "platform/system/Hook.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QToolButton;

namespace qb {

class FindHitView;
class FindOptions;

/// The dialog of the find over the library. It searches while a query is typed; Enter hands the results to the list of
/// the panel. It stays beside the window, and forwards: what is found is FindSearch's, what becomes of it Finding's.
class frmFind : public QDialog {
    Q_OBJECT

public:
    /// The three must outlive this.
    frmFind(FindSearch& search, FindHitList& hits, Finding& finding, QWidget* parent = nullptr);

    /// Shows the dialog, ready to type; @p selected is what to look for, if it is anything.
    void Open(const QString& selected);
    /// The item below which the find can be kept; 0: none is shown.
    void SetItem(qint64 item, const QString& title);
    FindHitView* Hits() const { return lvHits; }

    FindQuery Query() const;
    void ShowQuery(const FindQuery& query);
    /// What is to come in the place of what is found.
    QString Replacement() const;
    /// Whether something may be replaced in the library.
    void SetMayReplace(bool may);
    /// The title of the item whose texts were edited and are not saved; empty when there is none. As a search goes
    /// through what is saved, it is said of that item that it is not found as it stands.
    Hook<QString()> UnsavedItem;

Q_SIGNALS:
    /// The user wants to see what a replacement would change.
    void ReplaceAsked();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QLayout* MakeQueryRow();
    QLayout* MakeModeRow();
    QLayout* MakeReplaceRow();
    QLayout* MakeButtons();
    void Search();
    void ShowState();
    void ShowMore(bool more);
    void ShowLanguages();
    void StepHistory(int step);
    void FillSavedMenu();
    void SaveSearch();
    void Open(const QModelIndex& index);

    FindSearch& m_search;
    FindHitList& m_hits;
    Finding& m_finding;
    QLineEdit* txtFind;
    QComboBox* cboMode;
    QComboBox* cboCase;
    QCheckBox* chkWholeWord;
    QCheckBox* chkAccents;
    QToolButton* cmdMore;
    QToolButton* cmdSaved;
    QMenu* mnuSaved;
    FindOptions* m_options;
    FindHitView* lvHits;
    QLabel* lblStatus;
    QLineEdit* txtReplace;
    QPushButton* cmdReplace;
    QPushButton* cmdOK = nullptr;
    QStringList m_history;
    int m_historyPlace = -1; ///< -1: what was typed
    QString m_typed;
    bool m_mayReplace = false;
    bool m_showing = false; ///< a query is being shown, which is one change
};

} // namespace qb
