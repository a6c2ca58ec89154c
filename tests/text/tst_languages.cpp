// The languages that come with the program: a sample of each with its marks, and that colouring
// changes no text, on the real files of this machine and on random ones.

#include "platform/richtext/RichText.h"
#include "platform/system/TextEncoding.h"
#include "store/ShippedLanguages.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"
#include "text/Marks.h"

#include <QDir>
#include <QDirIterator>
#include <QRandomGenerator>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<const LanguageRules> RulesOf(const ShippedLanguage& language)
{
    const LanguageDefinition definition = ReadLanguageFile(language.Path);
    return std::make_shared<LanguageRules>(definition.Rules, definition.ColouredWords, definition.PlainWords);
}

struct RealFile {
    QString Path;
    const ShippedLanguage* Language;
};

/// Source files of this machine that are no larger than most, in an order that is always the same.
const QList<RealFile>& RealFiles()
{
    static const QList<RealFile> files = [] {
        QList<RealFile> found;
        for (const QString& folder : {u"/usr/include"_s, u"/usr/lib/python3"_s, u"/usr/share"_s}) {
            QDirIterator it(folder, QDir::Files | QDir::NoSymLinks, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                constexpr qint64 Largest = 60000;
                const QString path = it.next();
                const ShippedLanguage* language = it.fileInfo().size() < Largest
                                                      ? ShippedLanguageOfFile(it.fileName(), {})
                                                      : nullptr;
                if (language)
                    found.append({path, language});
            }
        }
        std::sort(found.begin(), found.end(),
                  [](const RealFile& left, const RealFile& right) { return left.Path < right.Path; });
        return found;
    }();
    return files;
}

/// Empty when colouring has left the text of a box as it was; else where it did not.
QString WhatColouringChanged(CTextFormat& format, const QString& text)
{
    RichText box;
    box.SetText(text);
    const QString before = box.Text();
    format.ColorizeCode(box);
    const QString after = box.Text();
    if (after == before)
        return {};
    const auto [was, is] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    return u"at %1: '%2'"_s.arg(was - before.begin()).arg(QString(was, std::min<qsizetype>(40, before.end() - was)));
}

} // namespace

class TestLanguages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void thereAreSeventyFive_andEachHasASample()
    {
        QVERIFY(ShippedLanguages().size() >= 75);
        QStringList samples = QDir(QStringLiteral(QUILLBASE_SAMPLES)).entryList({u"*.marks"_s});
        for (const ShippedLanguage& language : ShippedLanguages()) {
            QVERIFY2(language.HasRules, qPrintable(language.Name));
            QVERIFY2(samples.removeOne(language.Key + u".marks"_s), qPrintable(language.Key + u" has no sample"_s));
        }
        QCOMPARE(samples, QStringList());
    }

    void sample_hasItsMarks_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("index");
        for (int i = 0; i < ShippedLanguages().size(); ++i)
            QTest::newRow(qPrintable(ShippedLanguages()[i].Key))
                << QStringLiteral(QUILLBASE_SAMPLES) + u'/' + ShippedLanguages()[i].Key + u".marks"_s << i;
    }
    void sample_hasItsMarks()
    {
        QFETCH(QString, path);
        QFETCH(int, index);
        const TextAndMarks sample = FromMarkedText(QString::fromUtf8(ReadFile(path)));
        QVERIFY2(sample.Marks.size() >= 10, "a sample is long enough to tell something");
        RuleScan scan(RulesOf(ShippedLanguages()[index]));
        const QStringList lines = sample.Text.split(u'\n');
        const QStringList marks = FromMarkedText(MarkedText(sample.Text, scan)).Marks;
        for (qsizetype i = 0; i < sample.Marks.size(); ++i)
            QVERIFY2(marks[i] == sample.Marks[i], qPrintable(u"line %1\n%2\n%3 expected\n%4 actual"_s.arg(i + 1).arg(
                                                      lines[i], sample.Marks[i], marks[i])));
    }

    void definition_isUnderstoodWhole()
    {
        for (const ShippedLanguage& language : ShippedLanguages())
            QCOMPARE(RulesOf(language)->Problems(), QStringList());
    }

    /// Where several languages have files of one name, all but one of them tell their texts.
    void patternOfFiles_leadsToOneLanguage()
    {
        QHash<QString, QStringList> untold;
        for (const ShippedLanguage& language : ShippedLanguages()) {
            QVERIFY2(QRegularExpression(language.Tells).isValid(), qPrintable(language.Name));
            for (const QString& pattern : language.Files) {
                if (language.Tells.isEmpty())
                    untold[pattern] << language.Name;
            }
        }
        for (auto it = untold.cbegin(); it != untold.cend(); ++it)
            QVERIFY2(it->size() == 1, qPrintable(it.key() + u": "_s + it->join(u", "_s)));
    }

    void file_isOfTheLanguageThatItsNameOrFirstLineTells_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("language");
        const auto row = [](const char* name, const char* text, const char* language) {
            QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(text)
                                << QString::fromLatin1(language);
        };
        row("a.py", "", "python");
        row("A.PY", "", "python");
        row("a.C", "", "cpp23");
        row("a.c", "", "c");
        row("Dockerfile.dev", "", "dockerfile");
        row("a.tar.py", "", "python");
        row("Makefile", "", "makefile");
        row("Dockerfile", "", "dockerfile");
        row("CMakeLists.txt", "", "cmake");
        row("notes.txt", "", "");
        row("a.m", "% sum\nfunction y = f(x)\n", "matlab");
        row("b.m", "// hello\n#import <Foundation/Foundation.h>\n", "objectivec");
        row("run", "#!/usr/bin/env python3.11\n", "python");
        row("go", "#! /bin/bash -e\n", "bash");
        row("env", "#!/usr/bin/env -S FOO=1 perl -w", "perl");
        row("unknown", "#!/opt/odd\n", "");
        row("plain", "python\n", "");
    }
    void file_isOfTheLanguageThatItsNameOrFirstLineTells()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(QString, language);
        const ShippedLanguage* found = ShippedLanguageOfFile(name, text);
        QCOMPARE(found ? found->Key : QString(), language);
    }

    // Colouring and texts

    void realFile_keepsItsText_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < ShippedLanguages().size(); ++i)
            QTest::newRow(qPrintable(ShippedLanguages()[i].Key)) << i;
    }
    /// Files by their own language, and each language on files of others. With QUILLBASE_ALL_FILES
    /// every file of this machine is gone through, which takes minutes.
    void realFile_keepsItsText()
    {
        QFETCH(int, index);
        const ShippedLanguage& language = ShippedLanguages()[index];
        const QList<RealFile>& files = RealFiles();
        QVERIFY(files.size() > 100);
        CTextFormat format;
        format.SetLanguage(ReadLanguageFile(language.Path));
        const bool all = qEnvironmentVariableIsSet("QUILLBASE_ALL_FILES");
        int own = 0;
        for (qsizetype i = 0; i < files.size(); ++i) {
            constexpr int Foreign = 997; // a prime, so that each language meets files of all kinds
            constexpr int MostOwn = 40;
            const bool isOwn = (all || own < MostOwn) && files[i].Language == &language;
            if (!isOwn && (i + index * 11) % Foreign != 0)
                continue;
            own += isOwn;
            const auto text = DecodeText(ReadFile(files[i].Path), FallbackEncoding::Latin1);
            const QString changed = text ? WhatColouringChanged(format, *text) : QString();
            QVERIFY2(changed.isEmpty(), qPrintable(files[i].Path + u' ' + changed));
        }
    }

    void randomText_keepsItself()
    {
        const QString pieces = u"\"'`/*#\\{}()[]<>=$%@!?:;.,-+~^&|_aZ09 \t\n\u00e9\u4e2d\r"_s;
        QRandomGenerator random(20261121);
        for (const ShippedLanguage& language : ShippedLanguages()) {
            CTextFormat format;
            const LanguageDefinition definition = ReadLanguageFile(language.Path);
            format.SetLanguage(definition);
            const QStringList openers = definition.Rules.split(QRegularExpression(u"\\s+"_s), Qt::SkipEmptyParts);
            for (int round = 0; round < 4; ++round) {
                QString text;
                while (text.size() < 1200) {
                    if (random.bounded(3) == 0)
                        text += openers[random.bounded(openers.size())];
                    else
                        text += pieces[random.bounded(pieces.size())];
                }
                const QString changed = WhatColouringChanged(format, text);
                QVERIFY2(changed.isEmpty(), qPrintable(language.Name + u' ' + changed));
            }
        }
    }

    void tokens_liesWithinTheirLineInOrder()
    {
        QRandomGenerator random(7);
        for (const ShippedLanguage& language : ShippedLanguages()) {
            RuleScan scan(RulesOf(language));
            std::vector<Token> tokens;
            int state = RuleScan::Begin;
            for (int line = 0; line < 300; ++line) {
                QString text(random.bounded(60), u' ');
                for (QChar& character : text)
                    character = QChar(char16_t(random.bounded(0x20, 0x7f)));
                state = scan.ScanLine(text, state, tokens);
                int end = 0;
                for (const Token& token : tokens) {
                    QVERIFY(token.Begin >= end && token.Length > 0);
                    end = token.Begin + token.Length;
                }
                QVERIFY(end <= text.size());
            }
        }
    }
};

QB_TEST_MAIN(TestLanguages)
#include "tst_languages.moc"
