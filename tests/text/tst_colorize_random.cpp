// The colouriser against a slow double that takes every step one character at a time.

#include "platform/richtext/RichText.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// The scan without any cleverness: positions count from 1, texts beyond the end are empty.
class SlowScan {
public:
    SlowScan(IRichTextBox& box, const LanguageDefinition& language)
        : m_box(box), m_language(language), m_plain(SetOf(language.PlainWords)),
          m_coloured(SetOf(language.ColouredWords))
    {
    }

    void Run()
    {
        m_box.SetSelStart(0);
        m_box.SetSelLength(m_box.Text().size());
        m_box.SetSelFontName(u"Courier New"_s);
        m_box.SetSelFontSize(10);
        m_box.SetSelItalic(false);
        m_box.SetSelUnderline(false);
        m_text = m_box.Text();
        if (m_language.Comment.isEmpty())
            m_language.Comment = u"'"_s;
        m_limit = m_text.size() + 1;
        qsizetype step = 0;
        if (m_limit > 3000) {
            Progress << 0;
            step = RoundedTwentieth(m_limit);
        }
        qsizetype nextMark = step;
        int percentage = 0;
        for (m_position = 1; m_position <= m_limit; ++m_position) {
            if (step > 0 && m_position >= nextMark) {
                nextMark += step;
                percentage += 5;
                Progress << percentage;
            }
            OneCharacter();
        }
        if (step > 0)
            Progress << 100;
        m_box.SetSelStart(0);
        m_box.SetSelLength(0);
        m_box.SetSelColor(0);
    }

    QList<int> Progress;

private:
    static constexpr qsizetype Rounds = 9999999;

    static QString SetOf(const QStringList& words)
    {
        QString set = u"*"_s;
        for (const QString& word : words)
            set += word + u'*';
        return set;
    }

    static qsizetype RoundedTwentieth(qsizetype number)
    {
        const qsizetype below = number / 20;
        const qsizetype rest = number % 20;
        if (rest == 10)
            return below % 2 == 0 ? below : below + 1;
        return rest < 10 ? below : below + 1;
    }

    QString At(qsizetype position, qsizetype length = 1) const
    {
        return position >= 1 && position <= m_text.size() ? m_text.mid(position - 1, length) : QString();
    }

    static bool IsOfAWord(const QString& character)
    {
        return character.size() == 1
               && u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_"_s.contains(character);
    }

    void OneCharacter()
    {
        const QString character = At(m_position);
        const QString& line = m_language.Comment;
        const QString& start = m_language.CommentStart;
        if (IsOfAWord(character))
            Word(character);
        else if (character == u"\""_s)
            String();
        else if (character == line.left(1))
            line.size() > 1 && At(m_position, line.size()) != line ? Separator() : LineComment();
        else if (character == start.left(1))
            start.size() > 1 && At(m_position, start.size()) != start ? Separator() : BlockComment();
        else
            Separator();
    }

    void Word(const QString& character)
    {
        if (m_word.isEmpty())
            m_wordStart = m_position;
        m_word += character;
        FlushGap();
    }

    void FlushGap()
    {
        if (m_gap <= 0)
            return;
        const qsizetype start = m_box.SelStart() + m_box.SelLength();
        m_box.SetSelStart(start);
        m_box.SetSelLength(m_gap + 1);
        m_box.SetSelColor(Colour(m_language.KeywordColour));
        m_gap = 0;
    }

    void Separator()
    {
        if (m_word.isEmpty()) {
            m_gap += 1;
            return;
        }
        m_box.SetSelStart(m_wordStart - 1);
        m_box.SetSelLength(m_word.size());
        if (const QString plain = Spelling(m_plain); !plain.isEmpty()) {
            m_box.SetSelColor(Colour(m_language.KeywordColour));
            Respell(plain);
            Unbold();
        } else if (const QString coloured = Spelling(m_coloured); !coloured.isEmpty()) {
            m_box.SetSelColor(Colour(m_language.ColouredKeywordColour));
            Respell(coloured);
            Unbold();
        } else {
            m_box.SetSelColor(Colour(m_language.KeywordColour));
            if (m_box.SelBold() == true) {
                m_box.SetSelBold(false);
                SelectLine();
            }
        }
        if (m_word.toUpper() == u"REM"_s)
            Remark();
        m_word.clear();
    }

    QString Spelling(const QString& set) const
    {
        const qsizetype found = set.indexOf(u'*' + m_word + u'*', 0, Qt::CaseInsensitive);
        return found < 0 ? QString() : set.mid(found + 1, m_word.size());
    }

    void Remark()
    {
        m_box.SetSelStart(m_position - 4);
        m_box.SetSelLength(3);
        for (qsizetype round = 0; round < Rounds; ++round) {
            if (At(m_position, 2) == u"\r\n"_s)
                break;
            m_box.SetSelLength(m_box.SelLength() + 1);
            m_position += 1;
            if (m_position > m_limit) // the rounds that are left change nothing any more
                break;
        }
        m_box.SetSelColor(Colour(m_language.ColouredKeywordColour));
        m_box.SetSelText(m_box.SelText().toLower());
        Unbold();
    }

    void String()
    {
        FlushGap();
        qsizetype count = 1;
        m_box.SetSelStart(m_position - 1);
        for (qsizetype round = 0; round < Rounds; ++round) {
            const QString next = At(m_position + 1);
            if (next == u"\""_s || next == u"\r"_s)
                break;
            count += 1;
            m_position += 1;
            if (m_position > m_limit)
                return;
        }
        m_position += 2;
        m_box.SetSelLength(count);
        m_box.SetSelColor(Colour(m_language.KeywordColour));
        Unbold();
    }

    void LineComment()
    {
        m_box.SetSelStart(m_position - 1);
        qsizetype count = 0;
        for (qsizetype round = 0; round < Rounds; ++round) {
            if (At(m_position, 2) == u"\r\n"_s)
                break;
            count += 1;
            m_position += 1;
            if (count > m_limit)
                break;
        }
        PaintComment(count);
    }

    void BlockComment()
    {
        m_box.SetSelStart(m_position - 1);
        qsizetype count = 0;
        const QString& end = m_language.CommentEnd;
        for (qsizetype round = 0; round < Rounds; ++round) {
            if (At(m_position, end.size()) == end) {
                m_position += end.size();
                count += end.size();
                break;
            }
            count += 1;
            m_position += 1;
            if (count > m_limit)
                break;
        }
        PaintComment(count);
    }

    /// Half a line end can't be written over.
    void Respell(const QString& word)
    {
        const QString range = m_box.SelText();
        if (!range.contains(u'\r') && !range.contains(u'\n'))
            m_box.SetSelText(word);
    }

    void PaintComment(qsizetype count)
    {
        const QString header = m_language.Comment + u"###############   "_s;
        if (m_box.SelBold() == true && At(m_box.SelStart() + 1, header.size()) == header) {
            m_box.SetSelStart(m_box.SelStart() + count);
            return;
        }
        m_box.SetSelLength(count);
        m_box.SetSelColor(Colour(m_language.CommentColour));
        Unbold();
    }

    void Unbold()
    {
        if (m_box.SelBold() != true)
            return;
        SelectLine();
        m_box.SetSelBold(false);
    }

    void SelectLine()
    {
        m_box.UpTo(u"\n", IRichTextBox::Direction::Backward);
        m_box.Span(u"\r", IRichTextBox::Direction::Forward, IRichTextBox::Members::NotOf);
    }

    static quint32 Colour(qint32 value) { return quint32(value); }

    IRichTextBox& m_box;
    LanguageDefinition m_language;
    QString m_plain;
    QString m_coloured;
    QString m_text;
    qsizetype m_limit = 0;
    qsizetype m_position = 0;
    QString m_word;
    qsizetype m_wordStart = 0;
    qsizetype m_gap = 0;
};

LanguageDefinition Odd(const QString& comment, const QString& start, const QString& end)
{
    LanguageDefinition language;
    language.Comment = comment;
    language.CommentStart = start;
    language.CommentEnd = end;
    language.ColouredWords = QStringList{u"Dim"_s, u"If"_s, u"x1"_s, u"dim"_s, u"Rem"_s, u"#Const"_s, u"Two"_s};
    language.PlainWords = QStringList{u"Beep"_s, u"two"_s, u"BEEP"_s, u"_a"_s};
    language.ColouredKeywordColour = 0x800000;
    language.KeywordColour = 0x123456;
    language.CommentColour = 0x8000;
    return language;
}

QString RandomText(Dice& dice, const LanguageDefinition& language, int pieces)
{
    static const QStringList fixed{
        u"\r\n"_s, u"\r\n"_s, u"\r\n"_s,  u" "_s,     u" "_s,       u"  "_s,   u"\t"_s,      u"\""_s,  u"\""_s,
        u"'"_s,    u"//"_s,   u"/"_s,     u"/*"_s,    u"*/"_s,      u"*"_s,    u"#"_s,       u"##"_s,  u"rem"_s,
        u"REM "_s, u"Rem"_s,  u"xrem"_s,  u"dim"_s,   u"DIM"_s,     u"beep"_s, u"two"_s,     u"IF "_s, u"x"_s,
        u"x1"_s,   u"_a"_s,   u"Const"_s, u"class"_s, u"char"_s,    u"ß"_s,    u"Ä Ö"_s,     u"漢"_s,  u"😀"_s,
        u"("_s,    u");"_s,   u"= "_s,    u".5"_s,    u"\"a b\""_s, u"\"\""_s, u"\r\n\r\n"_s};
    static const QString header = u"###############   "_s;
    QString text;
    for (int i = 0; i < pieces; ++i) {
        switch (dice.Roll(12)) {
        case 0:
            text += language.Comment;
            break;
        case 1:
            text += language.CommentStart;
            break;
        case 2:
            text += language.CommentEnd;
            break;
        case 3:
            text += dice.OneIn(3) ? u"\r\n"_s + language.Comment + header + u"Main Code\r\n"_s
                                  : language.Comment + header;
            break;
        case 4:
            text += dice.PickOf(language.ColouredWords).toLower();
            break;
        case 5:
            text += dice.OneIn(2) ? dice.PickOf(language.ColouredWords).toUpper() + u' ' : u"end if"_s;
            break;
        default:
            text += dice.PickOf(fixed);
            break;
        }
    }
    return text;
}

/// Bold lines and words, and colours and slants that were there before.
void Decorate(IRichTextBox& box, Dice& dice)
{
    const qsizetype length = box.Text().size();
    for (int i = dice.Roll(6); i > 0; --i) {
        box.SetSelStart(dice.Roll(length + 1));
        if (dice.OneIn(2)) {
            box.UpTo(u"\n", IRichTextBox::Direction::Backward);
            box.Span(u"\r", IRichTextBox::Direction::Forward, IRichTextBox::Members::NotOf);
        } else {
            box.SetSelLength(dice.Roll(12));
        }
        if (box.SelLength() == 0)
            continue;
        switch (dice.Roll(6)) {
        case 0:
            box.SetSelColor(quint32(dice.Roll(0x1000000)));
            break;
        case 1:
            box.SetSelItalic(true);
            break;
        case 2:
            box.SetSelFontName(u"Arial"_s);
            break;
        default:
            box.SetSelBold(true);
            break;
        }
    }
    if (dice.OneIn(8)) {
        box.SetSelStart(0);
        box.SetSelLength(length);
        box.SetSelBold(true);
    }
}

} // namespace

class TestColorizeRandom : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void randomTexts_arePaintedAsTheSlowScanDoes_data()
    {
        QTest::addColumn<LanguageDefinition>("language");
        QTest::addColumn<int>("texts");
        QTest::newRow("VB") << BuiltInLanguage(LanguageType::VB) << 2000;
        QTest::newRow("C++") << BuiltInLanguage(LanguageType::Cpp) << 2000;
        QTest::newRow("VB with blocks") << Odd(u"'"_s, u"/*"_s, u"*/"_s) << 500;
        QTest::newRow("nothing") << Odd({}, {}, {}) << 300;
        QTest::newRow("start only") << Odd(u"'"_s, u"("_s, {}) << 300;
        QTest::newRow("end only") << Odd(u"'"_s, {}, u"*/"_s) << 300;
        QTest::newRow("one character each") << Odd(u"#"_s, u"("_s, u")"_s) << 500;
        QTest::newRow("hash and blocks of hashes") << Odd(u"#"_s, u"##"_s, u"##"_s) << 300;
        QTest::newRow("two hashes") << Odd(u"##"_s, u"#"_s, u"#"_s) << 300;
        QTest::newRow("same openers") << Odd(u"//"_s, u"//"_s, u"//"_s) << 300;
        QTest::newRow("start within the end") << Odd(u"'"_s, u"/*/"_s, u"*/"_s) << 300;
        QTest::newRow("start is the end") << Odd(u"'"_s, u"*/"_s, u"*/"_s) << 300;
        QTest::newRow("quote") << Odd(u"\""_s, u"\"a"_s, u"\""_s) << 300;
        QTest::newRow("letters") << Odd(u"rem"_s, u"dim"_s, u"if"_s) << 300;
        QTest::newRow("blank") << Odd(u" "_s, u"\t"_s, u" "_s) << 300;
        QTest::newRow("line end opens") << Odd(u"\r"_s, u"\n"_s, u"\r\n"_s) << 300;
        QTest::newRow("line end closes") << Odd(u"\r\n"_s, u"/*"_s, u"\r\n"_s) << 300;
        QTest::newRow("beyond ASCII") << Odd(u"ß"_s, u"漢"_s, u"Ä Ö"_s) << 300;
        QTest::newRow("five characters") << Odd(u"'#####"_s, u"###'#"_s, u"##'"_s) << 300;
    }

    void randomTexts_arePaintedAsTheSlowScanDoes()
    {
        QFETCH(LanguageDefinition, language);
        QFETCH(int, texts);
        for (int seed = 0; seed < texts; ++seed) {
            Dice dice{quint32(seed)};
            RichText fast;
            fast.SetText(RandomText(dice, language, 1 + dice.Roll(seed % 50 == 0 ? 1500 : 40)));
            Decorate(fast, dice);
            RichText slow = fast;
            const QString before = fast.Text();

            CTextFormat format;
            format.SetLanguage(language);
            QList<int> progress;
            connect(&format, &CTextFormat::eColorizeProgress, this, [&progress](int percent) { progress << percent; });
            format.ColorizeCode(fast);
            SlowScan scan(slow, language);
            scan.Run();

            const QByteArray where = "seed " + QByteArray::number(seed) + ": " + before.toUtf8();
            QVERIFY2(Describe(fast.Document()) == Describe(slow.Document()), where);
            QVERIFY2(fast.TextRTF() == slow.TextRTF(), where);
            QVERIFY2(progress == scan.Progress, where);
            QCOMPARE(fast.Text().size(), before.size());
            QCOMPARE(fast.SelStart(), 0);
            QCOMPARE(fast.SelLength(), 0);
            QCOMPARE(fast.SelColor(), std::optional<quint32>(0));
        }
    }

    void textsOfEveryLengthAboutTheLimit_reportTheSameProgress()
    {
        const LanguageDefinition language = Odd(u"'"_s, {}, {});
        for (qsizetype length = 2990; length <= 3100; ++length) {
            RichText fast;
            fast.SetText(QString(length, u'.'));
            RichText slow = fast;
            CTextFormat format;
            format.SetLanguage(language);
            QList<int> progress;
            connect(&format, &CTextFormat::eColorizeProgress, this, [&progress](int percent) { progress << percent; });
            format.ColorizeCode(fast);
            SlowScan scan(slow, language);
            scan.Run();
            QCOMPARE(progress, scan.Progress);
        }
    }
};

QB_TEST_MAIN(TestColorizeRandom)
#include "tst_colorize_random.moc"
