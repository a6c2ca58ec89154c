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
#include <QPlainTextEdit>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

FilePreview::FilePreview(QWidget* parent)
    : QWidget(parent), m_pages(new QStackedWidget), txtPreview(new QPlainTextEdit), imgPreview(new QLabel), m_other(new QWidget),
      imgType(new QLabel), lblType(new QLabel)
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
    m_picture = {};
    imgType->clear();
    lblType->clear();
    txtPreview->clear();
    m_pages->setCurrentWidget(m_other);
}

void FilePreview::Load()
{
    Clear();
    if (LoadPicture() || LoadText())
        return;
    constexpr int IconSize = 64;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(m_title, QMimeDatabase::MatchExtension);
    const QFileInfo file(m_path);
    const QString size = file.exists() ? QLocale().formattedDataSize(file.size()) : u"The file is missing in the library's folder."_s;
    imgType->setPixmap(QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName(), IconNamed(u"text-x-generic"_s))).pixmap(IconSize));
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
    if (!file.atEnd()) // not in the middle of a character
        bytes.truncate(qMax<qsizetype>(bytes.lastIndexOf('\n'), 1));
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
