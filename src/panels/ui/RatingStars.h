#pragma once

#include "panels/ItemInfo.h"

#include <QWidget>
#include <array>

class QToolButton;

namespace qb {

/// A rating as five images. A click on one rates by whole stars; the keys Left and Right do so from where it stands,
/// the digits 1 to 5 at once, and 0 or Delete take the rating away.
class RatingStars : public QWidget {
    Q_OBJECT

public:
    explicit RatingStars(QWidget* parent = nullptr);

    /// In half stars.
    void SetRating(qint32 rating);

Q_SIGNALS:
    void Rated(qint32 rating);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    std::array<QToolButton*, RatingImageCount> imgRating{};
    qint32 m_rating = 0;
};

} // namespace qb
