#include "session/ui/LanguagePage.h"

#include "platform/system/Prompts.h"
#include "session/ui/KeywordGridModel.h"
#include "store/KeywordDefiner.h"
#include "support/ErrorRoutine.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTableView>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"frmSettings"_s;

} // namespace

void LanguagePage::FillKeywordGrid()
{
    const QScopedValueRollback loading(m_loading, true);
    m_words->SetDefiner(m_definer);
    txtEdit->hide();
    if (m_definer)
        fgrdList->setCurrentIndex(m_words->index(0, KeywordGridModel::KeywordColumn));
}

// The floating editor

void LanguagePage::fgrdList_RowColChange()
{
    if (!m_definer)
        return;
    const int row = fgrdList->currentIndex().row();
    m_words->SetCurrentRow(row);
    if (!m_definer->Word(row).isEmpty() && !m_loading)
        m_definer->FindWord(row);
    PlaceEditor();
    if (txtEdit->isVisible() && !m_loading)
        txtEdit->setFocus();
}

void LanguagePage::RefillWords()
{
    if (!m_definer)
        return;
    const QScopedValueRollback loading(m_loading, true);
    const int row = fgrdList->currentIndex().row();
    m_words->Refill();
    GoToRow(qMax(0, row));
    PlaceEditor();
}

/// Lays the editor over the current word.
void LanguagePage::PlaceEditor()
{
    const QScopedValueRollback loading(m_loading, true);
    const QModelIndex current = fgrdList->currentIndex();
    if (!current.isValid() || current.column() != KeywordGridModel::KeywordColumn)
        return txtEdit->hide();
    fgrdList->scrollTo(current);
    txtEdit->setGeometry(fgrdList->visualRect(current));
    const QString word = m_definer->Word(current.row());
    if (txtEdit->text() != word)
        txtEdit->setText(word);
    txtEdit->show();
    txtEdit->selectAll();
}

void LanguagePage::txtEdit_Change(const QString& text)
{
    if (m_loading || !m_definer)
        return;
    const int row = fgrdList->currentIndex().row();
    if (!Guarded(ModuleName, u"txtEdit_Change"_s, [&] { m_definer->SetWord(row, text); }))
        return RefillWords();
    const QScopedValueRollback loading(m_loading, true);
    m_words->RowEdited(row);
    if (text.isEmpty() && fgrdList->currentIndex().row() != row)
        fgrdList->setCurrentIndex(m_words->index(qMin(row, m_words->rowCount() - 1), KeywordGridModel::KeywordColumn));
    if (text.isEmpty())
        PlaceEditor();
    Q_EMIT Changed();
}

void LanguagePage::GoToRow(int row)
{
    const int last = m_words->rowCount() - 1;
    if (last < 0)
        return;
    fgrdList->setCurrentIndex(m_words->index(std::clamp(row, 0, last), KeywordGridModel::KeywordColumn));
    txtEdit->setFocus();
}

bool LanguagePage::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (watched == txtEdit)
        return EditorKey(key);
    return watched == fgrdList && GridKey(key);
}

bool LanguagePage::EditorKey(int key)
{
    const int row = fgrdList->currentIndex().row();
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // The next cell: the tick of this row.
        fgrdList->setCurrentIndex(m_words->index(row, KeywordGridModel::ColouredColumn));
        fgrdList->setFocus();
        return true;
    case Qt::Key_Up:
        GoToRow(row - 1);
        return true;
    case Qt::Key_Down:
        GoToRow(row + 1);
        return true;
    default:
        return false;
    }
}

bool LanguagePage::GridKey(int key)
{
    const QModelIndex current = fgrdList->currentIndex();
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Left:
        GoToRow(current.row());
        return true;
    case Qt::Key_Tab:
        GoToRow(current.row() + 1);
        return true;
    case Qt::Key_Space:
        if (current.column() == KeywordGridModel::ColouredColumn)
            UpdateColouredTick(current.row());
        return true;
    case Qt::Key_Delete:
        DeleteSelectedRows();
        return true;
    default:
        return false;
    }
}

void LanguagePage::UpdateColouredTick(int row)
{
    if (!m_definer)
        return;
    if (!Guarded(ModuleName, u"UpdateColouredTick"_s, [&] { m_definer->UpdateColouredTick(row); }))
        return RefillWords();
    m_words->RowEdited(row);
    if (m_definer->Changed())
        Q_EMIT Changed();
}

void LanguagePage::DeleteSelectedRows()
{
    std::vector<int> rows;
    for (const QModelIndex& index : fgrdList->selectionModel()->selectedIndexes()) {
        if (index.column() == KeywordGridModel::KeywordColumn)
            rows.push_back(index.row());
    }
    if (!m_definer || rows.empty())
        return;
    if (Prompts::Current().MsgBox({.Text = u"Do you wish to delete selected items?"_s,
                                   .Caption = u"Selection Delete"_s,
                                   .Buttons = MsgBoxButtons::YesNo,
                                   .Icon = MsgBoxIcon::Question})
        != MsgBoxResult::Yes)
        return;
    const int first = *std::min_element(rows.begin(), rows.end());
    Guarded(ModuleName, u"DeleteSelectedRows"_s, [&] { m_definer->DeleteRows(rows); });
    const QScopedValueRollback loading(m_loading, true);
    txtEdit->clear();
    m_words->Refill();
    GoToRow(first);
    Q_EMIT Changed();
}

} // namespace qb
