#include "panels/PanelCaption.h"

namespace qb {

using namespace Qt::StringLiterals;

QString PanelCaption(BookmarkTab tab, const QString& keyword, int mode)
{
    switch (tab) {
    case BookmarkTab::Bookmarks:
        return u" Bookmarks :"_s;
    case BookmarkTab::Info:
        return u" Item & Database Information :"_s;
    case BookmarkTab::FindResults:
        break;
    }
    if (keyword.isEmpty())
        return u" Find Results :"_s;
    const QString suffix = mode == 1 ? u" (Exact)"_s : mode == 2 ? u" (All)"_s : QString();
    return u" Find Results : "_s + keyword + suffix;
}

} // namespace qb
