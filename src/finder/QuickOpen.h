#pragma once

#include "find/FuzzyTitles.h"
#include "finder/QuickFind.h"
#include "finder/QuickRow.h"

#include <QObject>

namespace qb {

/// Quick open: a list of rows that follows what is typed. Titles by some of their letters; behind ">" commands, behind
/// "#" a text in all items, behind ":" a line of the code that is shown. Knows no window.
class QuickOpen : public QObject {
    Q_OBJECT

public:
    enum class Mode { Titles, Commands, Text, Line };

    /// Both outlive it.
    QuickOpen(QuickOpenHost& host, FindService& find);

    /// It is about to be seen, with an empty text.
    void Begin();
    /// It is seen no more: what goes on is cancelled.
    void End();

    /// What was typed is another text.
    void SetTyped(const QString& typed);
    const QString& Typed() const { return m_typed; }
    Mode CurrentMode() const { return m_mode; }
    /// The best first.
    const std::vector<QuickRow>& Rows() const { return m_mode == Mode::Text ? m_find.Rows() : m_rows; }
    /// What to tell where there are no rows.
    QString Notice() const;
    /// What there is to say beside the rows; mostly nothing.
    QString Status() const;

    /// The row was chosen: goes there, or runs it. With @p inTree an item's place in the tree is shown. An item that is
    /// not in the library any more is marked instead, and told of.
    void Choose(size_t row, bool inTree);
    /// Whether the library still has the item of the row. Marks all of its rows where not.
    bool CheckItem(size_t row);

    /// What the search for a text goes on with; null where none does.
    const FindRequest* Request() const { return m_mode == Mode::Text ? m_find.Request() : nullptr; }

Q_SIGNALS:
    void RowsChanged();
    /// Rows look another way.
    void RowsMarked();
    void StatusChanged();
    /// A row was chosen and is about to be acted on: the window goes.
    void Chosen();
    /// A row stands for another text to type.
    void Retyped(const QString& text);
    /// A sentence for the user.
    void Told(const QString& text);

private:
    void ReadTitles();
    void ShowEmpty();
    void ShowTitles(const QString& text);
    void ShowCommands(const QString& text);
    void ShowLine(const QString& text);
    void AddItem(qint64 id, const std::vector<qsizetype>& letters);
    std::vector<qint64> LastChanged() const;
    QString PathOf(qint64 item) const;
    void MarkGone(qint64 item);

    QuickOpenHost& m_host;
    QuickFind m_find;
    FuzzyTitles m_titles;
    bool m_titlesOld = true; ///< the tree has changed since they were read
    std::vector<QuickCommand> m_commands;
    QStringList m_ran; ///< commands that were run from here, the last one first
    QString m_typed;
    Mode m_mode = Mode::Titles;
    std::vector<QuickRow> m_rows;
};

/// The titles of the folders that an item stands in, from the top.
QString TreePathOf(const TreeNodes& nodes, qint64 item);

} // namespace qb
