#pragma once

#include <QToolBar>

class QComboBox;

namespace qb {

/// The toolbar `tbrBrowser` over the Links tab: its commands, and the address.
class BrowserToolbar : public QToolBar {
    Q_OBJECT

public:
    /// @p commands are the entries of the menu of the same.
    explicit BrowserToolbar(const QList<QAction*>& commands, QWidget* parent = nullptr);

    void SetAddress(const QString& address);

Q_SIGNALS:
    /// The user has typed or chosen an address.
    void AddressEntered(const QString& text);

private:
    QComboBox* cboURL;
};

} // namespace qb
