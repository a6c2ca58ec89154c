#pragma once

#include <QToolBar>
#include <functional>

class QComboBox;
class QMenu;

namespace qb {

/// The toolbar `tbrBrowser` over the Links tab: its commands, and the address.
class BrowserToolbar : public QToolBar {
    Q_OBJECT

public:
    /// @p commands are the entries of the menu of the same.
    explicit BrowserToolbar(const QList<QAction*>& commands, QWidget* parent = nullptr);

    void SetAddress(const QString& address);
    QString Address() const;
    /// How wide the box of addresses may become where the buttons leave so much of the band, in pixels.
    std::function<int(int left)> AddressWidth;

    /// The pages of the user's own browsers, if one of them tells of them, in a menu at the pointer.
    void OpenedExplorersPopup();

Q_SIGNALS:
    /// The user has typed or chosen an address.
    void AddressEntered(const QString& text);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void PopulateOpenedExplorers(QMenu& menu);

    QComboBox* cboURL;
};

} // namespace qb
