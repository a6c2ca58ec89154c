// The user's settings, and those of a library.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "config/CSettings.h"
#include "support/ErrorRoutine.h"

#include <functional>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

int ListAll(const CSettings& settings, const Arguments& arguments)
{
    QJsonObject object;
    for (const CSettings::NamedSetting& setting : settings.All()) {
        if (arguments.Json())
            object.insert(setting.Name, setting.Value);
        else
            Print(u"%1=%2\n"_s.arg(setting.Name, setting.Value));
    }
    if (arguments.Json())
        Print(object);
    return 0;
}

int GetOne(const CSettings& settings, const Arguments& arguments)
{
    const QString name = arguments.Positional(1);
    for (const CSettings::NamedSetting& setting : settings.All()) {
        if (setting.Name.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        arguments.Json() ? Print(QJsonObject{{setting.Name, setting.Value}}) : Print(setting.Value + u'\n');
        return 0;
    }
    throw UsageError{u"There is no setting '%1'; those of a library need --library."_s.arg(name)};
}

int SetOne(CSettings& settings, const Arguments& arguments)
{
    const QString reason = settings.SetByName(arguments.Positional(1), arguments.Positional(2));
    if (!reason.isEmpty())
        throw UsageError{
            u"The setting '%1' can't be '%2'. %3"_s.arg(arguments.Positional(1), arguments.Positional(2), reason)};
    return settings.Apply() ? 0 : 1;
}

} // namespace

int Settings(const QStringList& words)
{
    struct Verb {
        QString Name;
        int Positional;
        bool Writes;
        std::function<int(CSettings&, const Arguments&)> Run;
    };
    static const Verb verbs[] = {
        {u"list"_s, 1, false, ListAll}, {u"get"_s, 2, false, GetOne}, {u"set"_s, 3, true, SetOne}};
    const auto verb = std::find_if(std::begin(verbs), std::end(verbs),
                                   [&](const Verb& one) { return one.Name == words.value(0); });
    if (verb == std::end(verbs))
        throw UsageError{u"Give list, get or set."_s};
    const Arguments arguments(words, {{"library", "LIB"}}, verb->Positional);
    std::unique_ptr<Library> database;
    if (arguments.Has(u"library"_s))
        database = OpenLibrary(arguments.Value(u"library"_s),
                               verb->Writes ? DBEngine::Access::ReadWrite : DBEngine::Access::ReadOnly);
    CSettings settings([&database] { return database.get(); });
    settings.SkipDayCount();
    const int errors = HandledErrorCount();
    const int status = verb->Run(settings, arguments);
    return HandledErrorCount() > errors ? 1 : status;
}

} // namespace qb::cli
