#include "panels/ItemInfo.h"

#include "platform/system/Prompts.h"
#include "store/ItemMerge.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlBookmarks"_s;

constexpr StatusRow Rows[] = {
    {ItemStatus::Own, "mnuOwnItem", "&Own Item", "OWN_CODE", "The user created this item"},
    {ItemStatus::Downloaded, "mnuDownloadedItem", "&Downloaded Item", "DOWNLOADED",
     "This item was downloaded and not tested yet"},
    {ItemStatus::TestedOK, "mnuTestedOK", "&Tested OK", "THUMB_UP", "This item works fine"},
    {ItemStatus::NotWorking, "mnuItemNotWorking", "&Not Working", "THUMB_DOWN", "This item doesn't work"},
};

} // namespace

std::span<const StatusRow> StatusRows()
{
    return Rows;
}

const StatusRow* RowOfStatus(qint32 status)
{
    const auto* row = std::find_if(std::begin(Rows), std::end(Rows),
                                   [status](const StatusRow& one) { return qint32(one.Status) == status; });
    return row == std::end(Rows) ? nullptr : row;
}

std::array<QString, RatingImageCount> RatingImages(qint32 rating)
{
    const qint32 halves = rating >= 1 && rating <= BestRating ? rating : 0;
    std::array<QString, RatingImageCount> images;
    for (int i = 0; i < RatingImageCount; ++i) {
        const qint32 left = halves - 2 * i;
        images[size_t(i)] = left >= 2 ? u"STAR"_s : left == 1 ? u"HALF_STAR"_s : u"NO_STAR"_s;
    }
    return images;
}

QString RatingText(qint32 rating)
{
    if (rating < 1 || rating > BestRating)
        return u"Not rated"_s;
    return u"Rated %1 of %2"_s.arg(rating / 2.0).arg(RatingImageCount);
}

// What is current

void ItemInfo::SetLibrary(Library* library)
{
    m_library = library;
    m_current = nullptr;
    Free();
    Q_EMIT Shown();
}

void ItemInfo::InitialiseItem(CCodeItem* item, bool fixed)
{
    m_current = item;
    m_fixed = fixed;
    if (Locked() && !StoredItemIsThere(m_lockedKey)) // deleted meanwhile
        Free();
    else if (Locked() && item && item->Key() == m_lockedKey)
        m_kept.reset();
    else if (Locked() && (!m_kept || m_kept->Key() != m_lockedKey))
        Keep(m_lockedKey);
    Q_EMIT Shown();
}

bool ItemInfo::StoredItemIsThere(const QString& key) const
{
    return m_library
           && Guarded(
               ModuleName, u"InitialiseItem"_s,
               [&] {
                   return !m_library->QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {key.toLongLong()}).IsNull();
               },
               false);
}

/// Nobody can be asked what a change of it decides, since it is not the current one.
void ItemInfo::Keep(const QString& key)
{
    m_kept = std::make_unique<CCodeItem>();
    m_kept->Initialise(*m_library, key);
    Guarded(ModuleName, u"InitialiseItem"_s, [&] {
        const ItemStanding standing = StandingOf(*m_library, key.toLongLong());
        m_keptBar = WhatBars(ItemChange::EditUnasked, standing);
        m_kept->SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, standing));
    });
    connect(m_kept.get(), &CCodeItem::StatusUpdated, this, &ItemInfo::Changed);
}

void ItemInfo::Free()
{
    m_kept.reset();
    m_lockedTitle.clear();
    if (std::exchange(m_lockedKey, QString()).isEmpty())
        return;
    Q_EMIT LockChanged();
}

// What is shown

bool ItemInfo::MayEdit() const
{
    return m_kept ? m_keptBar == Bar::None : m_current && !m_fixed;
}

QString ItemInfo::WhyNot() const
{
    return m_kept && m_keptBar != Bar::None ? SentenceOf(m_keptBar) + u'.' : QString();
}

// The lock

bool ItemInfo::ToggleLock()
{
    if (Locked()) {
        if (!LeaveKept(AutoSaveOn()))
            return false;
        Free();
        Q_EMIT Shown();
        return true;
    }
    if (!m_current || m_current->Key().isEmpty()) {
        Prompts::Current().MsgBox({.Text = u"No item selected. Page can not be locked."_s,
                                   .Caption = u"Nothing to lock"_s,
                                   .Icon = MsgBoxIcon::Information});
        return false;
    }
    m_lockedKey = m_current->Key();
    m_lockedTitle = m_current->Title();
    Q_EMIT LockChanged();
    return true;
}

QString ItemInfo::LockedText() const
{
    return Locked() ? u"[locked to: "_s + m_lockedTitle + u']' : QString();
}

void ItemInfo::TitleChanged(qint64 item, const QString& title)
{
    if (m_lockedKey != QString::number(item) || m_lockedTitle == title)
        return;
    m_lockedTitle = title;
    Q_EMIT LockChanged();
}

void ItemInfo::Refresh()
{
    if (!m_kept || KeptUnsaved())
        return;
    Keep(m_lockedKey);
    Q_EMIT Shown();
}

// Changes

void ItemInfo::SetStatus(ItemStatus status)
{
    if (!MayChange() || Item()->ItemStatus() == qint32(status))
        return;
    Item()->SetItemStatus(qint32(status));
    Item()->SetItemChanged(true);
    Q_EMIT Changed();
}

void ItemInfo::SetRating(qint32 rating)
{
    if (!MayChange() || Item()->ItemRating() == rating)
        return;
    Item()->SetItemRating(rating);
    Item()->SetItemChanged(true);
    Q_EMIT Changed();
}

/// Nothing that is shown changes by it: who types sees it.
void ItemInfo::SetInfo(const QString& text)
{
    const QString info = QString(text).replace(u"\r\n"_s, u"\n"_s).replace(u'\n', u"\r\n"_s);
    if (!MayChange() || QString(Item()->Info()).replace(u"\r\n"_s, u"\n"_s).replace(u'\n', u"\r\n"_s) == info)
        return;
    Item()->SetInfo(info);
    Item()->SetItemChanged(true);
    if (ShowsCurrent())
        Q_EMIT InfoTyped();
}

void ItemInfo::LinksEdited()
{
    Q_EMIT Changed();
}

// The item that is kept

bool ItemInfo::SaveKept()
{
    if (!KeptUnsaved())
        return true;
    return Guarded(
        ModuleName, u"SaveKept"_s,
        [this] {
            const bool linksChanged = m_kept->LinksChanged();
            if (!QFileInfo::exists(m_library->Name())) // what is written then is nowhere
                return false;
            if (!SaveMerged(*m_kept, *m_library).Saved)
                return false;
            if (linksChanged)
                m_kept->LoadLinks();
            Q_EMIT Changed();
            return true;
        },
        false);
}

void ItemInfo::DropKept()
{
    Keep(m_lockedKey);
    Q_EMIT Shown();
}

bool ItemInfo::LeaveKept(bool automatic)
{
    if (!KeptUnsaved())
        return true;
    const auto asked = [](const QString& text, MsgBoxResult preset, bool mustAnswer) {
        return Prompts::Current().MsgBox({.Text = text,
                                          .Caption = u"Save Item"_s,
                                          .Buttons = MsgBoxButtons::YesNo,
                                          .Icon = MsgBoxIcon::Question,
                                          .Default = preset,
                                          .MustAnswer = mustAnswer})
               == MsgBoxResult::Yes;
    };
    const QString title = m_kept->Title();
    const bool wanted =
        automatic
        || asked(
            u"The item '%1', to which the info page is locked, has been changed. Do you wish to save the changes?"_s
                .arg(title),
            MsgBoxResult::Yes, true);
    if (wanted && SaveKept())
        return true;
    if (wanted
        && !asked(u"The changes of the item '%1', to which the info page is locked, could not be saved. Do you wish to "
                  "go on without them? They will be lost."_s.arg(title),
                  MsgBoxResult::No, false))
        return false;
    DropKept();
    return true;
}

} // namespace qb
