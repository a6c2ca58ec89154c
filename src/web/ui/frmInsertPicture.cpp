#include "web/ui/frmInsertPicture.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"

#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QImage ImageOf(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    return reader.read();
}

} // namespace

frmInsertPicture::frmInsertPicture(QWidget* parent, const PicturePlace& place) : QDialog(parent), m_place(place)
{
    constexpr QSize Proposed(520, 440);
    setObjectName(u"frmInsertPicture"_s);
    setWindowTitle(u"Insert Picture"_s);
    setAcceptDrops(true);
    auto* layout = new QVBoxLayout(this);
    auto* sources = new QHBoxLayout;
    const std::tuple<const char*, const char*, void (frmInsertPicture::*)()> all[] = {
        {"cmdFile", "From a &File…", &frmInsertPicture::ChooseFile},
        {"cmdClipboard", "From the &Clipboard", &frmInsertPicture::TakeClipboard}};
    for (const auto& [name, caption, take] : all) {
        auto* button = new QPushButton(QString::fromUtf8(caption));
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, take);
        sources->addWidget(button);
    }
    sources->addStretch();
    layout->addLayout(sources);
    lblPreview = new QLabel;
    lblPreview->setObjectName(u"lblPreview"_s);
    lblPreview->setAlignment(Qt::AlignCenter);
    lblPreview->setFrameShape(QFrame::StyledPanel);
    lblPreview->setMinimumSize(120, 90);
    lblPreview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    lblPreview->setWordWrap(true);
    layout->addWidget(lblPreview, 1);
    lblPicture = new QLabel;
    lblPicture->setObjectName(u"lblPicture"_s);
    lblPicture->setTextFormat(Qt::PlainText);
    lblPicture->setWordWrap(true);
    layout->addWidget(lblPicture);
    MakeSize();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    cmdInsert = buttons->addButton(u"&Insert"_s, QDialogButtonBox::AcceptRole);
    cmdInsert->setObjectName(u"cmdInsert"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &frmInsertPicture::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    cmdInsert->setDefault(true); // once it is the dialog's, which looks for one by itself otherwise
    resize(Proposed);
    ShowPreview();
    ShowSize();
}

void frmInsertPicture::MakeSize()
{
    auto* line = new QHBoxLayout;
    const auto box = [&](const char* name, const QString& caption, void (PictureSize::*set)(int)) {
        auto* spin = new QSpinBox;
        spin->setObjectName(QString::fromLatin1(name));
        spin->setRange(1, PictureSize::Most);
        spin->setSuffix(u" px"_s);
        auto* label = new QLabel(caption);
        label->setBuddy(spin);
        line->addWidget(label);
        line->addWidget(spin);
        connect(spin, &QSpinBox::valueChanged, this, [this, set](int value) {
            (m_size.*set)(value);
            ShowSize();
        });
        return spin;
    };
    txtWidth = box("txtWidth", u"&Width:"_s, &PictureSize::SetWidth);
    txtHeight = box("txtHeight", u"&Height:"_s, &PictureSize::SetHeight);
    chkRatio = new QCheckBox(u"&Keep ratio"_s);
    chkRatio->setObjectName(u"chkRatio"_s);
    connect(chkRatio, &QCheckBox::toggled, this, [this](bool on) {
        m_size.SetLocked(on);
        ShowSize();
    });
    line->addWidget(chkRatio);
    line->addStretch();
    static_cast<QVBoxLayout*>(layout())->addLayout(line);
}

void frmInsertPicture::ChooseFile()
{
    const QString path = Prompts::Current().FileName(
        {.Title = u"Insert picture"_s,
         .Filter = u"Pictures|*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp;*.svg|All files|*"_s,
         .Folder = {}});
    if (!path.isEmpty())
        TakeFile(path);
}

void frmInsertPicture::TakeFile(const QString& path)
{
    QFile file(path);
    QByteArray bytes;
    const QString name = QFileInfo(path).fileName();
    if (!WhyNoPlainFile(path).isEmpty() || !file.open(QIODevice::ReadOnly))
        return Say(u"%1 can't be read."_s.arg(name));
    if (const QString why = ReadAll(file, bytes, MostPictureBytes + 1); !why.isEmpty())
        return Say(u"%1 can't be read: %2"_s.arg(name, why));
    if (bytes.size() > MostPictureBytes)
        return Say(u"%1 is too large for a page."_s.arg(name));
    Take(name, bytes);
}

void frmInsertPicture::TakeClipboard()
{
    const QMimeData* mime = QGuiApplication::clipboard()->mimeData();
    for (const QUrl& url : mime ? mime->urls() : QList<QUrl>()) {
        if (url.isLocalFile())
            return TakeFile(url.toLocalFile());
    }
    const QImage image = QGuiApplication::clipboard()->image();
    if (image.isNull())
        return Say(u"There is no picture on the clipboard."_s);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    Take(u"picture.png"_s, bytes);
}

void frmInsertPicture::Take(const QString& name, const QByteArray& bytes)
{
    const std::optional<PictureKind> kind = PictureKindOf(bytes);
    const QImage image = kind ? ImageOf(bytes) : QImage();
    if (!kind || (image.isNull() && kind->Suffix != u"svg"_s && kind->Suffix != u"webp"_s))
        return Say(u"%1 is no picture that a page can show (PNG, JPEG, GIF, WebP, BMP, SVG)."_s.arg(name));
    m_name = name;
    m_bytes = bytes;
    m_image = image;
    const bool wasLocked = m_size.IsLocked();
    m_size = PictureSize(kind->Width > 0 ? kind->Width : image.width(),
                         kind->Height > 0 ? kind->Height : image.height());
    m_size.SetLocked(wasLocked);
    Say(u"%1: %2 × %3 pixels, %4"_s.arg(name)
            .arg(m_size.Width())
            .arg(m_size.Height())
            .arg(locale().formattedDataSize(bytes.size(), 1)));
    ShowPreview();
    ShowSize();
}

void frmInsertPicture::Say(const QString& text)
{
    lblPicture->setText(text);
}

void frmInsertPicture::ShowPreview()
{
    if (m_bytes.isEmpty())
        lblPreview->setText(u"Choose a picture, or drop one here."_s);
    else if (m_image.isNull())
        lblPreview->setText(u"No preview of this kind of picture"_s);
    else
        lblPreview->setPixmap(QPixmap::fromImage(
            m_image.width() > lblPreview->width() - 8 || m_image.height() > lblPreview->height() - 8
                ? m_image.scaled(lblPreview->size() - QSize(8, 8), Qt::KeepAspectRatio, Qt::SmoothTransformation)
                : m_image));
}

void frmInsertPicture::ShowSize()
{
    const QSignalBlocker noWidth(txtWidth);
    const QSignalBlocker noHeight(txtHeight);
    const QSignalBlocker noRatio(chkRatio);
    txtWidth->setValue(m_size.Width());
    txtHeight->setValue(m_size.Height());
    chkRatio->setChecked(m_size.IsLocked());
    for (QWidget* widget : std::initializer_list<QWidget*>{txtWidth, txtHeight, chkRatio, cmdInsert})
        widget->setEnabled(!m_bytes.isEmpty());
}

/// A picture that can't be copied leaves the dialog open.
void frmInsertPicture::accept()
{
    if (m_bytes.isEmpty())
        return;
    try {
        m_chosen = {KeepPictureBytes(m_place, m_name, m_bytes), m_size.Width(), m_size.Height()};
    } catch (const RuntimeError& error) {
        return Say(error.Description());
    }
    QDialog::accept();
}

void frmInsertPicture::dragEnterEvent(QDragEnterEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (!urls.isEmpty() && urls.first().isLocalFile())
        event->acceptProposedAction();
}

void frmInsertPicture::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    TakeFile(event->mimeData()->urls().value(0).toLocalFile());
}

void frmInsertPicture::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    ShowPreview();
}

} // namespace qb
