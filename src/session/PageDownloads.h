#pragma once

#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "session/SessionState.h"
#include "web/InetFileLoad.h"

#include <QObject>

namespace qb {

/// Has files of the web loaded for the current item: makes the component that does it when the first one is asked for,
/// and lets it go when it is not needed any more.
class PageDownloads : public QObject {
    Q_OBJECT

public:
    /// The session must outlive this.
    PageDownloads(SessionState& session, FetchMaker maker);
    ~PageDownloads() override;

    /// Loads a file for the current item, by the four settings; with no item into the folder.
    void Load(const QUrl& url);
    /// Whether the session may end, by the component's window where there is one.
    bool MayEnd() const { return !m_oInetFileLoad || MayClose(); }
    /// The options may say another thing now.
    void ApplyWebAccess();
    /// Null while nothing is loaded.
    InetFileLoad* Component() const { return m_oInetFileLoad.get(); }

    // Asked of the window
    /// A component was made: it is to be seen.
    Hook<void(InetFileLoad& component)> Show;
    Hook<bool()> MayClose{true};
    /// Something else is being done that nothing must come between.
    Hook<bool()> IsBusy;
    /// Lets the user watch how a file is stored or saved, and cancel that.
    WatchedRun Watched = RunUnwatched;
    /// An item of the open library has got a stored file.
    Hook<void(qint64 item)> FilesStored;
    Hook<void(qint64 item)> GoToItem;
    Hook<void(const QUrl& url)> ShowAsPage;

private:
    void Make();
    void Release();
    bool Store(const QString& file, const DownloadTarget& target);

    SessionState& m_session;
    FetchMaker m_maker;
    std::unique_ptr<InetFileLoad> m_oInetFileLoad;
};

} // namespace qb
