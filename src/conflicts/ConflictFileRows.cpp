#include "conflicts/ConflictFileRows.h"

#include "support/DateFormatCustom.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString OnlyNewer = u"This file occures only in the newer item."_s;
const QString OnlyOlder = u"This file occures only in the older item."_s;
const QString MarkedToOlder = u"This file is marked for move to the older item."_s;
const QString MarkedToNewer = u"This file is marked for move to the newer item."_s;

struct Look {
    FileAppearance Appears;
    char16_t Mark;
    QString Icon;
    QString ToolTip;
    QString MarkedIcon = {};
    QString MarkedToolTip = {};
};

const Look& LookOf(FileAppearance appears)
{
    static const Look looks[] = {
        {FileAppearance::InBoth, u'N', u"DUALEMPTY"_s, u"This file occures in both item versions."_s},
        {FileAppearance::InBothDescribed, u'Z', u"DUAL"_s,
         u"This file occures in both item versions, but its descriptions are conflicting."_s},
        {FileAppearance::InItem, u'X', u"RED"_s, OnlyNewer, u"HALFBLUE"_s, MarkedToOlder},
        {FileAppearance::InTempItem, u'Y', u"BLUE"_s, OnlyOlder, u"HALFRED"_s, MarkedToNewer},
    };
    for (const Look& look : looks) {
        if (look.Appears == appears)
            return look;
    }
    return looks[0];
}

QString MomentText(Date moment)
{
    return moment.IsNone() ? QString() : DateFormatCustom(moment, u"d/mm/yyyy hh:nn:ss"_s);
}

ConflictFileRow RowOf(CConflictFileObject& file)
{
    const Look& look = LookOf(file.AppearsIn());
    const bool isMarked = file.MoveToTheSecondSet();
    return {.File = file.Key().toLongLong(),
            .Mark = look.Mark,
            .Icon = isMarked ? look.MarkedIcon : look.Icon,
            .ToolTip = isMarked ? look.MarkedToolTip : look.ToolTip,
            .Columns = {file.Title(), QString::number(file.Size()), MomentText(file.OrigDateTime()),
                        MomentText(file.DateAdded()), MomentText(file.LastUpdated())}};
}

bool IsMarked(const ConflictFileRow& row)
{
    constexpr qsizetype Place = 10; // after "This file "
    return row.ToolTip.indexOf(u"is marked"_s) == Place;
}

} // namespace

std::vector<ConflictFileRow> FileRowsOf(CConflict& conflict)
{
    std::vector<ConflictFileRow> rows;
    for (const auto& file : conflict.Item().FileObjects())
        rows.push_back(RowOf(*file));
    for (const auto& file : conflict.TempItem().FileObjects()) {
        if (!file->HasCorrespondingID())
            rows.push_back(RowOf(*file));
    }
    return rows;
}

FileMove MoveOffered(const ConflictFileRow& row)
{
    if (row.Mark != u'X' && row.Mark != u'Y')
        return FileMove::None;
    return (row.Mark == u'X') != IsMarked(row) ? FileMove::ToOlder : FileMove::ToNewer;
}

void ToggleMove(CConflict& conflict, ConflictFileRow& row, FileMove move)
{
    if (move == FileMove::None)
        return;
    const bool toNewer = move == FileMove::ToNewer;
    // A marked row stands under the opposite command, so the file is looked for where the row says that it is.
    CConflictCodeItem& side = row.Mark == u'X' ? conflict.Item() : conflict.TempItem();
    CConflictFileObject* file = side.FileObjects().Item(row.File);
    if (!file)
        return;
    const bool marks = !file->MoveToTheSecondSet();
    file->SetMoveToTheSecondSet(marks);
    if (marks) {
        row.ToolTip = toNewer ? MarkedToNewer : MarkedToOlder;
        row.Icon = toNewer ? u"HALFRED"_s : u"HALFBLUE"_s;
    } else {
        row.ToolTip = toNewer ? OnlyNewer : OnlyOlder;
        row.Icon = toNewer ? u"RED"_s : u"BLUE"_s;
    }
}

} // namespace qb
