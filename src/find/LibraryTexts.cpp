#include "find/LibraryTexts.h"

#include "platform/richtext/Rtf.h"
#include "store/StoredFiles.h"

#include <QFile>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int ItemsAtOnce = 500;

/// One state of the database for several statements; nobody writes meanwhile.
class ReadMoment {
public:
    explicit ReadMoment(Database& database) : m_database(&database), m_own(!database.InTransaction())
    {
        if (m_own)
            database.Execute(u"BEGIN"_s);
    }
    ~ReadMoment()
    {
        try {
            if (m_own)
                m_database->Execute(u"COMMIT"_s);
        } catch (const RuntimeError&) {
            // It has only read.
        }
    }
    ReadMoment(const ReadMoment&) = delete;
    ReadMoment& operator=(const ReadMoment&) = delete;

private:
    Database* m_database;
    bool m_own;
};

QString PathOf(const LibraryFolders& folders, qint64 item, qint64 file, const QString& title)
{
    return file == 0 ? folders.Pages + QString::number(item) + u".htm"_s : StoredFilePath(folders.Files, file, title);
}

QByteArray ReadBegin(const QString& path, qint64 most)
{
    QFile file(path);
    return IsPlainFile(path) && file.open(QIODevice::ReadOnly) ? file.read(most) : QByteArray();
}

bool BeginsAsText(const QString& path)
{
    constexpr qint64 Enough = 1 << 16;
    return !SearchedFileText(ReadBegin(path, Enough)).isEmpty();
}

QString TextOf(QByteArrayView raw)
{
    return QString::fromUtf8(raw);
}

/// Texts are added where there is something in them.
class TextList {
public:
    explicit TextList(std::vector<FindText>& texts) : m_texts(texts) {}

    void Add(FindField field, QByteArray text, qint64 source = 0, quint16 piece = 0)
    {
        if (!text.isEmpty())
            m_texts.push_back({field, piece, source, std::move(text)});
    }

private:
    std::vector<FindText>& m_texts;
};

void AddFileText(const LibraryItem& item, const LibraryItem::File& file, const LibraryFolders& folders,
                 FindItemTexts& texts)
{
    FindSource source = SourceOf(folders, item.Item.Id, file.Id, file.Title);
    const QString path = PathOf(folders, item.Item.Id, file.Id, file.Title);
    if (source.Size > LargestSearchedFile)
        source.IsLeftOut = BeginsAsText(path) ? 1 : 0;
    else if (source.Size > 0)
        TextList(texts.Texts)
            .Add(FindField::FileTexts, SearchedFileText(ReadBegin(path, LargestSearchedFile)), file.Id);
    texts.Sources.push_back(source);
}

void AddPageText(const LibraryItem& item, const LibraryFolders& folders, FindItemTexts& texts)
{
    FindSource source = SourceOf(folders, item.Item.Id, 0, {});
    source.IsLeftOut = source.Size > LargestSearchedFile ? 1 : 0;
    if (source.Size > 0 && !source.IsLeftOut)
        TextList(texts.Texts)
            .Add(FindField::WebPage,
                 SearchedPageText(ReadBegin(PathOf(folders, item.Item.Id, 0, {}), LargestSearchedFile)));
    texts.Sources.push_back(source);
}

// The long texts come last, so that the engine need not go through them to what stands behind.
enum Column { Id, Parent, LastChanged, Status, Rating, Page, Title, Description, Info, Code, Notes, Usage, Columns };

/// Of the row, and of what belongs to it.
quint64 HashOf(const Statement& row, const std::vector<LibraryItem::File>& files,
               const std::vector<LibraryItem::Link>& links)
{
    RowHasher hasher;
    for (int column = Id; column < Title; ++column)
        hasher.Add(row.Long(column));
    for (int column = Title; column < Columns; ++column)
        hasher.Add(row.RawText(column));
    for (const LibraryItem::File& file : files) {
        hasher.Add(file.Id);
        hasher.Add(file.Title.toUtf8());
        hasher.Add(file.Description.toUtf8());
    }
    for (const LibraryItem::Link& link : links) {
        hasher.Add(link.To);
        hasher.Add(link.Note.toUtf8());
    }
    return hasher.Result();
}

} // namespace

FindSource SourceOf(const LibraryFolders& folders, qint64 item, qint64 file, const QString& title)
{
    constexpr qint64 Nanoseconds = 1'000'000'000;
    FindSource source{.File = file};
    struct stat state {};
    const QString path = PathOf(folders, item, file, title);
    if (!path.isEmpty() && ::lstat(QFile::encodeName(path).constData(), &state) == 0 && S_ISREG(state.st_mode)) {
        source.Size = state.st_size;
        source.Modified = qint64(state.st_mtim.tv_sec) * Nanoseconds + state.st_mtim.tv_nsec;
        source.Inode = state.st_ino;
    }
    return source;
}

FindItemTexts TextsOf(const LibraryItem& item, const LibraryFolders& folders)
{
    FindItemTexts texts;
    texts.Item = item.Item;
    texts.Language = LanguageInRtf(item.Code);
    if (texts.Language.isEmpty())
        texts.Language = LanguageInRtf(item.Usage);
    TextList list(texts.Texts);
    list.Add(FindField::Title, NormalText(item.Title).toUtf8());
    list.Add(FindField::Description, NormalText(item.Description).toUtf8());
    list.Add(FindField::Code, SearchedText(item.Code));
    list.Add(FindField::Notes, SearchedText(item.Notes));
    list.Add(FindField::Usage, SearchedText(item.Usage));
    for (const LibraryItem::File& file : item.Files) {
        list.Add(FindField::FileNames, NormalText(file.Title).toUtf8(), file.Id, 0);
        list.Add(FindField::FileNames, SearchedText(file.Description), file.Id, 1);
    }
    for (const LibraryItem::File& file : item.Files)
        AddFileText(item, file, folders, texts);
    list.Add(FindField::Links, NormalText(item.Info).toUtf8());
    for (const LibraryItem::Link& link : item.Links)
        list.Add(FindField::Links, SearchedText(link.Note), link.To, 1);
    if (item.HasPage)
        AddPageText(item, folders, texts);
    return texts;
}

std::optional<qint64> LibraryTexts::ReadNext(qint64 after, const Filter& filter, std::vector<LibraryItem>& items)
{
    const ReadMoment moment(*m_library);
    const Value last = m_library->QueryValue(
        u"SELECT max(ID) FROM (SELECT ID FROM Items WHERE ID > ? ORDER BY ID LIMIT ?)"_s, {after, ItemsAtOnce});
    if (last.IsNull())
        return {};
    ReadRange(after + 1, last.ToLong(), filter, items);
    return last.ToLong();
}

void LibraryTexts::Read(const std::vector<qint64>& ids, std::vector<LibraryItem>& items)
{
    const ReadMoment moment(*m_library);
    for (const qint64 id : ids)
        ReadRange(
            id, id, [](const FindItem&) { return true; }, items);
}

std::unordered_map<qint64, LibraryTexts::Belongings> LibraryTexts::ReadBelongings(qint64 first, qint64 last)
{
    std::unordered_map<qint64, Belongings> belongings;
    Statement files = m_library->Query(
        u"SELECT CodeID, ID, Title, Description FROM Files WHERE CodeID BETWEEN ? AND ? ORDER BY CodeID, ID"_s,
        {first, last});
    while (files.Step())
        belongings[files.Long(0)].Files.push_back({files.Long(1), files.Text(2), files.Text(3)});
    Statement links = m_library->Query(
        u"SELECT ItemID, LinkItemID, Note FROM ItemLinks WHERE ItemID BETWEEN ? AND ? ORDER BY ItemID, LinkItemID"_s,
        {first, last});
    while (links.Step())
        belongings[links.Long(0)].Links.push_back({links.Long(1), links.Text(2)});
    return belongings;
}

void LibraryTexts::ReadRange(qint64 first, qint64 last, const Filter& filter, std::vector<LibraryItem>& items)
{
    std::unordered_map<qint64, Belongings> belongings = ReadBelongings(first, last);
    Statement rows = m_library->Query(
        u"SELECT ID, ParentID, LastChanged, ItemStatus, ItemRating, HTMLPage, Title, Description, Info, Code, Notes, "
        "Example FROM Items WHERE ID BETWEEN ? AND ? ORDER BY ID"_s,
        {first, last});
    while (rows.Step()) {
        const Belongings& own = belongings[rows.Long(Id)];
        const FindItem item{.Id = rows.Long(Id),
                            .Parent = rows.Long(Parent),
                            .LastChanged = rows.Long(LastChanged),
                            .RowHash = HashOf(rows, own.Files, own.Links),
                            .Status = qint32(rows.Long(Status)),
                            .Rating = qint32(rows.Long(Rating))};
        if (!filter(item))
            continue;
        items.push_back({.Item = item,
                         .Title = TextOf(rows.RawText(Title)),
                         .Description = TextOf(rows.RawText(Description)),
                         .Info = TextOf(rows.RawText(Info)),
                         .Code = TextOf(rows.RawText(Code)),
                         .Notes = TextOf(rows.RawText(Notes)),
                         .Usage = TextOf(rows.RawText(Usage)),
                         .Files = own.Files,
                         .Links = own.Links,
                         .HasPage = rows.Long(Page) != 0});
    }
}

} // namespace qb
