#include "platform/dao/JournalCheck.h"

#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>
#include <algorithm>
#include <numeric>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

// A journal of a transaction over several files ends in the super-journal's name, its length, its
// checksum and the mark of journals.
constexpr QByteArrayView JournalMagic{"\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8};
constexpr qint64 TrailerLength = 16;
constexpr qint64 LongestName = 4096;
constexpr qint64 LongestList = 16 * LongestName;

[[noreturn]] void Refuse(const QString& path, const QString& reason)
{
    throw RuntimeError(
        ErrorNumber::NotADatabase,
        u"'%1' is not opened: %2. The file may come from somebody who means harm; nothing was changed."_s.arg(
            QDir::toNativeSeparators(path), reason),
        u"RefuseForeignJournal"_s);
}

/// The file as the engine finds it: links of the library itself are followed.
QString RealPath(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? QFileInfo(path).absoluteFilePath() : canonical;
}

/// The super-journal that a journal names; empty when it names none.
QByteArray SuperJournalOf(QFile& journal)
{
    const qint64 size = journal.size();
    if (size < TrailerLength || !journal.seek(size - TrailerLength))
        return {};
    const QByteArray trailer = journal.read(TrailerLength);
    if (trailer.size() != TrailerLength || QByteArrayView(trailer).last(JournalMagic.size()) != JournalMagic)
        return {};
    const qint64 length = qFromBigEndian<quint32>(trailer.constData());
    if (length == 0 || length > size - TrailerLength)
        return {};
    if (length > LongestName)
        return "?"_ba; // no path that there is
    journal.seek(size - TrailerLength - length);
    const QByteArray name = journal.read(length);
    const auto sum = std::accumulate(name.begin(), name.end(), quint32(0),
                                     [](quint32 so, char byte) { return so + quint32(qint32(byte)); });
    return sum == qFromBigEndian<quint32>(trailer.constData() + 4) ? name : QByteArray();
}

/// The first of the files of a transaction over several, after which the engine names its super-journal, in
/// that file's folder; empty for a name that the engine does not give.
QString FirstFileOf(const QByteArray& superJournal)
{
    static const QRegularExpression own(u"^(/.+)-mj[0-9A-F]{6}9[0-9A-F]{2}$"_s);
    return superJournal.contains('\0') ? QString() : own.match(QFile::decodeName(superJournal)).captured(1);
}

/// A super-journal lists the journals of all the files, each name ended by a NUL.
bool Lists(const QString& superJournal, const QStringList& databases)
{
    QFile file(superJournal);
    if (!file.open(QIODevice::ReadOnly) || file.size() > LongestList)
        return false;
    const QList<QByteArray> names = file.readAll().split('\0');
    return std::all_of(databases.begin(), databases.end(), [&names](const QString& database) {
        return names.contains(QFile::encodeName(database + u"-journal"_s));
    });
}

void RefuseSuperJournal(const QString& path, const QString& database, const QByteArray& name)
{
    const QString first = FirstFileOf(name);
    const QString super = QFile::decodeName(name);
    if (first.isEmpty())
        Refuse(path, u"its journal names the file '%1', which opening would delete"_s.arg(super));
    // Without its super-journal a journal counts as one of a transaction that was committed. That is true where
    // the files still are where they were; of files that were moved in the middle it would make rubbish.
    if (!QFileInfo(first).isFile())
        throw RuntimeError(
            ErrorNumber::NotADatabase,
            u"'%1' is not opened: its last change was cut off in the middle, and was one of '%2' too, "
            "which is not there any more. Put both files back where they were; nothing was changed."_s.arg(
                QDir::toNativeSeparators(path), QDir::toNativeSeparators(first)),
            u"RefuseForeignJournal"_s);
    struct stat state {};
    if (::lstat(name.constData(), &state) == 0 && !(S_ISREG(state.st_mode) && Lists(super, {first, database})))
        Refuse(path, u"its journal names the file '%1', which opening would delete"_s.arg(super));
}

bool IsOrdinaryFile(const QString& path)
{
    struct stat state {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0 && S_ISREG(state.st_mode);
}

bool RefersTo(const QString& journal, const QString& superJournal)
{
    QFile file(journal);
    return IsOrdinaryFile(journal) && file.open(QIODevice::ReadOnly)
           && SuperJournalOf(file) == QFile::encodeName(superJournal);
}

/// A list of journals, of which this file's is the first, or the begin of such a list, which nothing refers to.
bool IsStale(const QString& superJournal, const QString& database)
{
    QFile file(superJournal);
    if (!IsOrdinaryFile(superJournal) || !file.open(QIODevice::ReadOnly) || file.size() > LongestList)
        return false;
    const QByteArray list = file.readAll();
    const QByteArray own = QFile::encodeName(database + u"-journal"_s) + '\0';
    const QList<QByteArray> journals = list.split('\0');
    return (list.startsWith(own) || own.startsWith(list))
           && std::none_of(journals.begin(), journals.end(), [&superJournal](const QByteArray& journal) {
                  return !journal.isEmpty() && RefersTo(QFile::decodeName(journal), superJournal);
              });
}

QStringList SuperJournalsOf(const QString& database)
{
    const QFileInfo info(database);
    QStringList found;
    // What a file's name has of wildcards is not meant as such.
    for (const QString& name : info.dir().entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        const QString path = info.path() + u'/' + name;
        if (FirstFileOf(QFile::encodeName(path)) == database)
            found << path;
    }
    return found;
}

} // namespace

bool HasSuperJournals(const QString& path)
{
    return !SuperJournalsOf(RealPath(path)).isEmpty();
}

void RemoveStaleSuperJournals(const QString& path)
{
    const QString database = RealPath(path);
    for (const QString& superJournal : SuperJournalsOf(database)) {
        if (IsStale(superJournal, database))
            QFile::remove(superJournal);
    }
}

void RefuseForeignJournal(const QString& path)
{
    const QString database = RealPath(path);
    for (const QString& suffix : {u"-journal"_s, u"-wal"_s, u"-shm"_s}) {
        struct stat state {};
        if (::lstat(QFile::encodeName(database + suffix).constData(), &state) == 0 && !S_ISREG(state.st_mode))
            Refuse(path, u"'%1' is no ordinary file"_s.arg(QFileInfo(database + suffix).fileName()));
    }
    QFile journal(database + u"-journal"_s);
    if (!journal.open(QIODevice::ReadOnly))
        return; // none, or one that the engine can't open either
    const QByteArray super = SuperJournalOf(journal);
    if (!super.isEmpty())
        RefuseSuperJournal(path, database, super);
}

} // namespace qb
