#include "replication/MergedFiles.h"

#include "platform/dao/DBEngine.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "replication/SynchroFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// When a synchronization file was last answered.
Date StampIn(const QString& file)
{
    const QTemporaryDir folder;
    return FactsOf(*DBEngine::OpenDatabase(UnpackSynchroFile(file, folder.path(), NoWork()))).LastSynchronized;
}

const QString FormerName = u"Former %1.qbs"_s; // the seconds of the stamp that it should have

QFileInfoList FormerAnswers(const QString& libraryPath)
{
    return QDir(MergedFolderOf(libraryPath)).entryInfoList({FormerName.arg(u"*"_s)}, QDir::Files | QDir::NoSymLinks);
}

} // namespace

QString MergedFolderOf(const QString& libraryPath)
{
    const QFileInfo library(libraryPath);
    return library.absolutePath() + u'/' + library.completeBaseName() + u"_Merged/"_s;
}

QString KeptAnswerOf(const QString& libraryPath, const QString& child)
{
    return MergedFolderOf(libraryPath) + QString::fromLatin1(child.toUtf8().toHex()) + u".qbs"_s;
}

void ForgetFormerAnswer(const QString& libraryPath)
{
    for (const QFileInfo& file : FormerAnswers(libraryPath))
        QFile::remove(file.filePath());
}

void KeepFormerAnswer(const QString& libraryPath, const QString& child, Date stamp)
{
    const QString former = MergedFolderOf(libraryPath) + FormerName.arg(stamp.Seconds());
    if (const QString kept = KeptAnswerOf(libraryPath, child); QFileInfo(kept).isFile())
        RenameFile(kept, former);
}

std::unique_ptr<Database> OpenFormerAnswer(const QString& libraryPath, const QString& folder)
{
    const QFileInfoList files = FormerAnswers(libraryPath);
    if (files.size() != 1)
        return nullptr;
    auto database = DBEngine::OpenDatabase(UnpackSynchroFile(files.first().filePath(), folder, NoWork()));
    RefuseWhatIsNoSynchroFile(*database);
    const Date stamp = FactsOf(*database).LastSynchronized;
    return files.first().fileName() == FormerName.arg(stamp.Seconds()) ? std::move(database) : nullptr;
}

void HandOutAgain(Library& mother, const QString& child, const QString& target)
{
    const QString kept = KeptAnswerOf(mother.Name(), child);
    // After a synchronization was undone the answer is none any more.
    const Value last = mother.QueryValue(u"SELECT LastSynchronized FROM ChildCopies WHERE DBCopyID = ?"_s, {child});
    if (!QFileInfo(kept).isFile() || last.IsNull() || StampIn(kept) != last.ToDate())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"Nothing is kept that was sent to this child. Nothing was changed."_s, u"HandOutAgain"_s);
    const QString interim = InterimName(target);
    try {
        CopyFileContents(kept, interim, NoWork());
        MoveIntoPlace(interim, target, true);
    } catch (const RuntimeError&) {
        QFile::remove(interim);
        throw;
    }
}

} // namespace qb
