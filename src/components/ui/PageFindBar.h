#pragma once

#include <QJsonObject>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace qb {

/// The line below a page that finds and replaces.
class PageFindBar : public QWidget {
    Q_OBJECT

public:
    explicit PageFindBar(QWidget* parent = nullptr);

    void Begin(const QString& text);
    /// Place 0: none of them is selected.
    void ShowFound(int place, int count);

Q_SIGNALS:
    /// With text, matchCase and step: 0 to stay, 1 and -1 for the next place and the one before.
    void FindAsked(const QJsonObject& find);
    /// With text, matchCase, by and all.
    void ReplaceAsked(const QJsonObject& replace);
    void Left();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QJsonObject Asked() const;
    void Find(int step);
    void Replace(bool all);

    QLineEdit* txtFind;
    QLineEdit* txtReplace;
    QCheckBox* chkCase;
    QLabel* lblFound;
};

} // namespace qb
