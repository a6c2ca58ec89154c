#pragma once

#include "store/Library.h"
#include "web/PageInsert.h"

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QStringList>
#include <functional>

namespace qb {

// The web pages of a library's items. Every change is made whole, together with the item's row (that it has a page,
// when the page and the item were changed), or not at all; each raises an error then. What bars a change of an item
// bars these: RequireChange says so.

/// Where the page of an item lies, whether it is there or not.
QString PageFileOf(const Library& library, qint64 item);
/// The folder of its pictures and other files; ends in a separator.
QString PageFolderOf(const Library& library, qint64 item);

/// The bytes of an item's page. Raises RuntimeError 3024 when it has none, 75 when it can't be read or is no ordinary
/// file: a link may lead anywhere.
QByteArray ReadPage(const Library& library, qint64 item);

/// The files of an item's page besides the page, as paths below its folder with "/" between their parts, in order.
/// Links are none of them.
QStringList FilesOfPage(const Library& library, qint64 item);

/// Gives an item a page, a copy of the template, if it has none; and the page a folder. True when it made the page.
bool EnsureHTMLFileExists(Library& library, qint64 item);

/// What a change may do beside: told before it counts, what it raises takes all back.
using BeforeCommit = std::function<void()>;

/// Makes @p page the item's page; the files beside it stay. With no page before it is a new one.
void WritePage(Library& library, qint64 item, const QByteArray& page, const BeforeCommit& beforeCommit = {});

/// Makes a file the item's page; with @p folder, all in that is what its own folder holds from now on, instead of what
/// it held, and what the page loads from there it finds. Links are left out. Raises 3317 for a file that is no text.
void SetPage(Library& library, qint64 item, const QString& file, const QString& folder = {},
             const BeforeCommit& beforeCommit = {});

/// What is made of a page: its bytes from those that it has. Files that it wants to have in its folder it writes into
/// @p made, which will be added to that folder; names that are taken there are in the way.
using PageEdit = std::function<QByteArray(const QByteArray& page, const QString& made)>;
/// Changes the item's page, or that which EnsureHTMLFileExists would make.
void EditPage(Library& library, qint64 item, const PageEdit& edit, const BeforeCommit& beforeCommit = {});

/// What could not be put into a page: it has no place for an insertion. Nothing was changed.
inline constexpr long WrongPageFormatError = 3274;

/// Copies a picture into the folder of the item's page, and inserts it there. Raises WrongPageFormatError, or 75 for
/// what is no picture. Told, before it counts, is how the page names it. Of @p size, in pixels, a length that is 0
/// follows the other in the picture's ratio; where both are, it is shown as large as it is.
using PictureNamed = std::function<void(const PagePicture& picture)>;
void AddPicture(Library& library, qint64 item, const QString& file, QSize size, const PictureNamed& named = {});
/// Inserts a picture that is in the folder of the page. Raises WrongPageFormatError.
void InsertPicture(Library& library, qint64 item, const PagePicture& picture);
/// Inserts a link. Raises WrongPageFormatError.
void InsertLink(Library& library, qint64 item, const PageLink& link, const BeforeCommit& beforeCommit = {});

/// Deletes an item's page with its folder.
void DeletePage(Library& library, qint64 item, const BeforeCommit& beforeCommit = {});

/// Notes that the page was changed by someone who has written it: that the item has it, and when. Where that can't be,
/// the page is again what it was, @p before, and what it was made is kept beside it; the error that is raised names it.
void NotePageChanged(Library& library, qint64 item, const QByteArray& before);

/// An item whose page is not there, nor on its way, has none from now on; the date of its last change stays. True when
/// that was so.
bool ForgetMissingPage(Library& library, qint64 item);

/// Copies an item's page with its files into a folder, which must be empty or not there, all or nothing. Raises
/// RuntimeError 75 when that can't be. Returns how many files there are.
int ExportPage(const Library& library, qint64 item, const QString& folder);

} // namespace qb
