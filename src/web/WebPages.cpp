#include "web/WebPages.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString* const DefaultPages[] = {&WelcomePage, &PageTemplate};

} // namespace

bool DefaultPagesMissing(const QString& folder)
{
    for (const QString* page : DefaultPages) {
        if (!QFile::exists(folder + *page))
            return true;
    }
    return false;
}

QString BuiltInPage(const QString& name)
{
    QFile file(u":/pages/"_s + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void CreateDefaultHTMLItems(const QString& folder)
{
    const auto fail = [&](const QString& why) {
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The pages of '%1' could not be written: %2"_s.arg(QDir::toNativeSeparators(folder), why),
                           u"CreateDefaultHTMLItems"_s);
    };
    if (!QDir().mkpath(folder))
        fail(u"the folder can't be made."_s);
    for (const QString* page : DefaultPages) {
        if (QFile::exists(folder + *page))
            continue;
        if (const QString why = ReplaceContents(folder + *page, BuiltInPage(*page).toUtf8()); !why.isEmpty())
            fail(why);
    }
}

} // namespace qb
