#pragma once

#include "help/Handbook.h"

#include <QTextBrowser>

namespace qb {

/// A page of the handbook, in the colours of the program. It has a history of its own; links lead to topics.
class HelpBrowser : public QTextBrowser {
    Q_OBJECT

public:
    /// @p handbook must outlive this.
    explicit HelpBrowser(const Handbook& handbook, QWidget* parent = nullptr);

    /// The first page stands in for a topic that is not there.
    void ShowTopic(const QString& topic);
    QString Topic() const;

    /// Marks all places of these words, in any case; an empty list takes the marks away. Returns how many there are.
    int Mark(const QStringList& words);
    /// Selects the next place of a text, or the one before, going on at the other end of the page. False where it is
    /// nowhere.
    bool FindText(const QString& text, bool backward, bool fromHere);

    QVariant loadResource(int type, const QUrl& name) override;

Q_SIGNALS:
    void TopicChanged(const QString& topic);

protected:
    void changeEvent(QEvent* event) override;

private:
    void SetLook();

    const Handbook& m_handbook;
    QStringList m_words; ///< that are marked
};

} // namespace qb
