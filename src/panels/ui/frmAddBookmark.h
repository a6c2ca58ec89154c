#pragma once

#include "panels/BookmarkDraft.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QPlainTextEdit;

namespace qb {

/// Makes a bookmark of an item, or changes one: its group, which may be a new one, and its description.
class frmAddBookmark : public QDialog {
    Q_OBJECT

public:
    explicit frmAddBookmark(QWidget* parent = nullptr);

    /// Shows the item's title and the groups; @p draft outlives the dialog.
    void Initialise(BookmarkDraft& draft);
    bool Cancelled() const { return result() != QDialog::Accepted; }

    /// Writes the bookmark, and closes.
    void accept() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void FillGroups();
    void cboGroups_Validate();
    void KeepToLength();

    BookmarkDraft* m_draft = nullptr;
    QLabel* m_title;
    QComboBox* cboGroups;
    QPlainTextEdit* txtBookmark;
};

} // namespace qb
