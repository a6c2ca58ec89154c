#pragma once

#include <QHash>
#include <QToolBar>
#include <functional>

class QMenu;

namespace qb {

class CCodeItem;
class ctlCodeDetails;
struct SectionRow;

/// The toolbar `tbrCode` over the boxes for code: a button a section, which adds it, goes to it or
/// copies it, and the entries of the Edit menu that add and delete sections.
class CodeToolbar : public QToolBar {
    Q_OBJECT

public:
    CodeToolbar(ctlCodeDetails& details, std::function<CCodeItem*()> item, QWidget* parent = nullptr);

    /// Shows which sections there are; @p current is the one that holds the caret, or 0.
    void UpdateSectionButtons(quint8 current);
    /// Another text is shown: no section has been gone to.
    void ForgetLastGo() { m_lastGo = 0; }
    void FillMenu(QMenu& menu);
    /// Sets the entries before the menu opens.
    void UpdateMenu();

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    quint8 ShownBits() const;
    bool IsPresent(quint8 header) const;
    void TellPlace(const SectionRow& row, QAction& command) const;
    void ButtonClick(const SectionRow& row);
    void MenuClick(const SectionRow& row);
    void GoOrCopy(quint8 header);
    void RemoveHeader(quint8 header, bool isCode);
    void Rebuild();

    ctlCodeDetails& m_details;
    std::function<CCodeItem*()> m_item;
    QHash<quint8, QAction*> m_buttons;
    QHash<quint8, QAction*> m_entries;
    std::pair<int, int> m_shown{-1, -1}; ///< section and headers that the buttons show
    quint8 m_lastGo = 0;                 ///< the section that was gone to last: a second click copies it
    quint8 m_wentTo = 0;                 ///< the section that the caret came to stand in by that
};

} // namespace qb
