#pragma once

#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <functional>

namespace qb::test {

using namespace Qt::StringLiterals;

/// All that is below a folder, hidden or not, by relative name: files with their bytes, links with
/// "-> " and their target; names of folders end in "/", and pipes and the like are only named.
inline QMap<QString, QByteArray> ContentsOf(const QString& folder)
{
    QMap<QString, QByteArray> contents;
    QDirIterator all(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QFileInfo info(all.next());
        const QString name = QDir(folder).relativeFilePath(info.filePath());
        if (info.isSymLink())
            contents.insert(name, "-> " + QFile::encodeName(info.symLinkTarget()));
        else if (info.isDir())
            contents.insert(name + u'/', {});
        else if (!info.isFile())
            contents.insert(name, "no file");
        else
            contents.insert(name, ReadFile(info.filePath()));
    }
    return contents;
}

/// What @p work raises, as "number: description"; empty when it raises nothing.
inline QString Raised(const std::function<void()>& work)
{
    try {
        work();
    } catch (const RuntimeError& error) {
        return QString::number(error.Number()) + u": "_s + error.Description();
    }
    return {};
}

/// Whether an error is one of access that says @p why, and that nothing was changed.
inline bool IsRefusal(const QString& raised, const QString& why)
{
    return raised.startsWith(u"75: "_s) && raised.contains(why) && raised.endsWith(u"Nothing was changed."_s);
}

} // namespace qb::test

/// Expects @p expression to raise RuntimeError 75 that says @p why, and that nothing was changed.
#define QB_VERIFY_REFUSES(expression, why)                                                                             \
    do {                                                                                                               \
        const QString raised = qb::test::Raised([&] { expression; });                                                  \
        QVERIFY2(qb::test::IsRefusal(raised, why), qPrintable(raised));                                                \
    } while (false)
