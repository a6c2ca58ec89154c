#include "platform/system/Clock.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/TestRun.h"

#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The units of the timer that the package brings: that they say what they may, and that what they start works.
class TestBackupUnit : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;

    /// The settings of a unit, as "Section.Key=value"; what is continued on the next line is one.
    static QStringList SettingsOf(const QString& unit)
    {
        QString text = QString::fromUtf8(ReadFile(QStringLiteral(QUILLBASE_PACKAGING "/") + unit));
        QStringList settings;
        QString section;
        for (const QString& line : text.replace(u"\\\n"_s, u" "_s).split(u'\n', Qt::SkipEmptyParts)) {
            if (line.startsWith(u'['))
                section = line.mid(1).chopped(1);
            else if (!line.startsWith(u'#'))
                settings << section + u'.' + line;
        }
        return settings;
    }
    static QString Setting(const QStringList& settings, const QString& name)
    {
        const QStringList found = settings.filter(QRegularExpression(u'^' + QRegularExpression::escape(name) + u'='));
        return found.size() == 1 ? found[0].mid(name.size() + 1) : QString();
    }

    QString Backups(const QString& name = {}) const { return m_home->Path(u"my backups/"_s + name); }
    QStringList Names() const { return QDir(Backups()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    static QString Today() { return QDate::currentDate().toString(u"yyMMdd"_s); }

    /// Runs what the service starts, as it is started for a library.
    int Start(const QString& library) const
    {
        QString command = Setting(SettingsOf(u"quillbase-backup@.service"_s), u"Service.ExecStart"_s);
        const QString shell = u"/bin/sh -c '"_s, end = u"' quillbase-backup %f"_s;
        if (!command.startsWith(shell) || !command.endsWith(end))
            return -1;
        command = command.mid(shell.size()).chopped(end.size()).replace(u"$$"_s, u"$"_s).replace(u"%%"_s, u"%"_s);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const QString programs = QFileInfo(qEnvironmentVariable("QUILLBASE_CLI")).absolutePath();
        environment.insert(u"PATH"_s, programs + u':' + qEnvironmentVariable("PATH"));
        environment.insert(u"BACKUPS"_s, Backups().chopped(1));
        environment.insert(u"KEEP"_s, u"--last 2"_s);
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(u"/bin/sh"_s, {u"-c"_s, command, u"quillbase-backup"_s, library});
        return process.waitForFinished(60000) ? process.exitCode() : -1;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"my büch.er.qbd"_s);
        AddItem(*MakeLibrary(m_library), 0, u"one"_s);
    }
    void cleanup() { m_home.reset(); }

    void service_backsUpAndRotates()
    {
        QDir().mkpath(Backups());
        QCOMPARE(Cli({u"backup"_s, m_library, Backups(u"my büch.er200101.qbb"_s)}).Status, 0);
        QCOMPARE(Cli({u"backup"_s, m_library, Backups(u"my büch.er200102.qbb"_s)}).Status, 0);
        WriteFile(Backups(u"notes.txt"_s), "of somebody");
        QCOMPARE(Start(m_library), 0);
        const QString made = u"my büch.er%1.qbb"_s.arg(Today());
        QCOMPARE(Names(), (QStringList{u"my büch.er200102.qbb"_s, made, u"notes.txt"_s}));
        QCOMPARE(QFileInfo(Backups(made)).permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        QCOMPARE(Cli({u"verify"_s, Backups(made)}).Status, 0);
        QCOMPARE(Start(m_library), 0); // once more on the same day
        QCOMPARE(Names().size(), 3);
    }

    void failedBackup_rotatesNothing()
    {
        QDir().mkpath(Backups());
        for (const int day : {1, 2, 3})
            QCOMPARE(Cli({u"backup"_s, m_library, Backups(u"my büch.er20010%1.qbb"_s.arg(day))}).Status, 0);
        const QStringList before = Names();
        QVERIFY(Start(m_home->Path(u"none.qbd"_s)) > 0);
        QCOMPARE(Names(), before);
    }

    void libraryOfTheSameName_keepsItsBackup()
    {
        QCOMPARE(Start(m_library), 0);
        const QByteArray first = ReadFile(Backups(Names().value(0)));
        QDir().mkpath(m_home->Path(u"other"_s));
        MakeLibrary(m_home->Path(u"other/my büch.er.qbd"_s)).reset();
        QVERIFY(Start(m_home->Path(u"other/my büch.er.qbd"_s)) > 0);
        QCOMPARE(ReadFile(Backups(Names().value(0))), first);
    }

    void units_sayOnlyWhatTheyMay_data()
    {
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("service") << u"quillbase-backup@.service"_s
                                 << QStringList{u"Service.EnvironmentFile"_s,
                                                u"Service.ExecStart"_s,
                                                u"Service.IOSchedulingClass"_s,
                                                u"Service.Nice"_s,
                                                u"Service.Type"_s,
                                                u"Unit.ConditionPathExists"_s,
                                                u"Unit.Description"_s};
        QTest::newRow("timer") << u"quillbase-backup@.timer"_s
                               << QStringList{u"Install.WantedBy"_s, u"Timer.OnCalendar"_s, u"Timer.Persistent"_s,
                                              u"Timer.RandomizedDelaySec"_s, u"Unit.Description"_s};
    }
    void units_sayOnlyWhatTheyMay()
    {
        QFETCH(QString, unit);
        QFETCH(QStringList, keys);
        QStringList said;
        for (const QString& setting : SettingsOf(unit)) {
            if (!setting.startsWith(u"Service.Environment="_s)) // of which there are two
                said << setting.section(u'=', 0, 0);
        }
        said.sort();
        QCOMPARE(said, keys);
    }

    void units_belongTogether()
    {
        const QStringList service = SettingsOf(u"quillbase-backup@.service"_s);
        QCOMPARE(Setting(service, u"Service.Type"_s), u"oneshot"_s);
        QVERIFY(service.contains(u"Service.Environment=BACKUPS=%h/Backups"_s));
        const QString keep = service.filter(u"KEEP="_s).value(0).section(u'=', 2).chopped(1);
        QDir().mkpath(Backups());
        QCOMPARE(Cli(QStringList{u"rotate"_s, Backups()} + keep.split(u' ')).Status, 0);
        const QStringList timer = SettingsOf(u"quillbase-backup@.timer"_s);
        QCOMPARE(Setting(timer, u"Timer.OnCalendar"_s), u"daily"_s);
        QCOMPARE(Setting(timer, u"Timer.Persistent"_s), u"true"_s);
        QCOMPARE(Setting(timer, u"Install.WantedBy"_s), u"timers.target"_s);
    }
};

QB_TEST_MAIN(TestBackupUnit)
#include "tst_backup_unit.moc"
