#include "conflicts/ConflictDecision.h"

#include "conflicts/ConflictPages.h"
#include "platform/system/RuntimeError.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ClassName = u"CConflict"_s;

void Require(bool done, const QString& what)
{
    if (!done)
        throw RuntimeError(ErrorNumber::Engine, what + u" Nothing was decided."_s, ClassName);
}

} // namespace

ConflictDecision::ConflictDecision(CConflict& conflict, ConflictSide winner)
    : m_conflict(conflict), m_library(*conflict.m_library), m_item(conflict.m_item), m_tempItem(conflict.m_tempItem),
      m_id(conflict.Key().toLongLong()), m_winner(winner)
{
}

void ConflictDecision::Run()
{
    SettlePage(m_library, m_id); // it may be discarded, or take the place of another one
    m_discarded = m_conflict.m_discardInto(m_library, DiscardKind::Decided);
    Transaction transaction(m_library);
    m_item.RequireUnchanged();
    m_tempItem.RequireUnchanged();
    Discard();
    if (m_winner == ConflictSide::TempItem)
        TakeTexts();
    DecidePage();
    DecideFiles();
    m_item.SetItemChanged(true);
    Require(m_item.Commit(), u"The item could not be stored."_s);
    m_tempItem.Delete();
    Require(m_tempItem.Commit(), u"The other version could not be removed."_s);
    m_discarded->Note();
    transaction.Commit();
    Settle();
}

/// Before anything of either version is changed. The one that wins goes along where not all of it stays.
void ConflictDecision::Discard()
{
    Discard(OtherSide(m_winner), u"Another version of it was kept when the conflict was solved"_s);
    if (!StaysWhole())
        Discard(m_winner, u"Only a part of it was kept when the conflict was solved"_s);
}

void ConflictDecision::Discard(ConflictSide side, const QString& reason)
{
    if (side == ConflictSide::Item)
        m_discarded->AddOwn(m_id, reason);
    else
        m_discarded->AddTemporary(u"r.ID = ?"_s, {m_id}, reason);
}

/// Nothing that is stored of the version that wins is lost by the decision: neither texts that were edited, nor status
/// and rating, nor the page, nor files that leave or can't come, nor what was said of them.
bool ConflictDecision::StaysWhole()
{
    CConflictCodeItem& winner = m_conflict.Side(m_winner);
    const auto isLost = [&](CConflictCodeItem::Column column) {
        return winner.ReadValue(column).ToLong() != m_item.OwnValue(column).ToLong();
    };
    const bool losesPage = PageSide() != m_winner && winner.HTMLPage()
                           && m_item.HTMLLastUpdated() != m_tempItem.HTMLLastUpdated();
    const CConflictFileObjects& files = winner.FileObjects();
    return !winner.AreTextsChanged() && !isLost(CConflictCodeItem::StatusColumn)
           && !isLost(CConflictCodeItem::RatingColumn) && !losesPage
           && std::none_of(files.begin(), files.end(), [](const auto& file) {
                  const bool arrives = file->TemporaryTable() && !file->HasCorrespondingID();
                  return file->MoveToTheSecondSet() || file->DescriptionChanged() || (arrives && !file->HasContents());
              });
}

ConflictSide ConflictDecision::PageSide() const
{
    return m_conflict.m_pageSide.value_or(m_winner);
}

void ConflictDecision::TakeTexts()
{
    m_item.SetTitle(m_tempItem.Title());
    m_item.SetDescription(m_tempItem.Description());
    m_item.SetInfo(m_tempItem.Info());
    m_item.SetCode(m_tempItem.Code());
    m_item.SetCodeHeaders(m_tempItem.CodeHeaders());
    m_item.SetNotes(m_tempItem.Notes());
    m_item.SetExample(m_tempItem.Example());
    m_item.SetUsageHeaders(m_tempItem.UsageHeaders());
}

void ConflictDecision::DecidePage()
{
    const bool differ = m_item.HTMLLastUpdated() != m_tempItem.HTMLLastUpdated();
    const bool takes = PageSide() == ConflictSide::TempItem;
    const bool hadPage = m_item.HTMLPage();
    if (takes)
        m_item.SetHTMLPage(m_tempItem.HTMLPage());
    if (takes && differ && m_item.HTMLPage())
        ReplacePage();
    else if (differ && (m_item.HTMLPage() || hadPage))
        m_item.SetHTMLLastUpdated(m_library.NextStamp()); // the other replica has another one
}

/// A page is not deleted for want of another one.
void ConflictDecision::ReplacePage()
{
    m_page = std::make_unique<PageChanges>(m_library);
    if (WriteConflictPage(m_library, m_id, m_page->Folder(), QString::number(m_id))) {
        m_page->Bind(m_id, PageChanges::Kind::Replace);
        m_item.SetHTMLLastUpdated(m_library.NextStamp());
        return;
    }
    m_page.reset();
    m_item.SetHTMLPage(m_item.ReadValue(CConflictCodeItem::HTMLPageColumn).ToBoolean());
    m_messages << Message{.Text = u"Required HTML files missing. (CConflict; KeepItem)"_s,
                          .Caption = u"Error"_s,
                          .Icon = MsgBoxIcon::Critical};
}

/// A file of one version is kept when it stands in the winning one and is not marked, or in the losing one and is.
void ConflictDecision::DecideFiles()
{
    const bool itemWins = m_winner == ConflictSide::Item;
    if (!itemWins)
        TakeDescriptions();
    for (const auto& file : m_item.FileObjects()) {
        if (!file->HasCorrespondingID() && file->MoveToTheSecondSet() == itemWins)
            DeleteFile(*file);
        else
            Require(file->Commit(), u"The description of a file could not be stored."_s);
    }
    for (const auto& file : m_tempItem.FileObjects()) {
        if (!file->HasCorrespondingID() && file->MoveToTheSecondSet() == itemWins)
            AddFile(*file);
    }
}

void ConflictDecision::TakeDescriptions()
{
    for (const auto& file : m_item.FileObjects()) {
        if (CConflictFileObject* other = m_tempItem.FileObjects().Item(file->CorrespondingID()))
            file->SetDescription(other->Description());
    }
}

void ConflictDecision::DeleteFile(CConflictFileObject& file)
{
    m_leaving.Delete(m_library, file.Key().toLongLong());
}

/// What arrives is added now, so that the other replicas get it.
void ConflictDecision::AddFile(CConflictFileObject& file)
{
    if (!m_work)
        m_work = std::make_shared<PendingWork>(m_library);
    const auto number = qint64(m_arriving.size());
    const QString contents = m_work->PackingFolder() + QString::number(number);
    if (!file.WriteContents(contents)) {
        m_messages << Message{
            .Text = u"The contents of the file '%1' are missing in the other version, so the file was "
                    "not taken over."_s.arg(file.Title()),
            .Caption = u"Error"_s,
            .Icon = MsgBoxIcon::Critical};
        return;
    }
    auto added = std::make_unique<CFileObject>();
    added->Initialise(m_library, {});
    added->SetCodeID(QString::number(m_id));
    added->SetStoredFile(contents, CFileObject::Intake::Move);
    added->SetTitle(file.Title());
    Require(added->TakeIn(m_work, number), u"A file of the other version could not be stored."_s);
    added->SetOrigDateTime(file.OrigDateTime());
    added->SetDescription(file.Description());
    Require(added->Commit(), u"A file of the other version could not be stored."_s);
    m_arriving.push_back(std::move(added));
}

/// The decision counts. What can't be put in place now is brought there when the library is opened next.
void ConflictDecision::Settle()
{
    for (const auto& file : m_arriving)
        file->PutInPlace(); // which reports what it can't
    Guarded(ClassName, u"KeepItem"_s, [this] {
        if (m_page)
            m_page->PutInPlace();
    });
    Guarded(ClassName, u"KeepItem"_s, [this] { m_leaving.Complete(); });
    m_discarded->Place();
    for (const Message& message : std::as_const(m_messages))
        Prompts::Current().MsgBox(message);
}

} // namespace qb
