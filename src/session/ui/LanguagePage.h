#pragma once

#include "text/TokenPalette.h"

#include <QTimer>
#include <QWidget>
#include <functional>

class QBoxLayout;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTableView;
class QToolButton;

namespace qb {

class ColorButton;
class KeywordDefiner;
class KeywordGridModel;
class SampleBox;
class TokenColoursEditor;

/// The page of the options dialog with the language of the open library: its name, comment marks
/// and colours; a grid of its words with an editor that floats over the current one; the colours of
/// what is painted by rules, with a sample; and its rules.
class LanguagePage : public QWidget {
    Q_OBJECT

public:
    explicit LanguagePage(QWidget* parent = nullptr);
    ~LanguagePage() override;

    /// Shows what @p definer holds; null when no library is open.
    void Initialize(KeywordDefiner* definer);
    /// The colours of what is painted by rules, which are the user's and no library's.
    TokenPalette Palette() const;
    void SetPalette(const TokenPalette& palette);
    /// The language has been applied: its colours are offered from now on.
    void KeepColours() const;
    /// The words may be other ones than those that were edited here: a failure has ended what was edited.
    void RefillWords();
    /// What can be looked for on this page, and its controls.
    QList<std::pair<QString, QWidget*>> Places() const;

    /// Asks for the name of a definition file; an empty one cancels.
    std::function<QString(bool forExport)> RequestFileName;

Q_SIGNALS:
    /// The language was changed, by the user.
    void Changed();
    void PaletteChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* MakeValues();
    QWidget* MakeGrid();
    QWidget* MakeButtons();
    void AddDefinitionButtons(QBoxLayout& layout);
    QWidget* MakeColours();
    QWidget* MakeRules();
    void TakeRules();
    void ShowSample();
    void ShowRulesState();
    void ShowValues();
    void TakeValues();
    void InitializeLanguagePage();
    void FillKeywordGrid();
    void fgrdList_RowColChange();
    void txtEdit_Change(const QString& text);
    void PlaceEditor();
    bool EditorKey(int key);
    bool GridKey(int key);
    void GoToRow(int row);
    void UpdateColouredTick(int row);
    void DeleteSelectedRows();
    void ExportLanguageDefinition();
    void ImportLanguageDefinition();
    void ImportFile(const QString& path);

    KeywordDefiner* m_definer = nullptr;
    KeywordGridModel* m_words;
    bool m_loading = false; ///< what changes is not the user's doing
    QLineEdit* txtLanguage = nullptr;
    QLineEdit* txtCommentDelimiter = nullptr;
    QLineEdit* txtCommentDelimiterStart = nullptr;
    QLineEdit* txtCommentDelimiterEnd = nullptr;
    ColorButton* lblKeywordColour = nullptr;
    ColorButton* lblTextColour = nullptr;
    ColorButton* lblNotesColour = nullptr;
    QTableView* fgrdList = nullptr;
    QLineEdit* txtEdit = nullptr; ///< over the current word
    QPushButton* cmdExport = nullptr;
    QPushButton* cmdImport = nullptr;
    QToolButton* m_shipped = nullptr;
    QCheckBox* chkCorrectSpelling = nullptr;
    QTabWidget* m_tabs = nullptr;
    TokenColoursEditor* m_colours = nullptr;
    SampleBox* m_sample = nullptr;
    QPlainTextEdit* txtRules = nullptr;
    QLabel* m_problems = nullptr;
    QTimer m_sampleTimer; ///< a sample for several changes
};

} // namespace qb
