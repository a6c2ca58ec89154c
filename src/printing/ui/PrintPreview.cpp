#include "printing/ui/PrintPreview.h"

#include "platform/system/RuntimeError.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Gap = 14;             ///< around pages, in pixels
constexpr int MostPictures = 64;    ///< in megapixels
constexpr int FindingSlice = 20;    ///< milliseconds, after which the user's turn comes
constexpr double ScreenDots = 96.0; ///< an inch on the screen at a zoom of 1

} // namespace

PrintPreview::PrintPreview(QWidget* parent) : QAbstractScrollArea(parent), m_pictures(MostPictures)
{
    setObjectName(u"ctlPreview"_s);
    setAccessibleName(u"Preview"_s);
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::StyledPanel);
    viewport()->setBackgroundRole(QPalette::Mid);
    m_finding.setInterval(0);
    connect(&m_finding, &QTimer::timeout, this, &PrintPreview::FindMorePages);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &PrintPreview::PagesChanged);
}

PrintPreview::~PrintPreview() = default;

void PrintPreview::SetPrint(std::unique_ptr<PagedPrint> print)
{
    m_print = std::move(print);
    m_message.clear();
    m_pictures.clear();
    m_finding.stop();
    verticalScrollBar()->setValue(0);
    if (m_print) {
        m_finding.start(); // stops when all are known
        FindMorePages();
    } else {
        UpdateScrollBars();
    }
    viewport()->update();
}

void PrintPreview::SetMessage(const QString& text)
{
    m_finding.stop();
    m_print.reset();
    m_pictures.clear();
    m_message = text;
    UpdateScrollBars();
    viewport()->update();
    Q_EMIT PagesChanged();
}

void PrintPreview::SetZoom(Fit fit, double factor)
{
    const int page = CurrentPage();
    m_fit = fit;
    m_factor = factor;
    m_pictures.clear();
    UpdateScrollBars();
    GoToPage(page);
    viewport()->update();
}

/// For a while; the first page in any case.
void PrintPreview::FindMorePages()
{
    QElapsedTimer lasted;
    lasted.start();
    try {
        while (m_print->FindNextPage() && lasted.elapsed() < FindingSlice) {}
    } catch (const RuntimeError& error) {
        SetMessage(error.Description());
        Q_EMIT Failed(error.Description());
        return;
    }
    if (m_print->AllKnown()) {
        m_finding.stop();
        m_pictures.clear(); // each page says how many there are
        viewport()->update();
    }
    UpdateScrollBars();
    Q_EMIT PagesChanged();
}

// Places

/// Pixels for a dot.
double PrintPreview::Scale() const
{
    const QSizeF page = m_print ? m_print->Geometry().Page : QSizeF(1, 1);
    const double width = (viewport()->width() - 2 * Gap) / page.width();
    const double height = (viewport()->height() - 2 * Gap) / page.height();
    constexpr double Least = 0.1;
    const double own = ScreenDots / PaperDevice::DotsPerInch;
    const double wanted = m_fit == Fit::None ? own * m_factor : m_fit == Fit::Width ? width : std::min(width, height);
    return std::max(wanted, own * Least);
}

QSize PrintPreview::PageSize() const
{
    return m_print ? (m_print->Geometry().Page * Scale()).toSize() : QSize();
}

QRect PrintPreview::PlaceOf(int page) const
{
    const QSize size = PageSize();
    const int left = std::max(Gap, (viewport()->width() - size.width()) / 2);
    return {QPoint(left - horizontalScrollBar()->value(),
                   Gap + page * (size.height() + Gap) - verticalScrollBar()->value()),
            size};
}

void PrintPreview::UpdateScrollBars()
{
    const QSize size = PageSize();
    verticalScrollBar()->setRange(0, std::max(0, Gap + Pages() * (size.height() + Gap) - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(std::max(1, viewport()->height() / 12));
    horizontalScrollBar()->setRange(0, std::max(0, size.width() + 2 * Gap - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
}

int PrintPreview::CurrentPage() const
{
    const int height = PageSize().height() + Gap;
    const int page = (verticalScrollBar()->value() + viewport()->height() / 2 - Gap / 2) / std::max(1, height);
    return std::clamp(page, 0, std::max(0, Pages() - 1));
}

void PrintPreview::GoToPage(int page)
{
    const int shown = std::clamp(page, 0, std::max(0, Pages() - 1));
    verticalScrollBar()->setValue(shown * (PageSize().height() + Gap));
}

// Painting

/// Null when the page can't be painted any more, which is told.
const QPixmap* PrintPreview::PictureOf(int page)
{
    if (const QPixmap* known = m_pictures.object(page))
        return known;
    const double ratio = devicePixelRatioF();
    auto picture = std::make_unique<QPixmap>(PageSize() * ratio);
    picture->fill(Qt::white);
    QPainter painter(picture.get());
    painter.scale(Scale() * ratio, Scale() * ratio);
    try {
        m_print->Paint(painter, page);
    } catch (const RuntimeError& error) {
        const QString reason = error.Description();
        QTimer::singleShot(0, this, [this, reason] {
            SetMessage(reason);
            Q_EMIT Failed(reason);
        });
        return nullptr;
    }
    painter.end();
    picture->setDevicePixelRatio(ratio);
    constexpr int Megapixel = 1'000'000;
    const int cost = std::max(1, picture->width() * picture->height() / Megapixel);
    m_pictures.insert(page, picture.release(), std::min(cost, MostPictures));
    return m_pictures.object(page);
}

void PrintPreview::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    if (!m_print) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.fillRect(event->rect(), palette().window());
        painter.drawText(viewport()->rect().adjusted(Gap, Gap, -Gap, -Gap), int(Qt::AlignCenter | Qt::TextWordWrap),
                         m_message);
        return;
    }
    const int height = PageSize().height() + Gap;
    const int first = std::max(0, (verticalScrollBar()->value() - Gap) / std::max(1, height));
    for (int page = first; page < Pages(); ++page) {
        const QRect place = PlaceOf(page);
        if (place.top() > viewport()->height())
            break;
        painter.fillRect(place.translated(2, 3), QColor(0, 0, 0, 60));
        if (const QPixmap* picture = PictureOf(page))
            painter.drawPixmap(place.topLeft(), *picture);
    }
}

void PrintPreview::resizeEvent(QResizeEvent*)
{
    const int page = CurrentPage();
    if (m_fit != Fit::None)
        m_pictures.clear();
    UpdateScrollBars();
    if (m_fit == Fit::Page)
        GoToPage(page);
}

/// With the control key it zooms.
void PrintPreview::wheelEvent(QWheelEvent* event)
{
    constexpr double Step = 1.15;
    constexpr double Least = 0.2;
    constexpr double Most = 5;
    if (!event->modifiers().testFlag(Qt::ControlModifier))
        return QAbstractScrollArea::wheelEvent(event);
    const double now = Scale() * PaperDevice::DotsPerInch / ScreenDots;
    SetZoom(Fit::None, std::clamp(event->angleDelta().y() > 0 ? now * Step : now / Step, Least, Most));
}

void PrintPreview::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_PageDown:
        return GoToPage(CurrentPage() + 1);
    case Qt::Key_PageUp:
        return GoToPage(CurrentPage() - 1);
    case Qt::Key_Home:
        return GoToPage(0);
    case Qt::Key_End:
        return GoToPage(Pages() - 1);
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

} // namespace qb
