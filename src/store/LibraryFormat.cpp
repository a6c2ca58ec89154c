#include "store/LibraryFormat.h"

#include "platform/dao/DBEngine.h"
#include "platform/dao/DateForm.h"
#include "store/Checksums.h"

#include <QDir>

namespace qb {

using namespace Qt::StringLiterals;

void BringUpToDate(Database& library)
{
    try {
        Transaction transaction(library);
        library.LookAtDateForm();
        if (!library.HasWallDates())
            return;
        DateForm::Convert(library);
        ConvertChecksumStamps(library);
        library.Execute(u"UPDATE DBVersion SET Version = ?"_s, {DBEngine::FormatVersion});
        transaction.Commit();
    } catch (const RuntimeError& error) {
        throw RuntimeError(
            ErrorNumber::CannotOpen,
            u"'%1' is of an older version of the program and can't be brought to the form of this one: %2"_s.arg(
                QDir::toNativeSeparators(library.Name()), error.Description()),
            u"BringUpToDate"_s);
    }
    library.LookAtDateForm();
}

} // namespace qb
