#pragma once

#include "platform/system/Prompts.h"

#include <QDialog>

class QPlainTextEdit;

namespace qb {

/// Two versions of a text side by side, of which one is to stay. The first difference is in sight, and
/// both scroll together.
class TextChoiceDialog : public QDialog {
    Q_OBJECT

public:
    explicit TextChoiceDialog(const TextChoice& choice, QWidget* parent = nullptr);

    ChosenText Chosen() const { return m_chosen; }

private:
    QPlainTextEdit* MakeText(const QString& name, const QString& text, int from, int to);
    void Choose(ChosenText chosen);

    ChosenText m_chosen = ChosenText::Cancel;
};

} // namespace qb
