#include "config/CSettings.h"
#include "platform/system/SettingsStore.h"
#include "session/ui/frmSettings.h"
#include "support/GuiRun.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "support/ui/Appearance.h"
#include "support/ui/ColorButton.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QCompleter>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The options dialog: each control and its setting, what apply and cancel do, and the search.
class TestSettingsDialog : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"library.qbd"_s), LanguageType::VB);
        m_settings = std::make_unique<CSettings>([this] { return m_database.get(); });
        m_settings->SkipDayCount();
        m_settings->Initialise();
    }
    void cleanup()
    {
        m_dialog.reset();
        m_settings.reset();
        m_database.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // Each control and its setting

    void control_changesItsSetting_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("property");
        QTest::addColumn<QString>("preset");
        QTest::addColumn<QString>("changed");
        const auto flag = [](const char* control, const char* property, bool preset) {
            QTest::newRow(control) << QString::fromLatin1(control) << QString::fromLatin1(property)
                                   << BooleanText(preset) << BooleanText(!preset);
        };
        flag("chkSaveLayout", "SaveFormLayout", true);
        flag("chkStatusBar", "ShowStatusBar", true);
        flag("chkDBEnableSessionUndo", "DBEnableSessionUndo", false);
        flag("chkDBShared", "DBShared", false);
        flag("chkDBCompactOnExit", "DBCompactOnExit", true);
        flag("chkDBBackupEvery", "DBBackupOnExit", true);
        flag("chkDBAutomaticBackup", "DBBackupAutomatic", false);
        flag("chkDBAutoDeleteOldBackups", "DBBackupAutoDeleteOld", true);
        flag("chkExpandBranches", "ExpandBranches", true);
        flag("chkSaveFileDescriptions", "AutoSaveFileDescriptions", true);
        flag("chkSaveFileDescIfAutosave", "AutoSaveFileDescrIfAutoSaveOn", true);
        flag("chkDisplaySynchroNotifications", "DisplaySynchroNotifications", true);
        flag("chkAutoColorizeOnOpen", "AutoColorizeWhenItemOpened", false);
        flag("chkAutoHideBookmarks", "AutoHideBookmarksWhenBrowsing", false);
        flag("chkAutoHideTree", "AutoHideTreeWhenBrowsing", false);
        flag("chkKeepWebOut", "KeepWebOut", false);
        flag("chkIntFileCloseWindow", "InternetFileCloseWhenFinished", false);
        flag("chkTipsOnStartup", "TipsOnStartup", true);
        flag("chkShowFileImport", "ShowImportFilesDialog", true);
        const auto text = [](const char* control, const char* property, const QString& preset, const QString& changed) {
            QTest::newRow(control) << QString::fromLatin1(control) << QString::fromLatin1(property) << preset
                                   << changed;
        };
        text("txtDBCompactOnExit", "DBCompactOnExitPeriod", u"5"_s, u"77"_s);
        text("txtDBBackupEvery", "DBBackupPeriod", u"15"_s, u"78"_s);
        text("txtDBKeepNoOfBackups", "DBBackupAutoDeleteNo", u"5"_s, u"9"_s);
        text("txtDBBackupPath", "DBBackupDir", QString(), u"/some where/Backups"_s);
        text("txtIntFileSavePath", "InternetFileSavePath", QString(), u"/dówn"_s);
        text("cboDefaultFont", "DefaultFontName", u"Verdana"_s, u"DejaVu Sans"_s);
        text("cboDefaultFontSize", "DefaultFontSize", u"10"_s, u"14"_s);
        text("cboColourScheme", "ColourScheme", u"System"_s, u"Dark"_s);
        text("cboInterfaceFont", "InterfaceFontName", QString(), u"DejaVu Sans"_s);
        text("cboInterfaceFontSize", "InterfaceFontSize", u"0"_s, u"12"_s);
        text("picDefaultColor1", "DefaultColor1", u"255"_s, QString::number(0x008000));
        text("picDefaultColor2", "DefaultColor2", u"16711680"_s, QString::number(0x808080));
        text("optIntFileSaveToDir", "InternetFileSaveToDir", u"False"_s, u"True"_s);
        text("optIntFileSaveBoth", "InternetFileSaveToDir", u"False"_s, u"True"_s);
    }
    void control_changesItsSetting()
    {
        QFETCH(QString, control);
        QFETCH(QString, property);
        QFETCH(QString, preset);
        QFETCH(QString, changed);
        if (property == u"DBBackupDir"_s)
            preset = m_home->Path(u"Backups"_s);
        QCOMPARE(Setting(property), preset);

        Open(); // an edit that is cancelled
        QCOMPARE(Shown(control), preset);
        QVERIFY(!Button(u"cmdApply"_s)->isEnabled());
        Set(control, changed);
        QCOMPARE(Shown(control), changed);
        QVERIFY(Button(u"cmdApply"_s)->isEnabled());
        QCOMPARE(Setting(property), changed);
        QCOMPARE(Stored(property), preset);
        m_dialog->reject();
        QVERIFY(m_dialog->Canceled());
        QCOMPARE(Setting(property), preset);

        Open(); // one that is applied
        QCOMPARE(Shown(control), preset);
        Set(control, changed);
        QTest::mouseClick(Button(u"cmdApply"_s), Qt::LeftButton);
        QVERIFY(!Button(u"cmdApply"_s)->isEnabled());
        QCOMPARE(Stored(property), changed);
        QVERIFY(m_dialog->isVisible());
        m_dialog->reject(); // what was applied stays
        QCOMPARE(Setting(property), changed);

        Open();
        QCOMPARE(Shown(control), changed);
        Set(control, preset);
        m_dialog->accept();
        QCOMPARE(Stored(property), preset);
        QVERIFY(!m_dialog->Canceled());
    }

    void downloads_goToOneOfThreePlaces()
    {
        Open();
        const auto places = [this] {
            return Setting(u"InternetFileAutosaveToItem"_s) + u' ' + Setting(u"InternetFileSaveToDir"_s);
        };
        QVERIFY(Control<QRadioButton>(u"optIntFileAutoSaveToItem"_s)->isChecked());
        Control<QRadioButton>(u"optIntFileSaveToDir"_s)->click();
        QCOMPARE(places(), u"False True"_s);
        Control<QRadioButton>(u"optIntFileSaveBoth"_s)->click();
        QCOMPARE(places(), u"True True"_s);
        Control<QRadioButton>(u"optIntFileAutoSaveToItem"_s)->click();
        QCOMPARE(places(), u"True False"_s);
    }

    void number_isDigitsAndNeverEmpty_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("property");
        QTest::newRow("backup") << u"txtDBBackupEvery"_s << u"DBBackupPeriod"_s;
        QTest::newRow("compaction") << u"txtDBCompactOnExit"_s << u"DBCompactOnExitPeriod"_s;
        QTest::newRow("kept backups") << u"txtDBKeepNoOfBackups"_s << u"DBBackupAutoDeleteNo"_s;
    }
    void number_isDigitsAndNeverEmpty()
    {
        QFETCH(QString, control);
        QFETCH(QString, property);
        Open();
        auto* box = Control<QLineEdit>(control);
        box->setEnabled(true);
        box->clear();
        QCOMPARE(Setting(property), u"1"_s);
        QTest::keyClicks(box, u"-1a2."_s);
        QCOMPARE(box->text(), u"12"_s);
        QCOMPARE(Setting(property), u"12"_s);
    }

    void sessionUndo_isTickedWhenItIsInForce()
    {
        m_settings->SetDBEnableSessionUndo(true);
        m_settings->SetDBShared(true);
        m_settings->Apply();
        Open();
        auto* undo = Control<QCheckBox>(u"chkDBEnableSessionUndo"_s);
        QVERIFY(!undo->isChecked()); // of a shared library none is kept
        Control<QCheckBox>(u"chkDBShared"_s)->setChecked(false);
        QVERIFY(m_settings->DBEnableSessionUndo());
        QVERIFY(undo->isChecked());
        Control<QCheckBox>(u"chkDBShared"_s)->setChecked(true);
        QVERIFY(!undo->isChecked());
        Control<QCheckBox>(u"chkDBShared"_s)->setChecked(false);
        QVERIFY(m_settings->DBEnableSessionUndo()); // the user's wish has outlived it
    }

    void switch_enablesWhatItGoverns()
    {
        Open();
        const auto enabled = [this](const QString& name) { return m_dialog->findChild<QWidget*>(name)->isEnabled(); };
        const auto check = [this](const QString& name, bool on) { Control<QCheckBox>(name)->setChecked(on); };
        check(u"chkDBBackupEvery"_s, true);
        check(u"chkDBAutoDeleteOldBackups"_s, true);
        const QStringList backup{u"txtDBBackupEvery"_s,     u"txtDBBackupPath"_s,           u"cmdDBBackupPathBrowse"_s,
                                 u"chkDBAutomaticBackup"_s, u"chkDBAutoDeleteOldBackups"_s, u"txtDBKeepNoOfBackups"_s};
        for (const QString& name : backup)
            QVERIFY2(enabled(name), qPrintable(name));
        check(u"chkDBBackupEvery"_s, false);
        for (const QString& name : backup)
            QVERIFY2(!enabled(name), qPrintable(name));
        check(u"chkDBBackupEvery"_s, true);
        check(u"chkDBAutoDeleteOldBackups"_s, false);
        QVERIFY(!enabled(u"txtDBKeepNoOfBackups"_s));
        QCOMPARE(LabelsOf(u"txtDBKeepNoOfBackups"_s, false), (QStringList{u"&Keep the last:"_s, u"backups"_s}));
        QCOMPARE(LabelsOf(u"txtDBBackupEvery"_s, true), (QStringList{u"Eve&ry:"_s, u"days of use"_s}));
        check(u"chkDBAutoDeleteOldBackups"_s, true);
        QCOMPARE(LabelsOf(u"txtDBKeepNoOfBackups"_s, true), (QStringList{u"&Keep the last:"_s, u"backups"_s}));
        check(u"chkDBCompactOnExit"_s, false);
        QVERIFY(!enabled(u"txtDBCompactOnExit"_s));
        check(u"chkDBCompactOnExit"_s, true);
        QVERIFY(enabled(u"txtDBCompactOnExit"_s));
        check(u"chkDBShared"_s, true);
        QVERIFY(!enabled(u"chkDBEnableSessionUndo"_s));
        check(u"chkDBShared"_s, false);
        QVERIFY(enabled(u"chkDBEnableSessionUndo"_s));
        check(u"chkSaveFileDescriptions"_s, false);
        QVERIFY(!enabled(u"chkSaveFileDescIfAutosave"_s));
    }

    void colour_isChosenInTheDialog_withTheUsersOwnColours()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"PredefinedColours"_s, u"255,65280"_s);
        Open();
        auto* button = Control<ColorButton>(u"picDefaultColor1"_s);
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(QColorDialog::customColor(1), QColor(0, 255, 0));
            QColorDialog::setCustomColor(2, Qt::blue);
            dialog->setCurrentColor(QColor(1, 2, 3));
            dialog->accept();
        });
        for (QAction* action : button->menu()->actions()) {
            if (action->property("key") == u"CUSTOM"_s)
                action->trigger();
        }
        QCOMPARE(Setting(u"DefaultColor1"_s), QString::number(0x030201));
        QVERIFY(GetSetting(SettingsApplication, u"Settings"_s, u"PredefinedColours"_s)
                    .startsWith(u"255,65280,16711680,"_s));
    }

    // Life

    void settings_areTheDialogsWhileItIsOpen()
    {
        bool closed = false;
        Open();
        m_dialog->CloseSettingsForm = [&closed] { closed = true; };
        QVERIFY(m_settings->ChangingSettings());
        QCOMPARE(m_dialog->ActiveDB(), m_database.get());
        m_database->Execute(u"UPDATE Properties SET BackupOnExitEvery = 99"_s);
        QCOMPARE(m_settings->DBBackupPeriod(), 15);
        m_dialog.reset();
        QVERIFY(closed);
        QVERIFY(!m_settings->ChangingSettings());
        QCOMPARE(m_settings->DBBackupPeriod(), 99);
    }

    void withoutLibrary_onlyTheUsersSettingsCanBeChanged()
    {
        m_database.reset();
        m_settings = std::make_unique<CSettings>([] { return nullptr; });
        Open();
        for (const QString& name : {u"chkDBShared"_s, u"chkDBBackupEvery"_s, u"chkDBCompactOnExit"_s,
                                    u"txtDBBackupEvery"_s, u"fgrdList"_s, u"cmdImport"_s})
            QVERIFY2(!m_dialog->findChild<QWidget*>(name)->isEnabled(), qPrintable(name));
        Control<QCheckBox>(u"chkStatusBar"_s)->setChecked(false);
        m_dialog->accept();
        QCOMPARE(Stored(u"ShowStatusBar"_s), u"False"_s);
    }

    void settingThatCantBeWritten_keepsTheDialogOpen()
    {
        Open();
        Control<QCheckBox>(u"chkStatusBar"_s)->setChecked(false);
        // A folder in the place of the store's file
        const QString store = m_home->Path(u"config/KTQuillbase.ini"_s);
        QFile::remove(store);
        QVERIFY(QDir().mkpath(store));
        m_prompts->ExpectError();
        m_dialog->accept();
        QVERIFY(m_dialog->isVisible());
        QVERIFY(QDir().rmdir(store));
        m_dialog->accept();
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(Stored(u"ShowStatusBar"_s), u"False"_s);
    }

    // Search

    void search_jumpsToASetting()
    {
        Open();
        auto* search = Control<QLineEdit>(u"txtSearch"_s);
        QTest::keyClicks(search, u"status bar"_s);
        QTest::keyClick(search, Qt::Key_Return);
        QVERIFY(m_dialog->isVisible()); // Enter finds, and closes nothing
        QVERIFY(Control<QCheckBox>(u"chkStatusBar"_s)->hasFocus());
        search->setFocus();
        search->clear();
        QTest::keyClicks(search, u"KEYWORDS OF"_s);
        auto* pages = Control<QListWidget>(u"lstPages"_s);
        QVERIFY(!(pages->item(frmSettings::GeneralPage)->flags() & Qt::ItemIsEnabled)); // nothing of the kind is there
        QVERIFY(pages->item(frmSettings::KeywordPage)->flags() & Qt::ItemIsEnabled);
        QTest::keyClick(search, Qt::Key_Return);
        QCOMPARE(pages->currentRow(), int(frmSettings::KeywordPage));
        QVERIFY(pages->item(frmSettings::GeneralPage)->flags() & Qt::ItemIsEnabled);
        search->setFocus();
        search->clear();
        QTest::keyClicks(search, u"no such thing"_s);
        QTest::keyClick(search, Qt::Key_Return);
        QCOMPARE(pages->currentRow(), int(frmSettings::KeywordPage));
    }

    void information_comesAMomentLater()
    {
        AddItem(*m_database, 0, u"item"_s);
        Open();
        m_dialog->ShowPage(frmSettings::InformationPage);
        const auto texts = [this] {
            QStringList found;
            for (const QLabel* label : m_dialog->findChildren<QLabel*>())
                found << label->text();
            return found;
        };
        QVERIFY(!texts().contains(u"Items:"_s));
        QTRY_VERIFY(texts().contains(u"Items:"_s));
        QVERIFY(texts().contains(u"Size of the library:"_s));
        QVERIFY(!texts().filter(QRegularExpression(u"^[0-9,]+ kB$"_s)).isEmpty());
    }

    // Looks

    void scheme_changesTheColours()
    {
        const QPalette before = QApplication::palette();
        const QFont font = QApplication::font();
        ApplyAppearance(u"Dark"_s, u"DejaVu Sans Mono"_s, 13);
        QVERIFY(QApplication::palette().color(QPalette::Base).lightness() < 64);
        QVERIFY(QApplication::palette().color(QPalette::Text).lightness() > 192);
        QCOMPARE(QApplication::font().family(), u"DejaVu Sans Mono"_s);
        QCOMPARE(QApplication::font().pointSize(), 13);
        ApplyAppearance(u"Light"_s, {}, 0);
        QVERIFY(QApplication::palette().color(QPalette::Base).lightness() > 192);
        QCOMPARE(QApplication::font(), font);
        ApplyAppearance(u"System"_s, {}, 0);
        QCOMPARE(QApplication::palette(), before);
    }

    void pictures()
    {
        for (const QString& scheme : {u"Light"_s, u"Dark"_s}) {
            ApplyAppearance(scheme, {}, 0);
            Open();
            for (int page = 0; page < frmSettings::PageCount; ++page) {
                m_dialog->ShowPage(frmSettings::Page(page));
                QTest::qWait(page == frmSettings::InformationPage ? 250 : 10);
                TakePicture(*m_dialog, u"options-%1-%2"_s.arg(page).arg(scheme.toLower()));
            }
            m_dialog.reset();
        }
        ApplyAppearance(u"System"_s, {}, 0);
    }

private:
    /// The labels of a control that are enabled, or are not.
    QStringList LabelsOf(const QString& control, bool enabled) const
    {
        QStringList texts;
        for (const QLabel* label : m_dialog->findChildren<QLabel*>()) {
            if (label->buddy() && label->buddy()->objectName() == control && label->isEnabled() == enabled)
                texts << label->text();
        }
        return texts;
    }
    void Open()
    {
        m_dialog = std::make_unique<frmSettings>();
        m_dialog->InitializeSettings(*m_settings, m_database.get());
        m_dialog->show();
        m_dialog->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
    }
    template <class T>
    T* Control(const QString& name)
    {
        return m_dialog->findChild<T*>(name);
    }
    QPushButton* Button(const QString& name) { return Control<QPushButton>(name); }
    QString Setting(const QString& property) { return Find(*m_settings, property); }
    /// As another start of the program reads it.
    QString Stored(const QString& property)
    {
        CSettings other([this] { return m_database.get(); });
        other.SkipDayCount();
        return Find(other, property);
    }
    static QString Find(const CSettings& settings, const QString& property)
    {
        for (const CSettings::NamedSetting& setting : settings.All()) {
            if (setting.Name == property)
                return setting.Value;
        }
        return u"no such setting"_s;
    }
    QString Shown(const QString& name)
    {
        auto* control = Control<QWidget>(name);
        if (auto* box = qobject_cast<QAbstractButton*>(control); box && !qobject_cast<ColorButton*>(control))
            return BooleanText(box->isChecked());
        if (auto* button = qobject_cast<ColorButton*>(control))
            return QString::number(button->Color());
        if (auto* combo = qobject_cast<QComboBox*>(control))
            return combo->currentData().isValid() ? combo->currentData().toString() : combo->currentText();
        return qobject_cast<QLineEdit*>(control)->text();
    }
    /// As the user does it, be it allowed at the moment or not.
    void Set(const QString& name, const QString& value)
    {
        auto* control = Control<QWidget>(name);
        control->setEnabled(true);
        if (auto* button = qobject_cast<ColorButton*>(control)) {
            for (QAction* action : button->menu()->actions()) {
                for (const ColorPreset& preset : ColorPresets()) {
                    if (action->property("key") == QString::fromLatin1(preset.Key)
                        && QString::number(preset.Value) == value)
                        return action->trigger();
                }
            }
            Q_EMIT button->ColorChosen(value.toUInt());
        } else if (auto* radio = qobject_cast<QRadioButton*>(control)) {
            BooleanFromText(value) ? radio->click() : Control<QRadioButton>(u"optIntFileAutoSaveToItem"_s)->click();
        } else if (auto* box = qobject_cast<QCheckBox*>(control)) {
            box->setChecked(BooleanFromText(value));
        } else if (auto* combo = qobject_cast<QComboBox*>(control)) {
            const int index = combo->findData(value) >= 0 ? combo->findData(value) : combo->findText(value);
            combo->setCurrentIndex(index);
        } else {
            qobject_cast<QLineEdit*>(control)->setText(value);
        }
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    std::unique_ptr<CSettings> m_settings;
    std::unique_ptr<frmSettings> m_dialog;
};

QB_GUI_TEST_MAIN(TestSettingsDialog)
#include "tst_settings_dialog.moc"
