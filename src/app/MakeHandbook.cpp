// Makes the handbook as the help window reads it:
// quillbase-handbook README.md OUT_FOLDER; the pages that README.md lists lie beside it

#include "platform/system/RuntimeError.h"
#include "session/Commands.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <cstdio>
#include <md4c-html.h>

namespace {

using namespace Qt::StringLiterals;

[[noreturn]] void Fail(const QString& page, const QString& reason)
{
    throw qb::RuntimeError(qb::ErrorNumber::InvalidCall, page + u": "_s + reason, u"quillbase-handbook"_s);
}

QString ReadText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        Fail(path, file.errorString());
    return QString::fromUtf8(file.readAll());
}

void WriteBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        Fail(path, file.errorString());
}

/// The help window knows no space around a text but that of the cells of a table, and no lines but theirs.
QString WithFrames(QString html)
{
    static const QRegularExpression begin(u"<pre><code[^>]*>"_s);
    static const QRegularExpression end(u"\\n?</code></pre>"_s);
    html.replace(u"<table>"_s, u"<table cellspacing=\"0\">"_s);
    html.replace(begin, u"<table cellspacing=\"0\" width=\"100%\"><tr><td class=\"code\"><pre>"_s);
    return html.replace(end, u"</pre></td></tr></table>"_s);
}

QString ToHtml(const QString& markdown)
{
    const QByteArray source = markdown.toUtf8();
    QByteArray html;
    const auto append = [](const MD_CHAR* text, MD_SIZE size, void* out) {
        static_cast<QByteArray*>(out)->append(text, qsizetype(size));
    };
    if (md_html(source.constData(), MD_SIZE(source.size()), append, &html, MD_FLAG_TABLES | MD_FLAG_NOHTML, 0) != 0)
        Fail(u"handbook"_s, u"no Markdown"_s);
    return WithFrames(QString::fromUtf8(html));
}

QString PlainText(QString html)
{
    static const QRegularExpression inlineTags(u"</?(code|em|strong|a)( [^>]*)?>"_s);
    static const QRegularExpression tags(u"<[^>]*>"_s);
    html.remove(inlineTags).replace(tags, u" "_s);
    html.replace(u"&lt;"_s, u"<"_s).replace(u"&gt;"_s, u">"_s).replace(u"&quot;"_s, u"\""_s);
    return html.replace(u"&amp;"_s, u"&"_s).simplified();
}

/// The anchor of a heading, as hosts of source code make it too.
QString AnchorOf(const QString& title)
{
    QString anchor;
    for (const QChar character : title.toLower()) {
        if (character.isLetterOrNumber() || character == u'-' || character == u'_')
            anchor += character;
        else if (character.isSpace())
            anchor += u'-';
    }
    return anchor;
}

QString TopicOfFile(const QString& file)
{
    return file == u"README.md"_s ? u"index"_s : QFileInfo(file).completeBaseName();
}

// The table of keys

struct MenuTitle {
    qb::CommandRow::Place Place;
    const char* Title;
};
constexpr MenuTitle MenuTitles[] = {
    {qb::CommandRow::Place::File, "File"},
    {qb::CommandRow::Place::Edit, "Edit"},
    {qb::CommandRow::Place::EditCode, "Edit > Code"},
    {qb::CommandRow::Place::Item, "Item"},
    {qb::CommandRow::Place::View, "View"},
    {qb::CommandRow::Place::Tools, "Tools"},
    {qb::CommandRow::Place::Replication, "Replication"},
    {qb::CommandRow::Place::Help, "Help"},
    {qb::CommandRow::Place::WebLinks, "Edit > Web Page"},
};

/// The keys of all commands in menus, as they stand in the table of commands.
QString KeysOfMenus()
{
    QString table = u"| key | command | does |\n|---|---|---|\n"_s;
    for (const MenuTitle& menu : MenuTitles) {
        for (const qb::CommandRow& row : qb::Commands::Table()) {
            if (row.Where != menu.Place || !*row.Shortcut)
                continue;
            QString caption = QString::fromLatin1(row.Caption);
            caption.remove(u'&').remove(u"..."_s);
            table += u"| `%1` | **%2 > %3** | %4 |\n"_s.arg(
                QLatin1StringView(row.Shortcut), QLatin1StringView(menu.Title), caption, QLatin1StringView(row.Tip));
        }
    }
    return table;
}

// Pages

struct Page {
    QString File;
    QString Topic;
    QString Title;
    QString Html;
    QJsonArray Sections;
    QSet<QString> Anchors;
};

/// Gives headings their anchors and cuts the text at them.
void FindSections(Page& page)
{
    static const QRegularExpression heading(u"<h([1-6])>(.*?)</h\\1>"_s);
    QString html;
    qsizetype behind = 0;
    QJsonObject section{{u"anchor"_s, QString()}, {u"title"_s, QString()}, {u"level"_s, 1}};
    const auto close = [&](qsizetype end) {
        section[u"text"_s] = PlainText(page.Html.mid(behind, end - behind));
        if (!section[u"title"_s].toString().isEmpty())
            page.Sections.append(section);
        html += page.Html.mid(behind, end - behind);
    };
    for (auto matches = heading.globalMatch(page.Html); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const QString title = PlainText(match.captured(2));
        const int level = match.captured(1).toInt();
        const QString anchor = level == 1 ? QString() : AnchorOf(title);
        close(match.capturedStart());
        if (level == 1 ? !page.Title.isEmpty() : page.Anchors.contains(anchor))
            Fail(page.File, u"two headings '%1'"_s.arg(title));
        if (level == 1)
            page.Title = title;
        page.Anchors.insert(anchor);
        section = {{u"anchor"_s, anchor}, {u"title"_s, title}, {u"level"_s, level}};
        html += u"<h%1><a name=\"%2\"></a>%3</h%1>"_s.arg(QString::number(level), anchor, match.captured(2));
        behind = match.capturedEnd();
    }
    close(page.Html.size());
    if (page.Title.isEmpty())
        Fail(page.File, u"no title"_s);
    page.Html = html;
}

Page MakePage(const QString& folder, const QString& file)
{
    Page page{file, TopicOfFile(file), {}, {}, {}, {}};
    QString markdown = ReadText(folder + u'/' + file);
    markdown.replace(u"[[keys of the menus]]"_s, KeysOfMenus());
    page.Html = ToHtml(markdown);
    FindSections(page);
    return page;
}

/// Lets links lead to topics. One that leads nowhere ends the build.
void SetLinks(Page& page, const QHash<QString, QSet<QString>>& anchors)
{
    static const QRegularExpression link(u"<a href=\"([^\"]*)\">"_s);
    QString html;
    qsizetype behind = 0;
    for (auto matches = link.globalMatch(page.Html); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const QString target = match.captured(1);
        const QString file = target.section(u'#', 0, 0);
        const QString anchor = target.section(u'#', 1);
        const QString topic = file.isEmpty() ? page.Topic : TopicOfFile(file);
        if (!anchors.contains(topic) || !anchors[topic].contains(anchor))
            Fail(page.File, u"the link '%1' leads nowhere"_s.arg(target));
        html += page.Html.mid(behind, match.capturedStart() - behind)
                + u"<a href=\"%1\">"_s.arg(anchor.isEmpty() ? topic : topic + u'#' + anchor);
        behind = match.capturedEnd();
    }
    page.Html = html + page.Html.mid(behind);
}

/// Puts the pictures of a page beside it. One that is not there ends the build.
void CopyPictures(const Page& page, const QString& from, const QString& out)
{
    static const QRegularExpression picture(u"<img src=\"([^\"]*)\""_s);
    for (auto matches = picture.globalMatch(page.Html); matches.hasNext();) {
        const QString name = matches.next().captured(1);
        if (!name.endsWith(u".svg"_s) || !QFileInfo::exists(from + u'/' + name))
            Fail(page.File, u"there is no picture '%1'"_s.arg(name));
        WriteBytes(out + u'/' + name, ReadText(from + u'/' + name).toUtf8());
    }
}

QStringList FilesOf(const QString& contents)
{
    static const QRegularExpression entry(u"^\\d+\\. \\[[^\\]]*\\]\\(([^)#]+)\\)"_s,
                                          QRegularExpression::MultilineOption);
    QStringList files{u"README.md"_s};
    for (auto matches = entry.globalMatch(contents); matches.hasNext();)
        files << matches.next().captured(1);
    return files;
}

void MakeHandbook(const QString& contents, const QString& out)
{
    const QString folder = QFileInfo(contents).path();
    QDir().mkpath(out);
    const QStringList before = QDir(out).entryList({u"*.html"_s, u"*.svg"_s});
    for (const QString& page : before) // of pages that are no more
        QFile::remove(out + u'/' + page);
    std::vector<Page> pages;
    QHash<QString, QSet<QString>> anchors;
    for (const QString& file : FilesOf(ReadText(contents))) {
        pages.push_back(MakePage(folder, file));
        anchors[pages.back().Topic] = pages.back().Anchors;
    }
    QJsonArray index;
    for (Page& page : pages) {
        SetLinks(page, anchors);
        CopyPictures(page, folder, out);
        WriteBytes(out + u'/' + page.Topic + u".html"_s, page.Html.toUtf8());
        index.append(QJsonObject{{u"topic"_s, page.Topic}, {u"title"_s, page.Title}, {u"sections"_s, page.Sections}});
    }
    WriteBytes(out + u"/contents.json"_s, QJsonDocument(index).toJson(QJsonDocument::Compact));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    try {
        MakeHandbook(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]));
    } catch (const qb::RuntimeError& error) {
        std::fprintf(stderr, "%s\n", qPrintable(error.Description()));
        return 1;
    }
    return 0;
}
