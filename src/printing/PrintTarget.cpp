#include "printing/PrintTarget.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Why no file can be made there, as the end of a sentence; empty when one can.
QString WhyNoFile(const QFileInfo& target)
{
    const QFileInfo folder(target.absolutePath());
    if (const QString what = WhyNoPlainFile(target.filePath()); !what.isEmpty())
        return what + u" stands there"_s;
    if (target.fileName().isEmpty())
        return u"it names no file"_s;
    if (!folder.isDir())
        return u"there is no such folder"_s;
    return folder.isWritable() ? QString() : u"nothing can be written to its folder"_s;
}

} // namespace

PrintTarget PrintTargetNamed(const QString& name)
{
    const bool isFile = name.endsWith(u".pdf"_s, Qt::CaseInsensitive) || name.contains(u'/');
    return isFile ? PrintTarget{.File = name, .Printer = {}} : PrintTarget{.File = {}, .Printer = name};
}

void RequirePrintableFile(const QString& file)
{
    const QString reason = WhyNoFile(QFileInfo(file));
    if (!reason.isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be written: %2. Nothing was printed."_s.arg(QDir::toNativeSeparators(file), reason),
            u"PrintTarget"_s);
}

} // namespace qb
