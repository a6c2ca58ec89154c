#include "store/FileMerge.h"

#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Prompts.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Change = RowObject::ForeignChange;

QString Shown(const Value& description)
{
    return PlainTextFromRtf(description.ToText());
}

/// Saves what can be; a change that only the user can decide about is given back, and nothing is written.
std::optional<Change> SaveOrFindQuestion(CFileObject& file, Library& library, DescriptionSave& result)
{
    Transaction transaction(library);
    for (const Change& change : file.ForeignChanges()) {
        if (change.Column != CFileObject::DescriptionColumn || !change.OwnChanged)
            file.TakeTheirs(change);
        else if (Shown(change.Theirs) == Shown(file.OwnValue(change.Column)))
            file.KeepOwn(change);
        else
            return change;
    }
    result.Saved = file.Commit();
    if (result.Saved)
        transaction.Commit();
    return std::nullopt;
}

} // namespace

DescriptionSave SaveDescription(CFileObject& file, Library& library)
{
    DescriptionSave result;
    // Nobody is kept waiting while the question is open; by its answer the row may be another one.
    while (const std::optional<Change> open = SaveOrFindQuestion(file, library, result)) {
        const ChosenText chosen = Prompts::Current().ChooseText(
            {.Caption = u"Changed Twice"_s,
             .Text = u"The description of the file '%1' was changed here, and by another program. Which one is to "
                     "stay?"_s.arg(file.Title()),
             .Own = Shown(file.OwnValue(open->Column)),
             .Theirs = Shown(open->Theirs)});
        if (chosen == ChosenText::Cancel)
            return {};
        if (chosen == ChosenText::Own) {
            file.KeepOwn(*open);
            continue;
        }
        file.TakeTheirs(*open);
        file.SetDescriptionChanged(false);
        result.Taken = true;
    }
    return result;
}

} // namespace qb
