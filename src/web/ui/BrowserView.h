#pragma once

#include "web/WebAccess.h"
#include "web/ui/WebBrowser.h"

#include <QSet>
#include <QWidget>

class QLabel;
class QStackedLayout;

namespace qb {

/// Shows pages of the library's folder and of the web. The browser is made when the first page is asked for; where
/// there is none, or the web is kept out, the view says so and offers to open the address outside. A page that dies can
/// be loaded again.
class BrowserView : public QWidget {
    Q_OBJECT

public:
    explicit BrowserView(QWidget* parent = nullptr);
    ~BrowserView() override;

    /// Shows an address. Pages of the library are those of @p folder, named by local addresses.
    void Navigate(const QUrl& url, const QString& folder);
    /// Says that an address leads nowhere, until the next page.
    void TellNowhere(const QString& address, const QString& reason);
    /// An address that looks like that of a file is one of a page: shows it.
    void ShowAsPage(const QUrl& url, const QString& folder);
    /// Puts a page of the web away where those are kept out from now on, and all that was visited before it.
    void ApplyWebAccess();
    void GoBack();
    void GoForward();
    void BrowserStop();
    void Reload();

Q_SIGNALS:
    /// The browser goes to an address, by the user's will or the page's. Not told of one that is refused or opened
    /// outside.
    void BeforeNavigate(const QUrl& url);
    /// Whether there is a page to go back or forward to. Told at each new address and at the end of
    /// each loading, whether or not it has changed.
    void CommandStateChange(bool back, bool forward);
    /// How much of a page is loaded, from 0 to 100.
    void ProgressChange(int percent);
    /// The loading of a page has ended, also by an error or by BrowserStop.
    void DocumentComplete(const QUrl& url);
    /// The mouse is over a link; empty when it has left it.
    void LinkHovered(const QString& address);
    /// A link to an item of the library was clicked.
    void ItemAsked(qint64 item);
    /// The address of a file that is no page, at the user's wish.
    void LoadFile(const QUrl& url);
    /// An address for another application.
    void OpenOutside(const QString& address);

private:
    void MakeBrowser();
    void ConnectBrowser();
    void HideNowhere();
    void KeepOut(const QUrl& url);
    void TellDead();
    QWidget* MakeExcuse(const char* name, const QString& text, const QString& button, void (BrowserView::*pressed)());
    void OpenWanted();

    QWidget* m_noBrowser = nullptr; ///< shown in its place where none is installed
    QWidget* m_keptOut = nullptr;   ///< from the first page on that was kept out
    QWidget* m_dead = nullptr;      ///< from the first page on that has died
    QLabel* m_nowhere = nullptr;    ///< from the first address on that led nowhere
    QStackedLayout* m_layout;
    std::unique_ptr<WebBrowser> m_browser;
    GestureRule m_gestures;
    QSet<QUrl> m_pages; ///< that look like files
    QUrl m_shown;       ///< where the browser is
    QUrl m_wanted;      ///< shown outside where there is no browser
    bool m_tried = false;
};

} // namespace qb
