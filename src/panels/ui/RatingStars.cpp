#include "panels/ui/RatingStars.h"

#include "support/ui/Icons.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QStylePainter>
#include <QToolButton>

namespace qb {

using namespace Qt::StringLiterals;

RatingStars::RatingStars(QWidget* parent) : QWidget(parent)
{
    setObjectName(u"RatingStars"_s);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(0);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    for (int i = 0; i < RatingImageCount; ++i) {
        auto* image = new QToolButton;
        image->setObjectName(u"imgRating%1"_s.arg(i));
        image->setAutoRaise(true);
        image->setFocusPolicy(Qt::NoFocus); // the five are one control
        image->setIconSize({size, size});
        image->setAccessibleName(i == 0 ? u"1 star"_s : u"%1 stars"_s.arg(i + 1));
        connect(image, &QToolButton::clicked, this, [this, i] {
            setFocus();
            Q_EMIT Rated(RatingOfImage(i));
        });
        imgRating[size_t(i)] = image;
        layout->addWidget(image);
    }
    auto* none = new QAction(u"&No Rating"_s, this);
    none->setObjectName(u"mnuNoRating"_s);
    connect(none, &QAction::triggered, this, [this] { Q_EMIT Rated(0); });
    addAction(none);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    SetRating(0);
}

void RatingStars::SetRating(qint32 rating)
{
    m_rating = rating;
    const std::array<QString, RatingImageCount> images = RatingImages(rating);
    for (size_t i = 0; i < images.size(); ++i) {
        imgRating[i]->setIcon(IconNamed(images[i]));
        imgRating[i]->setProperty("image", images[i]);
        imgRating[i]->setToolTip(RatingText(rating));
    }
    setAccessibleName(RatingText(rating));
}

void RatingStars::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const bool isNone = key == Qt::Key_0 || key == Qt::Key_Delete || key == Qt::Key_Backspace;
    const int rating = m_rating >= 1 && m_rating <= BestRating ? m_rating : 0;
    const int begun = (rating + 1) / 2; // stars, a half one too
    if (isNone)
        Q_EMIT Rated(0);
    else if (key >= Qt::Key_1 && key < Qt::Key_1 + RatingImageCount)
        Q_EMIT Rated(RatingOfImage(key - Qt::Key_1));
    else if (key == Qt::Key_Right || key == Qt::Key_Plus)
        Q_EMIT Rated(RatingOfImage(qMin(rating / 2, RatingImageCount - 1)));
    else if (key == Qt::Key_Left || key == Qt::Key_Minus)
        Q_EMIT Rated(begun <= 1 ? 0 : RatingOfImage(begun - 2));
    else
        QWidget::keyPressEvent(event);
}

void RatingStars::paintEvent(QPaintEvent*)
{
    if (!hasFocus())
        return;
    QStylePainter painter(this);
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = rect();
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, option);
}

} // namespace qb
