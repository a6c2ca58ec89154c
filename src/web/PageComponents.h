#pragma once

#include "web/PageInsert.h"
#include "web/PagePictures.h"

#include <QString>
#include <optional>
#include <vector>

namespace qb {

/// What became of a page in the editor.
struct PageOutcome {
    bool IsEmptied = false; ///< nothing is left in it: the page is to go
    bool IsChanged = false; ///< its file is another one now
};

/// A picture that was chosen for a page: already below the page's folder.
struct ChosenPicture {
    KeptPicture Picture;
    int Width = 0; ///< as it is to be shown, in pixels
    int Height = 0;
};

/// An item as one can be chosen for a link.
struct LinkableItem {
    qint64 ID = 0;
    QString Title;
    QString Place; ///< the titles above it
};

/// What edits pages and asks what to put into them. Each call is modal. The window's components are those of
/// MakePageComponents; tests put others in their place.
class PageComponents {
public:
    virtual ~PageComponents() = default;

    /// Lets the user edit the page file @p path, which must be there; its pictures lie in the folder of its name
    /// beside it. Raises an error where no editor can be had, or the page can't be read.
    virtual PageOutcome Edit(const QString& path) = 0;
    /// Asks for a picture, and copies it to @p place; nothing when the user thinks better of it.
    virtual std::optional<ChosenPicture> ChoosePicture(const PicturePlace& place) = 0;
    /// Asks for a link; the address box begins with @p address.
    virtual std::optional<PageLink> ChooseLink(const QString& address) = 0;
};

} // namespace qb
