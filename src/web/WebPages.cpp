#include "web/WebPages.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "support/ErrorRoutine.h"
#include "web/DefaultPages.h"

#include <QDir>
#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString* const DefaultPages[] = {&WelcomePage, &PageTemplate};

/// The user's own default pages, if there are any. That they can't be read keeps nobody from a page.
void TakeOwnDefaultPages(const QString& folder)
{
    const QString file = ApplicationFolder() + DefaultPagesFile;
    if (!QFile::exists(file))
        return;
    try {
        ReadDefaultPages(file, folder);
    } catch (const RuntimeError& error) {
        HandleError(error.Number(), error.Description(), u"MainForm"_s, u"CreateDefaultHTMLItems"_s, error.Source(),
                    true);
    }
}

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
    if (DefaultPagesMissing(folder))
        TakeOwnDefaultPages(folder);
    for (const QString* page : DefaultPages) {
        if (QFile::exists(folder + *page))
            continue;
        if (const QString why = ReplaceContents(folder + *page, BuiltInPage(*page).toUtf8()); !why.isEmpty())
            fail(why);
    }
}

} // namespace qb
