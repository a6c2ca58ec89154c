// The controls of the solver.

#include "conflicts/ui/ComparedView.h"
#include "conflicts/ui/DifferenceStrip.h"
#include "conflicts/ui/frmConflicts.h"
#include "text/ui/ctlCaptionRTB.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QShortcut>
#include <QStatusBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of SolverField.
constexpr std::pair<const char*, const char*> Options[] = {
    {"optTitle", "&Title"},    {"optDescription", "&Description"},
    {"optCode", "&Code"},      {"optNotes", "&Notes"},
    {"optUsage", "&Usage"},    {"optFiles", "&Files"},
    {"optHTML", "&HTML Page"}, {"optItemInfo", "&Item Info"},
};
static_assert(std::size(Options) == SolverFieldCount);

QPushButton* Button(const QString& name, const QString& text, const QString& toolTip = {})
{
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
}

QLabel* Label(const QString& name)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    return label;
}

/// A button that stands for a version, in a colour with which its text can be read in any scheme.
void Colour(QPushButton* button, const QString& colour)
{
    button->setStyleSheet(
        u"QPushButton { background: %1; color: white; padding: 6px 12px; font-weight: bold; } "
        "QPushButton:disabled { background: gray; } QPushButton:focus { border: 2px solid black; }"_s.arg(colour));
}

} // namespace

void frmConflicts::MakeControls()
{
    constexpr QSize Size(980, 640);
    setObjectName(u"frmConflicts"_s);
    setWindowTitle(u"Conflict Solver"_s);
    resize(Size);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(MakeHead());
    layout->addWidget(MakeSides(), 1);
    layout->addWidget(MakeFoot());
    StatusBar = new QStatusBar;
    StatusBar->setObjectName(u"StatusBar"_s);
    StatusBar->setSizeGripEnabled(false);
    layout->addWidget(StatusBar);
}

QWidget* frmConflicts::MakeHead()
{
    auto* head = new QWidget;
    auto* layout = new QVBoxLayout(head);
    layout->setContentsMargins(0, 0, 0, 0);
    lblItemTitle = Label(u"lblItemTitle"_s);
    QFont bold = lblItemTitle->font();
    bold.setBold(true);
    lblItemTitle->setFont(bold);
    lblItemPath = Label(u"lblItemPath"_s);
    lblItemPath->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    lblItemTitle->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    layout->addWidget(lblItemTitle);
    layout->addWidget(lblItemPath);
    auto* fields = new QHBoxLayout;
    for (int i = 0; i < SolverFieldCount; ++i) {
        auto* option = new QRadioButton(QString::fromLatin1(Options[i].second));
        option->setObjectName(QString::fromLatin1(Options[i].first));
        m_options[size_t(i)] = option;
        fields->addWidget(option);
    }
    fields->addStretch(1);
    cmdPreviousField = MakeSideButton(u"cmdPreviousField"_s, u"\u25c0"_s, u"Previous Conflicting Section"_s);
    cmdNextField = MakeSideButton(u"cmdNextField"_s, u"\u25b6"_s, u"Next Conflicting Section"_s);
    fields->addWidget(cmdPreviousField);
    fields->addWidget(cmdNextField);
    layout->addLayout(fields);
    return head;
}

QToolButton* frmConflicts::MakeSideButton(const QString& name, const QString& text, const QString& toolTip)
{
    auto* button = new QToolButton;
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    return button;
}

QWidget* frmConflicts::MakeSides()
{
    auto* middle = new QWidget;
    auto* rows = new QVBoxLayout(middle);
    rows->setContentsMargins(0, 0, 0, 0);
    lwFiles = new QTreeWidget;
    lwFiles->setObjectName(u"lwFiles"_s);
    lwFiles->setHeaderLabels({u"Title"_s, u"File Size"_s, u"Date Created"_s, u"Date Added"_s, u"Last Updated"_s});
    lwFiles->setRootIsDecorated(false);
    lwFiles->setAllColumnsShowFocus(true);
    lwFiles->setUniformRowHeights(true);
    lwFiles->setContextMenuPolicy(Qt::CustomContextMenu);
    rows->addWidget(lwFiles, 1);
    auto* sides = new QHBoxLayout;
    ctlCaptionRTB1 = new ctlCaptionRTB;
    ctlCaptionRTB1->setObjectName(u"ctlCaptionRTB1"_s);
    ctlCaptionRTB2 = new ctlCaptionRTB;
    ctlCaptionRTB2->setObjectName(u"ctlCaptionRTB2"_s);
    txtCompared1 = new ComparedView;
    txtCompared1->setObjectName(u"txtCompared1"_s);
    ctlCaptionRTB1->SetSubstitute(txtCompared1);
    txtCompared2 = new ComparedView;
    txtCompared2->setObjectName(u"txtCompared2"_s);
    ctlCaptionRTB2->SetSubstitute(txtCompared2);
    auto* between = new QVBoxLayout;
    cmdMoveToRight = MakeSideButton(u"cmdMoveToRight"_s, u"\u2192"_s, u"Add Selected Text to the Right Side"_s);
    cmdMoveToLeft = MakeSideButton(u"cmdMoveToLeft"_s, u"\u2190"_s, u"Add Selected Text to the Left Side"_s);
    cmdSwap = MakeSideButton(u"cmdSwap"_s, u"\u21c4"_s, u"Swap Sides"_s);
    between->addStretch(1);
    for (QToolButton* button : {cmdMoveToRight, cmdMoveToLeft, cmdSwap})
        between->addWidget(button);
    between->addStretch(1);
    ctlDifferences = new DifferenceStrip;
    sides->addWidget(ctlCaptionRTB1, 1);
    sides->addLayout(between);
    sides->addWidget(ctlCaptionRTB2, 1);
    sides->addWidget(ctlDifferences);
    rows->addLayout(sides, 2);
    lblOrigin = Label(u"lblOrigin"_s);
    lblOrigin->setWordWrap(true);
    rows->addWidget(lblOrigin);
    rows->addWidget(MakeBase(), 1);
    rows->addWidget(MakeFacts());
    return middle;
}

/// The version that both came from, to be looked at.
QWidget* frmConflicts::MakeBase()
{
    m_base = new QWidget;
    auto* layout = new QVBoxLayout(m_base);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* caption = new QLabel(u"The version that both came from"_s);
    txtBase = new ComparedView;
    txtBase->setObjectName(u"txtBase"_s);
    txtBase->setAccessibleName(caption->text());
    layout->addWidget(caption);
    layout->addWidget(txtBase, 1);
    return m_base;
}

/// Status and rating, which no decision takes by itself.
QWidget* frmConflicts::MakeFacts()
{
    m_facts = new QWidget;
    auto* layout = new QHBoxLayout(m_facts);
    layout->setContentsMargins(0, 0, 0, 0);
    lblItemFacts = Label(u"lblItemFacts"_s);
    lblItemFacts->setText(u"The item will have, whichever version is kept:"_s);
    layout->addWidget(lblItemFacts);
    const auto add = [layout](const QString& name, const QString& caption) {
        auto* label = new QLabel(caption);
        auto* box = new QComboBox;
        box->setObjectName(name);
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        label->setBuddy(box);
        layout->addWidget(label);
        layout->addWidget(box);
        return box;
    };
    cboItemStatus = add(u"cboItemStatus"_s, u"&Status"_s);
    cboItemRating = add(u"cboItemRating"_s, u"&Rating"_s);
    layout->addStretch(1);
    return m_facts;
}

QWidget* frmConflicts::MakeFoot()
{
    auto* foot = new QWidget;
    auto* rows = new QVBoxLayout(foot);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* help = new QHBoxLayout;
    auto* buttons = new QHBoxLayout;
    rows->addLayout(help);
    rows->addLayout(buttons);
    chkAutoCompare = new QCheckBox(u"Automatic Compare Method"_s);
    chkAutoCompare->setObjectName(u"chkAutoCompare"_s);
    chkAutoCompare->setChecked(true);
    cmdKeepNewer = Button(u"cmdKeepNewer"_s, u"&Keep Newer Version"_s);
    cmdKeepOlder = Button(u"cmdKeepOlder"_s, u"Keep &Older Version"_s);
    Colour(cmdKeepNewer, u"#1f6f3f"_s);
    Colour(cmdKeepOlder, u"#8a4b08"_s);
    cmdMovePrevious = Button(u"cmdMovePrevious"_s, u"&Previous Conflict"_s, u"Move to Previous Item"_s);
    cmdMoveNext = Button(u"cmdMoveNext"_s, u"&Next Conflict"_s, u"Move To Next Item"_s);
    cmdClose = Button(u"cmdClose"_s, u"&Close"_s);
    cmdMore = Button(u"cmdMore"_s, u"&More"_s);
    chkShowBase = new QCheckBox(u"Show Common &Version"_s);
    chkShowBase->setObjectName(u"chkShowBase"_s);
    cmdTakeMerged = Button(u"cmdTakeMerged"_s, u"Take One-Sided Chan&ges"_s,
                           u"Gives both sides what only one of them has changed since they were the same; what both "
                           "have changed stays to be decided"_s);
    MakeMenus();
    help->addWidget(chkAutoCompare);
    help->addStretch(1);
    help->addWidget(chkShowBase);
    help->addWidget(cmdTakeMerged);
    for (QPushButton* button : {cmdKeepNewer, cmdKeepOlder, cmdMore})
        buttons->addWidget(button);
    buttons->addStretch(1);
    for (QPushButton* button : {cmdMovePrevious, cmdMoveNext, cmdClose})
        buttons->addWidget(button);
    return foot;
}

void frmConflicts::MakeMenus()
{
    auto* more = new QMenu(this);
    more->setObjectName(u"mnuMore"_s);
    const auto add = [](QMenu* menu, const QString& name, const QString& text) {
        QAction* action = menu->addAction(text);
        action->setObjectName(name);
        return action;
    };
    connect(add(more, u"mnuKeepNewerAll"_s, u"Keep the &Newer Version of All Items That Differ Like This"_s),
            &QAction::triggered, this, std::bind_front(&frmConflicts::DecideAllLike, this, 1));
    connect(add(more, u"mnuKeepOlderAll"_s, u"Keep the &Older Version of All Items That Differ Like This"_s),
            &QAction::triggered, this, std::bind_front(&frmConflicts::DecideAllLike, this, 2));
    cmdMore->setMenu(more);
    mnuPopUp = new QMenu(this);
    mnuPopUp->setObjectName(u"mnuPopUp"_s);
    mnuMoveNewerItem = add(mnuPopUp, u"mnuMoveNewerItem"_s, MoveToNewerCaption);
    mnuMoveOlderItem = add(mnuPopUp, u"mnuMoveOlderItem"_s, MoveToOlderCaption);
}

void frmConflicts::ConnectControls()
{
    for (int i = 0; i < SolverFieldCount; ++i)
        connect(m_options[size_t(i)], &QRadioButton::clicked, this, [this, i] { FieldChosen(SolverField(i)); });
    connect(cmdKeepNewer, &QPushButton::clicked, this, std::bind_front(&frmConflicts::Decide, this, 1));
    connect(cmdKeepOlder, &QPushButton::clicked, this, std::bind_front(&frmConflicts::Decide, this, 2));
    connect(cmdClose, &QPushButton::clicked, this, &frmConflicts::reject);
    connect(chkShowBase, &QCheckBox::clicked, this, &frmConflicts::ShowOrigin);
    ConnectMoves();
    ConnectSides();
    connect(cmdSwap, &QToolButton::clicked, this, [this] {
        Collect();
        m_solver->SaveEditedField();
        m_solver->Swap();
        ShowField();
    });
    connect(cmdMoveToLeft, &QToolButton::clicked, this, std::bind_front(&frmConflicts::MoveLines, this, true));
    connect(cmdMoveToRight, &QToolButton::clicked, this, std::bind_front(&frmConflicts::MoveLines, this, false));
    connect(chkAutoCompare, &QCheckBox::clicked, this, [this] {
        chkAutoCompare->setChecked(!chkAutoCompare->isChecked()); // what was typed is of the former form
        Collect();
        m_solver->SaveEditedField();
        chkAutoCompare->setChecked(!chkAutoCompare->isChecked());
        ShowTexts();
    });
    connect(cmdTakeMerged, &QPushButton::clicked, this, [this] {
        Collect();
        if (m_solver->TakeMerged())
            ShowConflict();
    });
    connect(cboItemStatus, &QComboBox::activated, this,
            [this](int side) { m_solver->SetStatusSide(ConflictSide(side)); });
    connect(cboItemRating, &QComboBox::activated, this,
            [this](int side) { m_solver->SetRatingSide(ConflictSide(side)); });
    connect(ctlDifferences, &DifferenceStrip::LineChosen, this, &frmConflicts::GoToLine);
    connect(lwFiles, &QWidget::customContextMenuRequested, this, &frmConflicts::FileMenu);
    connect(mnuMoveNewerItem, &QAction::triggered, this,
            std::bind_front(&frmConflicts::MoveFile, this, FileMove::ToNewer));
    connect(mnuMoveOlderItem, &QAction::triggered, this,
            std::bind_front(&frmConflicts::MoveFile, this, FileMove::ToOlder));
    connect(lwFiles, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (m_loading)
            return;
        Collect();
        m_solver->SelectFile(lwFiles->indexOfTopLevelItem(item));
        ShowTexts();
    });
}

void frmConflicts::ConnectMoves()
{
    const auto go = [this](QAbstractButton* button, bool (ConflictSolver::*step)(), bool toItem) {
        connect(button, &QAbstractButton::clicked, this, [this, step, toItem] {
            Collect();
            if (!(m_solver.get()->*step)())
                return;
            toItem ? ShowConflict() : ShowField();
        });
    };
    go(cmdMoveNext, &ConflictSolver::MoveNext, true);
    go(cmdMovePrevious, &ConflictSolver::MovePrevious, true);
    go(cmdNextField, &ConflictSolver::NextField, false);
    go(cmdPreviousField, &ConflictSolver::PreviousField, false);
}

/// The whole form by keys: the texts take the tab key for themselves.
void frmConflicts::MakeShortcuts()
{
    const auto add = [this](const QKeySequence& key, const auto& action) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, action);
    };
    add(Qt::Key_F8, std::bind_front(&frmConflicts::GoToDifference, this, 1));
    add(Qt::SHIFT | Qt::Key_F8, std::bind_front(&frmConflicts::GoToDifference, this, -1));
    add(Qt::Key_F6, std::bind_front(&frmConflicts::GoToPart, this));
    const std::pair<QKeySequence, QToolButton*> buttons[] = {{Qt::CTRL | Qt::Key_PageUp, cmdPreviousField},
                                                             {Qt::CTRL | Qt::Key_PageDown, cmdNextField},
                                                             {Qt::ALT | Qt::Key_Left, cmdMoveToLeft},
                                                             {Qt::ALT | Qt::Key_Right, cmdMoveToRight}};
    for (const auto& [key, button] : buttons)
        add(key, [button = button] { button->click(); });
}

/// What is typed on either side, and scroll bars that go together.
void frmConflicts::ConnectSides()
{
    for (const bool isLeft : {true, false}) {
        const auto typed = [this, isLeft] {
            if (!m_loading && m_solver)
                m_typed[size_t(isLeft ? m_solver->LeftSide() : m_solver->RightSide())] = true;
        };
        RichTextBox* box = (isLeft ? ctlCaptionRTB1 : ctlCaptionRTB2)->RtbText();
        RichTextBox* otherBox = (isLeft ? ctlCaptionRTB2 : ctlCaptionRTB1)->RtbText();
        ComparedView* view = isLeft ? txtCompared1 : txtCompared2;
        ComparedView* otherView = isLeft ? txtCompared2 : txtCompared1;
        connect(box, &QTextEdit::textChanged, this, typed);
        connect(view, &QPlainTextEdit::textChanged, this, typed);
        const auto tie = [this](QScrollBar* bar, QScrollBar* other) {
            connect(bar, &QScrollBar::valueChanged, other, &QScrollBar::setValue);
        };
        tie(box->verticalScrollBar(), otherBox->verticalScrollBar());
        tie(view->verticalScrollBar(), otherView->verticalScrollBar());
        tie(view->horizontalScrollBar(), otherView->horizontalScrollBar());
    }
}

} // namespace qb
