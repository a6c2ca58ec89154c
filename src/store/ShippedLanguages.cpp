#include "store/ShippedLanguages.h"

#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QList<ShippedLanguage> ReadShippedLanguages()
{
    QList<ShippedLanguage> languages;
    const QDir folder(SharedPath(u"languages"_s));
    for (const QString& name : folder.entryList({u"*.qbl"_s}, QDir::Files)) {
        try {
            const LanguageDefinition language = ReadLanguageFile(folder.filePath(name));
            languages.append({.Name = language.Language,
                              .Key = QFileInfo(name).completeBaseName(),
                              .Path = folder.filePath(name),
                              .Files = ValuesOfRules(language.Rules, u"files"_s),
                              .Interpreters = ValuesOfRules(language.Rules, u"interpreter"_s),
                              .HasRules = !language.Rules.isEmpty()});
        } catch (const RuntimeError&) {
            // It can't be chosen then.
        }
    }
    std::sort(languages.begin(), languages.end(), [](const ShippedLanguage& a, const ShippedLanguage& b) {
        return a.Name.compare(b.Name, Qt::CaseInsensitive) < 0;
    });
    return languages;
}

/// The name of the program that a script is for: of "#!/usr/bin/env -S python3.11 -u" it is "python3.11".
QString InterpreterOf(QStringView text)
{
    if (!text.startsWith(u"#!"))
        return {};
    const QStringView line = text.sliced(2, text.indexOf(u'\n') < 0 ? text.size() - 2 : text.indexOf(u'\n') - 2).trimmed();
    for (const QStringView word : line.split(u' ', Qt::SkipEmptyParts)) {
        const QString name = word.sliced(word.lastIndexOf(u'/') + 1).toString();
        if (name != "env"_L1 && !name.startsWith(u'-') && !name.contains(u'='))
            return name;
    }
    return {};
}

bool IsInterpreter(const QString& program, const QStringList& known)
{
    static const QRegularExpression version(u"[0-9.]+$"_s); // python3.11 is python
    return known.contains(program) || known.contains(QString(program).remove(version));
}

} // namespace

const QList<ShippedLanguage>& ShippedLanguages()
{
    static const QList<ShippedLanguage> languages = ReadShippedLanguages();
    return languages;
}

const ShippedLanguage* ShippedLanguageNamed(const QString& name)
{
    const QList<ShippedLanguage>& languages = ShippedLanguages();
    const auto found = std::find_if(languages.begin(), languages.end(), [&](const ShippedLanguage& language) {
        return language.Name.compare(name, Qt::CaseInsensitive) == 0 || language.Key.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == languages.end() ? nullptr : &*found;
}

const ShippedLanguage* ShippedLanguageOfFile(const QString& fileName, QStringView text)
{
    const ShippedLanguage* best = nullptr;
    qsizetype longest = 0;
    for (const ShippedLanguage& language : ShippedLanguages()) {
        for (const QString& pattern : language.Files) {
            if (pattern.size() > longest && QDir::match(pattern, fileName)) {
                best = &language;
                longest = pattern.size();
            }
        }
    }
    const QString interpreter = best ? QString() : InterpreterOf(text);
    for (const ShippedLanguage& language : ShippedLanguages()) {
        if (!best && !interpreter.isEmpty() && IsInterpreter(interpreter, language.Interpreters))
            best = &language;
    }
    return best;
}

LanguageDefinition LanguageNamed(const QString& name)
{
    if (name.compare("vb"_L1, Qt::CaseInsensitive) == 0)
        return BuiltInLanguage(LanguageType::VB);
    if (name.compare("cpp"_L1, Qt::CaseInsensitive) == 0)
        return BuiltInLanguage(LanguageType::Cpp);
    if (const ShippedLanguage* shipped = ShippedLanguageNamed(name))
        return ReadLanguageFile(shipped->Path);
    if (name.endsWith(".qbl"_L1, Qt::CaseInsensitive))
        return ReadLanguageFile(name);
    throw RuntimeError(ErrorNumber::InvalidCall,
                       u"There is no language '%1'; `quillbase-cli languages` lists those that there are."_s.arg(name), u"LanguageNamed"_s);
}

} // namespace qb
