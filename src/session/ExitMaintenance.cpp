#include "session/ExitMaintenance.h"

#include "maintenance/BackupRotation.h"
#include "maintenance/Compaction.h"
#include "maintenance/PhasedWork.h"
#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

void Warn(const QString& text, const QString& caption)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = MsgBoxIcon::Exclamation});
}

/// While it lives the library is closed; afterwards it is open again, without any of the window's parts.
class ClosedLibrary {
public:
    explicit ClosedLibrary(SessionState& session) : m_session(session), m_path(session.CurrentDatabase->Name())
    {
        m_session.moSettings->ClosePropertiesRS();
        m_session.CurrentDatabase.reset();
    }
    ~ClosedLibrary()
    {
        Guarded(ModuleName, u"SetupDBConnection"_s, [this] { m_session.CurrentDatabase = Library::Open(m_path); });
    }
    ClosedLibrary(const ClosedLibrary&) = delete;
    ClosedLibrary& operator=(const ClosedLibrary&) = delete;

    const QString& Path() const { return m_path; }

private:
    SessionState& m_session;
    QString m_path;
};

} // namespace

void ExitMaintenance::Run()
{
    if (!m_session.MayWrite())
        return;
    CSettings& settings = *m_session.moSettings;
    // A backup that is due has the library compacted, too, whatever that setting says.
    const bool compacts = settings.DBCompactOnExitExecute();
    const bool backsUp = settings.DBBackupOnExitExecute();
    if (compacts || backsUp)
        CompactDatabaseOnExit(compacts);
    if (backsUp && m_session.CurrentDatabase)
        BackUpDatabaseOnExit();
    if (m_session.CurrentDatabase)
        RotateOnExit();
    if (m_session.MayWrite())
        settings.CountDay(); // writes to the library
}

void ExitMaintenance::RunOn(const QString& path)
{
    m_session.CurrentDatabase = Library::Open(path);
    Run();
    m_session.CurrentDatabase.reset();
}

void ExitMaintenance::CompactDatabaseOnExit(bool isDue)
{
    bool isDone = false;
    {
        const ClosedLibrary library(m_session);
        Guarded(ModuleName, u"CompactDatabase"_s, [&] {
            m_tools.Watched(u"Compaction"_s, [&](Work& work) {
                isDone = RunUnlessCancelled([&] { CompactLibrary(library.Path(), work); });
            });
        });
    }
    if (isDone && isDue)
        m_session.moSettings->DBCompacted();
}

QString ExitMaintenance::FolderOfBackups()
{
    const QString chosen = m_session.moSettings->DBBackupDir();
    if (!chosen.isEmpty() && QFileInfo(chosen).isDir())
        return chosen;
    const QString own = ApplicationFolder() + u"Backups"_s;
    QDir().mkpath(own);
    m_session.moSettings->SetDBBackupDir(own);
    return own;
}

QStringList ExitMaintenance::OldBackups()
{
    constexpr qsizetype Day = 6;
    CSettings& settings = *m_session.moSettings;
    if (!settings.DBBackupAutoDeleteOld())
        return {};
    const QString begin = FolderOfBackups()
                          + fnExtractPathOrFileName(m_session.CurrentDatabasePath, PathPart::BaseName);
    const QFileInfo pattern(begin);
    const QString end = u".qbb"_s;
    QStringList found;
    for (const QString& name : pattern.dir().entryList(QDir::Files, QDir::Name)) {
        if (name.startsWith(pattern.fileName()) && name.endsWith(end, Qt::CaseInsensitive)
            && name.size() == pattern.fileName().size() + Day + end.size())
            found << name;
    }
    const qsizetype kept = qMax(0, settings.DBBackupAutoDeleteNo() - 1);
    return found.mid(0, qMax<qsizetype>(0, found.size() - kept));
}

bool ExitMaintenance::MayBackUp(const QString& file)
{
    if (!m_session.moSettings->DBBackupOnExit())
        return false;
    return m_session.moSettings->DBBackupAutomatic()
           || Prompts::Current().MsgBox(
                  {.Text =
                       u"According to your settings the current database should be backed up today.\r\nDo you want to "
                       "continue and back up the database to the following location: %1?"_s.arg(
                           QDir::toNativeSeparators(file)),
                   .Caption = u"Scheduled Backup Procedure Ready"_s,
                   .Buttons = MsgBoxButtons::YesNo,
                   .Icon = MsgBoxIcon::Question})
                  == MsgBoxResult::Yes;
}

bool ExitMaintenance::BackUp(const QString& file)
{
    const ClosedLibrary library(m_session);
    const bool isDone = m_tools.BackUp(library.Path(), file);
    if (isDone && !m_tools.Damage().empty())
        Warn(DatabaseTools::DamageText(m_tools.Damage(),
                                       u"No older backup was deleted; \"Backups...\" in the menu of tools brings "
                                       "single items back from one."_s),
             u"Damage in the Library"_s);
    return isDone;
}

void ExitMaintenance::BackUpDatabaseOnExit()
{
    const QString library = m_session.CurrentDatabasePath;
    // The extension is deliberately the library's own.
    const QString file = FolderOfBackups() + u'/' + fnExtractPathOrFileName(library, PathPart::BaseName)
                         + Clock::Today().Day().toString(u"yyMMdd"_s) + u'.' + QFileInfo(library).suffix();
    if (!MayBackUp(file))
        return;
    const QStringList old = OldBackups();
    m_shell.SetStatusText(u"Backing Up the Database..."_s);
    if (!BackUp(file)) {
        m_shell.SetStatusText(u"Unable to Back Up the Database"_s);
        Warn(u"Attempt to back up the current database according the set preferences was unsuccessful!"_s,
             u"BackUp Unsuccessful"_s);
        return;
    }
    // Not before the new one is there, and is good. The names are bare, deliberately: whether anything goes depends on
    // the folder that the program was started in.
    for (auto name = old.rbegin(); name != old.rend() && m_tools.Damage().empty(); ++name)
        QFile::remove(*name);
    m_session.moSettings->DBBackedUp();
    m_shell.SetStatusText(u"Database Backed Up"_s);
}

void ExitMaintenance::RotateOnExit()
{
    const CSettings& settings = *m_session.moSettings;
    if (!settings.BackupRotation())
        return;
    Guarded(ModuleName, u"RotateOnExit"_s, [&] {
        const QString folder = FolderOfBackups();
        const QString base = fnExtractPathOrFileName(m_session.CurrentDatabasePath, PathPart::BaseName);
        const QString identity = m_session.CurrentDatabase->Identity();
        const QDate today = Clock::Today().Day();
        QDate latest;
        for (const BackupEntry& entry : ListBackups(folder)) {
            const bool isOwn = entry.Base == base && entry.Summary && entry.Summary->Library == identity;
            if (isOwn && entry.Day <= today) // a clock that was ahead must not put off the next one for years
                latest = qMax(latest, entry.Day);
        }
        if (latest.isValid() && latest.daysTo(today) < settings.BackupRotationEvery())
            return;
        const QString file = RotatingName(folder, m_session.CurrentDatabasePath, today);
        if (QFileInfo::exists(file)) // it is not this library's, or says nothing of itself
            return Warn(
                u"The library was not backed up: the backup '%1' is of another library of this name. Choose another "
                "folder of backups for one of them."_s.arg(QDir::toNativeSeparators(file)),
                ApplicationTitle);
        if (!BackUp(file) || !m_tools.Damage().empty())
            return;
        const RotationRule rule{.Last = qMax(1, settings.BackupRotationLast()),
                                .Daily = settings.BackupRotationDaily(),
                                .Weekly = settings.BackupRotationWeekly()};
        m_tools.Watched(u"Backup"_s, [&](Work& work) {
            RunUnlessCancelled([&] { RotateBackups(folder, rule, today, work, base); });
        });
    });
}

} // namespace qb
