#include "session/PageDownloads.h"

#include "maintenance/FileImport.h"
#include "store/ItemRules.h"

#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

PageDownloads::PageDownloads(SessionState& session, FetchMaker maker) : m_session(session), m_maker(std::move(maker)) {}

PageDownloads::~PageDownloads() = default;

void PageDownloads::Load(const QUrl& url)
{
    if (!m_oInetFileLoad)
        Make();
    const CSettings& settings = *m_session.moSettings;
    DownloadChoices choices{.SavePath = settings.InternetFileSavePath(),
                            .SaveToDir = settings.InternetFileSaveToDir(),
                            .AutosaveToItem = settings.InternetFileAutosaveToItem(),
                            .CloseWhenFinished = settings.InternetFileCloseWhenFinished()};
    DownloadTarget target;
    if (m_session.CurrentDatabase && m_session.oCodeItem && !m_session.oCodeItem->Key().isEmpty())
        target = {m_session.CurrentDatabase->Name(), m_session.oCodeItem->Key().toLongLong(),
                  m_session.oCodeItem->Title()};
    else
        choices.AutosaveToItem = false;
    m_oInetFileLoad->Load(url, target, choices);
}

void PageDownloads::Make()
{
    m_oInetFileLoad = std::make_unique<InetFileLoad>(m_maker);
    m_oInetFileLoad->IsBusy = std::ref(IsBusy);
    m_oInetFileLoad->Watched = std::ref(Watched);
    m_oInetFileLoad->FileLoaded = std::bind_front(&PageDownloads::Store, this);
    connect(m_oInetFileLoad.get(), &InetFileLoad::IsPage, this, [this](const QUrl& url) { ShowAsPage(url); });
    connect(m_oInetFileLoad.get(), &InetFileLoad::OpenItem, this, [this](const DownloadTarget& target) {
        if (m_session.CurrentDatabase && m_session.CurrentDatabase->Name() == target.Library)
            GoToItem(target.Item);
    });
    connect(m_oInetFileLoad.get(), &InetFileLoad::DestroyClass, this, &PageDownloads::Release);
    Show(*m_oInetFileLoad);
}

/// It is the component that says so, so it goes when it has spoken.
void PageDownloads::Release()
{
    if (m_oInetFileLoad)
        m_oInetFileLoad.release()->deleteLater();
}

void PageDownloads::ApplyWebAccess()
{
    if (m_oInetFileLoad)
        m_oInetFileLoad->ApplyWebAccess();
}

/// Another library may be open by now; the file goes where it was meant to go.
bool PageDownloads::Store(const QString& file, const DownloadTarget& target)
{
    Library* library = m_session.CurrentDatabase.get();
    const bool isOpen = library && library->Name() == target.Library;
    std::unique_ptr<Library> other;
    if (!isOpen) {
        other = Library::Open(target.Library);
        library = other.get();
    }
    RequireChange(*library, target.Item, {ItemChange::EditUnasked});
    FileImportOptions options;
    options.Whole = true;
    FileImportResult stored;
    Watched(u"Storing a Loaded File"_s, [&](Work& work) {
        stored = ImportStoredFiles(*library, QString::number(target.Item), FileImportPlan{{file}, {}}, options, work);
    });
    if (stored.Complete && isOpen)
        FilesStored(target.Item);
    return stored.Complete;
}

} // namespace qb
