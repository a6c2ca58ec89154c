#include "store/ShippedLanguages.h"

#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
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
                              .Tells = ValuesOfRules(language.Rules, u"tells"_s).join(u' '),
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
    const QStringView line =
        text.sliced(2, text.indexOf(u'\n') < 0 ? text.size() - 2 : text.indexOf(u'\n') - 2).trimmed();
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

/// The begin of a text is as texts of that language are.
bool TellsItsText(const ShippedLanguage& language, QStringView text)
{
    constexpr qsizetype Begin = 4096;
    return !language.Tells.isEmpty()
           && QRegularExpression(language.Tells, QRegularExpression::MultilineOption)
                  .match(text.first(std::min(text.size(), Begin)))
                  .hasMatch();
}

/// The patterns of all languages, of which nearly all are a name or the end of one: those are looked
/// up, as they are written or, failing that, without regard to case.
class FilePatterns {
public:
    explicit FilePatterns(const QList<ShippedLanguage>& languages)
    {
        for (const ShippedLanguage& language : languages) {
            for (const QString& pattern : language.Files)
                Add(pattern, &language);
        }
    }

    /// Of several patterns that fit the longest counts.
    const ShippedLanguage* Find(const QString& fileName, QStringView text) const
    {
        QString best;
        QList<const ShippedLanguage*> found;
        const auto take = [&](const QString& pattern, const QList<const ShippedLanguage*>& languages) {
            if (languages.isEmpty() || pattern.size() <= best.size())
                return;
            best = pattern;
            found = languages;
        };
        for (const QString& name : {fileName, fileName.toLower()}) {
            take(name, m_known.value(name));
            for (qsizetype dot = name.indexOf(u'.'); dot >= 0; dot = name.indexOf(u'.', dot + 1))
                take(u'*' + name.mid(dot), m_known.value(u'*' + name.mid(dot)));
        }
        for (const Wildcard& wildcard : m_wildcards) {
            if (wildcard.Expression.match(fileName).hasMatch())
                take(wildcard.Pattern, {wildcard.Language});
        }
        for (const ShippedLanguage* language : std::as_const(found)) {
            if (TellsItsText(*language, text))
                return language;
        }
        const auto other = std::find_if(found.cbegin(), found.cend(),
                                        [](const ShippedLanguage* one) { return one->Tells.isEmpty(); });
        return other != found.cend() ? *other : found.value(0);
    }

private:
    struct Wildcard {
        QString Pattern;
        QRegularExpression Expression;
        const ShippedLanguage* Language;
    };

    void Add(const QString& pattern, const ShippedLanguage* language)
    {
        static const QRegularExpression signs(u"[*?[]"_s);
        const bool isSimple = !pattern.mid(pattern.startsWith("*."_L1) ? 2 : 0).contains(signs);
        if (!isSimple) {
            m_wildcards.append({pattern, QRegularExpression::fromWildcard(pattern, Qt::CaseInsensitive), language});
            return;
        }
        m_known[pattern] << language;
        if (!m_known.contains(pattern.toLower()))
            m_known[pattern.toLower()] << language;
    }

    QHash<QString, QList<const ShippedLanguage*>> m_known; ///< by the pattern
    QList<Wildcard> m_wildcards;
};

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
        return language.Name.compare(name, Qt::CaseInsensitive) == 0
               || language.Key.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == languages.end() ? nullptr : &*found;
}

const ShippedLanguage* ShippedLanguageOfFile(const QString& fileName, QStringView text)
{
    static const FilePatterns patterns(ShippedLanguages());
    if (const ShippedLanguage* language = patterns.Find(fileName, text))
        return language;
    const QString interpreter = InterpreterOf(text);
    for (const ShippedLanguage& language : ShippedLanguages()) {
        if (!interpreter.isEmpty() && IsInterpreter(interpreter, language.Interpreters))
            return &language;
    }
    return nullptr;
}

namespace {

/// The type of a built-in language by the name that commands have for it.
std::optional<LanguageType> BuiltInNamed(const QString& name)
{
    if (name.compare("vb"_L1, Qt::CaseInsensitive) == 0)
        return LanguageType::VB;
    return name.compare("cpp"_L1, Qt::CaseInsensitive) == 0 ? std::optional(LanguageType::Cpp) : std::nullopt;
}

bool IsDefinitionFile(const QString& name)
{
    return name.endsWith(".qbl"_L1, Qt::CaseInsensitive);
}

} // namespace

bool IsLanguageName(const QString& name)
{
    return BuiltInNamed(name) || ShippedLanguageNamed(name) || IsDefinitionFile(name);
}

LanguageDefinition LanguageNamed(const QString& name)
{
    if (const std::optional<LanguageType> type = BuiltInNamed(name))
        return BuiltInLanguage(*type);
    if (const ShippedLanguage* shipped = ShippedLanguageNamed(name))
        return ReadLanguageFile(shipped->Path);
    if (IsDefinitionFile(name))
        return ReadLanguageFile(name);
    throw RuntimeError(ErrorNumber::InvalidCall, u"There is no language '%1'."_s.arg(name), u"LanguageNamed"_s);
}

} // namespace qb
