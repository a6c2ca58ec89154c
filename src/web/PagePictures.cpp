#include "web/PagePictures.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>
#include <algorithm>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void Fail(const QString& text)
{
    throw RuntimeError(ErrorNumber::PathAccess, text, u"PagePictures"_s);
}

quint16 BigShort(const QByteArray& bytes, qsizetype at)
{
    return at + 2 <= bytes.size() ? qFromBigEndian<quint16>(bytes.constData() + at) : quint16(0);
}

quint16 LittleShort(const QByteArray& bytes, qsizetype at)
{
    return at + 2 <= bytes.size() ? qFromLittleEndian<quint16>(bytes.constData() + at) : quint16(0);
}

PictureKind Png(const QByteArray& bytes)
{
    return {u"png"_s, BigShort(bytes, 18), BigShort(bytes, 22)};
}

PictureKind Gif(const QByteArray& bytes)
{
    return {u"gif"_s, LittleShort(bytes, 6), LittleShort(bytes, 8)};
}

/// Two letters are not much to go by; the size of the header is looked at too.
PictureKind Bmp(const QByteArray& bytes)
{
    constexpr quint16 HeaderSizes[] = {40, 52, 56, 108, 124};
    const auto* end = std::end(HeaderSizes);
    if (std::find(std::begin(HeaderSizes), end, LittleShort(bytes, 14)) == end || LittleShort(bytes, 16) != 0)
        return {};
    return {u"bmp"_s, LittleShort(bytes, 18), LittleShort(bytes, 22)};
}

/// The size stands in the segment that begins a frame.
PictureKind Jpeg(const QByteArray& bytes)
{
    const auto isFrame = [](uchar kind) {
        return kind >= 0xc0 && kind <= 0xcf && kind != 0xc4 && kind != 0xc8 && kind != 0xcc;
    };
    PictureKind kind{u"jpg"_s};
    for (qsizetype at = 2; at + 9 <= bytes.size() && uchar(bytes[at]) == 0xff;) {
        if (isFrame(uchar(bytes[at + 1])))
            return {kind.Suffix, BigShort(bytes, at + 7), BigShort(bytes, at + 5)};
        at += 2 + qMax(BigShort(bytes, at + 2), quint16(2));
    }
    return kind;
}

PictureKind WebP(const QByteArray& bytes)
{
    const QByteArray form = bytes.mid(12, 4);
    const auto three = [&bytes](qsizetype at) {
        return bytes.size() < at + 3 ? 0 : LittleShort(bytes, at) + (uchar(bytes[at + 2]) << 16) + 1;
    };
    if (form == "VP8X")
        return {u"webp"_s, three(24), three(27)};
    if (form == "VP8 ")
        return {u"webp"_s, LittleShort(bytes, 26) & 0x3fff, LittleShort(bytes, 28) & 0x3fff};
    if (form != "VP8L" || bytes.size() < 25)
        return {u"webp"_s};
    const auto bits = qFromLittleEndian<quint32>(bytes.constData() + 21);
    return {u"webp"_s, int(bits & 0x3fff) + 1, int((bits >> 14) & 0x3fff) + 1};
}

/// A drawing by its size, or else by its view.
PictureKind Svg(const QByteArray& bytes)
{
    constexpr qsizetype Looked = 4096;
    static const QRegularExpression root(uR"(<svg\b[^>]*>)"_s);
    static const QRegularExpression width(uR"(\swidth\s*=\s*["']\s*([\d.]+)(px)?\s*["'])"_s);
    static const QRegularExpression height(uR"(\sheight\s*=\s*["']\s*([\d.]+)(px)?\s*["'])"_s);
    static const QRegularExpression view(uR"(\sviewBox\s*=\s*["'][\s\d.,-]*?([\d.]+)[\s,]+([\d.]+)\s*["'])"_s);
    const QString tag = root.match(QString::fromUtf8(bytes.left(Looked))).captured();
    const QRegularExpressionMatch seen = view.match(tag);
    const auto number = [&](const QRegularExpression& of, int other) {
        const QRegularExpressionMatch match = of.match(tag);
        return qRound(match.hasMatch() ? match.captured(1).toDouble() : seen.captured(other).toDouble());
    };
    return {u"svg"_s, number(width, 1), number(height, 2)};
}

bool IsSvg(const QByteArray& bytes)
{
    constexpr qsizetype Looked = 4096;
    static const QRegularExpression begin(
        uR"(^\x{feff}?\s*(<\?xml[^>]*>\s*|<!--.*?-->\s*|<!DOCTYPE[^>]*>\s*)*<svg\b)"_s,
        QRegularExpression::DotMatchesEverythingOption);
    return begin.match(QString::fromUtf8(bytes.left(Looked))).hasMatch();
}

/// How the bytes of a kind begin, at some place.
struct Signature {
    qsizetype At;
    QByteArray Bytes;
    PictureKind (*Read)(const QByteArray& bytes);
};

const std::vector<Signature>& Signatures()
{
    static const std::vector<Signature> all{
        {0, "\x89PNG\r\n\x1a\n", Png}, {0, "GIF87a", Gif}, {0, "GIF89a", Gif},
        {0, "\xff\xd8\xff", Jpeg},     {8, "WEBP", WebP},  {0, "BM", Bmp},
    };
    return all;
}

std::optional<PictureKind> Known(const PictureKind& kind)
{
    return kind.Suffix.isEmpty() ? std::nullopt : std::optional(kind);
}

/// Letters, digits and dashes, so that it stands in a page as it is and is a file's name anywhere.
QString SafeStem(const QString& name)
{
    constexpr qsizetype Longest = 60;
    static const QRegularExpression others(u"[^A-Za-z0-9_]+"_s);
    QString stem = QFileInfo(name).completeBaseName();
    stem = stem.normalized(QString::NormalizationForm_KD).remove(QRegularExpression(u"\\p{Mn}"_s));
    stem = stem.replace(others, u"-"_s).left(Longest);
    static const QRegularExpression ends(u"^-+|-+$"_s);
    static const QRegularExpression device(u"^(con|prn|aux|nul|com\\d|lpt\\d)$"_s,
                                           QRegularExpression::CaseInsensitiveOption);
    stem.remove(ends);
    return stem.isEmpty() || device.match(stem).hasMatch() ? u"picture"_s : stem;
}

/// Whether a name is taken in a folder, also where that tells big letters from small ones and others don't.
bool IsTaken(const QString& folder, const QString& name)
{
    const QStringList all = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System);
    return all.contains(name, Qt::CaseInsensitive);
}

QString FolderOf(const PicturePlace& place)
{
    return QDir::cleanPath(place.PagesFolder + u'/' + place.Page);
}

/// The folder, which is made where it is missing. One that leads elsewhere takes no picture.
QString MadeFolder(const PicturePlace& place)
{
    const QString folder = FolderOf(place);
    const QString shown = QDir::toNativeSeparators(folder);
    if (!QDir().mkpath(folder))
        Fail(u"The folder '%1' can't be made."_s.arg(shown));
    const QString base = QFileInfo(place.PagesFolder).canonicalFilePath();
    if (!QFileInfo(folder).canonicalFilePath().startsWith(base + u'/'))
        Fail(u"The folder '%1' leads out of the folder of the pages."_s.arg(shown));
    return folder;
}

/// Writes aside and takes the first name that is free, whoever else is taking names.
QString PutUnderFreeName(const QString& folder, const QString& stem, const QString& suffix, const QByteArray& bytes)
{
    const QString interim = InterimName(folder + u'/' + stem);
    if (const QString why = ReplaceContents(interim, bytes); !why.isEmpty())
        Fail(u"The picture could not be written: %1"_s.arg(why));
    for (int number = 1;; ++number) {
        const QString name = (number == 1 ? stem : u"%1-%2"_s.arg(stem).arg(number)) + u'.' + suffix;
        if (IsTaken(folder, name))
            continue;
        try {
            MoveIntoPlace(interim, folder + u'/' + name, false);
            return name;
        } catch (const RuntimeError&) {
            if (IsTaken(folder, name))
                continue;
            QFile::remove(interim);
            throw;
        }
    }
}

} // namespace

std::optional<PictureKind> PictureKindOf(const QByteArray& bytes)
{
    for (const Signature& signature : Signatures()) {
        if (bytes.mid(signature.At, signature.Bytes.size()) == signature.Bytes)
            return Known(signature.Read(bytes));
    }
    if (IsSvg(bytes))
        return Svg(bytes);
    return std::nullopt;
}

void RefuseLargePicture(const QString& name)
{
    Fail(u"'%1' is too large for a page: more than %2 MB."_s.arg(name).arg(MostPictureBytes >> 20));
}

KeptPicture KeepPicture(const PicturePlace& place, const QString& file)
{
    const QString shown = QDir::toNativeSeparators(file);
    if (const QString why = WhyNoPlainFile(file); !why.isEmpty())
        Fail(u"'%1' is %2, no picture."_s.arg(shown, why));
    QFile source(file);
    QByteArray bytes;
    if (!source.open(QIODevice::ReadOnly))
        Fail(u"'%1' could not be read: %2"_s.arg(shown, source.errorString()));
    if (const QString why = ReadAll(source, bytes, MostPictureBytes + 1); !why.isEmpty())
        Fail(u"'%1' could not be read: %2"_s.arg(shown, why));
    if (bytes.size() <= MostPictureBytes && !PictureKindOf(bytes))
        Fail(u"'%1' is no picture that a page can show (PNG, JPEG, GIF, WebP, BMP, SVG)."_s.arg(shown));
    return KeepPictureBytes(place, QFileInfo(file).fileName(), bytes);
}

KeptPicture KeepPictureBytes(const PicturePlace& place, const QString& name, const QByteArray& bytes)
{
    if (bytes.size() > MostPictureBytes)
        RefuseLargePicture(name);
    const std::optional<PictureKind> kind = PictureKindOf(bytes);
    if (!kind)
        Fail(u"'%1' is no picture that a page can show (PNG, JPEG, GIF, WebP, BMP, SVG)."_s.arg(name));
    const bool isNew = !QFileInfo::exists(FolderOf(place));
    const QString folder = MadeFolder(place);
    try {
        const QString file = PutUnderFreeName(folder, SafeStem(name), kind->Suffix, bytes);
        return {place.Page + u'/' + file, folder + u'/' + file, *kind};
    } catch (...) {
        if (isNew)
            QDir().rmdir(folder);
        throw;
    }
}

void TakeBackPicture(const PicturePlace& place, const KeptPicture& picture)
{
    if (picture.Source.startsWith(place.Page + u'/')) {
        QFile::remove(picture.Path);
        QDir().rmdir(FolderOf(place)); // only one that is empty goes
    }
}

} // namespace qb
