#pragma once

#include <QObject>
#include <QStringList>
#include <functional>

class QWidget;

namespace qb {

/// F1 wherever it is pressed: in the window, its dialogs and its menus. A key press that a shortcut takes does not come
/// here.
class HelpKey : public QObject {
    Q_OBJECT

public:
    /// @p pressed gets the names of what has the focus.
    HelpKey(QObject* parent, std::function<void(const QStringList& names)> pressed);

    /// The object names of a widget and of all that it stands in, from the inside out.
    static QStringList NamesOf(const QWidget* widget);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void(const QStringList&)> m_pressed;
};

} // namespace qb
