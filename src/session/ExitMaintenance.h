#pragma once

#include "session/DatabaseTools.h"

#include <QStringList>

namespace qb {

/// What is done with the library at the end of a session: compaction and backup by the day counters, and the rotating
/// backups, which have a schedule of their own.
class ExitMaintenance {
public:
    /// Everything must outlive this. The item that was shown is closed already.
    ExitMaintenance(SessionState& session, ShellView& shell, DatabaseTools& tools)
        : m_session(session), m_shell(shell), m_tools(tools)
    {
    }

    /// All of it, and counts the day, with the library open; it is open afterwards, too, unless that failed. Nothing is
    /// done with a library that can't be written.
    void Run();
    /// The same for a library that is closed already, which is open for it once more without any panel that shows it.
    void RunOn(const QString& path);

    /// Compacts the library. @p isDue: by its own counter, which is told.
    void CompactDatabaseOnExit(bool isDue);
    /// Backs the library up under its name and the day, with the library's extension.
    void BackUpDatabaseOnExit();
    /// Makes today's rotating backup, if the settings want it and one is due, and deletes those that the rule doesn't
    /// keep.
    void RotateOnExit();

    /// The folder for backups; it is the program's own, made when it is missing, where the settings name none that is
    /// there.
    QString FolderOfBackups();
    /// The backups that the number of those to keep says are too many before another is made. Their pattern has no
    /// separator between the folder and the base name; and what is given is the bare name.
    QStringList OldBackups();

private:
    bool MayBackUp(const QString& file);
    bool BackUp(const QString& file);

    SessionState& m_session;
    ShellView& m_shell;
    DatabaseTools& m_tools;
};

} // namespace qb
