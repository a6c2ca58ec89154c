#pragma once

#include "web/PageEditing.h"
#include "web/ui/EditorPane.h"
#include "web/ui/frmInsertLink.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QStackedLayout;
class QToolBar;

namespace qb {

class PageFindBar;

/// The page editor's window: the page as it looks, or its source.
class frmPageEditor : public QDialog {
    Q_OBJECT

public:
    /// Raises an error for a page that can't be edited, or where there is no browser's engine.
    frmPageEditor(QWidget* parent, const QString& path, PageEditingTools tools, ItemSource items);
    ~frmPageEditor() override;

    PageOutcome Outcome() const { return m_editing->Outcome(); }
    EditorPane& Pane() { return *m_pane; }

    /// Asks about what is not saved; a save that fails leaves the window open.
    void reject() override;

Q_SIGNALS:
    /// The page is there and can be typed into.
    void Opened();
    void Saved(bool done);

private:
    void MakePane(const QString& path, PageEditingTools tools);
    void Connect();
    void MakeToolbars();
    void MakeTextActions(QToolBar& bar);
    QMenu* TableMenu();
    QAction* AddAction(QToolBar& bar, const char* name, const char* icon, const char* text, const QKeySequence& key,
                       std::function<void()> run);
    void MakeSource();
    void ShowState(const EditingState& state);
    void ShowTitle();
    void ChooseBlock(int index);
    void ChooseLanguage();
    void AddPicture();
    void AddLink();
    void ShowMenu(const QPoint& at);
    void ShowSource(bool shown);
    void LeaveSource(const std::function<void(bool)>& then);
    bool IsSourceShown() const;
    bool IsUnsaved() const;
    void AfterKeys(std::function<void()> then);
    bool MayGiveUpPane() const;
    void Save(const std::function<void(bool)>& then = {});
    void Write(const std::function<void(bool)>& then);
    void Close();
    void Fail(const QString& text);

    std::unique_ptr<EditorPane> m_pane;
    std::unique_ptr<PageEditing> m_editing;
    ItemSource m_items;
    EditingState m_state;
    QStackedLayout* m_views;
    QPlainTextEdit* txtSource;
    QString m_sourceGiven; ///< the source as it was shown
    QToolBar* tlbPage;
    QToolBar* tlbFormat;
    QComboBox* cboBlock;
    QComboBox* cboLanguage;
    QAction* m_sourceAction = nullptr;
    PageFindBar* m_findBar;
    QLabel* lblStatus;
    QHash<QString, QAction*> m_actions; ///< by their names
    bool m_isOnlySource = false;
};

} // namespace qb
