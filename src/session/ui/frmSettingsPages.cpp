// The pages of settings: what each control is bound to.

#include "session/ui/frmSettings.h"

#include "platform/system/Prompts.h"
#include "session/LibraryList.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "support/ui/ColorButton.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDirIterator>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QStackedWidget>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString SystemChoice = u"System"_s;

/// A heading over a group of settings.
QLabel* MakeHeading(const QString& text)
{
    auto* heading = new QLabel(text);
    QFont font = heading->font();
    font.setBold(true);
    heading->setFont(font);
    constexpr int Above = 8;
    heading->setContentsMargins(0, Above, 0, 0);
    return heading;
}

/// A row of several controls; the label, which leads to @p buddy, is what comes back.
QLabel* AddRow(QFormLayout& form, const QString& label, QLayout* row, QWidget* buddy)
{
    auto* title = new QLabel(label);
    title->setBuddy(buddy);
    form.addRow(title, row);
    return title;
}

/// The size of all files of a folder, in bytes.
qint64 SizeOfFolder(const QString& folder)
{
    qint64 size = 0;
    for (QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); files.hasNext();) {
        files.next();
        size += files.fileInfo().size();
    }
    return size;
}

QString Grouped(qint64 number)
{
    return QLocale(QLocale::English).toString(number); // in the form "#,###,##0"
}

QString DayText(Date date)
{
    return date.IsNone() ? u"never"_s : QLocale().toString(date.Day(), QLocale::ShortFormat);
}

QString KiloBytes(qint64 bytes)
{
    constexpr qint64 KiloByte = 1024;
    return Grouped((bytes + KiloByte - 1) / KiloByte) + u" kB"_s;
}

} // namespace

QFormLayout* frmSettings::AddPage(Page page)
{
    m_built = page;
    auto* content = new QWidget;
    auto* form = new QFormLayout(content);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    auto* area = new QScrollArea;
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    m_pages->addWidget(area);
    return form;
}

template <class Read, class Write>
QCheckBox* frmSettings::AddFlag(QFormLayout& form, const char* name, const QString& label, Read read, Write write,
                                const QString& keywords)
{
    auto* box = new QCheckBox(label);
    box->setObjectName(QString::fromLatin1(name));
    form.addRow(box);
    m_bindings.push_back({box, [this, box, read] { box->setChecked(read(*m_settings)); }});
    connect(box, &QCheckBox::toggled, this, [this, write](bool on) { Change([&] { write(*m_settings, on); }); });
    Register(keywords.isEmpty() ? label : label + u" ("_s + keywords + u')', m_built, box);
    return box;
}

/// An empty text counts as 1; anything but digits can't be typed.
template <class Read, class Write>
QLineEdit* frmSettings::AddNumber(QFormLayout& form, const char* name, const QString& label, const QString& unit,
                                  Read read, Write write)
{
    constexpr int Width = 80;
    auto* box = new QLineEdit;
    box->setObjectName(QString::fromLatin1(name));
    box->setValidator(new QRegularExpressionValidator(QRegularExpression(u"[0-9]{0,5}"_s), box));
    box->setFixedWidth(Width);
    auto* row = new QHBoxLayout;
    row->addWidget(box);
    auto* unitLabel = new QLabel(unit);
    unitLabel->setBuddy(box);
    row->addWidget(unitLabel);
    row->addStretch();
    m_labels.insert(box->objectName(), AddRow(form, label, row, box));
    m_labels.insert(box->objectName(), unitLabel);
    m_bindings.push_back({box, [this, box, read] { box->setText(QString::number(read(*m_settings))); }});
    connect(box, &QLineEdit::textChanged, this, [this, write](const QString& text) {
        Change([&] { write(*m_settings, text.isEmpty() ? 1 : text.toInt()); });
    });
    Register(label, m_built, box);
    return box;
}

template <class Read, class Write>
QLineEdit* frmSettings::AddFolder(QFormLayout& form, const char* name, const char* browse, const QString& label,
                                  const QString& title, Read read, Write write)
{
    auto* box = new QLineEdit;
    box->setObjectName(QString::fromLatin1(name));
    auto* button = new QPushButton(u"Browse..."_s);
    button->setObjectName(QString::fromLatin1(browse));
    auto* row = new QHBoxLayout;
    row->addWidget(box, 1);
    row->addWidget(button);
    m_labels.insert(box->objectName(), AddRow(form, label, row, box));
    m_bindings.push_back({box, [this, box, read] { box->setText(read(*m_settings)); }});
    connect(box, &QLineEdit::textChanged, this,
            [this, write](const QString& text) { Change([&] { write(*m_settings, text); }); });
    connect(button, &QPushButton::clicked, this, [this, box, title] {
        const QString folder = QFileDialog::getExistingDirectory(this, title, box->text());
        if (!folder.isEmpty())
            box->setText(QDir::toNativeSeparators(folder));
    });
    Register(label, m_built, box);
    m_controls.insert(button->objectName(), button);
    return box;
}

template <class Read, class Write>
ColorButton* frmSettings::AddColor(QFormLayout& form, const char* name, const QString& label, Read read, Write write)
{
    QString title = label;
    auto* button = new ColorButton(title.remove(u'&').remove(u':'));
    button->setObjectName(QString::fromLatin1(name));
    form.addRow(label, button);
    m_bindings.push_back({button, [this, button, read] { button->SetColor(quint32(read(*m_settings))); }});
    connect(button, &ColorButton::ColorChosen, this,
            [this, write](quint32 color) { Change([&] { write(*m_settings, int(color)); }); });
    Register(label, m_built, button);
    return button;
}

#define QB_READ(property) [](CSettings& settings) { return settings.property(); }
#define QB_WRITE(property) [](CSettings& settings, const auto& value) { settings.Set##property(value); }
#define QB_BIND(property) QB_READ(property), QB_WRITE(property)

void frmSettings::MakeGeneralPage()
{
    QFormLayout& form = *AddPage(GeneralPage);
    form.addRow(MakeHeading(u"Appearance"_s));
    AddAppearanceControls(form);
    form.addRow(MakeHeading(u"Window"_s));
    AddFlag(form, "chkSaveLayout", u"&Remember the window's place and layout"_s, QB_BIND(SaveFormLayout),
            u"position, size, splitters"_s);
    AddFlag(form, "chkStatusBar", u"Show the &status bar"_s, QB_BIND(ShowStatusBar));
    AddFlag(form, "chkTipsOnStartup", u"Show &tips at the start"_s, QB_BIND(TipsOnStartup));
    AddFlag(form, "chkExpandBranches", u"Next and previous item &enter closed branches of the tree, too"_s,
            QB_BIND(ExpandBranches));
    form.addRow(MakeHeading(u"Browsing"_s));
    AddFlag(form, "chkAutoHideBookmarks", u"Hide the &bookmarks while a web page is shown"_s,
            QB_BIND(AutoHideBookmarksWhenBrowsing));
    AddFlag(form, "chkAutoHideTree", u"Hide the t&ree while a web page is shown"_s, QB_BIND(AutoHideTreeWhenBrowsing));
    AddFlag(form, "chkKeepWebOut", u"&Don't show pages from the web here, only those of items"_s, QB_BIND(KeepWebOut),
            u"internet, browser, security"_s);
    form.addRow(MakeHeading(u"Replication"_s));
    AddFlag(form, "chkDisplaySynchroNotifications", u"Show &notifications during synchronization"_s,
            QB_BIND(DisplaySynchroNotifications));
    AddFlag(form, "chkPreviewSynchronization", u"Show &what will be done before a synchronization"_s,
            QB_BIND(PreviewSynchronization));
}

void frmSettings::AddAppearanceControls(QFormLayout& form)
{
    auto* scheme = new QComboBox;
    scheme->setObjectName(u"cboColourScheme"_s);
    scheme->addItem(u"As the system has it"_s, SystemChoice);
    scheme->addItem(u"Light"_s, u"Light"_s);
    scheme->addItem(u"Dark"_s, u"Dark"_s);
    form.addRow(u"&Colour scheme:"_s, scheme);
    m_bindings.push_back(
        {scheme, [this, scheme] { scheme->setCurrentIndex(qMax(0, scheme->findData(m_settings->ColourScheme()))); }});
    connect(scheme, &QComboBox::currentIndexChanged, this,
            [this, scheme] { Change([&] { m_settings->SetColourScheme(scheme->currentData().toString()); }); });
    Register(u"Colour scheme (dark, light)"_s, m_built, scheme);

    auto* font = new QComboBox;
    font->setObjectName(u"cboInterfaceFont"_s);
    font->addItem(u"As the system has it"_s, QString());
    for (const QString& family : QFontDatabase::families())
        font->addItem(family, family);
    auto* size = new QComboBox;
    size->setObjectName(u"cboInterfaceFontSize"_s);
    size->setAccessibleName(u"Size of the interface font"_s);
    size->addItem(u"System"_s, 0);
    for (const int points : {7, 8, 9, 10, 11, 12, 14, 16, 18, 20, 24})
        size->addItem(QString::number(points), points);
    auto* row = new QHBoxLayout;
    row->addWidget(font, 1);
    row->addWidget(size);
    AddRow(form, u"Interface &font:"_s, row, font);
    m_bindings.push_back(
        {font, [this, font] { font->setCurrentIndex(qMax(0, font->findData(m_settings->InterfaceFontName()))); }});
    m_bindings.push_back(
        {size, [this, size] { size->setCurrentIndex(qMax(0, size->findData(m_settings->InterfaceFontSize()))); }});
    connect(font, &QComboBox::currentIndexChanged, this,
            [this, font] { Change([&] { m_settings->SetInterfaceFontName(font->currentData().toString()); }); });
    connect(size, &QComboBox::currentIndexChanged, this,
            [this, size] { Change([&] { m_settings->SetInterfaceFontSize(size->currentData().toInt()); }); });
    Register(u"Interface font"_s, m_built, font);
    Register(u"Size of the interface font"_s, m_built, size);
}

void frmSettings::MakeTextPage()
{
    QFormLayout& form = *AddPage(TextPage);
    form.addRow(MakeHeading(u"Notes"_s));
    AddFontControls(form);
    AddColor(form, "picDefaultColor1", u"Text colour &1:"_s, QB_BIND(DefaultColor1));
    AddColor(form, "picDefaultColor2", u"Text colour &2:"_s, QB_BIND(DefaultColor2));
    form.addRow(MakeHeading(u"Code"_s));
    AddFlag(form, "chkAutoColorizeOnOpen", u"&Colour code when an item is opened"_s,
            QB_BIND(AutoColorizeWhenItemOpened), u"colorize, syntax"_s);
}

void frmSettings::AddFontControls(QFormLayout& form)
{
    auto* font = new QComboBox;
    font->setObjectName(u"cboDefaultFont"_s);
    QStringList families = QFontDatabase::families();
    const QString preset = u"Verdana"_s; // can be chosen again, be it here or not
    if (!families.contains(preset))
        families.prepend(preset);
    font->addItems(families);
    auto* size = new QComboBox;
    size->setObjectName(u"cboDefaultFontSize"_s);
    size->setAccessibleName(u"Size of the default font"_s);
    for (const int points : {6, 7, 8, 9, 10, 11, 12, 14, 16, 18, 20, 24, 28, 36, 48, 72})
        size->addItem(QString::number(points));
    auto* row = new QHBoxLayout;
    row->addWidget(font, 1);
    row->addWidget(size);
    AddRow(form, u"Default &font:"_s, row, font);
    // What the settings hold is shown, whether this machine has it or not.
    const auto show = [](QComboBox& box, const QString& text) {
        if (box.findText(text) < 0)
            box.addItem(text);
        box.setCurrentText(text);
    };
    m_bindings.push_back({font, [this, font, show] { show(*font, m_settings->DefaultFontName()); }});
    m_bindings.push_back({size, [this, size, show] { show(*size, QString::number(m_settings->DefaultFontSize())); }});
    connect(font, &QComboBox::currentTextChanged, this,
            [this](const QString& name) { Change([&] { m_settings->SetDefaultFontName(name); }); });
    connect(size, &QComboBox::currentTextChanged, this,
            [this](const QString& points) { Change([&] { m_settings->SetDefaultFontSize(points.toInt()); }); });
    Register(u"Default font of notes"_s, m_built, font);
    Register(u"Size of the default font"_s, m_built, size);
}

void frmSettings::MakeFilePage()
{
    QFormLayout& form = *AddPage(FilePage);
    form.addRow(MakeHeading(u"Descriptions"_s));
    AddFlag(form, "chkSaveFileDescriptions", u"&Save descriptions of files without asking"_s,
            QB_BIND(AutoSaveFileDescriptions));
    AddFlag(form, "chkSaveFileDescIfAutosave", u"&Only while auto-save is on"_s,
            QB_BIND(AutoSaveFileDescrIfAutoSaveOn));
    form.addRow(MakeHeading(u"Import"_s));
    AddFlag(form, "chkShowFileImport", u"&Ask how files are to be imported"_s, QB_BIND(ShowImportFilesDialog),
            u"zip, compress"_s);
}

void frmSettings::MakeDownloadPage()
{
    QFormLayout& form = *AddPage(DownloadPage);
    form.addRow(MakeHeading(u"A file that was downloaded"_s));
    struct Option {
        const char* Name;
        const char* Label;
        bool ToItem;
        bool ToFolder;
    };
    static constexpr Option options[] = {
        {"optIntFileAutoSaveToItem", "is stored with the &item", true, false},
        {"optIntFileSaveToDir", "is saved to a &folder", false, true},
        {"optIntFileSaveBoth", "is stored &with the item and saved to a folder", true, true}};
    for (const Option& option : options) {
        auto* button = new QRadioButton(QString::fromLatin1(option.Label));
        button->setObjectName(QString::fromLatin1(option.Name));
        form.addRow(button);
        m_bindings.push_back({button, [this, button, option] {
                                  button->setChecked(m_settings->InternetFileAutosaveToItem() == option.ToItem
                                                     && m_settings->InternetFileSaveToDir() == option.ToFolder);
                              }});
        connect(button, &QRadioButton::toggled, this, [this, option](bool on) {
            if (!on)
                return;
            Change([&] {
                m_settings->SetInternetFileAutosaveToItem(option.ToItem);
                m_settings->SetInternetFileSaveToDir(option.ToFolder);
            });
        });
        Register(u"A downloaded file "_s + QString::fromLatin1(option.Label), m_built, button);
    }
    AddFolder(form, "txtIntFileSavePath", "cmdIntFilePathBrowse", u"Fol&der:"_s, u"Folder of Downloaded Files"_s,
              QB_BIND(InternetFileSavePath));
    AddFlag(form, "chkIntFileCloseWindow", u"&Close the window when the download has finished"_s,
            QB_BIND(InternetFileCloseWhenFinished));
}

void frmSettings::MakeLibraryPage()
{
    QFormLayout& form = *AddPage(LibraryPage);
    form.addRow(MakeHeading(u"The open library"_s));
    const QCheckBox* shared = AddFlag(form, "chkDBShared", u"It is &shared with other users"_s, QB_BIND(DBShared));
    QCheckBox* undo = AddFlag(form, "chkDBEnableSessionUndo", u"Keep a copy to &undo a whole session"_s,
                              QB_BIND(DBEnableSessionUndo));
    // A shared library suspends it, and one that is shared no more has it again as the user once wanted.
    connect(shared, &QCheckBox::toggled, this, [this, undo] {
        const QScopedValueRollback loading(m_loading, true);
        undo->setChecked(m_settings->DBEnableSessionUndo());
    });
    form.addRow(MakeHeading(u"Compaction"_s));
    AddFlag(form, "chkDBCompactOnExit", u"&Compact it at the end of a session"_s, QB_BIND(DBCompactOnExit));
    AddNumber(form, "txtDBCompactOnExit", u"&Every:"_s, u"days of use"_s, QB_BIND(DBCompactOnExitPeriod));
    form.addRow(MakeHeading(u"Backup"_s));
    MakeBackupControls(form);
    MakeRemovedControls(form);
}

void frmSettings::MakeRemovedControls(QFormLayout& form)
{
    form.addRow(MakeHeading(u"Removed items"_s));
    auto* explanation = new QLabel(
        u"What is deleted, or loses in a synchronization, is kept in a folder beside its library and can be "
        "brought back (Tools, Removed Items). The oldest goes when it is older, or all of a library is more, than "
        "you say here; 0 stands for no limit. The latest always stays."_s);
    explanation->setWordWrap(true);
    form.addRow(explanation);
    AddNumber(form, "txtRemovedDays", u"Keep it &for:"_s, u"days"_s, QB_BIND(RemovedDays));
    AddNumber(form, "txtRemovedMegabytes", u"At m&ost:"_s, u"MB for each library"_s, QB_BIND(RemovedMegabytes));
    AddFlag(form, "chkUndoSynchronization", u"Put a copy aside &before each synchronization, to undo it"_s,
            QB_BIND(UndoSynchronization));
}

void frmSettings::MakeBackupControls(QFormLayout& form)
{
    AddFlag(form, "chkDBBackupEvery", u"&Back it up at the end of a session"_s, QB_BIND(DBBackupOnExit));
    AddNumber(form, "txtDBBackupEvery", u"Eve&ry:"_s, u"days of use"_s, QB_BIND(DBBackupPeriod));
    AddFlag(form, "chkDBAutomaticBackup", u"&Without asking"_s, QB_BIND(DBBackupAutomatic));
    AddFolder(form, "txtDBBackupPath", "cmdDBBackupPathBrowse", u"&Folder of backups:"_s, u"Folder of Backups"_s,
              QB_BIND(DBBackupDir));
    AddFlag(form, "chkDBAutoDeleteOldBackups", u"&Delete old backups"_s, QB_BIND(DBBackupAutoDeleteOld));
    AddNumber(form, "txtDBKeepNoOfBackups", u"&Keep the last:"_s, u"backups"_s, QB_BIND(DBBackupAutoDeleteNo));
    form.addRow(MakeHeading(u"Rotating backups"_s));
    AddFlag(form, "chkBackupRotation", u"Make &rotating backups at the end of a session"_s, QB_BIND(BackupRotation));
    auto* explanation = new QLabel(
        u"They go into the folder of backups as NAMEyymmdd.qbb, whatever is set above. Of these the last ones stay, "
        "and one a day and one a week for as long as you say; the others are deleted, but never the only good one."_s);
    explanation->setWordWrap(true);
    form.addRow(explanation);
    AddNumber(form, "txtBackupRotationEvery", u"E&very:"_s, u"days"_s, QB_BIND(BackupRotationEvery));
    AddNumber(form, "txtBackupRotationLast", u"Keep the &last:"_s, u"backups"_s, QB_BIND(BackupRotationLast));
    AddNumber(form, "txtBackupRotationDaily", u"One a &day for:"_s, u"days"_s, QB_BIND(BackupRotationDaily));
    AddNumber(form, "txtBackupRotationWeekly", u"One a &week for:"_s, u"weeks"_s, QB_BIND(BackupRotationWeekly));
}

/// What one switch governs is enabled by it.
void frmSettings::UpdateEnabled()
{
    const auto checked = [this](const QString& name) {
        return qobject_cast<QCheckBox*>(m_controls[name])->isChecked();
    };
    const auto enable = [this](const QStringList& names, bool enabled) {
        for (const QString& name : names) {
            m_controls[name]->setEnabled(enabled);
            for (QWidget* label : m_labels.values(name))
                label->setEnabled(enabled);
        }
    };
    const bool library = m_database && !m_database->IsReadOnly();
    const bool backup = library && checked(u"chkDBBackupEvery"_s);
    enable({u"chkDBShared"_s, u"chkDBCompactOnExit"_s, u"chkDBBackupEvery"_s}, library);
    enable({u"chkDBEnableSessionUndo"_s}, !library || !checked(u"chkDBShared"_s));
    enable({u"txtDBCompactOnExit"_s}, library && checked(u"chkDBCompactOnExit"_s));
    enable({u"txtDBBackupEvery"_s, u"chkDBAutomaticBackup"_s, u"chkDBAutoDeleteOldBackups"_s}, backup);
    enable({u"txtDBBackupPath"_s, u"cmdDBBackupPathBrowse"_s},
           backup || (library && checked(u"chkBackupRotation"_s))); // both kinds go there
    enable({u"txtDBKeepNoOfBackups"_s}, backup && checked(u"chkDBAutoDeleteOldBackups"_s));
    enable({u"txtBackupRotationEvery"_s, u"txtBackupRotationLast"_s, u"txtBackupRotationDaily"_s,
            u"txtBackupRotationWeekly"_s},
           checked(u"chkBackupRotation"_s));
    enable({u"chkSaveFileDescIfAutosave"_s}, checked(u"chkSaveFileDescriptions"_s));
}

// What the library is

void frmSettings::MakeInformationPage()
{
    m_information = AddPage(InformationPage);
    Register(u"Information on the library (size, number of items)"_s, InformationPage, m_information->parentWidget());
}

void frmSettings::FillDatabaseInfo()
{
    while (m_information->rowCount() > 0)
        m_information->removeRow(0);
    if (!m_database) {
        m_information->addRow(new QLabel(u"No library is open."_s));
        return;
    }
    Guarded(u"frmSettings"_s, u"tmrDatabaseInfoStart_Timer"_s, [this] {
        const auto count = [this](const QString& table) {
            return Grouped(m_database->QueryValue(u"SELECT count(*) FROM "_s + table).ToLong());
        };
        const qint64 library = QFileInfo(m_database->Name()).size();
        const qint64 files = SizeOfFolder(m_database->FilesFolder());
        const qint64 pages = SizeOfFolder(m_database->HTMLFolder());
        const std::pair<const char*, QString> rows[] = {
            {"Library:", QDir::toNativeSeparators(m_database->Name())},
            {"Size of the library:", KiloBytes(library)},
            {"Size of the stored files:", KiloBytes(files)},
            {"Size of the web pages:", KiloBytes(pages)},
            {"Together:", KiloBytes(library + files + pages)},
            {"Last compacted:", DayText(m_settings->DBLastCompacted())},
            {"Last backed up:", DayText(m_settings->DBLastBackedUp())},
            {"Items:", count(u"Items"_s)},
            {"Stored files:", count(u"Files"_s)},
            {"Links:", count(u"ItemLinks"_s)},
            {"Bookmarks:", count(u"Bookmarks"_s)},
            {"Keywords:", count(u"Keywords"_s)},
        };
        for (const auto& [label, value] : rows) {
            auto* text = new QLabel(value);
            text->setTextFormat(Qt::PlainText);
            text->setTextInteractionFlags(Qt::TextSelectableByMouse);
            m_information->addRow(QString::fromLatin1(label), text);
        }
    });
}

} // namespace qb
