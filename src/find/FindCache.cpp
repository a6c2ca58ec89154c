#include "find/FindCache.h"

#include "find/TextPipeline.h"
#include "platform/system/Clock.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <sys/stat.h>
#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// What a library is known by: its identity and where it lies; a copy of it has texts of its own.
QString KeyOf(const Library& library)
{
    return library.Identity() + u'\n' + QFileInfo(library.Name()).canonicalFilePath();
}

QString CachePath(const QString& folder, const QString& key)
{
    const QByteArray name = QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha1).toHex();
    return folder + QString::fromLatin1(name) + u".qbfind"_s;
}

/// A segment that is built in memory.
class MemorySegment {
public:
    SegmentBuilder& Builder() { return m_builder; }
    std::shared_ptr<const FindSegment> Take()
    {
        return std::make_shared<const FindSegment>(m_builder.TakeTables(), std::move(m_texts));
    }

private:
    bool Put(QByteArrayView bytes)
    {
        m_texts.append(bytes);
        return true;
    }

    QByteArray m_texts;
    SegmentBuilder m_builder{[this](QByteArrayView bytes) { return Put(bytes); }};
};

void RefuseWhenCancelled(Work& work)
{
    if (work.IsCancelled())
        throw RuntimeError(ErrorNumber::Cancelled, u"The texts of the library were not read to the end."_s,
                           u"FindCache"_s);
}

quint64 InodeOf(const QString& path)
{
    struct stat state {};
    return ::stat(QFile::encodeName(path).constData(), &state) == 0 ? quint64(state.st_ino) : 0;
}

QString LanguageOfLibrary(Library& library)
{
    return library.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText();
}

} // namespace

QString FindCache::CacheFolderOfFinds()
{
    const QString folder = CacheFolder() + u"find/"_s;
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return folder;
}

/// Opens a library, and says which file that was: another one may take the name at any time.
FindCache::OpenedLibrary FindCache::Open(const QString& path)
{
    for (;;) {
        const quint64 before = InodeOf(path);
        std::unique_ptr<Library> library = Library::Open(path, DBEngine::Access::ReadOnly);
        if (InodeOf(path) == before)
            return {std::move(library), before};
    }
}

FindCache::FindCache(const QString& libraryPath, const QString& cacheFolder)
    : m_opened(Open(libraryPath)), m_folders{Own().FilesFolder(), Own().HTMLFolder()},
      m_file(CachePath(cacheFolder, KeyOf(Own())), KeyOf(Own()))
{
}

FindCache::~FindCache() = default;

/// What the library is like now. A file that has taken its name, as a compacted one does, is opened in its place.
FileStamp FindCache::CurrentStamp()
{
    if (InodeOf(Own().Name()) != m_opened.Inode)
        m_opened = Open(Own().Name());
    return Own().Stamp();
}

bool FindCache::IsInStep(const FileStamp& stamp) const
{
    return m_snapshot && m_stamp == stamp && !m_snapshot->IsDamaged();
}

/// Takes the file's texts when they are in step with the library.
bool FindCache::Adopt(const FileStamp& stamp)
{
    const FindCacheFile::Head head = m_file.ReadHead();
    if (head.Generation == 0 || !(head.Stamp == stamp) || head.Generation == m_head.Generation)
        return false;
    FindCacheFile::Head loaded;
    std::vector<std::shared_ptr<const FindSegment>> segments = m_file.Load(loaded);
    if (segments.empty() || !(loaded.Stamp == stamp))
        return false;
    m_snapshot = std::make_shared<const FindSnapshot>(std::move(segments), LanguageOfLibrary(Own()));
    m_head = loaded;
    m_stamp = stamp;
    return true;
}

FileLock FindCache::Lock(Work& work) const
{
    constexpr std::chrono::milliseconds AtATime{100};
    for (;;) {
        FileLock lock(m_file.Path() + u".lock"_s, FileLock::Target::Own, AtATime);
        if (!lock.IsBusy())
            return lock;
        RefuseWhenCancelled(work);
    }
}

std::shared_ptr<const FindSnapshot> FindCache::Update(Work& work)
{
    FileStamp stamp = CurrentStamp();
    const bool isInStep = IsInStep(stamp) || Adopt(stamp);
    if (isInStep && ItemsWithOtherFiles().empty())
        return m_snapshot;
    m_warning.clear();
    const FileLock lock = Lock(work);
    stamp = CurrentStamp();
    if (!isInStep && Adopt(stamp) && ItemsWithOtherFiles().empty())
        return m_snapshot; // another process has done it meanwhile
    if (!m_snapshot) {
        std::vector<std::shared_ptr<const FindSegment>> segments = m_file.Load(m_head);
        if (!segments.empty())
            m_snapshot = std::make_shared<const FindSnapshot>(std::move(segments), LanguageOfLibrary(Own()));
    }
    if (m_snapshot && !m_snapshot->IsDamaged())
        Check(stamp, work);
    else
        Rebuild(stamp, work);
    return m_snapshot;
}

void FindCache::ReadAll(SegmentBuilder& builder, Work& work)
{
    const qint64 count = Own().QueryValue(u"SELECT count(*) FROM Items"_s).ToLong();
    TextPipeline pipeline(m_folders, [&builder](ChunkBuilder&& chunk) { builder.Add(std::move(chunk)); });
    LibraryTexts texts(Own());
    std::optional<qint64> last = std::numeric_limits<qint64>::min() / 2;
    for (qint64 done = 0; last;) {
        std::vector<LibraryItem> items;
        last = texts.ReadNext(
            *last, [](const FindItem&) { return true; }, items);
        done += qint64(items.size());
        pipeline.Add(std::move(items));
        work.Advance(done, count);
        RefuseWhenCancelled(work);
    }
    pipeline.Finish();
}

bool FindCache::RebuildInFile(const FileStamp& stamp, Work& work)
{
    RemoveForgottenFiles();
    FindCacheFile::Writer writer(m_file);
    if (writer.Failure().isEmpty())
        ReadAll(writer.Builder(), work);
    if (writer.Failure().isEmpty() && writer.Finish(stamp)) {
        std::vector<std::shared_ptr<const FindSegment>> segments = m_file.Load(m_head);
        if (!segments.empty()) {
            m_snapshot = std::make_shared<const FindSnapshot>(std::move(segments), LanguageOfLibrary(Own()));
            return true;
        }
    }
    m_warning = u"The texts that are searched can't be kept in '%1': %2"_s.arg(m_file.Path(), writer.Failure());
    return false;
}

void FindCache::Rebuild(const FileStamp& stamp, Work& work)
{
    work.Say(u"Reading the texts of the library"_s, 0);
    m_snapshot.reset();
    m_head = {};
    if (!RebuildInFile(stamp, work)) {
        MemorySegment memory;
        ReadAll(memory.Builder(), work);
        m_snapshot = std::make_shared<const FindSnapshot>(
            std::vector<std::shared_ptr<const FindSegment>>{memory.Take()}, LanguageOfLibrary(Own()));
    }
    m_stamp = stamp;
}

/// Items whose stored files or pages are no longer what was read.
std::vector<qint64> FindCache::ItemsWithOtherFiles() const
{
    std::vector<qint64> items;
    for (const FindSnapshot::Layer& layer : m_snapshot->Layers()) {
        const FindSegment::Tables& tables = layer.Segment->All();
        for (const SegmentSource& source : tables.Sources) {
            if (layer.Hidden[source.Item])
                continue;
            const qint64 item = tables.Items[source.Item].Item.Id;
            if (!SourceOf(m_folders, item, source.Source.File, layer.Segment->FileName(source)).IsAs(source.Source))
                items.push_back(item);
        }
    }
    return items;
}

/// One look at all rows: those that say something else than what is known are read.
void FindCache::Check(const FileStamp& stamp, Work& work)
{
    const std::vector<qint64> changed = ItemsWithOtherFiles();
    const std::unordered_set<qint64> changedFiles(changed.begin(), changed.end());
    std::unordered_set<qint64> seen;
    seen.reserve(m_snapshot->Items());
    const auto isNew = [&](const FindItem& item) {
        seen.insert(item.Id);
        const std::optional<FindSnapshot::Place> place = m_snapshot->Find(item.Id);
        return !place || m_snapshot->Item(*place).RowHash != item.RowHash || changedFiles.contains(item.Id);
    };
    MemorySegment memory;
    const qint64 count = qint64(m_snapshot->Items());
    {
        TextPipeline pipeline(m_folders, [&memory](ChunkBuilder&& chunk) { memory.Builder().Add(std::move(chunk)); });
        LibraryTexts texts(Own());
        std::optional<qint64> last = std::numeric_limits<qint64>::min() / 2;
        while (last) {
            std::vector<LibraryItem> items;
            last = texts.ReadNext(*last, isNew, items);
            pipeline.Add(std::move(items));
            work.Advance(qint64(seen.size()), count);
            RefuseWhenCancelled(work);
        }
        pipeline.Finish();
    }
    for (const FindSnapshot::Place place : m_snapshot->Places()) {
        if (!seen.contains(m_snapshot->Item(place).Id))
            memory.Builder().AddGone(m_snapshot->Item(place).Id);
    }
    const QString language = LanguageOfLibrary(Own());
    if (!memory.Builder().IsEmpty())
        m_snapshot = m_snapshot->With(memory.Take());
    if (language != m_snapshot->Language())
        m_snapshot = m_snapshot->WithLanguage(language);
    m_stamp = stamp;
    AppendOrRewrite();
}

std::shared_ptr<const FindSnapshot> FindCache::Saved(const std::vector<qint64>& items, Work& work)
{
    const FileStamp stamp = CurrentStamp();
    if (IsInStep(stamp))
        return m_snapshot;
    const bool isOneCommit = m_snapshot && !m_snapshot->IsDamaged() && stamp.Inode == m_stamp.Inode
                             && stamp.Commits == m_stamp.Commits + 1;
    if (!isOneCommit || m_snapshot->Layers().empty())
        return Update(work);
    std::vector<LibraryItem> rows;
    LibraryTexts(Own()).Read(items, rows);
    AddInMemory(rows, items);
    m_stamp = stamp;
    return m_snapshot;
}

/// Puts items on top of what is known; @p asked are the IDs of all that were looked for, of which some may be gone.
/// What
/// is in memory already and not much goes into the same layer.
void FindCache::AddInMemory(const std::vector<LibraryItem>& items, const std::vector<qint64>& asked)
{
    constexpr qsizetype Small = 1 << 20;
    MemorySegment memory;
    ChunkBuilder chunk;
    std::unordered_set<qint64> gone(asked.begin(), asked.end());
    for (const LibraryItem& item : items) {
        chunk.Add(TextsOf(item, m_folders));
        gone.erase(item.Item.Id);
    }
    const std::vector<FindSnapshot::Layer>& layers = m_snapshot->Layers();
    const FindSegment& last = *layers.back().Segment;
    const bool replaces = layers.size() > m_head.Segments && layers.size() > 1 && last.TextsSize() < Small;
    if (replaces) {
        gone.insert(last.All().Gone.begin(), last.All().Gone.end());
        for (quint32 i = 0; i < last.All().Items.size(); ++i) {
            const qint64 id = last.All().Items[i].Item.Id;
            if (std::find(asked.begin(), asked.end(), id) == asked.end())
                chunk.Add(last.Copy(i));
        }
    }
    for (const LibraryItem& item : items)
        gone.erase(item.Item.Id);
    memory.Builder().Add(std::move(chunk));
    for (const qint64 id : gone)
        memory.Builder().AddGone(id);
    m_snapshot = replaces ? m_snapshot->WithLastReplaced(memory.Take()) : m_snapshot->With(memory.Take());
}

void FindCache::Keep()
{
    if (!m_snapshot || m_snapshot->Layers().size() <= m_head.Segments)
        return;
    const FileLock lock(m_file.Path() + u".lock"_s, FileLock::Target::Own);
    if (lock.IsHeld())
        AppendOrRewrite();
}

bool FindCache::HasManyHidden() const
{
    size_t all = 0;
    for (const FindSnapshot::Layer& layer : m_snapshot->Layers())
        all += layer.Hidden.size();
    constexpr size_t Few = 1000;
    return all - m_snapshot->Items() > std::max(m_snapshot->Items() / 4, Few);
}

/// Brings the file to what is known. What can't be written stays in memory, which is no failure.
void FindCache::AppendOrRewrite()
{
    constexpr size_t Many = 16;
    constexpr qsizetype Much = 4 << 20; // to have in memory, when it is in the file
    if (m_head.Generation == 0)
        return;
    const size_t own = m_snapshot->Layers().size() - m_head.Segments;
    if (own > 1 || m_head.Segments >= Many || HasManyHidden())
        return Rewrite();
    const FindSegment* segment = own == 1 ? m_snapshot->Layers().back().Segment.get() : nullptr;
    const std::optional<FindCacheFile::Head> head = m_file.Append(m_head, segment, m_stamp);
    if (!head)
        return;
    m_head = *head;
    if (segment && segment->TextsSize() > Much)
        LoadOwn();
}

/// Takes the texts that this object has just written.
void FindCache::LoadOwn()
{
    FindCacheFile::Head head;
    std::vector<std::shared_ptr<const FindSegment>> segments = m_file.Load(head);
    if (segments.empty() || !(head.Stamp == m_stamp))
        return;
    m_head = head;
    m_snapshot = std::make_shared<const FindSnapshot>(std::move(segments), m_snapshot->Language());
}

void FindCache::Rewrite()
{
    FindCacheFile::Writer writer(m_file);
    ChunkBuilder chunk;
    for (const FindSnapshot::Place place : m_snapshot->Places()) {
        if (!writer.Failure().isEmpty())
            return;
        chunk.Add(m_snapshot->SegmentOf(place).Copy(place.Item));
        if (chunk.IsFull()) {
            writer.Builder().Add(std::move(chunk));
            chunk = ChunkBuilder();
        }
    }
    if (!chunk.IsEmpty())
        writer.Builder().Add(std::move(chunk));
    if (!m_snapshot->IsDamaged() && writer.Finish(m_stamp))
        LoadOwn();
}

void FindCache::Discard()
{
    QFile::remove(m_file.Path());
    m_snapshot.reset();
    m_head = {};
}

/// Caches of libraries that nobody has changed for half a year.
void FindCache::RemoveForgottenFiles() const
{
    constexpr qint64 Days = 180;
    const QDir folder = QFileInfo(m_file.Path()).dir();
    RemoveStaleInterims(folder.path());
    const QFileInfoList files = folder.entryInfoList({u"*.qbfind"_s}, QDir::Files);
    for (const QFileInfo& file : files) {
        if (Date::FromDateTime(file.lastModified()).AddDays(Days) < Clock::Now())
            QFile::remove(file.filePath());
    }
}

} // namespace qb
