#pragma once

#include "conflicts/ConflictSolver.h"
#include "conflicts/ShownPages.h"

#include <QDialog>
#include <array>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QRadioButton;
class QStatusBar;
class QToolButton;
class QTreeWidget;

namespace qb {

class ComparedView;
class DifferenceStrip;
class ctlCaptionRTB;

/// The solver: both versions of an item side by side. It shows what a ConflictSolver says, and hands on what is typed.
class frmConflicts : public QDialog {
    Q_OBJECT

public:
    explicit frmConflicts(QWidget* parent = nullptr);
    ~frmConflicts() override;

    /// The library whose conflicts are shown; it must outlive the form. To be called before it is shown.
    void InitializeDatabase(Library& library);
    ConflictSolver& Solver() { return *m_solver; }
    /// Resolves what needs nobody, then shows the rest. Rejected when there is no rest.
    int exec() override;
    /// The first part of exec: false when nothing is left to be shown.
    bool Load();

    /// Asks about what was edited.
    void reject() override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    // What the form is made of
    void MakeControls();
    QWidget* MakeHead();
    QWidget* MakeSides();
    QWidget* MakeFacts();
    QWidget* MakeBase();
    void MakeMenus();
    QWidget* MakeFoot();
    QToolButton* MakeSideButton(const QString& name, const QString& text, const QString& toolTip);
    void ConnectControls();
    void ConnectMoves();
    void ConnectSides();
    void MakeShortcuts();

    // What it shows
    void ShowConflict();
    void ShowField();
    void ShowTexts();
    void ShowCompared();
    void ShowPlain();
    void ShowFacts();
    void ShowOrigin();
    void ShowPages();
    void ShowFiles();
    void ShowState();
    void ShowPath();
    QString StateText();

    // What is done
    void Collect();
    QString TextOf(ConflictSide side);
    void FieldChosen(SolverField field);
    void Decide(int which);
    void DecideAllLike(int which);
    void GoToDifference(int step);
    void GoToLine(int line);
    void GoToPart();
    void MoveLines(bool toLeft);
    void FileMenu(const QPoint& place);
    void MoveFile(FileMove move);
    ctlCaptionRTB* BoxOf(ConflictSide side) const;
    ComparedView* ViewOf(ConflictSide side) const;

    Library* m_library = nullptr;
    std::unique_ptr<ConflictSolver> m_solver;
    std::unique_ptr<ShownPages> m_pages;
    LineComparison m_comparison;
    bool m_isCompared = false;      ///< the views hold filler
    std::array<bool, 2> m_inView{}; ///< by ConflictSide: its view shows it, not its box
    std::array<QString, 2> m_noPage; ///< by ConflictSide: why no page is shown
    bool m_loading = false;
    std::array<bool, 2> m_typed{}; ///< by ConflictSide

    QLabel* lblItemTitle;
    QLabel* lblItemPath;
    QWidget* m_facts;
    QWidget* m_base;
    QLabel* lblOrigin;
    QLabel* lblItemFacts;
    QComboBox* cboItemStatus;
    QComboBox* cboItemRating;
    std::array<QRadioButton*, SolverFieldCount> m_options{};
    ctlCaptionRTB* ctlCaptionRTB1;
    ctlCaptionRTB* ctlCaptionRTB2;
    ComparedView* txtCompared1;
    ComparedView* txtCompared2;
    ComparedView* txtBase;
    DifferenceStrip* ctlDifferences;
    QTreeWidget* lwFiles;
    QCheckBox* chkAutoCompare;
    QCheckBox* chkShowBase;
    QPushButton* cmdKeepNewer;
    QPushButton* cmdKeepOlder;
    QPushButton* cmdMoveNext;
    QPushButton* cmdMovePrevious;
    QPushButton* cmdClose;
    QPushButton* cmdMore;
    QPushButton* cmdTakeMerged;
    QToolButton* cmdNextField;
    QToolButton* cmdPreviousField;
    QToolButton* cmdSwap;
    QToolButton* cmdMoveToLeft;
    QToolButton* cmdMoveToRight;
    QMenu* mnuPopUp;
    QAction* mnuMoveNewerItem;
    QAction* mnuMoveOlderItem;
    QStatusBar* StatusBar;
};

} // namespace qb
