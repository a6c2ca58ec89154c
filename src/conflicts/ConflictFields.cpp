#include "conflicts/ConflictFields.h"

#include "conflicts/ComparedBoxes.h"
#include "conflicts/LineComparison.h"
#include "platform/richtext/Rtf.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// One text after both sides have what only one of them changed.
void MergeText(const ConflictText& text, CConflictCodeItem& own, CConflictCodeItem& other, const BaseVersion& base)
{
    const QString first = (own.*text.Get)();
    const QString second = (other.*text.Get)();
    const QString& former = base.*text.Base;
    if (first == former || second == former) {
        (first == former ? (own.*text.Set)(second) : (other.*text.Set)(first));
        return;
    }
    if (first.size() > LongestRead || second.size() > LongestRead)
        return;
    const QString texts[] = {text.Plain(first), text.Plain(second)};
    const bool isTooLarge = texts[0].size() > LongestCompared || texts[1].size() > LongestCompared;
    if (isTooLarge || texts[0] == texts[1]) // both changed the looks
        return;
    const MergedText merged = MergeTexts(text.Plain(former), texts[0], texts[1]);
    const auto textOf = [&](LineOwner owner, const QString& raw, const QString& others) {
        const QString plain = merged.Text(owner);
        return text.IsRich ? LinesWithLooks(LinesIn(plain), raw, others) : plain;
    };
    const QString result = textOf(LineOwner::First, first, second);
    (own.*text.Set)(result);
    (other.*text.Set)(merged.HasClash() ? textOf(LineOwner::Second, second, first) : result);
}

void MergeHeaders(const ConflictText& text, CConflictCodeItem& own, CConflictCodeItem& other, const BaseVersion& base)
{
    const quint8 first = (own.*text.GetHeaders)();
    const quint8 second = (other.*text.GetHeaders)();
    // of two that differ the one that is not the base's
    const auto merged = quint8((first & second) | ((first | second) & ~(base.*text.BaseHeaders)));
    (own.*text.SetHeaders)(merged);
    (other.*text.SetHeaders)(merged);
}

} // namespace

QString ConflictText::Plain(const QString& stored) const
{
    return IsRich ? PlainTextFromRtf(stored) : stored;
}

const std::vector<ConflictText>& ConflictTexts()
{
    using Item = CConflictCodeItem;
    using Base = BaseVersion;
    using F = SolverField;
    static const std::vector<ConflictText> texts{
        {F::Title, u"title"_s, false, &Item::Title, &Item::SetTitle, &Base::Title},
        {F::Description, u"description"_s, false, &Item::Description, &Item::SetDescription, &Base::Description},
        {F::ItemInfo, u"info"_s, false, &Item::Info, &Item::SetInfo, &Base::Info},
        {F::Code, u"code"_s, true, &Item::Code, &Item::SetCode, &Base::Code, &Item::CodeHeaders, &Item::SetCodeHeaders,
         &Base::CodeHeaders},
        {F::Notes, u"notes"_s, true, &Item::Notes, &Item::SetNotes, &Base::Notes},
        {F::Usage, u"usage"_s, true, &Item::Example, &Item::SetExample, &Base::Usage, &Item::UsageHeaders,
         &Item::SetUsageHeaders, &Base::UsageHeaders},
    };
    return texts;
}

const ConflictText* ConflictTextOf(SolverField field)
{
    const auto found = std::find_if(ConflictTexts().begin(), ConflictTexts().end(),
                                    [field](const ConflictText& text) { return text.Field == field; });
    return found == ConflictTexts().end() ? nullptr : &*found;
}

const ConflictText* ConflictTextOf(const QString& name)
{
    const auto found = std::find_if(ConflictTexts().begin(), ConflictTexts().end(),
                                    [&name](const ConflictText& text) { return text.Name == name; });
    return found == ConflictTexts().end() ? nullptr : &*found;
}

std::array<bool, SolverFieldCount> FieldsInConflict(CConflict& conflict)
{
    constexpr std::pair<void (CConflict::*)(), SolverField> events[] = {
        {&CConflict::TitleConflict, SolverField::Title},   {&CConflict::DescriptionConflict, SolverField::Description},
        {&CConflict::InfoConflict, SolverField::ItemInfo}, {&CConflict::CodeConflict, SolverField::Code},
        {&CConflict::NotesConflict, SolverField::Notes},   {&CConflict::UsageConflict, SolverField::Usage},
        {&CConflict::HTMLConflict, SolverField::HTML},     {&CConflict::FilesConflict, SolverField::Files},
    };
    std::array<bool, SolverFieldCount> marks{};
    std::vector<QMetaObject::Connection> connections;
    for (const auto& [event, field] : events)
        connections.push_back(
            QObject::connect(&conflict, event, &conflict, [&mark = marks[size_t(field)]] { mark = true; }));
    conflict.CompareItems();
    for (const QMetaObject::Connection& connection : connections)
        QObject::disconnect(connection);
    return marks;
}

void MergeVersions(CConflictCodeItem& own, CConflictCodeItem& other, const BaseVersion& base)
{
    for (const ConflictText& text : ConflictTexts()) {
        MergeText(text, own, other, base);
        if (text.GetHeaders)
            MergeHeaders(text, own, other, base);
    }
}

} // namespace qb
