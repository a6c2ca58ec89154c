#include "platform/archive/ArchiveEntry.h"

#include <QFile>
#include <QLocale>
#include <QSet>
#include <QStringList>
#include <sys/stat.h>
#include <zip.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestPart = 255; // bytes, of the usual file systems

/// What a name leads to; why it is refused, if it is.
struct CheckedName {
    QString Name;
    QString Problem;
};

/// Old programs separate by "\", and some begin with "./".
CheckedName Checked(const QString& stored)
{
    const QString name = QString(stored).replace(u'\\', u'/');
    const bool hasDrive = name.size() > 1 && name[1] == u':' && name[0].isLetter();
    if (name.startsWith(u'/') || hasDrive)
        return {name, u"its name leads to a place of its own, outside the folder"_s};
    QStringList parts;
    for (const QString& part : name.split(u'/', Qt::SkipEmptyParts)) {
        if (part == u".."_s)
            return {name, u"its name leads out of the folder"_s};
        if (QFile::encodeName(part).size() > LongestPart)
            return {name, u"its name is too long"_s};
        if (std::any_of(part.begin(), part.end(), [](QChar c) { return c < u' ' || c == u'\x7f'; }))
            return {name, u"its name has control characters"_s};
        if (part != u"."_s)
            parts << part;
    }
    if (parts.isEmpty())
        return {name, u"it has no name"_s};
    return {parts.join(u'/'), {}};
}

/// Says what is not a plain file or folder, of those made on a system that tells it.
QString KindProblem(zip* archive, ArchiveEntry& entry)
{
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, entry.Index, 0, &system, &attributes) != 0 || system != ZIP_OPSYS_UNIX)
        return {};
    const mode_t mode = attributes >> 16;
    entry.IsExecutable = mode & S_IXUSR;
    const mode_t kind = mode & S_IFMT;
    if (kind == 0 || kind == S_IFREG || kind == S_IFDIR)
        return {};
    return kind == S_IFLNK ? u"it is a link"_s : u"it is neither a file nor a folder"_s;
}

QString PackingProblem(const zip_stat_t& state)
{
    if ((state.valid & ZIP_STAT_ENCRYPTION_METHOD) && state.encryption_method != ZIP_EM_NONE)
        return u"it is encrypted"_s;
    if ((state.valid & ZIP_STAT_COMP_METHOD) && !zip_compression_method_supported(state.comp_method, 0))
        return u"it is packed by a method that is not known here (%1)"_s.arg(state.comp_method);
    return {};
}

ArchiveEntry EntryAt(zip* archive, quint64 index)
{
    ArchiveEntry entry;
    entry.Index = index;
    zip_stat_t state;
    if (zip_stat_index(archive, index, 0, &state) != 0 || !(state.valid & ZIP_STAT_NAME)) {
        entry.Problem = u"it can't be read"_s;
        return entry;
    }
    const QString stored = QString::fromUtf8(state.name);
    entry.IsFolder = stored.endsWith(u'/') || stored.endsWith(u'\\');
    const CheckedName checked = Checked(stored);
    entry.Name = checked.Name;
    entry.Size = state.valid & ZIP_STAT_SIZE ? qint64(state.size) : 0;
    entry.CompressedSize = state.valid & ZIP_STAT_COMP_SIZE ? qint64(state.comp_size) : 0;
    entry.IsStored = state.comp_method == ZIP_CM_STORE;
    if (state.valid & ZIP_STAT_MTIME)
        entry.Modified = QDateTime::fromSecsSinceEpoch(state.mtime);
    const QString kind = KindProblem(archive, entry);
    const QString packing = PackingProblem(state);
    entry.Problem = !checked.Problem.isEmpty() ? checked.Problem : !kind.isEmpty() ? kind : packing;
    if (entry.Size < 0 || entry.CompressedSize < 0)
        entry.Problem = u"it declares no size that is possible"_s;
    return entry;
}

/// Marks names that stand there twice, and files that others take for a folder.
void MarkClashes(std::vector<ArchiveEntry>& entries)
{
    QSet<QString> files;
    QSet<QString> folders;
    for (ArchiveEntry& entry : entries) {
        bool throughFile = false;
        for (qsizetype slash = entry.Name.indexOf(u'/'); slash > 0; slash = entry.Name.indexOf(u'/', slash + 1)) {
            const QString folder = entry.Name.left(slash);
            throughFile = throughFile || files.contains(folder);
            folders.insert(folder);
        }
        const bool twice = files.contains(entry.Name) || (!entry.IsFolder && folders.contains(entry.Name));
        if (entry.Problem.isEmpty() && (twice || throughFile))
            entry.Problem = throughFile ? u"a file stands there where it needs a folder"_s : u"its name stands there twice"_s;
        (entry.IsFolder ? folders : files).insert(entry.Name);
    }
}

} // namespace

std::vector<ArchiveEntry> EntriesOf(zip* archive)
{
    std::vector<ArchiveEntry> entries;
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    entries.reserve(size_t(count));
    for (zip_int64_t i = 0; i < count; ++i)
        entries.push_back(EntryAt(archive, quint64(i)));
    MarkClashes(entries);
    return entries;
}

QString WhyNotExtracted(const std::vector<ArchiveEntry>& entries, qint64 archiveSize, qint64 mostBytes)
{
    qint64 packed = 0;
    qint64 unpacked = 0;
    for (const ArchiveEntry& entry : entries) {
        if (entry.CompressedSize < 0 || entry.Size < 0)
            return u"it declares sizes that are not possible"_s;
        // Neither sum can overflow: each stops at its limit.
        packed += qMin(entry.CompressedSize, archiveSize + 1);
        unpacked += qMin(entry.Size, mostBytes + 1);
        if (packed > archiveSize)
            return u"its entries overlap, as those of an archive that is made to do harm"_s;
        if (unpacked > mostBytes)
            return u"it would unpack to more than %1, which is the limit for an archive of its size (%2)"_s.arg(
                QLocale(QLocale::English).formattedDataSize(mostBytes), QLocale(QLocale::English).formattedDataSize(archiveSize));
    }
    return {};
}

} // namespace qb
