#include "session/ui/WindowPlaces.h"

#include "panels/ui/ctlFileDetails.h"
#include "panels/ui/ctlSmartTreeView.h"

#include <QGuiApplication>
#include <QLayout>
#include <QMainWindow>
#include <QScreen>
#include <QSplitter>
#include <algorithm>
#include <chrono>

namespace qb {

namespace {
constexpr int Twips = WindowLayout::TwipsPerPixel;
} // namespace

WindowPlaces::WindowPlaces(WindowLayout& layout, const Parts& parts) : m_layout(layout), m_parts(parts)
{
    m_settling.setSingleShot(true);
}

void WindowPlaces::PlaceWindow()
{
    QMainWindow& window = m_parts.Window;
    const QRect available = window.screen()->availableGeometry();
    m_layout.Read(available.size() * Twips);
    const QRect place(m_layout.Place().topLeft() / Twips, m_layout.Place().size() / Twips);
    const QList<QScreen*> screens = QGuiApplication::screens();
    const bool isSeen = std::any_of(screens.begin(), screens.end(), [&place](const QScreen* one) {
        return one->availableGeometry().intersects(place);
    });
    window.setGeometry(isSeen ? place : QRect(available.topLeft(), available.size() * 8 / 10)); // that screen has gone
    if (m_layout.Number(WindowLayout::WindowState) == WindowLayout::Maximised)
        window.setWindowState(Qt::WindowMaximized);
}

void WindowPlaces::RememberPlace()
{
    const QMainWindow& window = m_parts.Window;
    const Qt::WindowStates other = Qt::WindowMaximized | Qt::WindowMinimized | Qt::WindowFullScreen;
    if (window.isVisible() && !(window.windowState() & other))
        m_layout.SetPlace({window.geometry().topLeft() * Twips, window.geometry().size() * Twips});
}

void WindowPlaces::Resized()
{
    RememberPlace();
    if (m_settling.isActive())
        PlaceBookmarks();
}

void WindowPlaces::Shown()
{
    if (!std::exchange(m_isRead, true)) // the defaults depend on the final size
        QTimer::singleShot(0, this, &WindowPlaces::PlaceSeparators);
}

void WindowPlaces::PlaceSeparators()
{
    m_layout.ReadSeparatorPositions(m_parts.Window.size() * Twips, m_parts.Tree.height() * Twips);
    const int tree = qMax(m_parts.Tree.minimumSizeHint().width(),
                          m_layout.Number(WindowLayout::SubResizerSeparatorPos) / Twips);
    m_parts.Panels.setSizes({tree, qMax(1, m_parts.Panels.width() - tree)});
    PlaceBookmarks();
    m_parts.Tree.SetCoolBarFirstBandWidth(m_layout.Number(WindowLayout::SmartTreeCoolBarBendWidth) / Twips);
    m_parts.Tree.SetSeparatorPosition(m_layout.Number(WindowLayout::CodeItemsSeparatorPos) / Twips);
    m_parts.Files.SetSeparatorPosition(m_layout.Number(WindowLayout::FileSectionSeparatorPos) / Twips);
}

/// The separator is counted from the top of the window. A maximised window may get its size when it has been
/// shown for a while; until then the place is not the user's.
void WindowPlaces::PlaceBookmarks()
{
    constexpr std::chrono::milliseconds Settles(300);
    m_settling.start(Settles);
    m_layout.ReadSeparatorPositions(m_parts.Window.size() * Twips, m_parts.Tree.height() * Twips);
    m_parts.Window.layout()->activate(); // for a height that is that of the window
    QSplitter& splitter = m_parts.Bookmarks;
    const int upper = m_layout.Number(WindowLayout::MainResizerSeparatorPos) / Twips - splitter.y();
    splitter.setSizes({qMax(1, upper), qMax(1, splitter.height() - splitter.handleWidth() - upper)});
}

void WindowPlaces::TreeShrinks(bool shrinks)
{
    ctlSmartTreeView& tree = m_parts.Tree;
    QSplitter& splitter = m_parts.Panels;
    if (shrinks) {
        if (!std::exchange(m_isShrunk, true))
            m_treeWidth = splitter.sizes().value(0);
        tree.setFixedWidth(tree.ShrunkWidth());
        splitter.setSizes({tree.ShrunkWidth(), qMax(1, splitter.width() - tree.ShrunkWidth())});
        return;
    }
    m_isShrunk = false;
    tree.setMinimumWidth(0);
    tree.setMaximumWidth(QWIDGETSIZE_MAX);
    if (m_treeWidth > 0)
        splitter.setSizes({m_treeWidth, qMax(1, splitter.width() - m_treeWidth)});
}

void WindowPlaces::Write()
{
    const QMainWindow& window = m_parts.Window;
    const WindowLayout::State state = window.isMinimized()                            ? WindowLayout::Minimised
                                      : window.isMaximized() || window.isFullScreen() ? WindowLayout::Maximised
                                                                                      : WindowLayout::Normal;
    m_layout.SetNumber(WindowLayout::WindowState, state);
    if (!m_isRead)
        return;
    const QSplitter& bookmarks = m_parts.Bookmarks;
    m_layout.SetNumber(WindowLayout::SmartTreeCoolBarBendWidth, m_parts.Tree.CoolBarFirstBandWidth() * Twips);
    m_layout.SetNumber(WindowLayout::SubResizerSeparatorPos, m_parts.Panels.sizes().value(0) * Twips);
    if (bookmarks.widget(1)->isVisibleTo(&window))
        m_layout.SetNumber(WindowLayout::MainResizerSeparatorPos, (bookmarks.y() + bookmarks.sizes().value(0)) * Twips);
    if (!m_parts.Tree.IsShrunk())
        m_layout.SetNumber(WindowLayout::CodeItemsSeparatorPos, m_parts.Tree.SeparatorPosition() * Twips);
    m_layout.SetNumber(WindowLayout::FileSectionSeparatorPos, m_parts.Files.SeparatorPosition() * Twips);
}

} // namespace qb
