#pragma once

#include <QWidget>
#include <functional>

class QLineEdit;
class QPushButton;
class QTableView;
class QToolButton;

namespace qb {

class ColorButton;
class KeywordDefiner;
class KeywordGridModel;

/// The page of the options dialog with the language of the open library: its name, comment marks
/// and colours, and a grid of its words with an editor that floats over the current one.
class LanguagePage : public QWidget {
    Q_OBJECT

public:
    explicit LanguagePage(QWidget* parent = nullptr);
    ~LanguagePage() override;

    /// Shows what @p definer holds; null when no library is open. @p languageFiles are the paths of
    /// definition files that come with the program.
    void Initialize(KeywordDefiner* definer, const QStringList& languageFiles);
    /// The language has been applied: its colours are offered from now on.
    void KeepColours() const;
    /// What can be looked for on this page, and its controls.
    QList<std::pair<QString, QWidget*>> Places() const;

    /// Asks for the name of a definition file; an empty one cancels.
    std::function<QString(bool forExport)> RequestFileName;

Q_SIGNALS:
    /// The language was changed, by the user.
    void Changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* MakeValues();
    QWidget* MakeGrid();
    QWidget* MakeButtons();
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
};

} // namespace qb
