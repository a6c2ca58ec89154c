#pragma once

#include "config/CSettings.h"

#include <QDialog>
#include <QTimer>
#include <functional>
#include <vector>

class QBoxLayout;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QStackedWidget;

namespace qb {

class ColorButton;
class KeywordDefiner;
class LanguagePage;
class Library;

/// The options dialog. It edits the settings in place, and the language of the open library in a
/// transaction of its own; Apply writes both, Cancel drops both.
class frmSettings : public QDialog {
    Q_OBJECT

public:
    enum Page { GeneralPage, TextPage, FilePage, DownloadPage, LibraryPage, KeywordPage, InformationPage, PageCount };

    explicit frmSettings(QWidget* parent = nullptr);
    ~frmSettings() override;

    /// Shows the settings; @p database is the open library, or null.
    void InitializeSettings(CSettings& settings, Library* library);
    Library* ActiveDB() const { return m_database; }
    /// The dialog was left without keeping what was not applied.
    bool Canceled() const { return m_canceled; }
    void ShowPage(Page page);

    /// Asks the host for the name of a definition file; an empty one cancels.
    std::function<void(QString& fileName, bool forExport)> RequestLanguageDefinitionFileName;
    /// The language of the library was changed and written.
    std::function<void()> LanguageDataChanged;
    /// The dialog has ended.
    std::function<void()> CloseSettingsForm;

    void accept() override;
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// A control and what fills it from the settings.
    struct Binding {
        QWidget* Control;
        std::function<void()> Fill;
    };
    /// A place that the search box finds.
    struct Place {
        QString Text;
        int Page;
        QWidget* Control;
    };

    void MakeFrame();
    QFormLayout* AddPage(Page page);
    void MakeGeneralPage();
    void MakeTextPage();
    void MakeFilePage();
    void MakeDownloadPage();
    void MakeLibraryPage();
    void MakeBackupControls(QFormLayout& form);
    void MakeRemovedControls(QFormLayout& form);
    void MakeInformationPage();
    template <class Read, class Write>
    QCheckBox* AddFlag(QFormLayout& form, const char* name, const QString& label, Read read, Write write,
                       const QString& keywords = {});
    template <class Read, class Write>
    QLineEdit* AddNumber(QFormLayout& form, const char* name, const QString& label, const QString& unit, Read read,
                         Write write);
    template <class Read, class Write>
    QLineEdit* AddFolder(QFormLayout& form, const char* name, const char* browse, const QString& label,
                         const QString& title, Read read, Write write);
    template <class Read, class Write>
    ColorButton* AddColor(QFormLayout& form, const char* name, const QString& label, Read read, Write write);
    void AddFontControls(QFormLayout& form);
    void AddAppearanceControls(QFormLayout& form);
    void Register(const QString& text, Page page, QWidget* control);

    void Change(const std::function<void()>& change);
    void FillControls();
    void UpdateEnabled();
    void SettingAwaitingUpdate();
    void FillSearch();
    void FindSetting(const QString& text);
    void ShowPlace(const Place& place);
    void FillDatabaseInfo();
    bool Apply();
    void Close();

    CSettings* m_settings = nullptr;
    Library* m_database = nullptr;
    std::unique_ptr<KeywordDefiner> m_language; ///< of the open library
    bool m_loading = false;                     ///< the controls are being filled, which is no change
    bool m_canceled = false;
    bool m_closed = false;
    Page m_built = GeneralPage;
    std::vector<Binding> m_bindings;
    std::vector<Place> m_places;
    QLineEdit* txtSearch = nullptr;
    QListWidget* lstPages = nullptr;
    QStackedWidget* m_pages = nullptr;
    QPushButton* cmdApply = nullptr;
    LanguagePage* m_languagePage = nullptr;
    QFormLayout* m_information = nullptr;
    QTimer tmrDatabaseInfoStart;
    QHash<QString, QWidget*> m_controls;
    QMultiHash<QString, QWidget*> m_labels; ///< of the control of that name, enabled with it
};

} // namespace qb
