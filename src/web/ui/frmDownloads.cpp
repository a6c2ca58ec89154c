#include "web/ui/frmDownloads.h"

#include "platform/system/Prompts.h"
#include "platform/system/Shell.h"
#include "support/ui/Icons.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using State = Download::State;

constexpr int Steps = 1000; ///< of a bar of progress
constexpr int Often = 100;  ///< milliseconds between two looks of a row

QString Size(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

bool IsPlaced(const LoadingFile& file)
{
    return file.IsStored || !file.SavedAs.isEmpty();
}

QLabel* MakeLabel(const QString& name)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

// A row

DownloadRow::DownloadRow(InetFileLoad& component, LoadingFile& file, QWidget* parent)
    : QWidget(parent), m_component(component), m_file(file), lblName(MakeLabel(u"lblName"_s)),
      lblState(MakeLabel(u"lblState"_s)), m_progress(new QProgressBar)
{
    QFont bold = lblName->font();
    bold.setBold(true);
    lblName->setFont(bold);
    lblState->setWordWrap(true);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(u"Progress"_s);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(lblState, 1);
    cmdStop = AddButton(u"cmdStop"_s, u"Stop"_s, u"process-stop"_s);
    cmdCancel = AddButton(u"cmdCancel"_s, u"Cancel"_s, u"edit-delete"_s);
    cmdSaveAs = AddButton(u"cmdSaveAs"_s, u"Save As..."_s, u"document-save"_s);
    cmdOpenItem = AddButton(u"cmdOpenItem"_s, u"Go to Item"_s, u"LINK_GOTO"_s);
    cmdShowFolder = AddButton(u"cmdShowFolder"_s, u"Show Folder"_s, u"FOLDER"_s);
    for (QPushButton* button : {cmdStop, cmdCancel, cmdSaveAs, cmdOpenItem, cmdShowFolder})
        buttons->addWidget(button);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblName);
    layout->addWidget(m_progress);
    layout->addLayout(buttons);
    connect(cmdStop, &QPushButton::clicked, this, &DownloadRow::StopOrGoOn);
    connect(cmdCancel, &QPushButton::clicked, this, [this] { m_file.Load->Cancel(); });
    connect(cmdSaveAs, &QPushButton::clicked, this, &DownloadRow::SaveAs);
    connect(cmdOpenItem, &QPushButton::clicked, this, [this] { Q_EMIT m_component.OpenItem(m_file.Target); });
    connect(cmdShowFolder, &QPushButton::clicked, this, &DownloadRow::ShowFolder);
    m_measured.start();
    Show();
}

QPushButton* DownloadRow::AddButton(const QString& name, const QString& caption, const QString& icon)
{
    auto* button = new QPushButton(IconNamed(icon), caption);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

void DownloadRow::Show()
{
    const State state = m_file.Load->Now();
    if (state == State::Loading && m_shown.isValid() && m_shown.elapsed() < Often)
        return; // a fast server sends thousands of pieces a second
    m_shown.start();
    const qint64 total = m_file.Load->Total();
    const qint64 received = m_file.Load->Received();
    const bool isKnown = total > 0 || state != State::Loading;
    m_progress->setRange(0, isKnown ? Steps : 0);
    if (isKnown)
        m_progress->setValue(state == State::Loaded ? Steps
                             : total > 0            ? int(double(received) / double(total) * Steps)
                                                    : 0);
    m_progress->setVisible(state != State::Cancelled && state != State::Refused);
    lblName->setText(m_file.Load->Name());
    lblName->setToolTip(m_file.Load->Url().toDisplayString().toHtmlEscaped());
    lblState->setText(StateText() + (state == State::Loading ? Speed() : QString()));
    ShowButtons();
}

void DownloadRow::ShowButtons()
{
    const State state = m_file.Load->Now();
    const bool isStopped = state == State::Stopped;
    cmdStop->setVisible(state == State::Loading || isStopped);
    cmdStop->setText(!isStopped ? u"Stop"_s : m_file.Load->MayGoOn() ? u"Go On"_s : u"Try Again"_s);
    cmdStop->setIcon(IconNamed(isStopped ? u"view-refresh"_s : u"process-stop"_s));
    cmdCancel->setVisible(state == State::Loading || isStopped);
    cmdSaveAs->setVisible(state == State::Loaded && !IsPlaced(m_file));
    cmdOpenItem->setVisible(m_file.IsStored);
    cmdShowFolder->setVisible(!m_file.SavedAs.isEmpty());
}

QString DownloadRow::StateText() const
{
    const Download& load = *m_file.Load;
    const QString received = Size(load.Received());
    const QString part = load.Total() > 0 ? u"%1 of %2"_s.arg(received, Size(load.Total())) : received;
    switch (load.Now()) {
    case State::Loading:
        return part;
    case State::Stopped:
        return u"%1: %2"_s.arg(part, load.Why());
    case State::Refused:
        return u"Not loaded: %1"_s.arg(load.Why());
    case State::Cancelled:
        return u"Cancelled"_s;
    case State::Loaded:
        break;
    }
    QStringList lines;
    if (m_file.IsStored)
        lines << u"%1, stored with “%2”"_s.arg(received, m_file.Target.Title);
    if (!m_file.SavedAs.isEmpty())
        lines << u"%1, saved as %2"_s.arg(received, QDir::toNativeSeparators(m_file.SavedAs));
    if (!m_file.Trouble.isEmpty())
        lines << m_file.Trouble;
    return lines.join(u'\n');
}

/// Over the last second or so.
QString DownloadRow::Speed()
{
    constexpr qint64 Second = 1000;
    if (m_measured.elapsed() >= Second) {
        const qint64 received = m_file.Load->Received();
        m_speed = u", %1/s"_s.arg(Size(std::max<qint64>(0, received - m_before) * Second / m_measured.elapsed()));
        m_before = received;
        m_measured.start();
    }
    return m_speed;
}

void DownloadRow::StopOrGoOn()
{
    if (m_file.Load->Now() == State::Loading)
        m_file.Load->Stop();
    else
        m_file.Load->Start();
}

void DownloadRow::SaveAs()
{
    const QString file = Prompts::Current().FileName({.Save = true,
                                                      .Title = u"Save Downloaded File"_s,
                                                      .Filter = u"All Files|*"_s,
                                                      .Folder = InetFileLoad::FolderOf(m_file.Choices),
                                                      .Name = m_file.Load->Name()});
    if (!file.isEmpty())
        m_component.SaveAs(m_file, file);
}

void DownloadRow::ShowFolder()
{
    OpenTarget(QFileInfo(m_file.SavedAs).absolutePath());
}

// The window

frmDownloads::frmDownloads(InetFileLoad& component, QWidget* parent)
    : QDialog(parent), m_component(component), m_rows(new QVBoxLayout)
{
    setObjectName(u"frmDownloads"_s);
    setWindowTitle(u"Downloads"_s);
    auto* page = new QWidget;
    auto* pageLayout = new QVBoxLayout(page);
    pageLayout->addLayout(m_rows);
    pageLayout->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &frmDownloads::close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll, 1);
    layout->addWidget(buttons);
    constexpr QSize First(560, 300);
    resize(First);
    connect(&component, &InetFileLoad::Added, this, [this](LoadingFile* file) { Add(*file); });
    connect(&component, &InetFileLoad::FileChanged, this, [this](LoadingFile* file) {
        if (DownloadRow* row = m_rowOf.value(file))
            row->Show();
    });
    connect(&component, &InetFileLoad::Finished, this, &frmDownloads::CloseWhenWanted, Qt::QueuedConnection);
    for (const std::unique_ptr<LoadingFile>& file : component.Files())
        Add(*file);
}

void frmDownloads::Add(LoadingFile& file)
{
    auto* row = new DownloadRow(m_component, file);
    m_rowOf.insert(&file, row);
    m_rows->insertWidget(0, row); // what is new is at the top
    show();
    raise();
}

/// What only turned out to be a page needs no window, whatever the options say.
void frmDownloads::CloseWhenWanted()
{
    const auto& files = m_component.Files();
    const bool areGone = std::all_of(files.begin(), files.end(), [](const std::unique_ptr<LoadingFile>& file) {
        return file->Load->Now() == State::Cancelled;
    });
    if (areGone || files.back()->Choices.CloseWhenFinished)
        close();
}

bool frmDownloads::MayClose()
{
    const auto& files = m_component.Files();
    const auto lost = std::count_if(files.begin(), files.end(), [](const std::unique_ptr<LoadingFile>& file) {
        const State state = file->Load->Now();
        return state == State::Loading || (state == State::Stopped && file->Load->Received() > 0)
               || (state == State::Loaded && !IsPlaced(*file));
    });
    const QString question = lost == 1 ? u"A file is not loaded, or not saved yet. Give it up?"_s
                                       : u"%1 files are not loaded, or not saved yet. Give them up?"_s.arg(lost);
    return lost == 0
           || Prompts::Current().MsgBox({.Text = question,
                                         .Caption = u"Downloads"_s,
                                         .Buttons = MsgBoxButtons::YesNo,
                                         .Icon = MsgBoxIcon::Question,
                                         .Default = MsgBoxResult::No})
                  == MsgBoxResult::Yes;
}

void frmDownloads::closeEvent(QCloseEvent* event)
{
    if (!MayClose())
        return event->ignore();
    event->accept();
    m_component.Close();
}

} // namespace qb
