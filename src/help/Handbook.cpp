#include "help/Handbook.h"

#include "find/FoldText.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ContentsFile = u"contents.json"_s;

/// In small letters without accents, character by character, so that places stay places.
QString Folded(const QString& text)
{
    QString folded = text;
    for (QChar& character : folded) {
        const char32_t plain = character.isSurrogate() ? character.unicode()
                                                       : FoldedCharacter(character.unicode(), Folding::All);
        character = QChar(plain <= 0xFFFF ? char16_t(plain) : u' ');
    }
    return folded;
}

/// How a word stands in a text.
struct Place {
    qsizetype At = -1;
    bool Begins = false; ///< a word of the text begins with it
    bool Whole = false;  ///< it is a word of the text
};

bool IsInsideWord(const QString& text, qsizetype at)
{
    return at > 0 && at < text.size() && text[at].isLetterOrNumber() && text[at - 1].isLetterOrNumber();
}

/// The best place of a word.
Place PlaceOf(const QString& word, const QString& text)
{
    Place best;
    for (qsizetype at = text.indexOf(word); at >= 0 && !best.Whole; at = text.indexOf(word, at + 1)) {
        const bool begins = !IsInsideWord(text, at);
        const bool whole = begins && !IsInsideWord(text, at + word.size());
        if (best.At < 0 || (begins && !best.Begins) || whole)
            best = {at, begins, whole};
    }
    return best;
}

/// Some words around a place.
QString Excerpt(const QString& text, qsizetype at)
{
    constexpr qsizetype Before = 40;
    constexpr qsizetype Length = 130;
    qsizetype begin = at <= Before ? 0 : text.indexOf(u' ', at - Before) + 1;
    if (begin > at)
        begin = at;
    const bool isCut = begin + Length < text.size();
    const qsizetype end = isCut ? text.lastIndexOf(u' ', begin + Length) : text.size();
    const QString piece = text.mid(begin, end > begin ? end - begin : Length).simplified();
    return (begin > 0 ? u"… "_s : QString()) + piece + (isCut ? u" …"_s : QString());
}

/// How well a section answers; 0 when it lacks one of the words.
int Score(const QStringList& words, const HelpPage& page, const HelpSection& section, qsizetype& firstPlace)
{
    constexpr int InTitle = 8;
    constexpr int InPageTitle = 4;
    constexpr int Whole = 3;
    constexpr int Begins = 2;
    const QString title = Folded(section.Title);
    const QString pageTitle = Folded(page.Title);
    const QString text = Folded(section.Text);
    int score = 0;
    firstPlace = -1;
    for (const QString& word : words) {
        const Place inTitle = PlaceOf(word, title);
        const Place inText = PlaceOf(word, text);
        if (inTitle.At < 0 && inText.At < 0)
            return 0;
        score += 1 + (inTitle.At >= 0 ? InTitle : 0) + (PlaceOf(word, pageTitle).Begins ? InPageTitle : 0);
        score += (inTitle.Whole || inText.Whole) ? Whole : (inTitle.Begins || inText.Begins) ? Begins : 0;
        if (firstPlace < 0)
            firstPlace = inText.At;
    }
    return score;
}

HelpPage PageFrom(const QJsonObject& object)
{
    HelpPage page{object[u"topic"_s].toString(), object[u"title"_s].toString(), {}};
    const QJsonArray sections = object[u"sections"_s].toArray();
    for (const QJsonValue& value : sections) {
        const QJsonObject section = value.toObject();
        page.Sections.push_back({section[u"anchor"_s].toString(), section[u"title"_s].toString(),
                                 section[u"level"_s].toInt(1), section[u"text"_s].toString()});
    }
    return page;
}

} // namespace

QStringList HelpWords(const QString& text)
{
    return Folded(text).simplified().split(u' ', Qt::SkipEmptyParts);
}

QString Handbook::DefaultFolder()
{
    return SharedPath(u"handbook"_s);
}

bool Handbook::Exists(const QString& folder)
{
    return QFile::exists(folder + u'/' + ContentsFile);
}

Handbook::Handbook(const QString& folder) : m_folder(folder)
{
    QFile file(folder + u'/' + ContentsFile);
    if (file.open(QIODevice::ReadOnly)) {
        const QJsonArray pages = QJsonDocument::fromJson(file.readAll()).array();
        for (const QJsonValue& value : pages)
            m_pages.push_back(PageFrom(value.toObject()));
    }
    if (m_pages.empty())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"The contents of the handbook can't be read: '%1'."_s.arg(file.fileName()), u"Handbook"_s);
}

const HelpPage* Handbook::PageOf(const QString& topic) const
{
    const QString name = topic.section(u'#', 0, 0);
    const auto found = std::find_if(m_pages.begin(), m_pages.end(),
                                    [&name](const HelpPage& page) { return page.Topic == name; });
    return found == m_pages.end() ? nullptr : &*found;
}

bool Handbook::Has(const QString& topic) const
{
    const HelpPage* page = PageOf(topic);
    const QString anchor = topic.section(u'#', 1);
    return page
           && (anchor.isEmpty()
               || std::any_of(page->Sections.begin(), page->Sections.end(),
                              [&anchor](const HelpSection& section) { return section.Anchor == anchor; }));
}

QString Handbook::Nearest(const QString& topic) const
{
    if (Has(topic))
        return topic;
    return PageOf(topic) ? topic.section(u'#', 0, 0) : HomeTopic();
}

QString Handbook::Html(const QString& topic) const
{
    const HelpPage* page = PageOf(topic); // no other name is made a path
    if (!page)
        return {};
    QFile file(m_folder + u'/' + page->Topic + u".html"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QByteArray Handbook::Picture(const QString& name) const
{
    static const QRegularExpression plain(u"\\A[a-z-]+\\.svg\\z"_s);
    QFile file(m_folder + u'/' + name);
    return plain.match(name).hasMatch() && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString Handbook::TitleOf(const QString& topic) const
{
    const HelpPage* page = PageOf(topic);
    return page ? page->Title : QString();
}

std::vector<HelpHit> Handbook::Search(const QString& text) const
{
    const QStringList words = HelpWords(text);
    std::vector<std::pair<int, HelpHit>> scored;
    if (words.isEmpty())
        return {};
    for (const HelpPage& page : m_pages) {
        for (const HelpSection& section : page.Sections) {
            qsizetype place = -1;
            const int score = Score(words, page, section, place);
            if (score > 0)
                scored.push_back({score,
                                  {section.Anchor.isEmpty() ? page.Topic : page.Topic + u'#' + section.Anchor,
                                   page.Title, section.Title, Excerpt(section.Text, qMax<qsizetype>(0, place))}});
        }
    }
    std::stable_sort(scored.begin(), scored.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<HelpHit> hits;
    for (auto& [score, hit] : scored)
        hits.push_back(std::move(hit));
    return hits;
}

} // namespace qb
