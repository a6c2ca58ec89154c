#pragma once

#include "support/FolderContents.h"

#include <QFile>
#include <QHash>
#include <QMap>
#include <QRandomGenerator>
#include <QSet>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qb::test {

/// A call that a program made, as tests/attack/record.cpp writes it down.
struct Recorded {
    char Kind = 0;
    int File = -1; ///< number of the file that it is about
    QString Path;
    QString From; ///< of a rename
    qint64 At = 0;
    QByteArray Bytes;
};

/// A folder and the calls that changed it. From both comes each folder that a power cut may leave: what was flushed is
/// there; of the rest, the changes of names up to some moment, as file systems with a journal keep them, and any of
/// the writes, whole or in part.
class RecordedDisk {
public:
    /// The folder as it is now, before the calls.
    explicit RecordedDisk(const QString& folder) : m_folder(folder)
    {
        const QMap<QString, QByteArray> all = ContentsOf(folder);
        for (auto entry = all.begin(); entry != all.end(); ++entry) {
            const QString path = folder + u'/' + entry.key();
            if (entry.key().endsWith(u'/')) {
                m_folders.insert(path.chopped(1));
                continue;
            }
            m_names.insert(path, int(m_files.size()));
            m_numbers.insert(InodeOf(path), int(m_files.size()));
            m_files.push_back(entry.value());
        }
    }

    /// The calls that were made since, from the file that they were written to.
    void Read(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return;
        while (!file.atEnd()) {
            const QByteArray line = file.readLine().chopped(1);
            Recorded record{.Kind = line[0], .Path = {}, .From = {}, .Bytes = {}};
            const QByteArray rest = line.mid(2);
            const QList<QByteArray> words = rest.split(' ');
            if (QByteArray("CNWTLSR").contains(record.Kind))
                record.File = NumberOf(record.Kind, words[0].toULongLong());
            if (record.Kind == 'C' || record.Kind == 'L')
                record.Path = QFile::decodeName(rest.mid(words[0].size() + 1));
            if (QByteArray("MUDF").contains(record.Kind))
                record.Path = QFile::decodeName(rest);
            if (record.Kind == 'R' || record.Kind == 'X') {
                const qsizetype length = words[1].toLongLong();
                const qsizetype begin = words[0].size() + words[1].size() + 2;
                record.From = QFile::decodeName(rest.mid(begin, length));
                record.Path = QFile::decodeName(rest.mid(begin + length + 1));
            }
            if (record.Kind == 'W' || record.Kind == 'T')
                record.At = words[1].toLongLong();
            if (record.Kind == 'W')
                record.Bytes = file.read(words[2].toLongLong());
            m_calls.push_back(record);
        }
    }

    size_t Calls() const { return m_calls.size(); }

    enum class Kept { Nothing, Everything, Any, Parts };
    /// The folder that a power cut behind the first @p end calls leaves, written to @p target. @p kept says what of
    /// that which was not flushed is there.
    void Cut(size_t end, Kept kept, QRandomGenerator& random, const QString& target) const
    {
        const std::vector<bool> isSafe = Flushed(end);
        size_t names = 0; // changes of names up to the last one that is safe
        size_t allNames = 0;
        for (size_t i = 0; i < end; ++i) {
            if (!IsOfNames(m_calls[i]))
                continue;
            ++allNames;
            if (isSafe[i])
                names = allNames;
        }
        if (kept == Kept::Everything)
            names = allNames;
        else if (kept != Kept::Nothing)
            names += random.bounded(quint32(allNames - names + 1));
        Disk disk{m_names, m_folders, m_files};
        size_t name = 0;
        for (size_t i = 0; i < end; ++i) {
            const Recorded& call = m_calls[i];
            if (IsOfNames(call)) {
                if (name++ < names)
                    Rename(disk, call);
                else if (call.Kind == 'C')
                    Room(disk, call.File);
            } else if (call.File >= 0 && (call.Kind == 'W' || call.Kind == 'T' || call.Kind == 'N')) {
                const bool isThere = isSafe[i] || kept == Kept::Everything
                                     || (kept != Kept::Nothing && random.bounded(2) == 1);
                Write(disk, call, isThere, !isSafe[i] && kept == Kept::Parts, random);
            }
        }
        Lay(disk, target);
    }

private:
    struct Disk {
        QMap<QString, int> Names;
        QSet<QString> Folders;
        std::vector<QByteArray> Files;
    };

    static quint64 InodeOf(const QString& path)
    {
        struct stat state {};
        return ::stat(QFile::encodeName(path).constData(), &state) == 0 ? state.st_ino : 0;
    }
    static bool IsOfNames(const Recorded& call) { return QByteArray("CLRXUMD").contains(call.Kind); }
    static QString FolderOf(const QString& path) { return path.section(u'/', 0, -2); }

    /// Numbers of files are used again by the system once a file is gone. One that was not seen before was made by the
    /// C library itself, or is a folder.
    int NumberOf(char kind, quint64 inode)
    {
        if (kind == 'C' || kind == 'N' || !m_numbers.contains(inode))
            m_numbers.insert(inode, int(m_files.size()) + m_made++);
        return m_numbers.value(inode, -1);
    }

    /// Which calls a flush among the first @p end ones has reached.
    std::vector<bool> Flushed(size_t end) const
    {
        std::vector<bool> flushed(end);
        QSet<int> files;
        QSet<QString> folders;
        bool all = false;
        for (size_t i = end; i-- > 0;) {
            const Recorded& call = m_calls[i];
            if (call.Kind == 'S')
                files.insert(call.File);
            else if (call.Kind == 'F')
                folders.insert(call.Path);
            else if (call.Kind == 'E')
                all = true;
            else if (IsOfNames(call))
                flushed[i] = all || folders.contains(FolderOf(call.Path));
            else
                flushed[i] = all || files.contains(call.File);
        }
        return flushed;
    }

    static void Room(Disk& disk, int file)
    {
        if (file >= int(disk.Files.size()))
            disk.Files.resize(size_t(file) + 1);
    }

    static void Rename(Disk& disk, const Recorded& call)
    {
        switch (call.Kind) {
        case 'C':
        case 'L':
            Room(disk, call.File);
            disk.Names.insert(call.Path, call.File);
            break;
        case 'U':
            disk.Names.remove(call.Path);
            break;
        case 'M':
            disk.Folders.insert(call.Path);
            break;
        case 'D':
            disk.Folders.remove(call.Path);
            break;
        case 'X':
            Exchange(disk, call);
            break;
        default:
            Move(disk, call);
        }
    }

    /// Two files, or folders with all in them.
    static void Exchange(Disk& disk, const Recorded& call)
    {
        const auto exchanged = [&call](const QString& path) {
            for (const auto& [from, to] : {std::pair(call.From, call.Path), std::pair(call.Path, call.From)}) {
                if (path == from || path.startsWith(from + u'/'))
                    return to + path.mid(from.size());
            }
            return path;
        };
        QMap<QString, int> names;
        for (auto name = disk.Names.begin(); name != disk.Names.end(); ++name)
            names.insert(exchanged(name.key()), name.value());
        QSet<QString> folders;
        for (const QString& folder : std::as_const(disk.Folders))
            folders.insert(exchanged(folder));
        disk.Names = names;
        disk.Folders = folders;
    }

    /// A file, or a folder with all in it.
    static void Move(Disk& disk, const Recorded& call)
    {
        const QString& from = call.From;
        const QString& to = call.Path;
        QMap<QString, int> names;
        for (auto name = disk.Names.begin(); name != disk.Names.end(); ++name) {
            const bool isMoved = name.key() == from || name.key().startsWith(from + u'/');
            if (isMoved || name.key() != to)
                names.insert(isMoved ? to + name.key().mid(from.size()) : name.key(), name.value());
        }
        const bool isFolder = disk.Folders.contains(from);
        if (disk.Names.contains(from))
            names.insert(to, disk.Names[from]);
        else if (!isFolder)
            names.insert(to, call.File);
        Room(disk, call.File);
        disk.Names = names;
        QSet<QString> folders;
        for (const QString& folder : std::as_const(disk.Folders))
            folders.insert(folder == from || folder.startsWith(from + u'/') ? to + folder.mid(from.size()) : folder);
        disk.Folders = folders;
    }

    static void Write(Disk& disk, const Recorded& call, bool isThere, bool inParts, QRandomGenerator& random)
    {
        constexpr qsizetype Sector = 512;
        Room(disk, call.File);
        QByteArray& bytes = disk.Files[size_t(call.File)];
        if (call.Kind == 'T' && isThere)
            bytes.resize(call.At, '\0');
        if (call.Kind != 'W' || (!isThere && !inParts))
            return;
        for (qsizetype at = 0; at < call.Bytes.size(); at += Sector) {
            if (inParts && random.bounded(2) == 0)
                continue;
            const QByteArray part = call.Bytes.mid(at, Sector);
            if (bytes.size() < call.At + at + part.size())
                bytes.resize(call.At + at + part.size(), '\0');
            bytes.replace(call.At + at, part.size(), part);
        }
    }

    void Lay(const Disk& disk, const QString& target) const
    {
        QDir(target).removeRecursively();
        QDir().mkpath(target);
        for (const QString& folder : disk.Folders)
            QDir().mkpath(target + folder.mid(m_folder.size()));
        QHash<int, QString> laid;
        for (auto name = disk.Names.begin(); name != disk.Names.end(); ++name) {
            const QString path = target + name.key().mid(m_folder.size());
            QDir().mkpath(FolderOf(path));
            // Two names of one file are that here, too.
            if (const QString other = laid.value(name.value());
                other.isEmpty()
                || ::link(QFile::encodeName(other).constData(), QFile::encodeName(path).constData()) != 0)
                WriteFile(path, disk.Files[size_t(name.value())]);
            laid.insert(name.value(), path);
        }
    }

    QString m_folder;
    QMap<QString, int> m_names; ///< numbers of files
    QSet<QString> m_folders;
    std::vector<QByteArray> m_files;
    QHash<quint64, int> m_numbers; ///< by the system's own
    int m_made = 0;
    std::vector<Recorded> m_calls;
};

} // namespace qb::test
