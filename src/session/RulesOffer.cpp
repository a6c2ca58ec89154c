#include "session/RulesOffer.h"

#include "config/Remembered.h"
#include "platform/system/Prompts.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/ErrorRoutine.h"

#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The language that the library could have with rules; null when there is nothing to offer.
const ShippedLanguage* LanguageToOffer(Database& database)
{
    if (database.IsReadOnly() || !RulesOfLibrary(database).isEmpty())
        return nullptr;
    const QString name = database.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText();
    const QList<ShippedLanguage>& languages = ShippedLanguages();
    const auto found = std::find_if(languages.begin(), languages.end(), [&name](const ShippedLanguage& language) {
        return language.HasRules && language.Name.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == languages.end() ? nullptr : &*found;
}

/// False when this library was asked about before.
bool NotesTheQuestion(const QString& identity)
{
    constexpr qsizetype Most = 200; // the oldest are forgotten
    QStringList asked = Remembered(Memory::RulesOffered).split(u'|', Qt::SkipEmptyParts);
    if (asked.contains(identity))
        return false;
    asked << identity;
    Remember(Memory::RulesOffered, asked.mid(std::max<qsizetype>(0, asked.size() - Most)).join(u'|'));
    return true;
}

} // namespace

bool OfferRules(Database& database)
{
    return Guarded(
        u"LibraryList"_s, u"OfferRules"_s,
        [&] {
            const ShippedLanguage* language = LanguageToOffer(database);
            if (!language || !NotesTheQuestion(database.QueryValue(u"SELECT DBID FROM Properties"_s).ToText()))
                return false;
            const bool wanted =
                Prompts::Current().MsgBox(
                    {.Text = u"The library '%1' keeps the language %2 in its older form, in which colouring "
                             "corrects the spelling of words and so may change your code. There is a form of it now "
                             "that colours more and never changes a text. Do you wish to take it? Words that you have "
                             "added to the language stay."_s.arg(QFileInfo(database.Name()).completeBaseName(),
                                                                 language->Name),
                     .Caption = u"Language of the Library"_s,
                     .Buttons = MsgBoxButtons::YesNo,
                     .Icon = MsgBoxIcon::Question})
                == MsgBoxResult::Yes;
            if (wanted)
                TakeLanguage(database, ReadLanguageFile(language->Path));
            return wanted;
        },
        false);
}

} // namespace qb
