#include "web/ui/WebBrowser.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QOpenGLContext>

QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);
Q_GUI_EXPORT QOpenGLContext* qt_gl_global_share_context();
QT_END_NAMESPACE

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The browser draws in a context that it shares with the window. The application could have made
/// it at its start (Qt::AA_ShareOpenGLContexts), which costs every start 40 ms and more.
void ShareDrawingContext()
{
    if (qt_gl_global_share_context())
        return;
    static std::unique_ptr<QOpenGLContext> context;
    context = std::make_unique<QOpenGLContext>();
    context->create(); // where that fails the browser draws by itself, and still looks at the context
    qt_gl_set_global_share_context(context.get());
    qAddPostRoutine([] {
        qt_gl_set_global_share_context(nullptr);
        context.reset();
    });
}

/// What a function of the library makes, which is loaded at the first call.
template <class Product>
std::unique_ptr<Product> Made(const char* function, QString& reason)
{
    using Maker = Product* (*)();
    static Maker maker = nullptr;
    if (!maker) {
        ShareDrawingContext();
        const QString folder = QCoreApplication::applicationDirPath();
        for (const QString& place : {folder, QDir::cleanPath(folder + u"/../lib/quillbase"_s)}) {
            QLibrary library(place + u"/quillbase-webengine.so"_s);
            library.setLoadHints(QLibrary::PreventUnloadHint);
            maker = reinterpret_cast<Maker>(library.resolve(function));
            if (maker)
                break;
            reason = library.errorString();
        }
    }
    return std::unique_ptr<Product>(maker ? maker() : nullptr);
}

} // namespace

std::unique_ptr<WebBrowser> MakeWebBrowser(QString& reason)
{
    return Made<WebBrowser>("quillbase_make_web_browser", reason);
}

std::unique_ptr<FileFetch> MakeFileFetch(QString& reason)
{
    return Made<FileFetch>("quillbase_make_file_fetch", reason);
}

} // namespace qb
