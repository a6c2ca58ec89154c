#include "session/ui/WindowShell.h"

#include "session/ui/CWaitCursor.h"
#include "session/ui/LanguageButton.h"
#include "session/ui/frmNewDatabase.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QStatusBar>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

WindowShell::WindowShell(QMainWindow& window) : QObject(&window), m_window(window)
{
    MakeLibraries();
    MakeStatusBar();
}

void WindowShell::MakeLibraries()
{
    constexpr int ComboCharacters = 24;
    cboDatabase = new QComboBox(&m_window);
    cboDatabase->setObjectName(u"cboDatabase"_s);
    cboDatabase->setAccessibleName(u"Library"_s);
    cboDatabase->setEditable(true);
    cboDatabase->setDuplicatesEnabled(true); // Enter renames; it does not look for the same text
    cboDatabase->setInsertPolicy(QComboBox::NoInsert);
    cboDatabase->setCompleter(nullptr);
    cboDatabase->setMinimumContentsLength(ComboCharacters);
    connect(cboDatabase, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            Q_EMIT LibraryChosen();
    });
    connect(cboDatabase->lineEdit(), &QLineEdit::returnPressed, this,
            [this] { Q_EMIT AliasEntered(cboDatabase->currentText()); });
}

void WindowShell::MakeStatusBar()
{
    constexpr int ProgressWidth = 180;
    constexpr int Margin = 6;
    m_statusText = new QLabel;
    m_statusText->setObjectName(u"sbrMainPanel1"_s);
    m_statusText->setTextFormat(Qt::PlainText);
    m_statusText->setContentsMargins(Margin, 0, 0, 0);
    m_itemDate = new QLabel;
    m_itemDate->setTextFormat(Qt::PlainText);
    m_itemDate->setObjectName(u"sbrMainPanel2"_s);
    m_itemDate->setContentsMargins(0, 0, Margin, 0);
    prgStatus = new QProgressBar;
    prgStatus->setObjectName(u"prgStatus"_s);
    prgStatus->setFixedWidth(ProgressWidth);
    prgStatus->setRange(1, 100);
    prgStatus->hide();
    m_language = new LanguageButton;
    QStatusBar* bar = m_window.statusBar();
    bar->setObjectName(u"sbrMain"_s);
    bar->addWidget(m_statusText, 1);
    bar->addPermanentWidget(prgStatus);
    bar->addPermanentWidget(m_language);
    bar->addPermanentWidget(m_itemDate);
}

// Status bar

void WindowShell::SetStatusText(const QString& text)
{
    m_status = text;
    m_statusText->setText(m_hint.isEmpty() ? text : m_hint);
}

void WindowShell::ShowHint(const QString& hint)
{
    m_hint = hint;
    SetStatusText(m_status);
}

void WindowShell::SetItemDate(const QString& text, const QString& tip)
{
    m_shownDate = text;
    m_itemDate->setText(text);
    m_itemDate->setToolTip(tip);
}

/// The bar from 1 to @p maximum; hidden when that is 0.
void WindowShell::ShowBar(int value, int maximum)
{
    m_working = maximum > 0;
    prgStatus->setVisible(m_working);
    prgStatus->setRange(1, std::max(2, maximum));
    prgStatus->setValue(value);
}

void WindowShell::ShowProgress(const QString& text, int percent)
{
    constexpr int Done = 100;
    if (percent >= Done || percent < 1) {
        m_working = false;
        prgStatus->hide();
        m_itemDate->setText(m_shownDate); // the item is still the one
        return;
    }
    ShowBar(percent, Done);
    constexpr int Widest = 360; // a name of a file must not widen the window
    m_itemDate->setText(m_itemDate->fontMetrics().elidedText(text, Qt::ElideMiddle, Widest));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void WindowShell::ShowProgressStatusBar(int value, int maximum)
{
    ShowBar(value, maximum);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

std::shared_ptr<void> WindowShell::WaitCursor()
{
    auto cursor = std::make_shared<CWaitCursor>();
    cursor->SetCursor(CWaitCursor::Hourglass);
    return cursor;
}

// The combo box of libraries

int WindowShell::ComboCount() const
{
    return cboDatabase->count();
}

int WindowShell::ComboIndex() const
{
    return cboDatabase->currentIndex();
}

void WindowShell::SetComboIndex(int index)
{
    cboDatabase->setCurrentIndex(index);
    cboDatabase->setEditText(cboDatabase->itemText(index));
}

QString WindowShell::ComboText() const
{
    return cboDatabase->currentText();
}

void WindowShell::SetComboText(const QString& text)
{
    const QSignalBlocker blocker(cboDatabase);
    cboDatabase->setCurrentIndex(-1);
    cboDatabase->setEditText(text);
}

void WindowShell::InsertComboEntry(int index, const QString& alias)
{
    const QSignalBlocker blocker(cboDatabase); // the first entry of an empty box is not chosen by that
    const bool chosen = cboDatabase->currentIndex() >= 0;
    cboDatabase->insertItem(index, alias);
    if (!chosen)
        cboDatabase->setCurrentIndex(-1);
}

void WindowShell::RemoveComboEntry(int index)
{
    const QSignalBlocker blocker(cboDatabase);
    const bool chosen = cboDatabase->currentIndex() == index;
    cboDatabase->removeItem(index);
    if (chosen)
        cboDatabase->setCurrentIndex(-1); // no other library is chosen by that
}

void WindowShell::SetComboToolTip(const QString& tip)
{
    cboDatabase->setToolTip(tip);
}

LanguageChoice WindowShell::AskForLanguage()
{
    frmNewDatabase dialog(&m_window);
    dialog.exec();
    return {dialog.LanguageSelected(), dialog.LanguageFilePath()};
}

} // namespace qb
