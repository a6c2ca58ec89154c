#pragma once

#include <QObject>
#include <QStringList>

namespace qb {

/// The visited items behind the buttons for back and forward: keys of nodes, at most 31, and the
/// place where the user stands. Stepping back and visiting another item keeps the forward
/// entries: the way back is part of the trail.
class CHistory : public QObject {
    Q_OBJECT

public:
    /// Records a visit, unless the user stands on @p key already.
    void AddToHistory(const QString& key);
    /// Steps back and returns the key; the first key again at the begin, empty in an empty history.
    QString PreviousInHistory();
    /// Steps forward and returns the key.
    QString NextInHistory();

    const QStringList& Keys() const { return m_keys; }
    qsizetype Position() const { return m_position; } ///< 1-based, 0 when empty

Q_SIGNALS:
    /// A step was taken, which at that end of the trail leads nowhere; in an empty trail there is none. When it has
    /// come to the end, FirstHistoryItem or LastHistoryItem comes before.
    void HistoryMovedBack();
    void HistoryMovedForward();
    void FirstHistoryItem(); ///< there is no way back from here; in an empty trail both are told of each step
    void LastHistoryItem();  ///< there is no way forward: after such a step, and of each item that is added
    void HistoryItemAdded(); ///< a visit has become the last entry; LastHistoryItem comes before

private:
    QStringList m_keys;
    qsizetype m_position = 0;
};

} // namespace qb
