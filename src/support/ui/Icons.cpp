#include "support/ui/Icons.h"

#include <QAction>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QPalette>
#include <QStandardPaths>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The system's image keys and the drawings that stand for them.
constexpr std::pair<const char*, const char*> OwnDrawings[] = {
    {"OBJECTS", "tree-root"},
    {"FOLDER", "tree-folder"},
    {"OPENFOLDER", "tree-folder-open"},
    {"CHILD", "tree-item"},
    {"DELETED_ITEM", "tree-item-deleted"},
    {"CONFLICT_ITEM", "tree-item-conflict"},
    {"CONFLICT_ITEM_INFO", "tree-item-conflict-info"},
    {"UP", "walk-up"},
    {"DOWN", "walk-down"},
    {"UP_RED", "walk-up-red"},
    {"DOWN_RED", "walk-down-red"},
    {"CODE", "tab-code"},
    {"DIS_CODE", "tab-code-empty"},
    {"NOTES", "tab-notes"},
    {"DIS_NOTES", "tab-notes-empty"},
    {"USAGE", "tab-usage"},
    {"DIS_USAGE", "tab-usage-empty"},
    {"FILES", "tab-files"},
    {"DIS_FILES", "tab-files-empty"},
    {"LINKS", "tab-links"},
    {"DIS_LINKS", "tab-links-empty"},
    {"INFO", "tab-info"},
    {"DIS_INFO", "tab-info-empty"},
    {"GLOBALDECLARATION_GOTO", "section-global-go"},
    {"GLOBALDECLARATION_ADD", "section-global-add"},
    {"DECLARATION_GOTO", "section-module-go"},
    {"DECLARATION_ADD", "section-module-add"},
    {"BASMODULE_GOTO", "section-standard-go"},
    {"BASMODULE_ADD", "section-standard-add"},
    {"CLASSMODULE_GOTO", "section-class-go"},
    {"CLASSMODULE_ADD", "section-class-add"},
    {"FORMMODULE_GOTO", "section-form-go"},
    {"FORMMODULE_ADD", "section-form-add"},
    {"LINK_ONEWAY_TARGET", "link-target"},
    {"LINK_ONEWAY_SOURCE", "link-source"},
    {"LINK_ONEWAY_NEW_TARGET", "link-new-target"},
    {"LINK_ONEWAY_NEW_SOURCE", "link-new-source"},
    {"LINK_TWOWAY", "link-twoway"},
    {"LINK_TWOWAY_NEW", "link-new-twoway"},
    {"LINK_ADVANCED", "link-advanced"},
    {"LINK_ONEWAY_SMALL", "link-oneway"},
    {"LINK_TWOWAY_SMALL", "link-twoway"},
    {"LINK_GOTO", "link-goto"},
    {"NO_ITEMS", "tab-links-empty"},
    {"LINK_CURSOR", "link-target"},
    {"LINK_ARROW_LEFT", "link-arrow-left"},
    {"LINK_ARROW_RIGHT", "link-arrow-right"},
    {"TREE_HIDE", "tree-shrink"},
    {"TREE_SHOW", "tree-expand"},
    {"DESCR_HIDE", "description-hide"},
    {"DESCR_SHOW", "description-show"},
    {"BOOKMARKED_ITEM", "bookmark-item"},
    {"FOUND_ITEM", "found-item"},
    {"CHECKED", "find-checked"},
    {"UNCHECKED", "find-unchecked"},
    {"QUICK_LIST", "find-quick-list"},
    {"DETAIL_LIST", "find-detail-list"},
    {"BOOKMARK_GROUP", "bookmark-group"},
    {"SINGLE_CLICK", "single-click"},
    {"ONE_WAY", "link-oneway"},
    {"TWO_WAY", "link-twoway"},
    {"UPDATED", "link-updated"},
    {"OWN_CODE", "status-own"},
    {"DOWNLOADED", "status-downloaded"},
    {"THUMB_UP", "status-tested"},
    {"THUMB_DOWN", "status-not-working"},
    {"STAR", "rating-star"},
    {"HALF_STAR", "rating-half"},
    {"NO_STAR", "rating-none"},
    {"LOCKED", "lock-closed"},
    {"UNLOCKED", "lock-open"},
    {"DB", "library"},
    {"DBSelected", "library-selected"},
};

/// The name of the drawing for an image key; the key itself when it has none of our own.
QString OwnDrawing(const QString& key)
{
    static const QHash<QString, QString> drawings = [] {
        QHash<QString, QString> all;
        for (const auto& [name, drawing] : OwnDrawings)
            all.insert(QString::fromLatin1(name), QString::fromLatin1(drawing));
        return all;
    }();
    return drawings.value(key, key);
}

} // namespace

QIcon IconNamed(const QString& name)
{
    static QHash<QString, QIcon> known;
    const auto found = known.constFind(name);
    if (found != known.constEnd())
        return *found;
    const QString drawing = u":/icons/"_s + OwnDrawing(name) + u".svg"_s;
    return *known.insert(name, QFile::exists(drawing) ? QIcon(drawing) : QIcon::fromTheme(name));
}

void ShowIcon(QAction& action, const QString& name)
{
    const QIcon icon = name.isEmpty() ? QIcon() : IconNamed(name);
    if (action.icon().cacheKey() != icon.cacheKey())
        action.setIcon(icon);
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
