#include "platform/richtext/RtfTokenizer.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// The tokens in words.
QString Tokens(const QString& rtf)
{
    QStringList list;
    RtfTokenizer tokenizer(rtf);
    for (RtfToken token = tokenizer.Next(); token.What != RtfToken::End; token = tokenizer.Next()) {
        const QString text = token.Text.toString();
        switch (token.What) {
        case RtfToken::GroupBegin:
            list << u"{"_s;
            break;
        case RtfToken::GroupEnd:
            list << u"}"_s;
            break;
        case RtfToken::Word:
            list << u"word "_s + text + (token.HasNumber ? u"="_s + QString::number(token.Number) : QString());
            break;
        case RtfToken::Symbol:
            list << u"symbol "_s + text;
            break;
        case RtfToken::Byte:
            list << u"byte "_s + QString::number(token.Number);
            break;
        case RtfToken::Binary:
            list << u"binary "_s + text;
            break;
        case RtfToken::Characters:
            list << u"text "_s + text;
            break;
        case RtfToken::End:
            break;
        }
    }
    return list.join(u'|');
}

} // namespace

class TestRtfTokenizer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void input_isCutIntoTokens_data()
    {
        QTest::addColumn<QString>("rtf");
        QTest::addColumn<QString>("tokens");
        QTest::newRow("nothing") << QString() << QString();
        QTest::newRow("text") << u"abc 1"_s << u"text abc 1"_s;
        QTest::newRow("groups") << u"{a{}}"_s << u"{|text a|{|}|}"_s;
        QTest::newRow("word") << u"\\par"_s << u"word par"_s;
        QTest::newRow("word and blank") << u"\\b x"_s << u"word b|text x"_s;
        QTest::newRow("only one blank belongs to it") << u"\\b  x"_s << u"word b|text  x"_s;
        QTest::newRow("number") << u"\\fs24x"_s << u"word fs=24|text x"_s;
        QTest::newRow("number and blank") << u"\\fs24 5"_s << u"word fs=24|text 5"_s;
        QTest::newRow("negative number") << u"\\u-3913?"_s << u"word u=-3913|text ?"_s;
        QTest::newRow("hyphen without a number") << u"\\b-x"_s << u"word b|text -x"_s;
        QTest::newRow("zero") << u"\\b0"_s << u"word b=0"_s;
        QTest::newRow("number too large") << u"\\li99999999999999999999999 x"_s << u"word li=2147483647|text x"_s;
        QTest::newRow("number too small") << u"\\li-99999999999999999999999 x"_s << u"word li=-2147483647|text x"_s;
        QTest::newRow("capitals") << u"\\Par\\b"_s << u"word Par|word b"_s;
        QTest::newRow("letters beyond ASCII end a word") << u"\\bä"_s << u"word b|text ä"_s;
        QTest::newRow("word behind word") << u"\\b\\i"_s << u"word b|word i"_s;
        QTest::newRow("symbols") << u"\\~\\*\\\\\\{\\}\\|"_s
                                 << u"symbol ~|symbol *|symbol \\|symbol {|symbol }|symbol |"_s;
        QTest::newRow("no blank behind a symbol") << u"\\~ x"_s << u"symbol ~|text  x"_s;
        QTest::newRow("byte") << u"\\'e4\\'E4x"_s << u"byte 228|byte 228|text x"_s;
        QTest::newRow("byte, not hex") << u"\\'zzx"_s << u"symbol |text zzx"_s;
        QTest::newRow("byte, half hex") << u"\\'ezx"_s << u"symbol |text ezx"_s;
        QTest::newRow("byte, sign") << u"\\'+5\\'-5\\' 5"_s << u"symbol |text +5|symbol |text -5|symbol |text  5"_s;
        QTest::newRow("byte, cut") << u"\\'e"_s << u"symbol |text e"_s;
        QTest::newRow("byte at the end") << u"\\'"_s << u"symbol "_s;
        QTest::newRow("line ends mean nothing") << u"a\r\nb\nc"_s << u"text a|text b|text c"_s;
        QTest::newRow("line end ends a word") << u"\\b\r\nx"_s << u"word b|text x"_s;
        QTest::newRow("escaped line end") << u"\\\nx"_s << u"symbol \n|text x"_s;
        QTest::newRow("NUL means nothing") << u"a\0b"_s << u"text a|text b"_s;
        QTest::newRow("backslash at the end") << u"a\\"_s << u"text a"_s;
        QTest::newRow("raw data") << u"\\bin3 {\\}x"_s << u"binary {\\}|text x"_s;
        QTest::newRow("raw data with a line end") << u"\\bin3 \r\n x"_s << u"binary \r\n |text x"_s;
        QTest::newRow("raw data without a length") << u"\\bin x"_s << u"binary |text x"_s;
        QTest::newRow("raw data of a negative length") << u"\\bin-3 x"_s << u"binary |text x"_s;
        QTest::newRow("raw data longer than there is") << u"\\bin4 xyz"_s << u"binary |text xyz"_s;
        QTest::newRow("raw data of 4 GB") << u"\\bin4294967295 xyz"_s << u"binary |text xyz"_s;
        QTest::newRow("raw data up to the end") << u"\\bin3 xyz"_s << u"binary xyz"_s;
        QTest::newRow("not raw data") << u"\\binx3 y"_s << u"word binx=3|text y"_s;
    }

    void input_isCutIntoTokens()
    {
        QFETCH(QString, rtf);
        QTEST(Tokens(rtf), "tokens");
    }

    void anything_isCutToItsEnd()
    {
        static const QStringList pieces{u"{"_s, u"}"_s, u"\\"_s, u"\\'"_s, u"\\bin"_s, u"9"_s, u"-"_s,
                                        u" "_s, u"a"_s, u"\r"_s, u"\n"_s,  u"*"_s,     u"ä"_s, u"\ufffe"_s};
        for (quint32 seed = 0; seed < 5000; ++seed) {
            Dice dice(seed);
            QString rtf;
            for (int i = dice.Roll(60); i > 0; --i)
                rtf += dice.OneIn(4) ? QString(QChar(dice.Roll(65536))) : dice.PickOf(pieces);
            RtfTokenizer tokenizer(rtf);
            qsizetype tokens = 0;
            while (tokenizer.Next().What != RtfToken::End)
                ++tokens;
            QVERIFY(tokens <= rtf.size());
            QCOMPARE(tokenizer.Next().What, RtfToken::End);
        }
    }
};

QB_TEST_MAIN(TestRtfTokenizer)
#include "tst_rtf_tokenizer.moc"
