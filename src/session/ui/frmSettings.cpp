#include "session/ui/frmSettings.h"

#include "platform/system/Prompts.h"
#include "session/ui/LanguagePage.h"
#include "store/KeywordDefiner.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"

#include <QCompleter>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QStackedWidget>
#include <QStringListModel>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"frmSettings"_s;

struct PageRow {
    const char* Title;
    const char* Icon;
};
constexpr PageRow PageRows[frmSettings::PageCount] = {
    {"General", "preferences-system"},
    {"Texts", "preferences-desktop-font"},
    {"Stored Files", "tab-files"},
    {"Downloads", "folder-download"},
    {"Library", "library"},
    {"Language", "tab-code"},
    {"Information", "documentinfo"},
};

} // namespace

frmSettings::frmSettings(QWidget* parent) : QDialog(parent)
{
    setObjectName(u"frmSettings"_s);
    setWindowTitle(u"Options"_s);
    MakeFrame();
    MakeGeneralPage();
    MakeTextPage();
    MakeFilePage();
    MakeDownloadPage();
    MakeLibraryPage();
    m_languagePage = new LanguagePage;
    m_pages->addWidget(m_languagePage);
    MakeInformationPage();
    constexpr int InfoDelay = 100; // milliseconds
    tmrDatabaseInfoStart.setSingleShot(true);
    tmrDatabaseInfoStart.setInterval(InfoDelay);
    connect(&tmrDatabaseInfoStart, &QTimer::timeout, this, &frmSettings::FillDatabaseInfo);
    FillSearch();
    lstPages->setCurrentRow(0);
}

frmSettings::~frmSettings()
{
    Close();
}

void frmSettings::MakeFrame()
{
    constexpr QSize Size(760, 560);
    constexpr int ListWidth = 170;
    constexpr int IconSize = 22;
    txtSearch = new QLineEdit;
    txtSearch->setObjectName(u"txtSearch"_s);
    txtSearch->setPlaceholderText(u"Find a setting"_s);
    txtSearch->setClearButtonEnabled(true);
    lstPages = new QListWidget;
    lstPages->setObjectName(u"lstPages"_s);
    lstPages->setIconSize({IconSize, IconSize});
    lstPages->setAccessibleName(u"Pages"_s);
    for (const PageRow& row : PageRows)
        new QListWidgetItem(IconNamed(QString::fromLatin1(row.Icon)), QString::fromLatin1(row.Title), lstPages);
    m_pages = new QStackedWidget;
    auto* left = new QVBoxLayout;
    left->addWidget(txtSearch);
    left->addWidget(lstPages, 1);
    txtSearch->setFixedWidth(ListWidth);
    lstPages->setFixedWidth(ListWidth);
    auto* middle = new QHBoxLayout;
    middle->addLayout(left);
    middle->addWidget(m_pages, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply);
    cmdApply = buttons->button(QDialogButtonBox::Apply);
    cmdApply->setObjectName(u"cmdApply"_s);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdOK"_s);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(middle, 1);
    layout->addWidget(buttons);
    resize(Size);
    connect(lstPages, &QListWidget::currentRowChanged, this, [this](int row) {
        m_pages->setCurrentIndex(row);
        if (row == InformationPage)
            tmrDatabaseInfoStart.start();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &frmSettings::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &frmSettings::reject);
    connect(cmdApply, &QPushButton::clicked, this, &frmSettings::Apply);
}

// Life

void frmSettings::InitializeSettings(CSettings& settings, Library* library)
{
    Guarded(ModuleName, u"InitializeSettings"_s, [&] {
        const QScopedValueRollback loading(m_loading, true);
        m_settings = &settings;
        m_database = library;
        m_settings->InitializeDatabaseProperties();
        m_settings->SetChangingSettings(true);
        connect(m_settings, &CSettings::SettingAwaitingUpdate, this, &frmSettings::SettingAwaitingUpdate);
        FillControls();
        if (library && !library->IsReadOnly())
            m_language = std::make_unique<KeywordDefiner>(*library);
        m_languagePage->Initialize(m_language.get());
        m_languagePage->SetPalette(TokenPalette::FromTexts(settings.RuleColoursLight(), settings.RuleColoursDark()));
        m_languagePage->RequestFileName = [this](bool forExport) {
            QString fileName;
            if (RequestLanguageDefinitionFileName)
                RequestLanguageDefinitionFileName(fileName, forExport);
            return fileName;
        };
        connect(m_languagePage, &LanguagePage::Changed, this, &frmSettings::SettingAwaitingUpdate);
        connect(m_languagePage, &LanguagePage::PaletteChanged, this, [this] {
            const TokenPalette palette = m_languagePage->Palette();
            Change([&] {
                m_settings->SetRuleColoursLight(palette.LightText());
                m_settings->SetRuleColoursDark(palette.DarkText());
            });
        });
        cmdApply->setEnabled(false);
        UpdateEnabled();
    });
}

void frmSettings::ShowPage(Page page)
{
    lstPages->setCurrentRow(page);
}

void frmSettings::SettingAwaitingUpdate()
{
    if (!m_loading)
        cmdApply->setEnabled(true);
}

/// A change of a control, by the user.
void frmSettings::Change(const std::function<void()>& change)
{
    if (m_loading || !m_settings)
        return;
    change();
    UpdateEnabled();
}

void frmSettings::FillControls()
{
    for (const Binding& binding : m_bindings)
        binding.Fill();
}

/// False when the language can't be kept as it is, or something could not be written; the dialog
/// stays open then.
bool frmSettings::Apply()
{
    const bool applied = Guarded(
        ModuleName, u"Apply"_s,
        [this] {
            if (m_language && !m_language->CheckCommentDelimiter()) {
                ShowPage(KeywordPage);
                return false;
            }
            const bool languageChanged = m_language && m_language->Changed();
            if (languageChanged)
                m_language->SaveLanguage();
            if (!m_settings->Apply())
                return false;
            if (m_language)
                m_language->Commit();
            if (languageChanged)
                m_languagePage->KeepColours();
            if (languageChanged && LanguageDataChanged)
                LanguageDataChanged();
            cmdApply->setEnabled(false);
            return true;
        },
        false);
    if (!applied && m_language)
        m_languagePage->RefillWords();
    return applied;
}

void frmSettings::accept()
{
    if (!m_settings || Apply())
        QDialog::accept();
}

void frmSettings::reject()
{
    m_canceled = true;
    if (m_language)
        m_language->Rollback();
    if (m_settings)
        m_settings->LoadRegistrySettings();
    QDialog::reject();
}

void frmSettings::Close()
{
    if (!m_settings || std::exchange(m_closed, true))
        return;
    disconnect(m_settings, nullptr, this, nullptr);
    m_languagePage->Initialize(nullptr);
    m_language.reset(); // rolls back what was not applied
    m_settings->SetChangingSettings(false);
    if (CloseSettingsForm)
        CloseSettingsForm();
}

// Finding a setting

void frmSettings::Register(const QString& text, Page page, QWidget* control)
{
    QString plain = text;
    plain.remove(u'&');
    m_places.push_back({plain, page, control});
    if (!control->objectName().isEmpty())
        m_controls.insert(control->objectName(), control);
}

void frmSettings::FillSearch()
{
    for (const auto& [text, control] : m_languagePage->Places())
        m_places.push_back({text, KeywordPage, control});
    QStringList texts;
    for (const Place& place : m_places)
        texts << place.Text;
    auto* completer = new QCompleter(texts, this);
    completer->setFilterMode(Qt::MatchContains);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    txtSearch->setCompleter(completer);
    connect(completer, qOverload<const QString&>(&QCompleter::activated), this, &frmSettings::FindSetting);
    connect(txtSearch, &QLineEdit::textEdited, this, [this](const QString& text) {
        for (int page = 0; page < PageCount; ++page) {
            const bool found = std::any_of(m_places.begin(), m_places.end(), [&](const Place& place) {
                return place.Page == page && place.Text.contains(text, Qt::CaseInsensitive);
            });
            QListWidgetItem* item = lstPages->item(page);
            item->setFlags(found || text.isEmpty() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags);
        }
    });
}

/// Enter in the search box finds; it does not end the dialog.
void frmSettings::keyPressEvent(QKeyEvent* event)
{
    if (txtSearch->hasFocus() && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        return FindSetting(txtSearch->text());
    QDialog::keyPressEvent(event);
}

void frmSettings::FindSetting(const QString& text)
{
    const auto found = std::find_if(m_places.begin(), m_places.end(), [&](const Place& place) {
        return place.Text.contains(text.trimmed(), Qt::CaseInsensitive);
    });
    if (found != m_places.end() && !text.trimmed().isEmpty())
        ShowPlace(*found);
}

void frmSettings::ShowPlace(const Place& place)
{
    for (int page = 0; page < PageCount; ++page)
        lstPages->item(page)->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    lstPages->setCurrentRow(place.Page);
    place.Control->setFocus(Qt::TabFocusReason);
    if (auto* area = qobject_cast<QScrollArea*>(m_pages->currentWidget()))
        area->ensureWidgetVisible(place.Control);
}

} // namespace qb
