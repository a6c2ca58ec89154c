#pragma once

#include <QToolButton>

namespace qb {

/// The button in the status bar that shows the language of the item's code and lets another one be
/// chosen.
class LanguageButton : public QToolButton {
    Q_OBJECT

public:
    explicit LanguageButton(QWidget* parent = nullptr);

    /// @p item is the item's own language, empty for none; @p library that of the library.
    void ShowLanguage(const QString& item, const QString& library);

Q_SIGNALS:
    /// Another language was chosen; empty: the library's.
    void Chosen(const QString& name);

private:
    void OpenList();

    QString m_item;
    QString m_library;
};

} // namespace qb
