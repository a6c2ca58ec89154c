#pragma once

#include <QString>

namespace qb {

/// The tabs of the panel of bookmarks, by number.
enum class BookmarkTab { Bookmarks = 0, FindResults = 1, Info = 2 };

/// The caption of that panel. @p keyword is what was searched last, in @p mode: 1 exact phrase, 2 all the words.
QString PanelCaption(BookmarkTab tab, const QString& keyword = {}, int mode = 0);

/// The caption of a list of links that is @p width pixels wide, where @p widthOf tells how much a text takes.
template <class WidthOf>
QString LinksCaption(int width, const WidthOf& widthOf)
{
    const QString captions[] = {QStringLiteral("Links && Selected Link Description:"),
                                QStringLiteral("Links && Link Description:"), QStringLiteral("Links && Link Descr.:")};
    for (const QString& caption : captions) {
        if (widthOf(caption) <= width)
            return caption;
    }
    return captions[2];
}

} // namespace qb
