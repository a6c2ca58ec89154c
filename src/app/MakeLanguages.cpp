// Makes the language definition files that come with the program:
// quillbase-languages TABLE OUT.qbl; TABLE.marks beside it is the language's sample

#include "platform/system/RuntimeError.h"
#include "store/LanguageTable.h"
#include "support/Version.h"
#include "text/LanguageSample.h"
#include "text/Marks.h"

#include <QFile>
#include <QFileInfo>
#include <cstdio>

int main(int argc, char** argv)
{
    using namespace Qt::StringLiterals;
    if (argc != 3)
        return 2;
    try {
        QFile table(QString::fromLocal8Bit(argv[1]));
        if (!table.open(QIODevice::ReadOnly))
            throw qb::RuntimeError(qb::ErrorNumber::FileNotFound, table.errorString(), u"quillbase-languages"_s);
        qb::LanguageDefinition language = qb::LanguageFromTable(QString::fromUtf8(table.readAll()));
        const qb::LanguageRules rules(language.Rules, language.ColouredWords, language.PlainWords);
        if (!rules.Problems().isEmpty())
            throw qb::RuntimeError(qb::ErrorNumber::InvalidCall, u"rules, "_s + rules.Problems().join(u"; "),
                                   u"quillbase-languages"_s);
        language.Version = qb::ProgramVersion();
        QFile sample(QFileInfo(table).path() + u'/' + QFileInfo(table).completeBaseName() + u".marks"_s);
        if (sample.open(QIODevice::ReadOnly))
            language.Rules = qb::WithSample(language.Rules,
                                            qb::FromMarkedText(QString::fromUtf8(sample.readAll())).Text);
        QFile::remove(QString::fromLocal8Bit(argv[2])); // a longer one would keep its tail
        qb::WriteLanguageFile(QString::fromLocal8Bit(argv[2]), language);
    } catch (const qb::RuntimeError& error) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(error.Description()));
        return 1;
    }
    return 0;
}
