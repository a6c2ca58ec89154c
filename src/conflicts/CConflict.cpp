#include "conflicts/CConflict.h"

#include "conflicts/ConflictDecision.h"
#include "platform/system/RuntimeError.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ClassName = u"CConflict"_s;

} // namespace

void CConflict::Initialize(Library& library, qint64 item)
{
    const RuntimeError gone(ErrorNumber::RecordDeleted, u"There is no conflict of the item %1 any more."_s.arg(item),
                            ClassName);
    if (!library.TableExists(u"TempItems"_s)) // no merge has left any
        throw gone;
    m_library = &library;
    m_pageSide.reset();
    m_tempItem.SetTemporaryTable(true);
    for (CConflictCodeItem* side : {&m_item, &m_tempItem}) {
        side->Initialise(library, QString::number(item));
        side->ReadWhole();
        if (side->Title().isEmpty())
            throw gone;
    }
    PairFiles(m_item.FileObjects(), m_tempItem.FileObjects());
}

bool CConflict::Commit()
{
    return m_item.Commit() && m_tempItem.Commit();
}

ConflictSide CConflict::NewerSide()
{
    return m_item.LastChanged() < m_tempItem.LastChanged() ? ConflictSide::TempItem : ConflictSide::Item;
}

bool CConflict::FilesDiffer()
{
    CConflictFileObjects& files = m_item.FileObjects();
    CConflictFileObjects& others = m_tempItem.FileObjects();
    return files.Count() != others.Count() || std::any_of(files.begin(), files.end(), [&others](const auto& file) {
               CConflictFileObject* other = others.Item(file->CorrespondingID());
               return !other || other->Description() != file->Description();
           });
}

void CConflict::CompareItems()
{
    using Text = QString (CConflictCodeItem::*)();
    using Event = void (CConflict::*)();
    constexpr std::pair<Text, Event> Texts[] = {
        {&CConflictCodeItem::Title, &CConflict::TitleConflict},
        {&CConflictCodeItem::Description, &CConflict::DescriptionConflict},
        {&CConflictCodeItem::Info, &CConflict::InfoConflict},
        {&CConflictCodeItem::Code, &CConflict::CodeConflict},
        {&CConflictCodeItem::Notes, &CConflict::NotesConflict},
        {&CConflictCodeItem::Example, &CConflict::UsageConflict},
    };
    Guarded(ClassName, u"CompareItems"_s, [&] {
        for (const auto& [text, event] : Texts) {
            if ((m_item.*text)() != (m_tempItem.*text)())
                Q_EMIT(this->*event)();
        }
        if (m_item.HTMLLastUpdated() != m_tempItem.HTMLLastUpdated())
            Q_EMIT HTMLConflict();
        if (FilesDiffer())
            Q_EMIT FilesConflict();
    });
}

bool CConflict::KeepItem(int which)
{
    return Guarded(ClassName, u"KeepItem"_s, [this, which] { ConflictDecision(*this, SideOf(which)).Run(); });
}

} // namespace qb
