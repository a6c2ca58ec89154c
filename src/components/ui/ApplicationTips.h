#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

class QDialog;
class QLabel;

namespace qb {

/// The window with the tip of the day. The tips are the paragraphs of an RTF file.
class ApplicationTips : public QObject {
    Q_OBJECT

public:
    explicit ApplicationTips(QWidget* parent);
    ~ApplicationTips() override;

    /// Opens the window with a tip of @p file, another one each day. False, and no window, when
    /// the file holds no tips.
    bool Start(const QString& applicationName, const QString& file);
    void SetFocus();

    static QStringList ReadTips(const QString& file);

Q_SIGNALS:
    /// The user has closed the window, which is still in use: whoever deletes this object for it does so later.
    void TipsFormClosed();
    /// The user wants, or no longer wants, the window at each start.
    void TipsOnStartupChanged(bool wanted);

private:
    void MakeWindow(const QString& applicationName);
    void ShowTip(qsizetype step);

    QWidget* m_parent;
    QPointer<QDialog> m_window;
    QLabel* m_text = nullptr;
    QStringList m_tips;
    qsizetype m_current = 0;
};

} // namespace qb
