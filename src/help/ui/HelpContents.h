#pragma once

#include "help/Handbook.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QListWidget;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace qb {

/// The contents of the handbook as a tree, and over them a field that looks for words: what it finds takes the place
/// of the tree while there is a text in the field.
class HelpContents : public QWidget {
    Q_OBJECT

public:
    /// @p handbook must outlive this.
    explicit HelpContents(const Handbook& handbook, QWidget* parent = nullptr);

    /// Shows where in the contents a topic stands.
    void Follow(const QString& topic);
    void FocusSearch();
    /// Empties the field; false when it was empty.
    bool EndSearch();

Q_SIGNALS:
    void TopicChosen(const QString& topic);
    /// A section that was found; the words are those that were looked for.
    void HitChosen(const QString& topic, const QStringList& words);
    /// The field is empty again.
    void SearchEnded();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void FillTree();
    void Search();

    const Handbook& m_handbook;
    QLineEdit* txtSearch;
    QStackedWidget* m_pages;
    QTreeWidget* tvContents;
    QListWidget* lstHits;
    QLabel* lblNoHits;
};

} // namespace qb
