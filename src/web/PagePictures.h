#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace qb {

/// What a picture's file says of itself at its begin.
struct PictureKind {
    QString Suffix; ///< "png"
    int Width = 0;  ///< in pixels; 0 where the file does not say
    int Height = 0;
};

/// The kind of a picture that a page can show, by its contents and not by its name; nothing for what is none.
std::optional<PictureKind> PictureKindOf(const QByteArray& bytes);

/// The most bytes that a picture of a page may have.
inline constexpr qint64 MostPictureBytes = 64 << 20;
/// Raises the error for a picture of more.
[[noreturn]] void RefuseLargePicture(const QString& name);

/// Where the pictures of a page lie.
struct PicturePlace {
    QString PagesFolder; ///< the folder of web pages
    QString Page;        ///< the name of the page's folder in it: "17"
};

/// A picture below the folder of its page.
struct KeptPicture {
    QString Source; ///< as the page names it: "17/tree.png"
    QString Path;
    PictureKind Kind;
};

/// Copies a picture below the folder of its page, under a safe name that is free there. The folder is made where it
/// is missing. Raises an error for a file that is no picture, can't be read or not be written; nothing is left then.
KeptPicture KeepPicture(const PicturePlace& place, const QString& file);
/// The same with a picture that is no file: @p name is what it would like to be called.
KeptPicture KeepPictureBytes(const PicturePlace& place, const QString& name, const QByteArray& bytes);
/// Deletes a picture that is not wanted after all, and a folder that was made for it.
void TakeBackPicture(const PicturePlace& place, const KeptPicture& picture);

} // namespace qb
