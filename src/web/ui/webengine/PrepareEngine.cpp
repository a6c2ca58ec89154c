#include "web/ui/webengine/PrepareEngine.h"

#include "web/LocalPages.h"

#include <QLoggingCategory>
#include <QWebEngineUrlScheme>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

void PrepareEngine()
{
    static const bool done = [] {
        QLoggingCategory::setFilterRules(u"qt.webenginecontext=false"_s);
        if (geteuid() == 0)
            qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1"); // root has none
        if (!qEnvironmentVariableIsSet("QTWEBENGINE_CHROMIUM_FLAGS"))
            qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-logging --log-level=3");
        QWebEngineUrlScheme scheme(LocalPageScheme);
        scheme.setSyntax(QWebEngineUrlScheme::Syntax::Host);
        QWebEngineUrlScheme::registerScheme(scheme);
        return true;
    }();
    Q_UNUSED(done)
}

} // namespace qb
