#include "finder/ui/frmQuickOpen.h"

#include "finder/ui/QuickHints.h"
#include "finder/ui/QuickRowLook.h"
#include "finder/ui/QuickRowModel.h"
#include "panels/ui/ElidedLabel.h"
#include "support/ui/Colors.h"
#include "text/ui/CodeBox.h"
#include "text/ui/RichTextMime.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Shadow = 8;
constexpr int Margin = 8;
constexpr double Radius = 6;

// In heights of a line.
constexpr int WidestLines = 62;
constexpr int HighestLines = 34;
constexpr int PreviewFrom = 40; ///< the width from which on there is room for a preview

constexpr KeyHint TitleHints[] = {{"Enter", "open"},
                                  {"Alt+Enter", "in tree"},
                                  {"Ctrl+C", "copy code"},
                                  {">", "commands"},
                                  {"#", "text"},
                                  {":", "line"},
                                  {"\xE2\x86\x91\xE2\x86\x93", "choose"},
                                  {"Esc", "close"}};
constexpr KeyHint CommandHints[] = {{"Enter", "run"}, {"\xE2\x86\x91\xE2\x86\x93", "choose"}, {"Esc", "close"}};
constexpr KeyHint TextHints[] = {{"Enter", "go there"},
                                 {"Alt+Enter", "in tree"},
                                 {"Ctrl+C", "copy code"},
                                 {"\xE2\x86\x91\xE2\x86\x93", "choose"},
                                 {"Esc", "close"}};
constexpr KeyHint LineHints[] = {{"Enter", "go there"}, {"Ctrl+C", "copy code"}, {"Esc", "close"}};

std::span<const KeyHint> HintsOf(QuickOpen::Mode mode)
{
    switch (mode) {
    case QuickOpen::Mode::Commands:
        return CommandHints;
    case QuickOpen::Mode::Text:
        return TextHints;
    case QuickOpen::Mode::Line:
        return LineHints;
    case QuickOpen::Mode::Titles:
        break;
    }
    return TitleHints;
}

QLabel* MakeNotice(const QString& name)
{
    constexpr int Gap = 16;
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setMargin(Gap);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    return label;
}

} // namespace

frmQuickOpen::frmQuickOpen(QuickOpenHost& host, FindService& find, QWidget& window)
    : QWidget(&window), m_quick(host, find), m_previews(host), m_rows(new QuickRowModel(this)),
      txtQuickOpen(new QLineEdit), m_pages(new QStackedWidget), lvQuickOpen(new QListView),
      lblNotice(MakeNotice(u"lblNotice"_s)), m_hints(new QuickHints)
{
    setObjectName(u"frmQuickOpen"_s);
    setAccessibleName(u"Quick open"_s);
    MakeField();
    MakeList();
    auto* middle = new QHBoxLayout;
    middle->setSpacing(Margin);
    middle->addWidget(m_pages, 9);
    middle->addWidget(MakePreview(), 11);
    auto* layout = new QVBoxLayout(this);
    constexpr int Edge = Shadow + Margin;
    layout->setContentsMargins(Edge, Edge, Edge, Edge);
    layout->setSpacing(Margin);
    layout->addWidget(txtQuickOpen);
    layout->addLayout(middle, 1);
    layout->addWidget(m_hints);
    Connect();
    hide();
}

frmQuickOpen::~frmQuickOpen()
{
    qApp->disconnect(this);
}

// Layout

void frmQuickOpen::MakeField()
{
    txtQuickOpen->setObjectName(u"txtQuickOpen"_s);
    txtQuickOpen->setAccessibleName(u"Title, or > command, # text, : line"_s);
    txtQuickOpen->setPlaceholderText(u"Title   or   > command   # text   : line"_s);
    txtQuickOpen->setMaxLength(10'000);
    constexpr int Inset = 4;
    txtQuickOpen->setTextMargins(Inset, Inset, Inset, Inset);
    txtQuickOpen->installEventFilter(this);
}

void frmQuickOpen::MakeList()
{
    lvQuickOpen->setObjectName(u"lvQuickOpen"_s);
    lvQuickOpen->setAccessibleName(u"What fits"_s);
    lvQuickOpen->setModel(m_rows);
    lvQuickOpen->setItemDelegate(new QuickRowLook(lvQuickOpen));
    lvQuickOpen->setFocusPolicy(Qt::NoFocus);
    lvQuickOpen->setUniformItemSizes(true);
    lvQuickOpen->setMouseTracking(true);
    lvQuickOpen->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lvQuickOpen->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lvQuickOpen->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    lvQuickOpen->setFrameShape(QFrame::NoFrame);
    lblNotice->setBackgroundRole(QPalette::Base);
    lblNotice->setAutoFillBackground(true);
    m_pages->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_pages->addWidget(lvQuickOpen);
    m_pages->addWidget(lblNotice);
}

QWidget* frmQuickOpen::MakePreview()
{
    m_preview = new QWidget;
    m_preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    lblPreview = new ElidedLabel(u"lblPreview"_s);
    txtPreview = new CodeBox;
    txtPreview->setObjectName(u"txtQuickPreview"_s);
    txtPreview->setAccessibleName(u"Preview"_s);
    txtPreview->SetLocked(true);
    txtPreview->setFocusPolicy(Qt::ClickFocus);
    txtPreview->setFrameShape(QFrame::NoFrame);
    lblPreviewNotice = MakeNotice(u"lblPreviewNotice"_s);
    lblPreviewNotice->setBackgroundRole(QPalette::Base);
    lblPreviewNotice->setAutoFillBackground(true);
    m_previewPages = new QStackedWidget;
    m_previewPages->addWidget(txtPreview);
    m_previewPages->addWidget(lblPreviewNotice);
    auto* layout = new QVBoxLayout(m_preview);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lblPreview);
    layout->addWidget(m_previewPages, 1);
    return m_preview;
}

void frmQuickOpen::Place(const QRect& room)
{
    const int line = fontMetrics().height();
    const int width = std::min(room.width(), WidestLines * line + 2 * Shadow);
    const int height = std::min(room.height(), HighestLines * line + 2 * Shadow);
    setGeometry(room.left() + (room.width() - width) / 2, room.top(), width, height);
    ShowOrHidePreview();
}

/// It takes room from the list, where there is something to show and room for both.
void frmQuickOpen::ShowOrHidePreview()
{
    const bool hasPreviews = m_quick.CurrentMode() != QuickOpen::Mode::Commands && m_rows->rowCount() > 0;
    const bool wasHidden = m_preview->isHidden();
    m_preview->setHidden(!hasPreviews || width() < PreviewFrom * fontMetrics().height());
    if (wasHidden && !m_preview->isHidden())
        m_previewSoon.start(); // nothing was read for it
}

/// A light shadow around a frame.
void frmQuickOpen::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(Shadow, Shadow, -Shadow, -Shadow);
    constexpr int Strength = 10; // of 255, each of the layers
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, Strength));
    for (double i = Shadow; i >= 1; --i)
        painter.drawRoundedRect(frame.adjusted(-i, -i + 1, i, i), Radius + i, Radius + i);
    const QColor window = palette().color(QPalette::Window);
    painter.setPen(IsDark(window) ? window.lighter(200) : window.darker(140));
    painter.setBrush(window);
    painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), Radius, Radius);
}

// It comes and goes

void frmQuickOpen::Open(const QRect& room, const QString& typed)
{
    if (isVisible() && typed.isEmpty())
        return MoveBy(1);
    m_focusBefore = isVisible() ? m_focusBefore : QPointer(QApplication::focusWidget());
    constexpr double Larger = 1.15; // than other texts, whose size may be another one by now
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * Larger);
    txtQuickOpen->setFont(large);
    Place(room);
    m_quick.Begin();
    txtQuickOpen->clear();
    txtQuickOpen->setText(typed);
    show();
    raise();
    txtQuickOpen->setFocus(Qt::PopupFocusReason);
}

void frmQuickOpen::GiveFocusBack()
{
    if (m_focusBefore)
        m_focusBefore->setFocus(Qt::PopupFocusReason);
    m_focusBefore.clear();
}

void frmQuickOpen::Close()
{
    if (!isVisible())
        return;
    GiveFocusBack();
    hide();
}

void frmQuickOpen::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_previewSoon.stop();
    m_quick.End();
    m_rows->SetRows({});
    ShowContent({});
    m_previews.Forget();
}

void frmQuickOpen::Connect()
{
    constexpr int Soon = 50; // milliseconds
    m_previewSoon.setSingleShot(true);
    m_previewSoon.setInterval(Soon);
    connect(&m_previewSoon, &QTimer::timeout, this, &frmQuickOpen::ShowPreview);
    connect(txtQuickOpen, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_hints->SetMessage({});
        m_quick.SetTyped(text);
    });
    connect(&m_quick, &QuickOpen::RowsChanged, this, &frmQuickOpen::ShowRows);
    connect(&m_quick, &QuickOpen::RowsMarked, this, [this] { m_rows->MarkRows(m_quick.Rows()); });
    connect(&m_quick, &QuickOpen::StatusChanged, this, [this] { m_hints->SetStatus(m_quick.Status()); });
    connect(&m_quick, &QuickOpen::Chosen, this, &frmQuickOpen::Close);
    connect(&m_quick, &QuickOpen::Retyped, txtQuickOpen, &QLineEdit::setText);
    connect(&m_quick, &QuickOpen::Told, m_hints, &QuickHints::SetMessage);
    connect(lvQuickOpen, &QListView::clicked, this,
            [this](const QModelIndex& index) { m_quick.Choose(size_t(index.row()), false); });
    connect(lvQuickOpen->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { m_previewSoon.start(); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (!isVisible() || !now || now == this || isAncestorOf(now) || QApplication::activePopupWidget())
            return;
        m_focusBefore.clear(); // somebody has taken it on purpose
        Close();
    });
}

// Keys

/// Keys that it takes from the window and its field.
bool frmQuickOpen::IsOwnKey(const QKeyEvent& key) const
{
    switch (key.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    case Qt::Key_P:
        return key.modifiers() == Qt::ControlModifier;
    default:
        return key.matches(QKeySequence::Copy) && !txtQuickOpen->hasSelectedText();
    }
}

bool frmQuickOpen::TakeKey(const QKeyEvent& key)
{
    if (!IsOwnKey(key))
        return false;
    const int page = std::max(1, lvQuickOpen->viewport()->height() / std::max(1, lvQuickOpen->sizeHintForRow(0)) - 1);
    switch (key.key()) {
    case Qt::Key_Up:
    case Qt::Key_Backtab:
        MoveBy(-1);
        break;
    case Qt::Key_Down:
    case Qt::Key_Tab:
    case Qt::Key_P:
        MoveBy(1);
        break;
    case Qt::Key_PageUp:
        MoveBy(-page);
        break;
    case Qt::Key_PageDown:
        MoveBy(page);
        break;
    case Qt::Key_Escape:
        Close();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (Current() >= 0)
            m_quick.Choose(size_t(Current()), key.modifiers() & Qt::AltModifier);
        break;
    default:
        CopyCode();
    }
    return true;
}

bool frmQuickOpen::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == txtQuickOpen && event->type() == QEvent::ShortcutOverride
        && IsOwnKey(*static_cast<QKeyEvent*>(event))) {
        event->accept(); // no shortcut of the window
        return true;
    }
    if (watched == txtQuickOpen && event->type() == QEvent::KeyPress && TakeKey(*static_cast<QKeyEvent*>(event)))
        return true;
    return QWidget::eventFilter(watched, event);
}

/// Of the preview, which has the focus when something in it is selected.
void frmQuickOpen::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        Close();
    else
        QWidget::keyPressEvent(event);
}

int frmQuickOpen::Current() const
{
    return lvQuickOpen->currentIndex().isValid() ? lvQuickOpen->currentIndex().row() : -1;
}

/// A step from one end leads to the other; a leap ends there.
void frmQuickOpen::MoveBy(int rows)
{
    const int count = m_rows->rowCount();
    if (count == 0)
        return;
    m_hints->SetMessage({});
    const int to = Current() + rows;
    const bool isStep = rows == 1 || rows == -1;
    lvQuickOpen->setCurrentIndex(m_rows->index(isStep ? (to + count) % count : std::clamp(to, 0, count - 1)));
}

// Rows

void frmQuickOpen::ShowRows()
{
    const int chosen = Current();
    const bool isMore = m_quick.CurrentMode() == QuickOpen::Mode::Text && chosen > 0; // the user is among them
    m_rows->SetRows(m_quick.Rows());
    m_hints->SetHints(HintsOf(m_quick.CurrentMode()));
    m_hints->SetStatus(m_quick.Status());
    const bool isEmpty = m_rows->rowCount() == 0;
    if (isEmpty)
        lblNotice->setText(m_quick.Notice());
    m_pages->setCurrentWidget(isEmpty ? static_cast<QWidget*>(lblNotice) : lvQuickOpen);
    ShowOrHidePreview();
    lvQuickOpen->setCurrentIndex(m_rows->index(isMore ? std::min(chosen, m_rows->rowCount() - 1) : 0));
    lvQuickOpen->scrollTo(lvQuickOpen->currentIndex());
    m_previewSoon.start();
}

void frmQuickOpen::ShowPreview()
{
    if (!isVisible() || !m_preview->isVisible())
        return;
    const int row = Current();
    if (row < 0)
        return ShowContent({});
    m_quick.CheckItem(size_t(row));
    ShowContent(m_previews.Of(m_rows->Rows()[size_t(row)], m_quick.Request()));
}

void frmQuickOpen::ShowContent(const QuickPreview& preview)
{
    const QString caption = preview.Title + (preview.Caption.isEmpty() ? QString() : u"  –  "_s + preview.Caption);
    lblPreview->setText(preview.Notice.isEmpty() ? caption : preview.Title);
    lblPreviewNotice->setText(preview.Notice);
    const bool hasText = preview.Notice.isEmpty() && preview.Content.Document().Length() > 0;
    m_previewPages->setCurrentWidget(hasText ? static_cast<QWidget*>(txtPreview) : lblPreviewNotice);
    txtPreview->SetColouring(nullptr, {});
    txtPreview->SetContent(preview.Content);
    txtPreview->SetColouring(preview.Rules, {});
    txtPreview->MarkFound(preview.Marks);
    if (preview.Line > 0)
        txtPreview->GoToLine(preview.Line);
}

void frmQuickOpen::SetPalette(const TokenPalette& palette)
{
    txtPreview->SetPalette(palette);
}

void frmQuickOpen::CopyCode()
{
    if (Current() < 0)
        return;
    const QuickRow& row = m_rows->Rows()[size_t(Current())];
    if (row.Item == 0)
        return;
    const RichText code = m_previews.CodeOf(row);
    const qsizetype length = code.Document().Length();
    if (length == 0)
        return m_hints->SetMessage(u"There is no code to copy."_s);
    QApplication::clipboard()->setMimeData(MimeOfRichText(code.Document()).release());
    const qsizetype lines = code.Text().count(u'\n') + 1;
    m_hints->SetMessage(lines == 1 ? u"Copied: 1 line of code"_s : u"Copied: %1 lines of code"_s.arg(lines));
}

} // namespace qb
