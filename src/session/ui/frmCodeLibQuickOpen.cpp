// Quick open in the main window: how it is connected.

#include "finder/ui/frmQuickOpen.h"
#include "panels/ui/ctlFileDetails.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/frmCodeLib.h"
#include "text/ui/UserTextBox.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A menu that it stands in can be opened.
bool IsOffered(const QAction& action)
{
    bool isInMenu = false;
    for (const QObject* object : action.associatedObjects()) {
        const auto* menu = qobject_cast<const QMenu*>(object);
        if (!menu)
            continue;
        isInMenu = true;
        const QAction* own = menu->menuAction();
        if (own->isEnabled() && own->isVisible() && IsOffered(*own))
            return true;
    }
    return !isInMenu;
}

} // namespace

void frmCodeLib::MakeQuickOpen()
{
    m_quickSession = std::make_unique<QuickOpenSession>(m_session, *tvCodeItems, ctlCodeItemDetails->Editor(), *m_tree,
                                                        m_commands);
    m_quickSession->UpdateCommands = [this] {
        mnuFile_Click();
        mnuEdit_Click();
        m_items->ItemMenuEdit();
    };
    m_quickSession->IsOffered = [this](const QString& name) {
        const QAction* action = m_faces->Action(name);
        return action && IsOffered(*action);
    };
    m_quickSession->KeyOf = [this](const QString& name) {
        return m_faces->Action(name)->shortcut().toString(QKeySequence::NativeText);
    };
    m_quickSession->ShowTree = [this] {
        tvCodeItems->SetTreeHidden(false);
        tvCodeItems->EndFilter();
    };
    m_quickSession->FocusText = [this] {
        if (UserTextBox* box = ctlCodeItemDetails->CurrentBox())
            box->TakeFocus();
        else
            ctlCodeItemDetails->setFocus();
    };
    m_quickSession->ShowTab = std::bind_front(&ctlCodeDetails::SetCurrentView, ctlCodeItemDetails);
    m_quickSession->ShowFile = [this](qint64 file) {
        m_storedFiles->SelectFile(file);
        m_storedFiles->SetFocusToList();
    };
    m_quickSession->ShowLine = [this](int line) { ctlCodeItemDetails->GoToLine(line); };
    m_quickOpen = new frmQuickOpen(*m_quickSession, m_findService, *this);
    m_commands.Register(u"mnuQuickOpen"_s, this, &frmCodeLib::ShowQuickOpen);
}

/// Below the main toolbar.
QRect frmCodeLib::RoomOfQuickOpen() const
{
    const int top = tlbMain->geometry().bottom() + 1;
    return {0, top, width(), height() - top};
}

void frmCodeLib::ShowQuickOpen()
{
    tvCodeItems->EndLabelEdit();
    if (CurrentDatabase() && !m_findService.IsOpen())
        m_findService.Open(CurrentDatabase()->Name());
    m_quickOpen->Open(RoomOfQuickOpen());
}

} // namespace qb
