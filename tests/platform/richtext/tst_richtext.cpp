#include "platform/richtext/RichText.h"
#include "support/RichTextBoxSuite.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestRichText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void box_doesWhatEveryBoxDoes_data()
    {
        QTest::addColumn<int>("number");
        int number = 0;
        for (const RichTextBoxSuite::Check& check : RichTextBoxSuite::Checks())
            QTest::newRow(check.Name) << number++;
    }

    void box_doesWhatEveryBoxDoes()
    {
        QFETCH(int, number);
        RichText box;
        RichTextBoxSuite::Checks()[size_t(number)].Run(box);
    }

    void picture_isNotTypedOn()
    {
        RichText box;
        box.SetTextRTF(u"{\\rtf1 a{\\pict\\pngblip 0102}}"_s);
        box.SetSelStart(2);
        QVERIFY(box.SetSelText(u"x"_s));
        QCOMPARE(box.Document().FormatAt(1).Picture != 0, true);
        QCOMPARE(box.Document().FormatAt(2).Picture, 0u);
    }

    void copy_isABoxOfItsOwn()
    {
        RichText box;
        box.SetText(u"abc"_s);
        RichText copy = box;
        copy.SetSelLength(1);
        copy.SetSelBold(true);
        QVERIFY(copy.SetSelText(u"xyz"_s));
        QCOMPARE(box.Text(), u"abc"_s);
        QCOMPARE(box.Document().FormatAt(0).Bold, 0);
    }

    void partOfAText_isWrittenAsTheWholeIs()
    {
        for (quint32 seed = 0; seed < 500; ++seed) {
            Dice dice(seed);
            RichText box;
            box.SetText(u"one two\r\nthree\r\n\r\nfour five six\r\n"_s);
            const qsizetype length = box.Text().size();
            for (int i = 0; i < 8; ++i) {
                box.SetSelStart(dice.Roll(length));
                box.SetSelLength(1 + dice.Roll(10));
                dice.OneIn(2) ? box.SetSelBold(true) : box.SetSelColor(quint32(dice.Roll(256)));
                if (dice.OneIn(2))
                    box.SetSelIndent(dice.Roll(1000));
            }
            box.SetSelStart(0);
            box.SetSelLength(length);
            RichText copy;
            copy.SetSelRTF(box.SelRTF());
            // The last paragraph of a part that is put in stands as the place where it comes to.
            const auto description = [](RichText& one) {
                QStringList list = DescribeWithoutLineEnds(one.Document());
                list.removeLast();
                return list;
            };
            const QByteArray difference = FirstDifference(description(copy), description(box));
            QVERIFY2(difference.isEmpty(), "seed " + QByteArray::number(seed) + '\n' + difference);
        }
    }
};

QB_TEST_MAIN(TestRichText)
#include "tst_richtext.moc"
