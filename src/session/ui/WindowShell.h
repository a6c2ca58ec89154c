#pragma once

#include "platform/system/Hook.h"
#include "session/ShellView.h"

#include <QObject>

class QComboBox;
class QLabel;
class QMainWindow;
class QProgressBar;

namespace qb {

class LanguageButton;

/// The frame of the main window around its panels: the box of libraries, the status bar with its progress, the wait
/// cursor and the question for a language.
class WindowShell : public QObject, public ShellView {
    Q_OBJECT

public:
    /// Makes the status bar of @p window, and the box of libraries, which has no place yet.
    explicit WindowShell(QMainWindow& window);

    QComboBox* Libraries() const { return cboDatabase; }
    LanguageButton* Language() const { return m_language; } ///< of the item's code, in the status bar

    /// Shows progress in the status bar; a percent below 1, or of 100 and above, hides the bar.
    void ShowProgress(const QString& text, int percent);
    /// Some work goes on, and the window paints itself meanwhile.
    bool IsWorking() const { return m_working; }
    /// Stands in the place of the status text until it is empty.
    void ShowHint(const QString& hint);

    // ShellView
    void SetStatusText(const QString& text) override;
    void SetItemDate(const QString& text, const QString& tip) override;
    int ComboCount() const override;
    int ComboIndex() const override;
    void SetComboIndex(int index) override;
    QString ComboText() const override;
    void SetComboText(const QString& text) override;
    void InsertComboEntry(int index, const QString& alias) override;
    void RemoveComboEntry(int index) override;
    void SetComboToolTip(const QString& tip) override;
    LanguageChoice AskForLanguage() override;
    void ShowProgressStatusBar(int value, int maximum) override;
    std::shared_ptr<void> WaitCursor() override;
    void EnableMenus(bool enabled) override { MenusEnabled(enabled); }
    void EnableEditing(bool enabled) override { EditingEnabled(enabled); }

    // Reactions of the window
    Hook<void(bool enabled)> MenusEnabled;
    Hook<void(bool enabled)> EditingEnabled;

Q_SIGNALS:
    /// The box of libraries shows another entry.
    void LibraryChosen();
    /// The user has typed another name for the open library.
    void AliasEntered(const QString& alias);

private:
    void MakeLibraries();
    void MakeStatusBar();
    void ShowBar(int value, int maximum);

    QMainWindow& m_window;
    QComboBox* cboDatabase = nullptr;
    QLabel* m_statusText = nullptr;
    QLabel* m_itemDate = nullptr;
    QProgressBar* prgStatus = nullptr;
    LanguageButton* m_language = nullptr;
    QString m_status;    ///< what the first panel shows when there is no hint
    QString m_hint;      ///< what it shows while there is one
    QString m_shownDate; ///< of the item, whatever progress has made of its panel
    bool m_working = false;
};

} // namespace qb
