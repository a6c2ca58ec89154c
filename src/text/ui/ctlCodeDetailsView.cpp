// How the texts are seen, finding in them, and the net below what is typed.

#include "platform/richtext/Rtf.h"
#include "platform/system/Prompts.h"
#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "text/CodeSections.h"
#include "text/FileDetailsView.h"
#include "text/ui/CodeBox.h"
#include "text/ui/FindBar.h"
#include "text/ui/RichTextBox.h"
#include "text/ui/ctlCodeDetails.h"

#include <QDir>
#include <QScopedValueRollback>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString ModuleName = u"ctlCodeDetails"_s;
} // namespace

// Finding

void ctlCodeDetails::FindInText()
{
    m_findBar->Open();
}

void ctlCodeDetails::FindNextOccurance()
{
    m_findBar->FindNext();
}

void ctlCodeDetails::FindPreviousOccurance()
{
    m_findBar->FindPrevious();
}

void ctlCodeDetails::GoToLine()
{
    CodeBox* box = CurrentCodeBox();
    if (!box)
        return;
    const std::optional<QString> answer = Prompts::Current().InputBox(
        u"Line (1 to %1):"_s.arg(box->LineCount()), u"Go to Line"_s, QString::number(box->LineOfCaret()));
    bool isNumber = false;
    const int line = answer.value_or(QString()).trimmed().toInt(&isNumber);
    if (isNumber)
        box->GoToLine(line);
    box->setFocus();
}

// Looks

void ctlCodeDetails::SetZoom(int percent)
{
    constexpr int Smallest = 50;
    constexpr int Largest = 400;
    constexpr double Whole = 100;
    const int zoom = std::clamp(percent, Smallest, Largest);
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    const QScopedValueRollback userChange(m_userChange, false);
    for (const TextState& text : m_texts)
        text.Box->SetZoom(m_zoom / Whole);
    if (ctlFileDetails1)
        ctlFileDetails1->DescriptionTextBox().SetZoom(m_zoom / Whole);
    Q_EMIT ZoomChanged(m_zoom);
}

void ctlCodeDetails::SetLineNumbers(bool shown)
{
    rtbCode->SetLineNumbers(shown);
    rtbUsage->SetLineNumbers(shown);
}

void ctlCodeDetails::SetWordWrap(bool wraps)
{
    rtbCode->SetWordWrap(wraps);
    rtbUsage->SetWordWrap(wraps);
}

// The net

void ctlCodeDetails::KeepUnsavedTexts()
{
    if (!m_item || !m_recovery)
        return;
    const auto start = std::chrono::steady_clock::now();
    UnsavedTexts unsaved{
        .Item = m_item->Key().toLongLong(), .LastChanged = m_shownState, .Code = {}, .Notes = {}, .Usage = {}};
    const std::pair<Text, std::optional<QString>*> places[] = {
        {CodeText, &unsaved.Code}, {NotesText, &unsaved.Notes}, {UsageText, &unsaved.Usage}};
    bool any = false;
    for (const auto& [text, place] : places) {
        if (!m_texts[text].Changed)
            continue;
        *place = m_texts[text].Box->IsEmpty() ? QString() : m_texts[text].Box->TextRTF();
        any = true;
    }
    if (any)
        m_recovery->Write(unsaved);
    // A text of many megabytes takes its time, of which typing must notice little.
    constexpr int Share = 20;
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    m_recoveryTimer.setInterval(std::max(RecoveryInterval, Share * took));
}

void ctlCodeDetails::ForgetUnsavedTexts()
{
    m_recoveryTimer.stop();
    if (m_recovery)
        m_recovery->Remove();
}

void ctlCodeDetails::OfferUnsavedTexts(Library& library, const std::function<void(qint64 item)>& goTo)
{
    Guarded(ModuleName, u"OfferUnsavedTexts"_s, [&] {
        for (const RecoveryFile& file : RecoveryFile::All(library.Name())) {
            if (const std::optional<UnsavedTexts> unsaved = file.Read();
                unsaved && Offer(library, file, *unsaved, goTo))
                return; // the next one at the next start
        }
    });
}

/// Shows the texts if the user wants. What nobody has declined is kept. True when they are shown.
bool ctlCodeDetails::Offer(Library& library, const RecoveryFile& file, const UnsavedTexts& unsaved,
                           const std::function<void(qint64 item)>& goTo)
{
    const auto say = [](const QString& text) {
        Prompts::Current().MsgBox({.Text = text, .Caption = u"Unsaved Changes"_s, .Icon = MsgBoxIcon::Exclamation});
    };
    Statement row = library.Query(u"SELECT Title, LastChanged FROM Items WHERE ID = ?"_s, {unsaved.Item});
    if (!row.Step()) {
        say(u"The program ended before the changes of the item %1 were saved, and the item is gone since. Its texts "
            "are kept in the file '%2'."_s.arg(unsaved.Item)
                .arg(QDir::toNativeSeparators(file.Keep())));
        return false;
    }
    const QString title = row.Text(0);
    const bool isOlder = row.Column(1).ToDate() != unsaved.LastChanged;
    row.Reset();
    const QString question =
        isOlder ? u"The program ended before the changes of the item '%1' were saved, and the item was changed by "
                  "another program since. Do you "
                  "wish to have them back? What is stored stays until you save."_s
                : u"The program ended before the changes of the item '%1' were saved. Do you wish to have them back?"_s;
    const MsgBoxResult wanted = Prompts::Current().MsgBox({.Text = question.arg(title),
                                                           .Caption = u"Unsaved Changes"_s,
                                                           .Buttons = MsgBoxButtons::YesNoCancel,
                                                           .Icon = MsgBoxIcon::Question});
    if (wanted == MsgBoxResult::No) {
        file.Remove();
        return false;
    }
    const RecoveryFile kept = file.SetAside(); // whatever is typed next
    if (wanted != MsgBoxResult::Yes)
        return false;
    goTo(unsaved.Item);
    if (!m_item || m_item->Key().toLongLong() != unsaved.Item || m_locked) {
        say(u"The item '%1' can't be changed now. Its changes are kept and will be offered again."_s.arg(title));
        return false;
    }
    ShowUnsaved(unsaved);
    KeepUnsavedTexts();
    kept.Remove();
    return true;
}

void ctlCodeDetails::ShowUnsaved(const UnsavedTexts& unsaved)
{
    const std::pair<Text, const std::optional<QString>*> texts[] = {
        {CodeText, &unsaved.Code}, {NotesText, &unsaved.Notes}, {UsageText, &unsaved.Usage}};
    const QString code = unsaved.Code.value_or(unsaved.Usage.value_or(QString()));
    if (!code.isEmpty()) // a language that was chosen is unsaved, too
        SetItemLanguage(LanguageInRtf(code));
    for (const auto& [text, rtf] : texts) {
        if (*rtf)
            m_texts[text].Box->SetTextRTF(**rtf); // as if typed: it counts as a change
    }
    // Sections that were added or deleted meanwhile
    if (unsaved.Code)
        m_item->SetCodeHeaders(SectionsOf(*rtbCode).Present());
    if (unsaved.Usage)
        m_item->SetUsageHeaders(SectionsOf(*rtbUsage).Present());
    DisplayTabWithContent();
}

} // namespace qb
