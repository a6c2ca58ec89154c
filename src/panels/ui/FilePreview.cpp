#include "panels/ui/FilePreview.h"

#include "platform/system/TextEncoding.h"
#include "support/ui/Icons.h"

#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QImageReader>
#include <QLabel>
#include <QLocale>
#include <QMimeDatabase>
#include <QPainter>
#include <QPlainTextEdit>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Takes off what is left of a character at the end: of UTF-8, or of UTF-16 and UTF-32 with their marks.
void CutToCharacters(QByteArray& bytes)
{
    constexpr int WidestUnit = 4;
    const bool isWide = bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")
                        || bytes.startsWith(QByteArray("\0\0\xFE\xFF", WidestUnit));
    if (isWide)
        return bytes.truncate(bytes.size() - bytes.size() % WidestUnit);
    qsizetype end = bytes.size();
    while (end > 0 && bytes.size() - end < WidestUnit && (bytes[end - 1] & 0xC0) == 0x80)
        --end;
    const uchar lead = end > 0 ? uchar(bytes[end - 1]) : 0;
    const qsizetype length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0; // of the last character
    if (length > bytes.size() - end + 1)
        bytes.truncate(end - 1);
}

} // namespace

FilePreview::FilePreview(QWidget* parent)
    : QWidget(parent), m_pages(new QStackedWidget), txtPreview(new QPlainTextEdit), imgPreview(new QLabel),
      m_other(new QWidget), imgType(new QLabel), lblType(new QLabel)
{
    constexpr int Delay = 80; // milliseconds
    setObjectName(u"FilePreview"_s);
    txtPreview->setObjectName(u"txtPreview"_s);
    txtPreview->setAccessibleName(u"Preview"_s);
    txtPreview->setReadOnly(true);
    txtPreview->setLineWrapMode(QPlainTextEdit::NoWrap);
    txtPreview->setFrameShape(QFrame::NoFrame);
    txtPreview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    imgPreview->setObjectName(u"imgPreview"_s);
    imgPreview->setAlignment(Qt::AlignCenter);
    imgPreview->setMinimumSize(1, 1); // a large picture must not keep the panel large
    lblType->setObjectName(u"lblType"_s);
    lblType->setAlignment(Qt::AlignCenter);
    lblType->setWordWrap(true);
    imgType->setAlignment(Qt::AlignCenter);
    auto* other = new QVBoxLayout(m_other);
    other->addStretch();
    other->addWidget(imgType);
    other->addWidget(lblType);
    other->addStretch();
    for (QWidget* page : std::initializer_list<QWidget*>{m_other, txtPreview, imgPreview})
        m_pages->addWidget(page);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
    m_soon.setSingleShot(true);
    m_soon.setInterval(Delay);
    connect(&m_soon, &QTimer::timeout, this, &FilePreview::Load);
}

void FilePreview::ShowFile(const QString& path, const QString& title)
{
    m_path = path;
    m_title = title;
    m_soon.start();
}

void FilePreview::Clear()
{
    m_soon.stop();
    m_isPending = false;
    m_picture = {};
    imgType->clear();
    lblType->clear();
    txtPreview->clear();
    m_pages->setCurrentWidget(m_other);
}

/// Nothing is read for a preview that nobody sees.
void FilePreview::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_isPending)
        m_soon.start();
}

void FilePreview::Load()
{
    m_isPending = !isVisible();
    if (m_isPending)
        return;
    Clear();
    if (LoadPicture() || LoadText())
        return;
    constexpr int IconSize = 64;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(m_title, QMimeDatabase::MatchExtension);
    const QFileInfo file(m_path);
    const QString size = file.exists() ? QLocale().formattedDataSize(file.size())
                                       : u"The file is missing in the library's folder."_s;
    imgType->setPixmap(
        QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName(), IconNamed(u"text-x-generic"_s)))
            .pixmap(IconSize));
    lblType->setText(type.comment() + u'\n' + size);
}

bool FilePreview::LoadPicture()
{
    constexpr int LargestSide = 1600; // pixels; a larger picture is read smaller
    constexpr qint64 LargestFile = 64 * 1024 * 1024;
    const QString type = QMimeDatabase().mimeTypeForFile(m_title, QMimeDatabase::MatchExtension).name();
    if (!type.startsWith(u"image/"_s) || QFileInfo(m_path).size() > LargestFile)
        return false;
    QImageReader reader(m_path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (const QSize size = reader.size(); size.width() > LargestSide || size.height() > LargestSide)
        reader.setScaledSize(size.scaled(LargestSide, LargestSide, Qt::KeepAspectRatio));
    m_picture = reader.read();
    if (m_picture.isNull())
        return false;
    if (m_picture.hasAlphaChannel()) { // drawn for paper, most of them
        QImage onPaper(m_picture.size(), QImage::Format_RGB32);
        onPaper.fill(Qt::white);
        QPainter(&onPaper).drawImage(0, 0, m_picture);
        m_picture = onPaper;
    }
    m_pages->setCurrentWidget(imgPreview);
    ShowScaled();
    return true;
}

bool FilePreview::LoadText()
{
    constexpr qint64 Length = 64 * 1024; // bytes: what somebody reads in a preview
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray bytes = file.read(Length);
    if (!file.atEnd())
        CutToCharacters(bytes);
    const std::optional<QString> text = DecodeText(bytes, FallbackEncoding::Windows1252);
    if (!text)
        return false;
    txtPreview->setPlainText(*text);
    m_pages->setCurrentWidget(txtPreview);
    return true;
}

void FilePreview::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (!m_picture.isNull())
        ShowScaled();
}

void FilePreview::ShowScaled()
{
    const QSize room = m_pages->size() * devicePixelRatioF();
    const QSize size = m_picture.size().boundedTo(m_picture.size().scaled(room, Qt::KeepAspectRatio));
    QPixmap pixmap = QPixmap::fromImage(m_picture.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    imgPreview->setPixmap(pixmap);
}

} // namespace qb
