#include "conflicts/ui/frmConflicts.h"

#include "conflicts/FormerVersions.h"
#include "conflicts/ui/ComparedView.h"
#include "conflicts/ui/DifferenceStrip.h"
#include "platform/richtext/Rtf.h"
#include "support/ErrorRoutine.h"
#include "text/TextBurden.h"
#include "text/ui/ctlCaptionRTB.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QToolButton>
#include <QTreeWidget>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ClassName = u"frmConflicts"_s;

/// The marks of files: a square of two halves, red for the own version and blue for the other one.
QIcon FileIcon(const QString& key)
{
    const QColor red(0xd0, 0x30, 0x30);
    const QColor blue(0x30, 0x60, 0xd0);
    struct Halves {
        const char16_t* Key;
        QColor Left;
        QColor Right;
    };
    const Halves all[] = {{u"DUAL", red, blue},
                          {u"RED", red, red},
                          {u"BLUE", blue, blue},
                          {u"HALFBLUE", red, Qt::transparent},
                          {u"HALFRED", Qt::transparent, blue},
                          {u"DUALEMPTY", Qt::transparent, Qt::transparent}};
    QPixmap picture(16, 16);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    for (const Halves& one : all) {
        if (key != QStringView(one.Key))
            continue;
        painter.fillRect(2, 2, 6, 12, one.Left);
        painter.fillRect(8, 2, 6, 12, one.Right);
    }
    painter.setPen(Qt::gray);
    painter.drawRect(2, 2, 11, 11);
    return picture;
}

/// Beyond so many characters a text is shown without its looks: the box that shows them lays all of it out.
constexpr qsizetype LongestWithLooks = 200'000;

QString StatusName(qint32 status)
{
    const QStringList names{u"none"_s, u"own"_s, u"downloaded"_s, u"tested"_s, u"not working"_s};
    return names.value(status, QString::number(status));
}

QString RatingName(qint32 halfStars)
{
    return halfStars == 0 ? u"none"_s : u"%1 of 5"_s.arg(halfStars / 2.0);
}

/// What needed nobody, a line each, and what of it was dropped.
QString SettledText(const AutomaticResolution& resolution)
{
    constexpr size_t Most = 20;
    QStringList lines;
    for (const SettledConflict& one : resolution.Settled) {
        if (size_t(lines.size()) == Most) {
            lines << u"..."_s;
            break;
        }
        lines << (one.Dropped.isEmpty() ? one.Title : u"%1: dropped %2"_s.arg(one.Title, one.Dropped.join(u", "_s)));
    }
    return lines.isEmpty()
               ? QString()
               : u"Resolved automatically, the other versions are in the removed items:\n"_s + lines.join(u'\n');
}

} // namespace

frmConflicts::frmConflicts(QWidget* parent) : QDialog(parent)
{
    MakeControls();
    ConnectControls();
    MakeShortcuts();
}

frmConflicts::~frmConflicts() = default;

void frmConflicts::InitializeDatabase(Library& library)
{
    m_library = &library;
    m_solver = std::make_unique<ConflictSolver>(library);
    m_solver->SetFindBase(FormerVersionsOf(library));
    m_pages = std::make_unique<ShownPages>(library);
}

bool frmConflicts::Load()
{
    if (!m_solver || !m_solver->Load())
        return false;
    ShowConflict();
    return true;
}

int frmConflicts::exec()
{
    return Load() ? QDialog::exec() : int(Rejected);
}

void frmConflicts::reject()
{
    Collect();
    if (!m_solver || m_solver->MayClose())
        QDialog::reject();
}

void frmConflicts::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    ShowPath();
}

ctlCaptionRTB* frmConflicts::BoxOf(ConflictSide side) const
{
    return side == m_solver->LeftSide() ? ctlCaptionRTB1 : ctlCaptionRTB2;
}

ComparedView* frmConflicts::ViewOf(ConflictSide side) const
{
    return side == m_solver->LeftSide() ? txtCompared1 : txtCompared2;
}

// What it shows

void frmConflicts::ShowConflict()
{
    lblItemTitle->setText(m_solver->HasConflict() ? m_solver->ItemTitle()
                                                  : u"This item can't be shown; see the other conflicts"_s);
    ShowPath();
    for (int i = 0; i < SolverFieldCount; ++i) {
        QRadioButton* option = m_options[size_t(i)];
        const bool differs = m_solver->HasConflict() && m_solver->IsInConflict(SolverField(i));
        QFont font = this->font();
        font.setBold(differs);
        option->setFont(font);
        option->setIcon(differs ? FileIcon(u"DUAL"_s) : QIcon());
        option->setToolTip(differs ? u"The two versions differ here"_s : QString());
    }
    ShowField();
}

void frmConflicts::ShowPath()
{
    if (!m_solver)
        return;
    const QFontMetrics metrics(lblItemPath->font());
    lblItemPath->setText(m_solver->ItemPath(
        [&](const QString& text) { return metrics.horizontalAdvance(text) <= lblItemPath->width(); }));
}

void frmConflicts::ShowField()
{
    m_options[size_t(m_solver->Field())]->setChecked(true);
    if (m_solver->HasConflict()) {
        ctlCaptionRTB1->SetCaption(m_solver->Caption(m_solver->LeftSide()));
        ctlCaptionRTB2->SetCaption(m_solver->Caption(m_solver->RightSide()));
    }
    const bool isPage = m_solver->Field() == SolverField::HTML;
    const bool isFiles = m_solver->Field() == SolverField::Files;
    lwFiles->setVisible(isFiles);
    m_facts->setVisible(m_solver->Field() == SolverField::ItemInfo);
    if (isFiles)
        ShowFiles();
    if (isPage && m_solver->HasConflict())
        ShowPages();
    for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem})
        BoxOf(side)->SetShowBrowser(isPage && m_solver->HasConflict() && m_noPage[size_t(side)].isEmpty());
    ShowTexts();
}

void frmConflicts::ShowTexts()
{
    m_loading = true;
    m_typed = m_inView = {};
    const bool canShow = m_solver->HasConflict();
    const bool isContent = canShow && m_solver->DifferenceOfField() == ConflictSolver::Difference::Content;
    const bool compares = isContent && m_solver->Field() != SolverField::ItemInfo;
    chkAutoCompare->setEnabled(compares);
    m_isCompared = false;
    m_comparison = {};
    if (compares && chkAutoCompare->isChecked()) {
        Guarded(ClassName, u"FillComparedText"_s, [this] { m_comparison = m_solver->Compare(); });
        m_isCompared = !m_comparison.IsTooLarge && !m_comparison.Lines.empty();
        if (const std::optional<MergedText>& merged = m_solver->Merge(); m_isCompared && merged)
            MarkClashes(m_comparison, *merged);
    }
    m_isCompared ? ShowCompared() : ShowPlain();
    for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem})
        BoxOf(side)->SetShowSubstitute(m_inView[size_t(side)]);
    ShowFacts();
    ShowOrigin();
    m_loading = false;
    ShowState();
}

void frmConflicts::ShowCompared()
{
    m_inView = {true, true};
    ViewOf(ConflictSide::Item)->Show(SideLinesOf(m_comparison, LineOwner::First), false);
    ViewOf(ConflictSide::TempItem)->Show(SideLinesOf(m_comparison, LineOwner::Second), false);
    ctlDifferences->SetComparison(m_comparison);
    if (const QList<int> differences = m_comparison.Differences(); !differences.isEmpty())
        GoToLine(differences.first());
}

/// A long text stands in the view, which shows no looks; saving keeps those of the lines that stay. One that is too
/// long for that can only be looked at, and only its begin.
void frmConflicts::ShowPlain()
{
    ctlDifferences->Clear();
    const bool isRich = m_solver->IsRich(m_solver->Field());
    for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem}) {
        const bool hasText = m_solver->HasConflict() && m_solver->IsText(side);
        const bool isPage = m_solver->HasConflict() && m_solver->Field() == SolverField::HTML;
        const QString text = hasText ? m_solver->RawText(side) : isPage ? m_noPage[size_t(side)] : QString();
        const bool isTooLarge = m_solver->HasConflict()
                                && (m_solver->IsHuge(side)
                                    || (text.size() > LongestWithLooks
                                        && m_solver->PlainText(side).size() > LongestCompared));
        const QString reason = u"it has more than %L1 characters"_s.arg(LongestCompared);
        m_inView[size_t(side)] = text.size() > LongestWithLooks;
        if (isTooLarge)
            ViewOf(side)->Show(SideLinesOf(isRich ? PlainBegin(text, reason) : PlainBeginOfText(text, reason)), true);
        else if (m_inView[size_t(side)])
            ViewOf(side)->Show(SideLinesOf(m_solver->PlainText(side)), false);
        else
            isRich ? BoxOf(side)->SetTextRTF(text) : BoxOf(side)->SetText(text);
        BoxOf(side)->SetLocked(!hasText);
    }
}

void frmConflicts::ShowFacts()
{
    if (!m_solver->HasConflict() || m_solver->Field() != SolverField::ItemInfo)
        return;
    const auto fill = [this](QComboBox* box, ConflictSide chosen, const auto& wordOf) {
        box->clear();
        for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem})
            box->addItem(m_solver->SideName(side) + u": "_s + wordOf(m_solver->Conflict().Side(side)));
        box->setCurrentIndex(int(chosen));
        box->setEnabled(box->itemText(0).section(u": "_s, 1) != box->itemText(1).section(u": "_s, 1));
    };
    fill(cboItemStatus, m_solver->StatusSide(), [](CConflictCodeItem& item) { return StatusName(item.ItemStatus()); });
    fill(cboItemRating, m_solver->RatingSide(), [](CConflictCodeItem& item) { return RatingName(item.ItemRating()); });
}

/// Who has changed what is shown, and from what.
void frmConflicts::ShowOrigin()
{
    const QString origin = m_solver->OriginText();
    lblOrigin->setText(origin);
    lblOrigin->setVisible(!origin.isEmpty());
    const bool hasBase = m_solver->HasBase();
    chkShowBase->setVisible(hasBase);
    cmdTakeMerged->setVisible(hasBase);
    const bool isText = ConflictTextOf(m_solver->Field());
    m_base->setVisible(hasBase && isText && chkShowBase->isChecked());
    if (!m_base->isVisibleTo(this))
        return;
    const QString text = m_solver->BaseText();
    const QString reason = u"it has more than %L1 characters"_s.arg(LongestCompared);
    const bool isRich = m_solver->IsRich(m_solver->Field());
    if (text.size() > LongestCompared)
        txtBase->Show(SideLinesOf(isRich ? PlainBegin(text, reason) : PlainBeginOfText(text, reason)), true);
    else
        txtBase->Show(SideLinesOf(isRich ? PlainTextFromRtf(text) : text), true);
}

void frmConflicts::ShowPages()
{
    constexpr std::pair<ConflictSide, QString (ShownPages::*)(qint64)> pages[] = {
        {ConflictSide::Item, &ShownPages::WriteOwn}, {ConflictSide::TempItem, &ShownPages::WriteOther}};
    for (const auto& [side, write] : pages) {
        QString& reason = m_noPage[size_t(side)];
        reason = u"The web page of this version can't be shown."_s;
        Guarded(ClassName, u"ShowPages"_s, [&, side = side, write = write] {
            CConflict& conflict = m_solver->Conflict();
            const bool isSaid = conflict.Side(side).HTMLPage(); // files of a page may be left of a former version
            const QString page = isSaid ? ((*m_pages).*write)(conflict.Key().toLongLong()) : QString();
            reason = page.isEmpty() ? u"This version has no web page."_s : QString();
            if (!page.isEmpty())
                BoxOf(side)->Navigate(page, m_pages->Folder());
        });
    }
}

void frmConflicts::ShowFiles()
{
    m_loading = true;
    lwFiles->clear();
    if (m_solver->HasConflict()) {
        for (const ConflictFileRow& row : m_solver->FileRows()) {
            auto* item = new QTreeWidgetItem(lwFiles, row.Columns);
            item->setIcon(0, FileIcon(row.Icon));
            item->setToolTip(0, row.ToolTip);
            item->setData(0, Qt::UserRole, row.Tag());
        }
        lwFiles->setCurrentItem(lwFiles->topLevelItem(m_solver->SelectedFile()));
    }
    for (int i = 0; i < lwFiles->columnCount(); ++i)
        lwFiles->resizeColumnToContents(i);
    m_loading = false;
}

void frmConflicts::ShowState()
{
    const bool canDecide = m_solver->HasConflict();
    cmdKeepNewer->setEnabled(canDecide);
    cmdKeepOlder->setEnabled(canDecide);
    cmdMore->setEnabled(canDecide);
    cmdSwap->setEnabled(canDecide);
    cmdMoveNext->setEnabled(m_solver->CanMoveNext());
    cmdMovePrevious->setEnabled(m_solver->CanMovePrevious());
    cmdMoveToLeft->setEnabled(m_isCompared);
    cmdMoveToRight->setEnabled(m_isCompared);
    StatusBar->showMessage(StateText());
    StatusBar->setToolTip(SettledText(m_solver->Settled()));
}

QString frmConflicts::StateText()
{
    QStringList parts{m_solver->StatusText()};
    if (m_solver->HasConflict()) {
        if (!m_solver->DifferenceText().isEmpty())
            parts << m_solver->DifferenceText();
        if (m_comparison.IsTooLarge)
            parts << u"The texts are too large to be compared; their begins are shown"_s;
        else if (!m_isCompared && (m_inView[0] || m_inView[1]))
            parts << u"The texts are large and shown without their looks"_s;
    }
    if (const QString settled = SummaryOf(m_solver->Settled()); !settled.isEmpty())
        parts << settled;
    return parts.join(u"    "_s);
}

// What is done

QString frmConflicts::TextOf(ConflictSide side)
{
    const bool isRich = m_solver->IsRich(m_solver->Field());
    if (!m_inView[size_t(side)])
        return isRich ? BoxOf(side)->TextRTF() : BoxOf(side)->Text();
    const QStringList lines = KeptLines(*ViewOf(side));
    return isRich ? LinesWithLooks(lines, m_solver->RawText(side), m_solver->RawText(OtherSide(side)))
                  : lines.join(u"\r\n"_s);
}

/// What was typed is handed to the solver.
void frmConflicts::Collect()
{
    if (!m_solver || !m_solver->HasConflict())
        return;
    const bool isLine = m_solver->Field() == SolverField::Title || m_solver->Field() == SolverField::Description;
    std::array<QString, 2> texts; // of both, before either changes what the other is compared with
    for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem}) {
        if (m_typed[size_t(side)])
            texts[size_t(side)] = TextOf(side);
    }
    for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem}) {
        if (std::exchange(m_typed[size_t(side)], false))
            m_solver->Edited(side,
                             isLine ? texts[size_t(side)].replace(u"\r\n"_s, u" "_s).trimmed() : texts[size_t(side)]);
    }
}

void frmConflicts::FieldChosen(SolverField field)
{
    Collect();
    if (m_solver->HasConflict())
        m_solver->SelectField(field);
    ShowField();
}

void frmConflicts::Decide(int which)
{
    Collect();
    m_solver->Keep(which);
    if (m_solver->Count() == 0)
        accept();
    else
        ShowConflict();
}

void frmConflicts::DecideAllLike(int which)
{
    Collect();
    m_solver->KeepAllLikeThis(which);
    if (m_solver->Count() == 0)
        accept();
    else
        ShowConflict();
}

void frmConflicts::GoToDifference(int step)
{
    const QList<int> begins = m_comparison.Differences();
    if (!m_isCompared || begins.isEmpty())
        return;
    const int line = txtCompared1->CurrentLine();
    int target = step > 0 ? begins.first() : begins.last(); // round
    for (const int begin : begins) {
        if (step > 0 && begin > line) {
            target = begin;
            break;
        }
        if (step < 0 && begin < line)
            target = begin;
    }
    GoToLine(target);
}

void frmConflicts::GoToLine(int line)
{
    txtCompared1->GoToLine(line);
    txtCompared2->GoToLine(line);
}

/// From the choice of the field to the text on the left, to that on the right, and back; a page is no text.
void frmConflicts::GoToPart()
{
    const auto option = std::find_if(m_options.begin(), m_options.end(), [](QWidget* one) { return one->hasFocus(); });
    QWidget* const stops[] = {option == m_options.end() ? m_options[size_t(m_solver->Field())] : *option, txtCompared1,
                              ctlCaptionRTB1->RtbText(), txtCompared2, ctlCaptionRTB2->RtbText()};
    const auto* focused = std::find_if(std::begin(stops), std::end(stops),
                                       [](QWidget* stop) { return stop->hasFocus(); });
    const auto* next = focused == std::end(stops) ? std::end(stops)
                                                  : std::find_if(focused + 1, std::end(stops),
                                                                 [](QWidget* stop) { return stop->isVisible(); });
    (next == std::end(stops) ? stops[0] : *next)->setFocus(Qt::ShortcutFocusReason);
}

void frmConflicts::MoveLines(bool toLeft)
{
    ComparedView& from = *(toLeft ? txtCompared2 : txtCompared1);
    ComparedView& to = *(toLeft ? txtCompared1 : txtCompared2);
    const auto [first, last] = from.SelectedLines();
    if (!m_isCompared || !qb::MoveLines(from, to, first, last))
        return;
    m_typed = {true, true};
    from.GoToLine(first); // what is filler now is not to be seen as a selection
    to.GoToLine(first);
}

void frmConflicts::FileMenu(const QPoint& place)
{
    const int row = lwFiles->indexOfTopLevelItem(lwFiles->itemAt(place));
    if (row < 0)
        return;
    lwFiles->setCurrentItem(lwFiles->topLevelItem(row));
    const FileMove offered = MoveOffered(m_solver->FileRows()[size_t(row)]);
    mnuMoveNewerItem->setVisible(offered == FileMove::ToNewer);
    mnuMoveOlderItem->setVisible(offered == FileMove::ToOlder);
    if (offered != FileMove::None)
        mnuPopUp->popup(lwFiles->viewport()->mapToGlobal(place));
}

void frmConflicts::MoveFile(FileMove move)
{
    m_solver->MoveFile(lwFiles->indexOfTopLevelItem(lwFiles->currentItem()), move);
    ShowFiles();
}

} // namespace qb
