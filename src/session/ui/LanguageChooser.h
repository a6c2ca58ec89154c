#pragma once

#include <QWidget>
#include <functional>

class QLineEdit;
class QListWidget;

namespace qb {

class SampleBox;

/// A list of the languages that come with the program, with a line to search in it and, if wanted,
/// a sample of the current one in its colours.
class LanguageChooser : public QWidget {
    Q_OBJECT

public:
    enum Sample { WithoutSample, WithSample };

    /// @p first is an entry above the languages that stands for none of them; empty: there is none.
    explicit LanguageChooser(const QString& first, Sample sample, QWidget* parent = nullptr);

    /// The name of the current language; empty for the first entry and where nothing is current.
    QString Current() const;
    void SetCurrent(const QString& name);
    /// Empties the search and puts the focus there.
    void Begin();
    bool IsEmpty() const;

    /// Opens a list beside a button; @p chosen gets the name that the user takes.
    static void Popup(QWidget& button, const QString& first, const QString& current,
                      const std::function<void(const QString& name)>& chosen);

Q_SIGNALS:
    /// Another entry is current, by the user, by the search or by SetCurrent; @p name is what Current says, empty for
    /// the first entry and for none.
    void CurrentChanged(const QString& name);
    /// The user has taken a language, by Enter or a double click.
    void Chosen(const QString& name);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Search(const QString& text);
    void ShowSample();

    QLineEdit* txtLanguageSearch;
    QListWidget* lstLanguages;
    SampleBox* m_sample = nullptr;
};

} // namespace qb
