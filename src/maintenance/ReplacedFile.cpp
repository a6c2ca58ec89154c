#include "maintenance/ReplacedFile.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

bool IsDatabase(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.read(15) == "SQLite format 3";
}

} // namespace

void RequireReplaceable(const QString& file, const QString& library, const QString& maker)
{
    const auto refuse = [&](long number, const QString& what) {
        throw RuntimeError(number,
                           u"'%1' %2 and is not replaced by %3. Nothing was changed."_s.arg(
                               QDir::toNativeSeparators(file), what, maker),
                           u"RequireReplaceable"_s);
    };
    const QFileInfo there(file);
    if (!there.exists())
        return;
    if (const QString what = WhyNoPlainFile(file); !what.isEmpty())
        refuse(ErrorNumber::PathAccess, u"is "_s + what);
    if (there.canonicalFilePath() == QFileInfo(library).canonicalFilePath())
        refuse(ErrorNumber::DatabaseExists, u"is the library itself"_s);
    if (IsDatabase(file))
        refuse(ErrorNumber::DatabaseExists, u"is a database"_s);
}

} // namespace qb
