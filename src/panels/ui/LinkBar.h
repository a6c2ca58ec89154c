#pragma once

#include "panels/ItemTreeView.h"

#include <QToolBar>

class QComboBox;
class QToolButton;

namespace qb {

/// The toolbar `tbrLinks` over the tree: a button that begins a link mode, and the links of the current item in a box,
/// with what can be done with the chosen one.
class LinkBar : public QToolBar {
    Q_OBJECT

public:
    explicit LinkBar(QWidget* parent = nullptr);

    qb::LinkMode Mode() const { return m_mode; }
    void SetMode(qb::LinkMode mode);
    bool IsPermanent() const { return m_permanent; }
    void SetPermanent(bool permanent) { m_permanent = permanent; }

    void ClearLinks();
    void AddLink(const CLink& link);
    /// A link leads another way, or is new.
    void UpdateLink(const CLink& link);
    /// Whether links of the current item can be made (@p adding) and removed.
    void EnableLinking(bool adding, bool removing);

Q_SIGNALS:
    void ModeStarted(qb::LinkMode mode);
    void ModeEnded();
    /// The user wants to go to the linked item of this ID, or to remove the link to it.
    void LinkFollowed(qint64 item);
    void LinkRemoveAsked(qint64 item);

private:
    void MakeModeMenu();
    void MakeLinkBox();
    void ChooseMode(qb::LinkMode mode);
    void ShowMode();
    void UpdateCombo();
    QAction* AddLinkButton(const QString& key, const QString& image, const QString& tip,
                           void (LinkBar::*asked)(qint64));
    qint64 ComboItem() const;

    QToolButton* m_linkMode = nullptr;
    QAction* m_linkModeAction = nullptr; ///< of the button, in the toolbar
    QComboBox* cboLinkedItems = nullptr;
    QAction* m_linkBox = nullptr; ///< of cboLinkedItems: the toolbar enables the box with it
    QAction* m_linkGoto = nullptr;
    QAction* m_linkRemove = nullptr;
    qb::LinkMode m_mode = qb::LinkMode::None;
    qb::LinkMode m_chosenMode = qb::LinkMode::OneWayFrom; ///< of the button
    bool m_permanent = false;
    bool m_removesLinks = true;
};

} // namespace qb
