#pragma once

#include <QWidget>
#include <span>

namespace qb {

/// A key with what it does.
struct KeyHint {
    const char* Key;
    const char* Does;
};

/// A line that tells keys, as many as there is room for; at its right what there is to say. A message stands in the
/// place of both until it is taken back.
class QuickHints : public QWidget {
    Q_OBJECT

public:
    explicit QuickHints(QWidget* parent = nullptr);

    void SetHints(std::span<const KeyHint> hints);
    void SetStatus(const QString& status);
    void SetMessage(const QString& message);
    const QString& Status() const { return m_status; }
    const QString& Message() const { return m_message; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::span<const KeyHint> m_hints;
    QString m_status;
    QString m_message;
};

} // namespace qb
