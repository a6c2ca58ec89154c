#include "exchange/PageNames.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/SafeNames.h"
#include "publishing/BranchPublisher.h"
#include "publishing/HtmlText.h"
#include "publishing/MarkdownText.h"
#include "support/DateFormatCustom.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestFolder = 1500;    // bytes; systems have an end for whole paths
const QString FolderOfDeepItems = u"more"_s; ///< takes what stands deeper than that
const QString Ending = u".md"_s;
const QString FilesEnding = u".files"_s;

/// The way from a file in one folder to another file, both relative to the same place.
QString WayTo(const QString& fromFolder, const QString& file)
{
    const QStringList from = fromFolder.split(u'/', Qt::SkipEmptyParts);
    const QStringList to = file.split(u'/');
    qsizetype same = 0;
    while (same < from.size() && same + 1 < to.size() && from[same] == to[same])
        ++same;
    return u"../"_s.repeated(from.size() - same) + to.sliced(same).join(u'/');
}

/// A file for each item, and beside it a folder of its stored files and one of the items below it.
class MarkdownFolder : public BranchPublisher {
public:
    explicit MarkdownFolder(const Task& task) : BranchPublisher(task), m_names(UniqueNames::Compare::Folded)
    {
        m_names.Take({}, FolderOfDeepItems);
        for (const PublishedNode& node : Branch().Nodes()) {
            QString folder = node.Parent >= 0 ? m_paths[size_t(node.Parent)] + u'/' : QString();
            if (folder.toUtf8().size() > LongestFolder)
                folder = FolderOfDeepItems + u'/';
            m_paths.push_back(folder + m_names.Take(folder, SafeName(node.Title), {Ending, FilesEnding}));
        }
    }

    void Add(int place, const PublishedItem& item) override
    {
        const QString& path = m_paths[size_t(place)];
        m_folder = path.left(path.lastIndexOf(u'/') + 1);
        m_beside = path + FilesEnding;
        m_besideNames = UniqueNames(UniqueNames::Compare::Folded);
        QString text = FrontMatter(item) + u"\n# "_s + MarkdownLine(item.Title) + u'\n';
        for (const QString& paragraph : {item.Description, item.Info}) {
            if (!paragraph.isEmpty())
                text += u'\n' + MarkdownText(paragraph) + u'\n';
        }
        // In a list: in a sum it is the compiler who says which of them takes its names first.
        for (const QString& part :
             {Code(u"Code"_s, item.Code, item.Language), Code(u"Usage"_s, item.Usage, item.Language), Notes(item.Notes),
              Files(item.Files), WebPage(item), Links(place), Children(place)})
            text += part;
        WriteStaged(path + Ending, text.toUtf8());
    }

private:
    static QString FrontMatter(const PublishedItem& item)
    {
        const QString pattern = u"yyyy-mm-dd hh:nn:ss"_s;
        QString matter = u"---\n"_s;
        const auto add = [&matter](const QString& key, const QString& value) {
            if (!value.isEmpty())
                matter += key + u": "_s + value + u'\n';
        };
        const auto addText = [&add](const QString& key, const QString& value) {
            add(key, value.isEmpty() ? QString() : YamlText(value));
        };
        addText(u"title"_s, item.Title);
        add(u"id"_s, QString::number(item.Item));
        addText(u"description"_s, item.Description);
        addText(u"language"_s, item.Language);
        addText(u"status"_s, item.Status);
        add(u"rating"_s, item.Rating == 0 ? QString() : QString::number(item.Rating / 2.0));
        addText(u"user"_s, item.User);
        addText(u"created"_s, item.Created.IsNone() ? QString() : DateFormatCustom(item.Created, pattern));
        addText(u"changed"_s, item.LastChanged.IsNone() ? QString() : DateFormatCustom(item.LastChanged, pattern));
        return matter + u"---\n"_s;
    }

    static QString Code(const QString& caption, const QString& rtf, const QString& language)
    {
        const QString text = PlainTextFromRtf(rtf);
        return text.isEmpty() ? QString() : u"\n## "_s + caption + u"\n\n"_s + MarkdownCode(text, language);
    }

    QString Notes(const QString& rtf)
    {
        if (rtf.isEmpty())
            return {};
        RichTextDocument document;
        ReadRtf(rtf, document);
        const QString notes = MarkdownNotes(document, [this](const TextPicture& picture) {
            const QString ending = picture.Type == TextPicture::Png ? u".png"_s : u".jpg"_s;
            const QString name = m_beside + u'/' + m_besideNames.Take({}, u"picture"_s + ending);
            WriteStaged(name, picture.Bytes);
            return MarkdownTarget(WayTo(m_folder, name));
        });
        return notes.isEmpty() ? QString() : u"\n## Notes\n\n"_s + notes + u'\n';
    }

    QString Files(const std::vector<PublishedFile>& files)
    {
        if (files.empty())
            return {};
        QString list = u"\n## Stored files\n\n"_s;
        for (const PublishedFile& file : files) {
            const QString name = m_beside + u'/' + m_besideNames.Take({}, SafeName(file.Title));
            const QString title = MarkdownLine(file.Title);
            const bool isThere = CopyStored(file, name);
            list += isThere ? u"- [%1](%2)"_s.arg(title, MarkdownTarget(WayTo(m_folder, name)))
                            : u"- %1 (missing in the library)"_s.arg(title);
            list += u", "_s + ReadableSize(file.Size);
            if (!file.Description.isEmpty())
                list += u": "_s + MarkdownLine(file.Description);
            list += u'\n';
        }
        return list;
    }

    /// The page lies beside its folder, so that it finds what it names.
    QString WebPage(const PublishedItem& item)
    {
        if (item.Pages.isEmpty())
            return {};
        const QString folder = m_beside + u'/' + m_besideNames.Take({}, u"web page"_s) + u'/';
        for (const QString& path : item.Pages + TemplateFilesOf(From(), item.Item))
            CopyPageFile(path, folder + path);
        return u"\n## Web page\n\n- [%1](%2)\n"_s.arg(MarkdownLine(item.Pages.front()),
                                                      MarkdownTarget(WayTo(m_folder, folder + item.Pages.front())));
    }

    QString Links(int place) const
    {
        QString list;
        for (const PublishedLink& link : Branch().LinksOf(place)) {
            list += u"- "_s + LinkTo(link.Place);
            if (!link.Note.isEmpty())
                list += u": "_s + MarkdownLine(link.Note);
            list += u'\n';
        }
        return list.isEmpty() ? QString() : u"\n## Links\n\n"_s + list;
    }

    QString Children(int place) const
    {
        QString list;
        for (const int child : Branch().Node(place).Children)
            list += u"- "_s + LinkTo(child) + u'\n';
        return list.isEmpty() ? QString() : u"\n## Items below\n\n"_s + list;
    }

    QString LinkTo(int place) const
    {
        return u"[%1](%2)"_s.arg(MarkdownLine(Branch().Node(place).Title),
                                 MarkdownTarget(WayTo(m_folder, m_paths[size_t(place)] + Ending)));
    }

    UniqueNames m_names;
    std::vector<QString> m_paths; ///< by place, without an ending
    QString m_folder;             ///< of the item that is written, with its "/"
    QString m_beside;             ///< the folder of its stored files and pictures
    UniqueNames m_besideNames{UniqueNames::Compare::Folded};
};

} // namespace

std::unique_ptr<BranchPublisher> MakeMarkdownFolder(const BranchPublisher::Task& task)
{
    return std::make_unique<MarkdownFolder>(task);
}

} // namespace qb
