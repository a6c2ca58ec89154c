#include "store/Keywords.h"

#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"

namespace qb {

using namespace Qt::StringLiterals;

void SetKeywords(Recordset& keywords, const QStringList& words, const QString& colouredText)
{
    QString conflicts;
    for (const QString& word : words) {
        keywords.AddNew();
        keywords.Set(u"Keyword"_s, word);
        if (BooleanFromText(colouredText))
            keywords.Set(u"Coloured"_s, true);
        try {
            keywords.Update();
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::UniqueKeyRefused)
                throw RuntimeError(error.Number(), u"The word '%1' was refused: %2"_s.arg(word, error.Description()),
                                   error.Source());
            conflicts += u", "_s + word;
        }
    }
    if (!conflicts.isEmpty())
        Prompts::Current().MsgBox({.Text = u"The following conflicts has been encountered:"_s + conflicts.mid(2),
                                   .Caption = u"Conflicts"_s,
                                   .Icon = MsgBoxIcon::Information});
}

} // namespace qb
