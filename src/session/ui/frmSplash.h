#pragma once

#include <QSplashScreen>

namespace qb {

/// The window that stands while the program loads.
class frmSplash : public QSplashScreen {
    Q_OBJECT

public:
    frmSplash();
};

} // namespace qb
