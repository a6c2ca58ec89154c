#include "session/ui/FilesToolbar.h"

#include "panels/ui/ctlFileDetails.h"

#include <QAction>
#include <QMenu>

namespace qb {

using namespace Qt::StringLiterals;

FilesToolbar::FilesToolbar(const ctlFileDetails& files, QMenu& menu) : QToolBar(u"Stored Files"_s)
{
    static const QStringList keys{u"ADD"_s, u"EXPORT"_s, u"EXTRACT"_s, u"DELETE"_s};
    setObjectName(u"tbrFiles"_s);
    const QList<QAction*> actions = files.ToolbarActions();
    for (qsizetype i = 0; i < actions.size(); ++i) {
        actions[i]->setProperty("key", keys[i]);
        addAction(actions[i]);
        menu.addAction(actions[i]);
    }
    addSeparator();
}

} // namespace qb
