#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "publishing/CopyForms.h"
#include "store/ShippedLanguages.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

/// Code as it goes onto the clipboard.
class TestCopyForms : public QObject {
    Q_OBJECT

    CTextFormat m_format;

    static RichTextDocument Document(const QString& text)
    {
        RichTextDocument document(CodeFont);
        document.Replace(0, 0, text, document.DefaultFormat());
        return document;
    }
    CopiedText Copy(const QString& text, CopyForm form, CopiedRange range = {})
    {
        return CopyOf(Document(text), range, m_format, u"Python"_s, form);
    }
    static QStringList Types(const CopiedText& copied)
    {
        QStringList types;
        for (const CopiedText::Form& form : copied.Forms)
            types << form.Type;
        return types;
    }
    static QByteArray Span(TokenKind kind, const QByteArray& text)
    {
        const quint32 color = TokenPalette::Default().Light[size_t(kind)];
        const quint32 swapped = (color & 0xff) << 16 | (color & 0xff00) | color >> 16;
        return "<span style=\"color:#" + QByteArray::number(swapped, 16).rightJustified(6, '0') + "\">" + text
               + "</span>";
    }

private Q_SLOTS:
    void init()
    {
        qb::test::FailOnWarnings();
        m_format.SetLanguage(LanguageNamed(u"python"_s));
    }

    void plainText_isTheTextAlone()
    {
        const CopiedText copied = Copy(u"def f():\n\treturn 1\n"_s, CopyForm::Plain);
        QCOMPARE(copied.Plain, u"def f():\n\treturn 1\n"_s);
        QVERIFY(copied.Forms.isEmpty());
    }

    void selection_isWhatIsCopied()
    {
        QCOMPARE(Copy(u"one\ntwo\nthree"_s, CopyForm::Plain, {5, 5}).Plain, u"two\n"_s);
        QCOMPARE(Copy(u"one"_s, CopyForm::Plain, {3, 0}).Plain, u"one"_s); // nothing is selected
    }

    void rtf_hasTheColoursAndTheText()
    {
        const CopiedText copied = Copy(u"def f(): pass # why\n"_s, CopyForm::Rtf);
        QCOMPARE(Types(copied), (QStringList{u"text/rtf"_s, u"application/rtf"_s}));
        QCOMPARE(copied.Plain, u"def f(): pass # why\n"_s);
        RichTextDocument read;
        ReadRtf(QString::fromLatin1(copied.Forms.first().Bytes), read);
        QCOMPARE(read.Text(), u"def f(): pass # why\r\n"_s);
        const TokenColors& colors = TokenPalette::Default().Light;
        QCOMPARE(read.FormatAt(0).Color, colors[size_t(TokenKind::Keyword)]);
        QCOMPARE(read.FormatAt(4).Color, AutomaticColor);
        QCOMPARE(read.FormatAt(15).Color, colors[size_t(TokenKind::Comment)]);
        QCOMPARE(read.Language(), QString());
    }

    void html_standsForItself()
    {
        const CopiedText copied = Copy(u"\ndef f(): return \"<a>\""_s, CopyForm::Html);
        QCOMPARE(Types(copied), QStringList{u"text/html"_s});
        QCOMPARE(copied.Forms.first().Bytes, "<pre style=\"font-family:'Courier New',monospace\">\n\n"
                                                 + Span(TokenKind::Keyword, "def")
                                                 + " f(): " + Span(TokenKind::Keyword, "return") + ' '
                                                 + Span(TokenKind::String, "&quot;&lt;a&gt;&quot;") + "</pre>\n");
        QCOMPARE(copied.Plain.toUtf8(), copied.Forms.first().Bytes);
    }

    void selectionWithinAString_hasItsColour()
    {
        const CopiedText copied = Copy(u"x = \"\"\"\ndef\n\"\"\""_s, CopyForm::Html, {9, 3});
        QCOMPARE(copied.Forms.first().Bytes,
                 "<pre style=\"font-family:'Courier New',monospace\">" + Span(TokenKind::String, "def") + "</pre>\n");
    }

    void markdown_namesTheLanguage()
    {
        const CopiedText copied = Copy(u"print('```')\n"_s, CopyForm::Markdown);
        QCOMPARE(copied.Plain, u"````python\nprint('```')\n````\n"_s);
        QCOMPARE(Types(copied), QStringList{u"text/markdown"_s});
        QCOMPARE(copied.Forms.first().Bytes, copied.Plain.toUtf8());
    }

    void languageThatCorrectsWords_changesNothing()
    {
        m_format.SetLanguage(LanguageNamed(u"vb"_s));
        const CopiedText copied = Copy(u"dim a as long"_s, CopyForm::Html);
        QVERIFY(copied.Plain.contains(u">dim</span>"_s));
        QVERIFY(!copied.Plain.contains(u"Dim"_s));
    }

    void emptyText_isEmpty()
    {
        QCOMPARE(Copy({}, CopyForm::Plain).Plain, QString());
        QCOMPARE(Copy({}, CopyForm::Html).Plain, u"<pre style=\"font-family:'Courier New',monospace\"></pre>\n"_s);
    }
};

QB_TEST_MAIN(TestCopyForms)
#include "tst_copy_forms.moc"
