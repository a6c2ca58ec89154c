#include "help/ui/frmHelp.h"

#include "help/ui/HelpBrowser.h"
#include "help/ui/HelpContents.h"
#include "support/ui/Icons.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QToolBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

frmHelp::frmHelp(QWidget* parent)
    : QMainWindow(parent, Qt::Window), m_contents(new HelpContents(m_handbook)), m_page(new HelpBrowser(m_handbook)),
      tbrHelp(addToolBar(u"Handbook"_s)), m_findBar(new QToolBar(u"Find in Page"_s)), txtFind(new QLineEdit),
      lblFound(new QLabel)
{
    constexpr QSize Size(960, 700);
    constexpr int ContentsWidth = 280;
    setObjectName(u"frmHelp"_s);
    auto* splitter = new QSplitter;
    splitter->addWidget(m_contents);
    splitter->addWidget(m_page);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ContentsWidth, Size.width() - ContentsWidth});
    splitter->setChildrenCollapsible(false);
    setCentralWidget(splitter);
    MakeToolbar();
    MakeFindBar();
    connect(m_contents, &HelpContents::TopicChosen, this, &frmHelp::ShowTopic);
    connect(m_contents, &HelpContents::HitChosen, this, [this](const QString& topic, const QStringList& words) {
        m_page->ShowTopic(topic);
        m_page->Mark(words);
    });
    connect(m_contents, &HelpContents::SearchEnded, this, [this] { m_page->Mark({}); });
    connect(m_page, &HelpBrowser::TopicChanged, this, [this](const QString& topic) {
        m_contents->Follow(topic);
        setWindowTitle(m_handbook.TitleOf(topic) + u" - Handbook"_s);
    });
    resize(Size);
    m_page->setFocus();
}

void frmHelp::ShowTopicBeside(QWidget& host, const QString& topic)
{
    auto* window = host.findChild<frmHelp*>(u"frmHelp"_s, Qt::FindDirectChildrenOnly);
    if (!window)
        window = new frmHelp(&host);
    window->ShowTopic(topic);
    window->show();
    window->raise();
    window->activateWindow();
}

void frmHelp::ShowTopic(const QString& topic)
{
    m_page->ShowTopic(topic);
}

QString frmHelp::Topic() const
{
    return m_page->Topic();
}

// Commands

QAction* frmHelp::AddAction(const QString& name, const QString& caption, const QString& icon, const QKeySequence& key,
                            void (frmHelp::*run)())
{
    auto* action = new QAction(IconNamed(icon), caption, this);
    action->setObjectName(name);
    action->setShortcut(key);
    action->setToolTip(u"%1 (%2)"_s.arg(caption, key.toString(QKeySequence::NativeText)));
    connect(action, &QAction::triggered, this, run);
    addAction(action);
    return action;
}

void frmHelp::MakeToolbar()
{
    tbrHelp->setObjectName(u"tbrHelp"_s);
    tbrHelp->setMovable(false);
    setContextMenuPolicy(Qt::NoContextMenu);
    QAction* back = AddAction(u"mnuHelpBack"_s, u"Back"_s, u"go-previous"_s, u"Alt+Left"_s, &frmHelp::GoBack);
    QAction* forward = AddAction(u"mnuHelpForward"_s, u"Forward"_s, u"go-next"_s, u"Alt+Right"_s, &frmHelp::GoForward);
    tbrHelp->addAction(back);
    tbrHelp->addAction(forward);
    tbrHelp->addAction(AddAction(u"mnuHelpHome"_s, u"First Page"_s, u"go-home"_s, u"Alt+Home"_s, &frmHelp::GoHome));
    tbrHelp->addSeparator();
    tbrHelp->addAction(AddAction(u"mnuHelpFind"_s, u"Find in Page"_s, u"edit-find"_s, u"Ctrl+F"_s, &frmHelp::OpenFind));
    AddAction(u"mnuHelpSearch"_s, u"Look Through All Pages"_s, {}, u"Ctrl+K"_s, &frmHelp::FocusSearch);
    AddAction(u"mnuHelpEscape"_s, u"Close"_s, {}, u"Esc"_s, &frmHelp::Escape);
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(m_page, &HelpBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_page, &HelpBrowser::forwardAvailable, forward, &QAction::setEnabled);
}

void frmHelp::GoBack()
{
    m_page->backward();
}

void frmHelp::GoForward()
{
    m_page->forward();
}

void frmHelp::GoHome()
{
    ShowTopic(Handbook::HomeTopic());
}

void frmHelp::FocusSearch()
{
    m_contents->FocusSearch();
}

/// Ends what is nearest: the find in the page, the search, then the window.
void frmHelp::Escape()
{
    if (m_findBar->isVisible()) {
        m_findBar->hide();
        m_page->setFocus();
    } else if (!m_contents->EndSearch()) {
        close();
    }
}

// Find in the page

void frmHelp::MakeFindBar()
{
    constexpr int Width = 260;
    constexpr int Gap = 8;
    m_findBar->setObjectName(u"tbrHelpFind"_s);
    m_findBar->setMovable(false);
    txtFind->setObjectName(u"txtHelpFind"_s);
    txtFind->setPlaceholderText(u"Find in this page"_s);
    txtFind->setMaximumWidth(Width);
    txtFind->setClearButtonEnabled(true);
    lblFound->setObjectName(u"lblHelpFound"_s);
    lblFound->setContentsMargins(Gap, 0, Gap, 0);
    m_findBar->addWidget(txtFind);
    m_findBar->addAction(
        AddAction(u"mnuHelpFindPrevious"_s, u"Previous"_s, u"go-up"_s, u"Shift+F3"_s, &frmHelp::FindPrevious));
    m_findBar->addAction(AddAction(u"mnuHelpFindNext"_s, u"Next"_s, u"go-down"_s, u"F3"_s, &frmHelp::FindNext));
    m_findBar->addWidget(lblFound);
    addToolBar(Qt::BottomToolBarArea, m_findBar);
    m_findBar->hide();
    connect(txtFind, &QLineEdit::textChanged, this, std::bind_front(&frmHelp::Find, this, false, true));
    connect(txtFind, &QLineEdit::returnPressed, this, &frmHelp::FindNext);
}

void frmHelp::OpenFind()
{
    m_findBar->show();
    txtFind->setFocus();
    txtFind->selectAll();
}

void frmHelp::FindNext()
{
    Find(false, false);
}

void frmHelp::FindPrevious()
{
    Find(true, false);
}

void frmHelp::Find(bool backward, bool fromHere)
{
    const bool isFound = txtFind->text().isEmpty() || m_page->FindText(txtFind->text(), backward, fromHere);
    lblFound->setText(isFound ? QString() : u"Not found"_s);
}

} // namespace qb
