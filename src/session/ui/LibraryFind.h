#pragma once

#include "finder/FindHitList.h"
#include "finder/Finding.h"
#include "finder/ReplaceUndo.h"
#include "platform/system/Hook.h"
#include "session/Commands.h"
#include "session/ItemTree.h"
#include "session/SessionState.h"
#include "session/WindowLayout.h"

#include <QTimer>

class QMainWindow;
class QToolBar;

namespace qb {

class CommandFaces;
class FindResultsView;
class ctlBookmarks;
class ctlCodeDetails;
class ctlFileDetails;
class frmFind;

/// The find over the library in the main window: makes its parts, connects them, and is the window to them.
class LibraryFind : public QObject, private FindHost {
    Q_OBJECT

public:
    /// What of the window takes part in a find. All must outlive this.
    struct Parts {
        QMainWindow& Window;
        FindService& Texts;
        SessionState& Session;
        Commands& Registry;
        ItemTree& Tree;
        const TreeNodes& Nodes;
        ctlCodeDetails& Details;
        ctlFileDetails& Files;
        ctlBookmarks& Panel;
    };
    explicit LibraryFind(const Parts& parts);
    ~LibraryFind() override;

    /// Lays the list out in the panel, once the faces of the commands are there.
    void MakeFaces(CommandFaces& faces);
    /// The panel is to be shown.
    Hook<void()> ShowPanel;

    /// How the results are shown and opened.
    void ReadLayout(const WindowLayout& layout);
    void WriteLayout(WindowLayout& layout) const;

    /// A library was opened; its texts are read when the window has come to rest.
    void LibraryOpened();
    void LibraryClosing();
    /// The service, with the open library.
    FindService& Service();
    FindResults& Results() { return m_results; }
    /// Goes to an item, also from elsewhere in the window; says so where it is not in the library any more.
    bool OpenItem(qint64 item) override;

private:
    // FindHost
    qint64 CurrentItem() const override;
    int CurrentTab() const override;
    void ShowTab(int tab) override;
    bool FindOnPage(const QString& keyword, const FindMatcher& matcher, bool forward, From from) override;
    void GoToPlace(const FindMatcher& matcher, qsizetype place) override;
    void ShowFile(qint64 file) override;
    void MarkPlaces(const FindMatcher* matcher) override;

    void RegisterCommands();
    void FollowResults();
    void FollowLibrary();
    void FullTextFind();
    void ReplaceFound();
    void UndoReplace();
    void ShowAnew();
    void ShowViewType();

    Parts m_parts;
    FindService& m_service;
    FindSearch m_search;
    FindHitList m_hits;
    FindResults m_results;
    Finding m_finding;
    ReplaceUndo m_replaced;
    FindResultsView* m_view = nullptr;
    frmFind* m_dialog = nullptr; ///< made when it is shown first
    CommandFaces* m_faces = nullptr;
    QTimer m_opening;
    QTimer m_updating;
    QString m_library; ///< that the results are of
};

} // namespace qb
