#include "help/ui/HelpKey.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <utility>

namespace qb {

namespace {

/// The entry that is chosen in an open menu, the menu and those it was opened from, which are closed.
QStringList LeaveMenus(QMenu* menu)
{
    QStringList names;
    if (const QAction* entry = menu->activeAction())
        names << entry->objectName();
    while (menu) {
        names << menu->objectName();
        menu->close();
        menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    }
    return names;
}

} // namespace

HelpKey::HelpKey(QObject* parent, std::function<void(const QStringList&)> pressed)
    : QObject(parent), m_pressed(std::move(pressed))
{
    qApp->installEventFilter(this);
}

QStringList HelpKey::NamesOf(const QWidget* widget)
{
    QStringList names;
    for (; widget; widget = widget->parentWidget())
        names << widget->objectName();
    return names;
}

bool HelpKey::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier)
        return false;
    const auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget)
        return false;
    auto* menu = qobject_cast<QMenu*>(watched);
    m_pressed(menu ? LeaveMenus(menu) : NamesOf(widget));
    return true;
}

} // namespace qb
