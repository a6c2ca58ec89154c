#include "platform/dao/JournalCheck.h"

#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>
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

/// The engine names its own after the first of the files, in that file's folder.
bool IsOwnSuperJournal(const QByteArray& name, const QString& database)
{
    static const QRegularExpression own(u"-mj[0-9A-F]{6}9[0-9A-F]{2}$"_s);
    const QString path = QFile::decodeName(name);
    return !name.contains('\0') && own.match(path).hasMatch() && QFileInfo(path).path() == QFileInfo(database).path();
}

} // namespace

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
    if (!super.isEmpty() && !IsOwnSuperJournal(super, database))
        Refuse(path, u"its journal names the file '%1', which opening would delete"_s.arg(QFile::decodeName(super)));
}

} // namespace qb
