#include "web/ui/WebBrowser.h"

#include "web/ui/EditorPane.h"

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

/// A function of the library with the browser's engine, which is loaded with the first that is asked for.
QFunctionPointer EngineFunction(const char* name, QString& reason)
{
    ShareDrawingContext();
    const QString folder = QCoreApplication::applicationDirPath();
    for (const QString& place : {folder, QDir::cleanPath(folder + u"/../lib/quillbase"_s)}) {
        QLibrary library(place + u"/quillbase-webengine.so"_s);
        library.setLoadHints(QLibrary::PreventUnloadHint);
        if (const QFunctionPointer found = library.resolve(name))
            return found;
        reason = library.errorString();
    }
    return nullptr;
}

} // namespace

std::unique_ptr<WebBrowser> MakeWebBrowser(QString& reason)
{
    using Maker = WebBrowser* (*)();
    const auto maker = reinterpret_cast<Maker>(EngineFunction("quillbase_make_web_browser", reason));
    return std::unique_ptr<WebBrowser>(maker ? maker() : nullptr);
}

std::unique_ptr<FileFetch> MakeFileFetch(QString& reason)
{
    using Maker = FileFetch* (*)();
    const auto maker = reinterpret_cast<Maker>(EngineFunction("quillbase_make_file_fetch", reason));
    return std::unique_ptr<FileFetch>(maker ? maker() : nullptr);
}

std::unique_ptr<EditorPane> MakeEditorPane(QString& reason)
{
    using Maker = EditorPane* (*)();
    const auto maker = reinterpret_cast<Maker>(EngineFunction("quillbase_make_editor_pane", reason));
    return std::unique_ptr<EditorPane>(maker ? maker() : nullptr);
}

} // namespace qb
