#pragma once

#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "web/Download.h"

#include <memory>
#include <vector>

namespace qb {

/// The item that a file is loaded for.
struct DownloadTarget {
    QString Library; ///< its file; another one may be open when the file has come
    qint64 Item = 0;
    QString Title;
};

/// What becomes of a file that was loaded, as the options say.
struct DownloadChoices {
    QString SavePath; ///< the folder; empty: the user's folder of downloads
    bool SaveToDir = false;
    bool AutosaveToItem = true;
    bool CloseWhenFinished = false;
};

/// One file of the component, and what has become of it.
struct LoadingFile {
    std::unique_ptr<Download> Load;
    DownloadTarget Target;
    DownloadChoices Choices;
    bool IsStored = false; ///< with the item
    QString SavedAs;       ///< the file in the folder
    QString Trouble;       ///< with either
};

/// Loads files from the web, several at a time, into a folder or into the stored files of an item. What was loaded is
/// never lost: a file that the item can't take goes to the folder. The session that has made it destroys it when it
/// says so.
class InetFileLoad : public QObject {
    Q_OBJECT

public:
    explicit InetFileLoad(FetchMaker maker, QObject* parent = nullptr);
    ~InetFileLoad() override;

    void Load(const QUrl& url, const DownloadTarget& target, const DownloadChoices& choices);
    const std::vector<std::unique_ptr<LoadingFile>>& Files() const { return m_files; }
    /// How many are being loaded.
    int Loading() const;
    /// Where a file goes that is saved to a folder.
    static QString FolderOf(const DownloadChoices& choices);
    /// Saves a file that has come in a place of the user's choice, over what is there, which stays when that can't be
    /// or is cancelled: the file's trouble says so.
    void SaveAs(LoadingFile& file, const QString& path);
    /// Stops all if files from the web are not loaded any more.
    void ApplyWebAccess();
    /// The user is done with it: what is still being loaded is cancelled, and the component is to be destroyed.
    void Close();

    /// Something is under way that nothing must come between: a file that has come waits.
    Hook<bool()> IsBusy;
    /// Lets the user watch how a file is copied, and cancel that.
    WatchedRun Watched = RunUnwatched;
    /// Stores a file with an item; raises an error, or is false, when that can't be.
    std::function<bool(const QString& file, const DownloadTarget& target)> FileLoaded;

Q_SIGNALS:
    void Added(qb::LoadingFile* file);
    void FileChanged(qb::LoadingFile* file);
    /// All have come to an end, and are where they belong: the window is not needed any more.
    void Finished();
    /// The address is that of a page.
    void IsPage(const QUrl& url);
    /// The user wants to see the item.
    void OpenItem(const qb::DownloadTarget& target);
    /// It is not needed any more.
    void DestroyClass();

private:
    void Loaded(LoadingFile& file);
    void StoreWithItem(LoadingFile& file);
    void Save(LoadingFile& file);
    void TellFinished();

    FetchMaker m_maker;
    std::vector<std::unique_ptr<LoadingFile>> m_files;
};

} // namespace qb
