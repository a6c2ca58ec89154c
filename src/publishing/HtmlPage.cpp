#include "find/PageText.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "publishing/BranchPublisher.h"
#include "publishing/HtmlText.h"
#include "publishing/RichHtml.h"
#include "support/DateFormatCustom.h"
#include "web/PageBytes.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype BufferSize = 1 << 20;
constexpr qint64 LargestInThePage = 128 * 1024; // bytes, of a stored file
constexpr int OpenBranches = 200;               ///< so many items are shown open at first

QByteArray Resource(const QString& name)
{
    QFile file(u":/publishing/"_s + name);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(ErrorNumber::Internal, u"The program lacks its part '%1'."_s.arg(name), u"HtmlPage"_s);
    return file.readAll();
}

/// What a policy calls a script or a style sheet by that stands in the page.
QByteArray HashOf(const QByteArray& contents)
{
    return "'sha256-" + QCryptographicHash::hash(contents, QCryptographicHash::Sha256).toBase64() + '\'';
}

QByteArray AnchorOf(qint64 item)
{
    return 'i' + QByteArray::number(item);
}

/// A page with the tree at its side. The items are written aside first, as their looks belong into its head.
class HtmlPage : public BranchPublisher {
public:
    explicit HtmlPage(const Task& task)
        : BranchPublisher(task), m_colours(From()), m_items(Stage().Scratch() + u"items"_s)
    {
        OpenToWrite(m_items);
    }

    void Add(int place, const PublishedItem& item) override
    {
        m_html += "<article id=" + AnchorOf(item.Item) + ">\n";
        AppendHead(place, item);
        AppendCode("Code", item.Code, item);
        AppendCode("Usage", item.Usage, item);
        AppendNotes(item.Notes);
        AppendFiles(item);
        AppendWebPage(item);
        AppendLinks(place);
        AppendChildren(place);
        m_html += "</article>\n";
        if (m_html.size() >= BufferSize)
            FlushItems();
    }

    void Finish() override
    {
        FlushItems();
        m_items.close();
        QFile page(Stage().PathFor(Name()));
        OpenToWrite(page);
        WriteOrRaise(page, Head() + Tree());
        WriteItems(page);
        WriteOrRaise(page, Foot());
        page.close();
        KeepNoMoreRightsThan(From().Name(), page.fileName());
    }

private:
    // An item

    void AppendHead(int place, const PublishedItem& item)
    {
        if (const int parent = Branch().Node(place).Parent; parent >= 0) {
            QByteArray path;
            for (int above = parent; above >= 0; above = Branch().Node(above).Parent)
                path.prepend(LinkTo(above) + (path.isEmpty() ? "" : " › "));
            m_html += "<p class=path>" + path + "</p>\n";
        }
        m_html += "<h2><bdi>" + Escaped(item.Title) + "</bdi></h2>\n";
        m_html += "<p class=facts>" + Facts(item).join(" · ") + "</p>\n";
        for (const QString& text : {item.Description, item.Info}) {
            if (!text.isEmpty())
                m_html += "<p class=what>" + Escaped(text) + "</p>\n";
        }
    }

    static QByteArrayList Facts(const PublishedItem& item)
    {
        const QString pattern = u"yyyy-mm-dd"_s;
        QByteArrayList facts;
        const auto add = [&facts](const QString& caption, const QString& fact) {
            if (!fact.isEmpty())
                facts << Escaped(caption + fact);
        };
        add(u"Created "_s, item.Created.IsNone() ? QString() : DateFormatCustom(item.Created, pattern));
        add(u"Changed "_s, item.LastChanged.IsNone() ? QString() : DateFormatCustom(item.LastChanged, pattern));
        add(u"By "_s, item.User);
        add(u"Status: "_s, item.Status);
        add(u"Rating: "_s, item.Rating == 0 ? QString() : u"%1 of 5"_s.arg(item.Rating / 2.0));
        return facts;
    }

    void AppendCode(const QByteArray& caption, const QString& rtf, const PublishedItem& item)
    {
        if (rtf.isEmpty())
            return;
        RichTextDocument document(CodeFont);
        ReadRtf(rtf, document);
        if (document.Text().isEmpty())
            return;
        m_html += "<section><h3>" + caption + "<small>" + Escaped(item.Language) + "</small></h3>\n<pre><code>";
        AppendCodeHtml(m_html, document.Text(), m_colours.PiecesOf(document, item.OwnLanguage), m_styles);
        m_html += "</code></pre></section>\n";
    }

    void AppendNotes(const QString& rtf)
    {
        if (rtf.isEmpty())
            return;
        RichTextDocument document;
        ReadRtf(rtf, document);
        if (document.Text().isEmpty())
            return;
        m_html += "<section class=notes><h3>Notes</h3>\n";
        AppendRichHtml(m_html, document, m_styles);
        m_html += "</section>\n";
    }

    void AppendFiles(const PublishedItem& item)
    {
        if (item.Files.empty())
            return;
        m_html += "<section><h3>Stored files</h3>\n<ul class=list>\n";
        for (const PublishedFile& file : item.Files) {
            m_html += "<li>" + FileHtml(file) + "<small>" + Escaped(ReadableSize(file.Size)) + "</small>";
            if (!file.Description.isEmpty())
                m_html += "<br>" + Escaped(file.Description);
            m_html += "</li>\n";
        }
        m_html += "</ul></section>\n";
    }

    /// A small file can be saved from the page; its kind is not told, so that no browser shows it.
    QByteArray FileHtml(const PublishedFile& file)
    {
        const QByteArray title = "<bdi>" + Escaped(file.Title) + "</bdi>";
        if (file.Path.isEmpty()) {
            Result().Missing << file.Title;
            return title + "<small>missing in the library</small>";
        }
        if (file.Size > LargestInThePage)
            return title + "<small>not in this page</small>";
        QFile contents(file.Path);
        QByteArray bytes;
        const QString why = contents.open(QIODevice::ReadOnly) ? ReadAll(contents, bytes, LargestInThePage)
                                                               : contents.errorString();
        if (!why.isEmpty())
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be read: %2. Nothing was written."_s.arg(file.Path, why), u"HtmlPage"_s);
        ++Result().Files;
        return SavedBy(file.Title, bytes);
    }

    static QByteArray SavedBy(const QString& name, const QByteArray& contents)
    {
        return "<a download=\"" + Escaped(name.section(u'/', -1)) + "\" href=\"data:application/octet-stream;base64,"
               + contents.toBase64() + "\"><bdi>" + Escaped(name) + "</bdi></a>";
    }

    /// What it says can be read here; it, and its files, can be saved.
    void AppendWebPage(const PublishedItem& item)
    {
        if (item.Pages.isEmpty())
            return;
        m_html += "<section><h3>Web page</h3>\n";
        if (item.Pages.front() == QString::number(item.Item) + u".htm"_s)
            m_html += "<p class=what>" + Escaped(TextOfPage(PageBytes(ReadPageFile(item.Pages.front())).Text()))
                      + "</p>\n";
        m_html += "<ul class=list>\n";
        for (const QString& path : item.Pages) {
            const qint64 size = QFileInfo(From().HTMLFolder() + path).size();
            m_html += "<li>"
                      + (size > LargestInThePage ? "<bdi>" + Escaped(path) + "</bdi><small>not in this page</small>"
                                                 : SavedBy(path, ReadPageFile(path)))
                      + "<small>" + Escaped(ReadableSize(size)) + "</small></li>\n";
        }
        m_html += "</ul></section>\n";
    }

    void AppendLinks(int place)
    {
        const std::vector<PublishedLink> links = Branch().LinksOf(place);
        if (links.empty())
            return;
        m_html += "<section><h3>Links</h3>\n<ul class=list>\n";
        for (const PublishedLink& link : links) {
            m_html += "<li>" + LinkTo(link.Place);
            if (!link.Note.isEmpty())
                m_html += "<small>" + Escaped(link.Note) + "</small>";
            m_html += "</li>\n";
        }
        m_html += "</ul></section>\n";
    }

    void AppendChildren(int place)
    {
        const std::vector<int>& children = Branch().Node(place).Children;
        if (children.empty())
            return;
        m_html += "<section><h3>Items below</h3>\n<ul class=list>\n";
        for (const int child : children)
            m_html += "<li>" + LinkTo(child) + "</li>\n";
        m_html += "</ul></section>\n";
    }

    QByteArray LinkTo(int place) const
    {
        const PublishedNode& node = Branch().Node(place);
        return "<a href=\"#" + AnchorOf(node.Item) + "\"><bdi>" + Escaped(node.Title) + "</bdi></a>";
    }

    void FlushItems()
    {
        WriteOrRaise(m_items, m_html);
        m_html.clear();
    }

    // The page

    bool IsSingle() const { return Branch().Nodes().size() == 1; }

    QByteArray Head()
    {
        const QByteArray style = Resource(u"page.css"_s) + m_styles.Rules(Palette());
        m_script = IsSingle() ? QByteArray() : Resource(u"page.js"_s);
        const QByteArray policy = "default-src 'none'; img-src data:; style-src " + HashOf(style) + "; script-src "
                                  + (m_script.isEmpty() ? "'none'" : HashOf(m_script))
                                  + "; base-uri 'none'; form-action 'none'";
        return "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
               "<meta http-equiv=\"Content-Security-Policy\" content=\""
               + policy
               + "\">\n<meta name=\"referrer\" content=\"no-referrer\">\n"
                 "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
               + Escaped(Branch().Title()) + "</title>\n<style>" + style + "</style>\n</head>\n"
               + (IsSingle() ? "<body class=\"single\">\n" : "<body>\n");
    }

    QByteArray Tree() const
    {
        if (IsSingle())
            return "<main>\n";
        QByteArray tree =
            "<nav aria-label=\"Items\">\n<h1><a href=\"#\"><bdi>" + Escaped(Branch().Title())
            + "</bdi></a></h1>\n<input id=find type=search placeholder=\"Find\" aria-label=\"Find\" hidden>\n"
              "<p id=count role=status></p>\n<ul>\n";
        const std::vector<PublishedNode>& nodes = Branch().Nodes();
        const bool allOpen = nodes.size() <= OpenBranches;
        int depth = 0;
        for (size_t place = 0; place < nodes.size(); ++place) {
            for (; depth > nodes[place].Depth; --depth)
                tree += "</ul></details></li>\n";
            if (nodes[place].Children.empty()) {
                tree += "<li>" + LinkTo(int(place)) + "</li>\n";
                continue;
            }
            tree += allOpen || depth == 0 ? "<li><details open><summary>" : "<li><details><summary>";
            tree += LinkTo(int(place)) + "</summary><ul>\n";
            ++depth;
        }
        for (; depth > 0; --depth)
            tree += "</ul></details></li>\n";
        return tree + "</ul>\n</nav>\n<main>\n";
    }

    void WriteItems(QFile& page)
    {
        QFile items(m_items.fileName());
        QByteArray bytes;
        QString why = items.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? QString() : items.errorString();
        do {
            bytes.clear();
            if (why.isEmpty())
                why = ReadAll(items, bytes, BufferSize);
            if (!why.isEmpty())
                throw RuntimeError(ErrorNumber::PathAccess, u"'%1' can't be read: %2."_s.arg(items.fileName(), why),
                                   u"HtmlPage"_s);
            WriteOrRaise(page, bytes);
        } while (!bytes.isEmpty());
    }

    /// What is shown while no item is chosen stands behind the items, which hide it.
    QByteArray Foot() const
    {
        QByteArray foot;
        if (!IsSingle()) {
            foot += "<section id=start>\n<h2><bdi>" + Escaped(Branch().Title()) + "</bdi></h2>\n<p class=facts>"
                    + QByteArray::number(Branch().Nodes().size()) + " items</p>\n<ul class=list>\n";
            for (size_t place = 0; place < Branch().Nodes().size(); ++place) {
                if (Branch().Nodes()[place].Parent < 0)
                    foot += "<li>" + LinkTo(int(place)) + "</li>\n";
            }
            foot += "</ul>\n</section>\n";
        }
        foot += "</main>\n";
        if (!m_script.isEmpty())
            foot += "<script>" + m_script + "</script>\n";
        return foot + "</body>\n</html>\n";
    }

    CodeColours m_colours;
    StyleSheet m_styles;
    QFile m_items;
    QByteArray m_html; ///< of items that are not written yet
    QByteArray m_script;
};

} // namespace

std::unique_ptr<BranchPublisher> MakeHtmlPage(const BranchPublisher::Task& task)
{
    return std::make_unique<HtmlPage>(task);
}

} // namespace qb
