#include "conflicts/CConflictFileObjects.h"

#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "store/Library.h"

#include <QSet>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ClassName = u"CConflictFileObjects"_s;

/// As the library's tables compare texts.
bool IsSameTitle(const QString& one, const QString& other)
{
    return QString::compare(one, other, Qt::CaseInsensitive) == 0;
}

void Match(CConflictFileObject& one, CConflictFileObject& other)
{
    one.SetCorrespondingID(other.Key().toLongLong());
    other.SetCorrespondingID(one.Key().toLongLong());
    const FileAppearance appears = one.Description() == other.Description() ? FileAppearance::InBoth
                                                                            : FileAppearance::InBothDescribed;
    one.SetAppearsIn(appears);
    other.SetAppearsIn(appears);
}

} // namespace

CConflictFileObject& CConflictFileObjects::Append(const QString& key)
{
    if (!m_library)
        throw RuntimeError(ErrorNumber::ObjectNotSet, u"No database connected."_s, ClassName);
    auto file = std::make_unique<CConflictFileObject>();
    file->SetTemporaryTable(m_temporaryTable);
    file->Initialise(*m_library, key);
    return *m_files.emplace_back(std::move(file));
}

void CConflictFileObjects::AddAll(qint64 item)
{
    if (!m_library) {
        Prompts::Current().MsgBox({.Text = u"No database connected."_s, .Caption = ClassName});
        return;
    }
    const QString table = m_temporaryTable ? u"TempFiles"_s : u"Files"_s;
    if (!m_library->TableExists(table))
        return;
    Statement rows = m_library->Query(u"SELECT ID FROM %1 WHERE CodeID = ? ORDER BY ID"_s.arg(table), {item});
    while (rows.Step())
        Append(rows.Text(0)).ReadWhole();
}

CConflictFileObject& CConflictFileObjects::AddNew()
{
    return Append({});
}

CConflictFileObject& CConflictFileObjects::Add(qint64 id)
{
    if (Item(id))
        throw RuntimeError(ErrorNumber::KeyExists, u"The file %1 is in the collection already."_s.arg(id), ClassName);
    return Append(QString::number(id));
}

CConflictFileObject& CConflictFileObjects::CopyFileObject(CConflictFileObject& file)
{
    CConflictFileObject& copy = AddNew();
    copy.SetCodeID(file.CodeID());
    copy.SetTitle(file.Title());
    copy.SetSize(file.Size());
    copy.SetOrigDateTime(file.OrigDateTime());
    copy.SetDateAdded(file.DateAdded());
    copy.SetLastUpdated(file.LastUpdated());
    copy.SetDescription(file.Description());
    return copy;
}

CConflictFileObject* CConflictFileObjects::Item(const QString& key) const
{
    const auto found = std::find_if(m_files.begin(), m_files.end(),
                                    [&key](const auto& file) { return file->Key() + u'C' == key; });
    return found == m_files.end() ? nullptr : found->get();
}

void CConflictFileObjects::Remove(const QString& key)
{
    if (std::erase_if(m_files, [&key](const auto& file) { return file->Key() + u'C' == key; }) == 0)
        throw RuntimeError(ErrorNumber::InvalidCall, u"There is no file '%1' in the collection."_s.arg(key), ClassName);
}

void PairFiles(CConflictFileObjects& items, CConflictFileObjects& temporary)
{
    QSet<CConflictFileObject*> taken;
    for (const auto& file : temporary) {
        file->SetCorrespondingID(0);
        file->SetAppearsIn(FileAppearance::InTempItem);
    }
    for (const auto& file : items) {
        file->SetCorrespondingID(0);
        file->SetAppearsIn(FileAppearance::InItem);
        for (const auto& other : temporary) {
            if (taken.contains(other.get()) || file->DateAdded() != other->DateAdded()
                || !IsSameTitle(file->Title(), other->Title()))
                continue;
            taken.insert(other.get());
            Match(*file, *other);
            break;
        }
    }
}

} // namespace qb
