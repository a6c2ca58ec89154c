#pragma once

#include "finder/QuickOpen.h"
#include "finder/QuickPreview.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;
class QStackedWidget;

namespace qb {

class CodeBox;
class QuickHints;
class QuickRowModel;

/// The popup of quick open, over the main window: a field, the rows that fit what is typed there, and beside them what
/// the chosen one holds. It decides nothing.
class frmQuickOpen : public QWidget {
    Q_OBJECT

public:
    /// @p host and @p find outlive it. It stands over @p window.
    frmQuickOpen(QuickOpenHost& host, FindService& find, QWidget& window);
    ~frmQuickOpen() override;

    /// Shows it with a text already typed, at the top of @p room, which is a part of the window. Where it is shown
    /// already, the next row is chosen.
    void Open(const QRect& room, const QString& typed = {});
    /// Hides it; the focus goes back to where it was.
    void Close();
    /// The window has another size.
    void Place(const QRect& room);
    /// The colours of what is painted by rules.
    void SetPalette(const TokenPalette& palette);

    /// What decides.
    QuickOpen& Logic() { return m_quick; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void MakeField();
    void MakeList();
    QWidget* MakePreview();
    void Connect();
    bool IsOwnKey(const QKeyEvent& key) const;
    bool TakeKey(const QKeyEvent& key);
    void MoveBy(int rows);
    void ShowOrHidePreview();
    int Current() const;
    void ShowRows();
    void ShowPreview();
    void ShowContent(const QuickPreview& preview);
    void CopyCode();
    void GiveFocusBack();

    QuickOpen m_quick;
    QuickPreviews m_previews;
    QuickRowModel* m_rows;
    QLineEdit* txtQuickOpen;
    QStackedWidget* m_pages; ///< the list, or a notice where there is nothing to list
    QListView* lvQuickOpen;
    QLabel* lblNotice;
    QWidget* m_preview = nullptr;
    QLabel* lblPreview = nullptr;
    CodeBox* txtPreview = nullptr;
    QLabel* lblPreviewNotice = nullptr;
    QStackedWidget* m_previewPages = nullptr;
    QuickHints* m_hints;
    QTimer m_previewSoon; ///< going through rows does not wait for their previews
    QPointer<QWidget> m_focusBefore;
};

} // namespace qb
