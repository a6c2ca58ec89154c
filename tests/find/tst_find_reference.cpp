#include "find/FindCache.h"
#include "find/FindPlaces.h"
#include "find/FindReference.h"
#include "platform/richtext/Rtf.h"
#include "store/CCodeItem.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <random>
#include <span>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int Share = 8; // of the searches, which take ten times as long
#else
constexpr int Share = 1;
#endif


/// Texts in which much is nearly the same.
class Writer {
public:
    explicit Writer(unsigned seed) : m_random(seed) {}

    int Below(int bound) { return std::uniform_int_distribution(0, bound - 1)(m_random); }
    bool Once(int in) { return Below(in) == 0; }

    QString Piece()
    {
        static const QStringList ascii{
            u"int"_s,  u"Int"_s, u"print"_s, u"std::move"_s, u"->"_s,    u"$$"_s,   u"x"_s, u"aa"_s,   u"aaa"_s,
            u"abab"_s, u"get"_s, u"GetIt"_s, u"get_it"_s,    u"(x+x)"_s, u"{"_s,    u"}"_s, u";"_s,    u"..."_s,
            u"a.b"_s,  u"A"_s,   u"\t"_s,    u"\""_s,        u"\\n"_s,   u"100%"_s, u"k"_s, u"mask"_s, u"STRASSE"_s};
        static const QStringList wide{u"Straße"_s,  u"café"_s,       u"cafe\u0301"_s, u"ÄRGER"_s,     u"ärger"_s,
                                      u"naïve"_s,   u"привет"_s,     u"ПРИВЕТ"_s,     u"Й"_s,         u"и\u0306"_s,
                                      u"한글"_s,    u"\U0001F600"_s, u"mas\u212A"_s,  u"ma\u017Fk"_s, u"ΣΊΣΥΦΟΣ"_s,
                                      u"σίσυφος"_s, u"İ"_s,          u"\u0301"_s,     u"ǅ"_s,         u"ﬁ"_s,
                                      u"日本語"_s,  u"Å"_s,          u"\u212B"_s,     u"x\u20DD"_s};
        return m_isWide && Once(4) ? wide[Below(int(wide.size()))] : ascii[Below(int(ascii.size()))];
    }

    QString Text(int pieces, bool lines = true)
    {
        m_isWide = Once(3);
        QString text;
        for (int i = Below(pieces + 1); i > 0; --i)
            text += Piece() + (Once(2) ? u" "_s : Once(6) && lines ? u"\r\n"_s : QString());
        return text;
    }

    QString Changed(QString text)
    {
        for (QChar& character : text) {
            if (Once(5))
                character = character.isLower() ? character.toUpper() : character.toLower();
        }
        return Once(6) ? text.normalized(Once(2) ? QString::NormalizationForm_C : QString::NormalizationForm_D) : text;
    }

private:
    std::mt19937 m_random;
    bool m_isWide = true;
};

QString Described(const FindQuery& query)
{
    return u"%1 mode %2 case %3 word %4 accents %5 fields %6 branch %7"_s.arg(query.Text)
        .arg(int(query.Mode))
        .arg(int(query.Case))
        .arg(query.WholeWord)
        .arg(query.FoldAccents)
        .arg(query.Fields)
        .arg(query.Branch);
}

} // namespace

class TestFindReference : public QObject {
    Q_OBJECT

private:
    void MakeItems(Library& library, Writer& writer)
    {
        Transaction transaction(library);
        for (int i = 0; i < 300; ++i) {
            CCodeItem item;
            item.Initialise(library, {});
            item.SetParentKey(QString::number(i < 10 ? 0 : writer.Below(i)));
            item.SetTitle(writer.Text(4, false).left(200) + QString::number(i % 7));
            item.SetDescription(writer.Text(4, false).left(200));
            item.SetInfo(writer.Once(4) ? writer.Text(5) : QString());
            item.SetCode(RtfFromPlainText(writer.Text(20), CodeFont));
            if (writer.Once(3))
                item.SetCode(WithLanguageInRtf(item.Code(), u"Python"_s));
            item.SetNotes(writer.Once(2) ? RtfFromPlainText(writer.Text(12), CodeFont) : QString());
            item.SetExample(writer.Once(3) ? RtfFromPlainText(writer.Text(12), CodeFont) : QString());
            item.SetItemStatus(writer.Below(3));
            item.SetItemRating(writer.Below(3));
            QVERIFY(item.Commit());
            m_ids << item.Key().toLongLong();
        }
        for (int i = 0; i < 300; ++i)
            library.Execute(u"UPDATE Items SET LastChanged = ? WHERE ID = ?"_s,
                            {4'000'000'000 + writer.Below(50), m_ids[i]});
        transaction.Commit();
    }

    void MakeBelongings(Library& library, Writer& writer)
    {
        Transaction transaction(library);
        for (int i = 0; i < 60; ++i) {
            const qint64 item = m_ids[writer.Below(int(m_ids.size()))];
            const qint64 file = AddStoredFile(library, item, u"datei é %1.txt"_s.arg(i),
                                              writer.Once(5) ? QByteArray("a\0b", 3) : writer.Text(20).toUtf8(), {});
            library.Execute(u"UPDATE Files SET Description = ? WHERE ID = ?"_s,
                            {RtfFromPlainText(writer.Text(5), CodeFont), file});
            library.Execute(u"INSERT OR IGNORE INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, ?)"_s,
                            {item, m_ids[writer.Below(int(m_ids.size()))], writer.Text(5)});
            const qint64 page = m_ids[writer.Below(int(m_ids.size()))];
            WriteFile(library.HTMLFolder() + QString::number(page) + u".htm"_s, "<pre><b>"
                                                                                    + writer.Text(8)
                                                                                          .trimmed()
                                                                                          .toHtmlEscaped()
                                                                                          .replace(u"&quot;"_s, u"\""_s)
                                                                                          .replace(u"&lt;"_s, u""_s)
                                                                                          .replace(u"&gt;"_s, u""_s)
                                                                                          .toUtf8()
                                                                                    + "</b></pre>");
            library.Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {page});
        }
        transaction.Commit();
    }

    /// What may be looked for: mostly something that is there.
    QString RandomText(Writer& writer)
    {
        const FindReference::Item& item = m_reference->Items()[size_t(writer.Below(int(m_reference->Items().size())))];
        const FindReference::Text& text = item.Texts[size_t(writer.Below(int(item.Texts.size())))];
        const std::u32string all = text.Plain.toStdU32String();
        if (all.empty() || writer.Once(8))
            return writer.Piece();
        const int begin = writer.Below(int(all.size()));
        const QString part = QString::fromStdU32String(
            all.substr(size_t(begin), size_t(1 + writer.Below(writer.Once(4) ? 30 : 6))));
        return writer.Once(3) ? writer.Changed(part) : part;
    }

    FindQuery RandomQuery(Writer& writer)
    {
        FindQuery query;
        query.Text = RandomText(writer);
        if (writer.Once(3)) {
            query.Mode = FindMode::AllWords;
            if (writer.Once(2))
                query.Text += u' ' + RandomText(writer);
        }
        query.Case = FindCase(writer.Below(3));
        query.WholeWord = writer.Once(3);
        query.FoldAccents = writer.Once(2);
        if (writer.Once(2))
            query.Fields = FindFieldSet(1 + writer.Below(AllFindFields));
        Select(writer, query);
        return query;
    }

    void Select(Writer& writer, FindQuery& query)
    {
        if (writer.Once(8))
            query.Branch = m_ids[writer.Below(20)];
        if (writer.Once(8))
            query.ChangedSince = Date::FromSeconds(4'000'000'000 + writer.Below(50));
        if (writer.Once(8))
            query.Status = writer.Below(3);
        if (writer.Once(8))
            query.Rating = writer.Below(3);
        if (writer.Once(8))
            query.Language = writer.Once(2) ? u"python"_s : u"C++"_s;
    }

    FindQuery RandomExpression(Writer& writer)
    {
        static const QStringList forms{u"%1.*%2"_s,       u"%1|%2"_s,       u"(%1)+%2"_s,   u"^%1"_s,
                                       u"%1$"_s,          u"[a-f]+%1"_s,    u"\\b%1\\w*"_s, u"%1?%2"_s,
                                       u"(?:%1|%2)\\s"_s, u"\\w+%1{1,2}"_s, u"\\W%1\\S+"_s, u"%1*%2"_s,
                                       u"x*|%1"_s,        u"[^\\n]%1."_s,   u"(?=%1)%2?."_s};
        FindQuery query;
        query.Mode = FindMode::Expression;
        query.Text = forms[writer.Below(int(forms.size()))];
        query.Text.replace(u"%1"_s, QRegularExpression::escape(RandomText(writer).left(5)))
            .replace(u"%2"_s, QRegularExpression::escape(writer.Piece()));
        query.Case = FindCase(writer.Below(3));
        query.WholeWord = writer.Once(4);
        if (writer.Once(3))
            query.Fields = FindFieldSet(1 + writer.Below(AllFindFields));
        Select(writer, query);
        return query;
    }

    /// The texts at the places are those that are looked for, and as many as were counted.
    void CheckPlaces(const FindQuery& query, const FindHit& hit, const FindMatcher& matcher)
    {
        const std::vector<FindPlace> places = PlacesIn(*m_texts, hit.Place, matcher, 10000, 1);
        size_t counted = 0;
        for (const quint32 count : hit.Counters)
            counted += count;
        QVERIFY2(places.size() == counted, qPrintable(Described(query)));
        const auto& item = *std::find_if(m_reference->Items().begin(), m_reference->Items().end(),
                                         [&hit](const auto& one) { return one.Id == hit.Id; });
        constexpr size_t Looked = 10;
        for (const FindPlace& place : std::span(places).first(std::min(places.size(), Looked))) {
            const bool stands = std::any_of(item.Texts.begin(), item.Texts.end(), [&](const FindReference::Text& text) {
                const QString boxed = QString(text.Plain).replace(u"\n"_s, u"\r\n"_s);
                const QString part = boxed.mid(place.Begin, place.Length).replace(u"\r\n"_s, u"\n"_s);
                return text.Field == place.Field && Fits(query, part)
                       && boxed.left(place.Begin).count(u'\n') == place.Line - 1
                       && place.Context[place.Line - place.ContextLine]
                              .mid(place.ContextColumn)
                              .startsWith(part.section(u'\n', 0, 0));
            });
            QVERIFY2(stands, qPrintable(Described(query)));
        }
    }

    static bool Fits(const FindQuery& query, const QString& part)
    {
        if (query.Mode == FindMode::Expression)
            return !part.isEmpty();
        const unsigned folding = (CountsCase(query) ? 0u : 1u) | (query.FoldAccents ? 2u : 0u);
        const QStringList needles = NeedlesOf(query);
        return std::any_of(needles.begin(), needles.end(), [&](const QString& needle) {
            return FindReference::Fold(part, folding) == FindReference::Fold(needle, folding)
                   || (FindReference::Fold(needle, folding).empty() && part.contains(needle, Qt::CaseInsensitive));
        });
    }

    void Compare(const FindQuery& query)
    {
        const FindResult found = FindAll(m_texts, query);
        std::vector<FindReference::Hit> hits;
        for (const FindHit& hit : found.Hits)
            hits.push_back({hit.Id, int(hit.Rank), hit.Counters});
        QVERIFY2(found.Outcome.IsComplete(), qPrintable(Described(query)));
        const std::vector<FindReference::Hit> expected = m_reference->Find(query);
        if (hits != expected) {
            for (size_t i = 0; i < std::max(hits.size(), expected.size()) && i < 5; ++i) {
                const auto show = [](const std::vector<FindReference::Hit>& list, size_t at) {
                    if (at >= list.size())
                        return u"-"_s;
                    QString text = u"%1 rank %2:"_s.arg(list[at].Id).arg(list[at].Rank);
                    for (const quint32 count : list[at].Counters)
                        text += u' ' + QString::number(count);
                    return text;
                };
                qInfo().noquote() << "found" << show(hits, i) << "expected" << show(expected, i);
            }
            QFAIL(qPrintable(Described(query)));
        }
        m_hits += int(hits.size());
        if (!found.Hits.empty())
            CheckPlaces(query, found.Hits[found.Hits.size() / 2], FindMatcher(query));
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    std::unique_ptr<FindCache> m_cache;
    std::optional<FindReference> m_reference;
    std::shared_ptr<const FindSnapshot> m_texts;
    QList<qint64> m_ids;
    int m_hits = 0;

private Q_SLOTS:
    void initTestCase()
    {
        Writer writer(20260302);
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"suche ß.qbd"_s));
        MakeItems(*m_library, writer);
        MakeBelongings(*m_library, writer);
        m_cache = std::make_unique<FindCache>(m_library->Name());
        m_texts = m_cache->Update();
        m_reference.emplace(*m_library);
        QCOMPARE(m_texts->Items(), size_t(300));
        QCOMPARE(m_cache->Warning(), QString());
    }
    void init() { FailOnWarnings(); }
    void cleanupTestCase()
    {
        m_cache.reset();
        m_library.reset();
    }

    void randomQueries_findWhatTheReferenceFinds()
    {
        Writer writer(7);
        for (int i = 0; i < 8000 / Share; ++i) {
            const FindQuery query = RandomQuery(writer);
            if (!NeedlesOf(query).isEmpty())
                Compare(query);
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY2(m_hits > 50000 / Share, qPrintable(QString::number(m_hits)));
    }

    void randomExpressions_findWhatTheReferenceFinds()
    {
        Writer writer(11);
        for (int i = 0; i < 2000 / Share; ++i) {
            Compare(RandomExpression(writer));
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY2(m_hits > 55000 / Share, qPrintable(QString::number(m_hits)));
    }

    void fileLoadedAgain_findsTheSame()
    {
        m_cache = std::make_unique<FindCache>(m_library->Name());
        m_texts = m_cache->Update();
        Writer writer(13);
        for (int i = 0; i < 200 && !QTest::currentTestFailed(); ++i) {
            const FindQuery query = RandomQuery(writer);
            if (!NeedlesOf(query).isEmpty())
                Compare(query);
        }
    }
};

QB_TEST_MAIN(TestFindReference)
#include "tst_find_reference.moc"
