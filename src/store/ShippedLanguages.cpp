#include "store/ShippedLanguages.h"

#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/LanguageDefinition.h"

#include <QDir>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

QList<ShippedLanguage> ShippedLanguages()
{
    QList<ShippedLanguage> languages;
    const QDir folder(SharedPath(u"languages"_s));
    for (const QString& name : folder.entryList({u"*.qbl"_s}, QDir::Files)) {
        try {
            languages.append({ReadLanguageFile(folder.filePath(name)).Language, folder.filePath(name)});
        } catch (const RuntimeError&) {
            // It can't be chosen then.
        }
    }
    std::sort(languages.begin(), languages.end(), [](const ShippedLanguage& a, const ShippedLanguage& b) {
        return a.Name.compare(b.Name, Qt::CaseInsensitive) < 0;
    });
    return languages;
}

} // namespace qb
