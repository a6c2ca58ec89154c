#include "support/ui/Icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QPalette>
#include <QStandardPaths>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The system's image keys and the drawings that stand for them.
const QHash<QString, QString>& OwnDrawings()
{
    static const QHash<QString, QString> drawings{
        {u"OBJECTS"_s, u"tree-root"_s},
        {u"FOLDER"_s, u"tree-folder"_s},
        {u"OPENFOLDER"_s, u"tree-folder-open"_s},
        {u"CHILD"_s, u"tree-item"_s},
        {u"DELETED_ITEM"_s, u"tree-item-deleted"_s},
        {u"CONFLICT_ITEM"_s, u"tree-item-conflict"_s},
        {u"CONFLICT_ITEM_INFO"_s, u"tree-item-conflict-info"_s},
        {u"UP"_s, u"walk-up"_s},
        {u"DOWN"_s, u"walk-down"_s},
        {u"UP_RED"_s, u"walk-up-red"_s},
        {u"DOWN_RED"_s, u"walk-down-red"_s},
        {u"CODE"_s, u"tab-code"_s},
        {u"DIS_CODE"_s, u"tab-code-empty"_s},
        {u"NOTES"_s, u"tab-notes"_s},
        {u"DIS_NOTES"_s, u"tab-notes-empty"_s},
        {u"USAGE"_s, u"tab-usage"_s},
        {u"DIS_USAGE"_s, u"tab-usage-empty"_s},
        {u"FILES"_s, u"tab-files"_s},
        {u"DIS_FILES"_s, u"tab-files-empty"_s},
        {u"LINKS"_s, u"tab-links"_s},
        {u"DIS_LINKS"_s, u"tab-links-empty"_s},
        {u"INFO"_s, u"tab-info"_s},
        {u"DIS_INFO"_s, u"tab-info-empty"_s},
        {u"GLOBALDECLARATION_GOTO"_s, u"section-global-go"_s},
        {u"GLOBALDECLARATION_ADD"_s, u"section-global-add"_s},
        {u"DECLARATION_GOTO"_s, u"section-module-go"_s},
        {u"DECLARATION_ADD"_s, u"section-module-add"_s},
        {u"BASMODULE_GOTO"_s, u"section-standard-go"_s},
        {u"BASMODULE_ADD"_s, u"section-standard-add"_s},
        {u"CLASSMODULE_GOTO"_s, u"section-class-go"_s},
        {u"CLASSMODULE_ADD"_s, u"section-class-add"_s},
        {u"FORMMODULE_GOTO"_s, u"section-form-go"_s},
        {u"FORMMODULE_ADD"_s, u"section-form-add"_s},
        {u"LINK_ONEWAY_TARGET"_s, u"link-target"_s},
        {u"LINK_ONEWAY_SOURCE"_s, u"link-source"_s},
        {u"LINK_ONEWAY_NEW_TARGET"_s, u"link-new-target"_s},
        {u"LINK_ONEWAY_NEW_SOURCE"_s, u"link-new-source"_s},
        {u"LINK_TWOWAY"_s, u"link-twoway"_s},
        {u"LINK_TWOWAY_NEW"_s, u"link-new-twoway"_s},
        {u"LINK_ADVANCED"_s, u"link-advanced"_s},
        {u"LINK_ONEWAY_SMALL"_s, u"link-oneway"_s},
        {u"LINK_TWOWAY_SMALL"_s, u"link-twoway"_s},
        {u"LINK_GOTO"_s, u"link-goto"_s},
        {u"NO_ITEMS"_s, u"tab-links-empty"_s},
        {u"LINK_CURSOR"_s, u"link-target"_s},
        {u"LINK_ARROW_LEFT"_s, u"link-arrow-left"_s},
        {u"LINK_ARROW_RIGHT"_s, u"link-arrow-right"_s},
        {u"TREE_HIDE"_s, u"tree-shrink"_s},
        {u"TREE_SHOW"_s, u"tree-expand"_s},
        {u"DESCR_HIDE"_s, u"description-hide"_s},
        {u"DESCR_SHOW"_s, u"description-show"_s},
        {u"BOOKMARKED_ITEM"_s, u"bookmark-item"_s},
        {u"FOUND_ITEM"_s, u"found-item"_s},
        {u"CHECKED"_s, u"find-checked"_s},
        {u"UNCHECKED"_s, u"find-unchecked"_s},
        {u"QUICK_LIST"_s, u"find-quick-list"_s},
        {u"DETAIL_LIST"_s, u"find-detail-list"_s},
        {u"BOOKMARK_GROUP"_s, u"bookmark-group"_s},
        {u"SINGLE_CLICK"_s, u"single-click"_s},
        {u"ONE_WAY"_s, u"link-oneway"_s},
        {u"TWO_WAY"_s, u"link-twoway"_s},
        {u"UPDATED"_s, u"link-updated"_s},
        {u"OWN_CODE"_s, u"status-own"_s},
        {u"DOWNLOADED"_s, u"status-downloaded"_s},
        {u"THUMB_UP"_s, u"status-tested"_s},
        {u"THUMB_DOWN"_s, u"status-not-working"_s},
        {u"STAR"_s, u"rating-star"_s},
        {u"HALF_STAR"_s, u"rating-half"_s},
        {u"NO_STAR"_s, u"rating-none"_s},
        {u"LOCKED"_s, u"lock-closed"_s},
        {u"UNLOCKED"_s, u"lock-open"_s},
        {u"DB"_s, u"library"_s},
        {u"DBSelected"_s, u"library-selected"_s},
    };
    return drawings;
}

} // namespace

QIcon IconNamed(const QString& name)
{
    static QHash<QString, QIcon> known;
    const auto found = known.constFind(name);
    if (found != known.constEnd())
        return *found;
    const QString drawing = u":/icons/"_s + OwnDrawings().value(name, name) + u".svg"_s;
    return *known.insert(name, QFile::exists(drawing) ? QIcon(drawing) : QIcon::fromTheme(name));
}

void InitialiseIcons()
{
    constexpr int Middle = 128;
    const bool dark = QGuiApplication::palette().color(QPalette::Window).lightness() < Middle;
    QIcon::setFallbackThemeName(dark ? u"breeze-dark"_s : u"breeze"_s);
    // Desktops set the folders of icon themes; without one there is only the program's own.
    QStringList folders = QIcon::themeSearchPaths();
    for (const QString& folder :
         QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, u"icons"_s, QStandardPaths::LocateDirectory)) {
        if (!folders.contains(folder))
            folders << folder;
    }
    QIcon::setThemeSearchPaths(folders);
    static QString chosen; // here, and not by the desktop
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor"_s || QIcon::themeName() == chosen) {
        chosen = QIcon::fallbackThemeName();
        QIcon::setThemeName(chosen);
    }
}

} // namespace qb
