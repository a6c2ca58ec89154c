#pragma once

#include <QHash>
#include <QToolBar>
#include <array>
#include <functional>

class QComboBox;
class QMenu;
class QToolButton;

namespace qb {

class ctlCodeDetails;
class CSettings;

/// The toolbar `tlbTextFormat` over the box for formatted text, and the entries of the menu
/// `mnuFormat`, which do the same. Buttons and lists follow the selection.
class FormatToolbar : public QToolBar {
    Q_OBJECT

public:
    explicit FormatToolbar(ctlCodeDetails& details, QWidget* parent = nullptr);

    /// Fills the lists of fonts and sizes.
    void sbTextTomatToolbarInitialize();
    /// Shows the two colours of the settings.
    void ShowColors(CSettings& settings);
    /// Adds the entries of the menu.
    void FillMenu(QMenu& menu);
    void SetCommandsEnabled(bool enabled);

private:
    enum Color { Color1, Color2, ColorCount };

    QAction* MakeAction(const QString& key);
    void MakeFontLists();
    void MakeColorButton(Color which);
    void ConnectState();
    void ApplyColor(Color which);
    void ChooseColor(Color which, quint32 color);
    void ChooseCustomColor(Color which);
    void AskForFont();
    void AskForColor();
    void Run(const std::function<void(ctlCodeDetails&)>& change);
    template <class Method, class Value>
    void Set(Method set, const Value& value);

    ctlCodeDetails& m_details;
    CSettings* m_settings = nullptr;
    QComboBox* cboFont = nullptr;
    QComboBox* cboFontSize = nullptr;
    QHash<QString, QAction*> m_actions; ///< by the button's key
    QList<QAction*> m_menuActions;
    std::array<QToolButton*, ColorCount> m_colorButtons{};
};

} // namespace qb
