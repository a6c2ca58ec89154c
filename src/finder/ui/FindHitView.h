#pragma once

#include "finder/ContextColours.h"
#include "finder/FindHitList.h"

#include <QListView>

namespace qb {

/// The hits of a search with the lines around them, in the colours of their languages.
class FindHitView : public QListView {
    Q_OBJECT

public:
    explicit FindHitView(FindHitList& hits, QWidget* parent = nullptr);

    ContextColours& Colours() { return m_colours; }
    /// Selects the next place, or the one before; false at the end.
    bool Step(bool forward);

Q_SIGNALS:
    /// A row is to be opened.
    void Opened(const QModelIndex& index);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void Restore();

    FindHitList& m_hits;
    std::optional<FindHitList::Row> m_current; ///< before the list was read anew
    ContextColours m_colours;
};

} // namespace qb
