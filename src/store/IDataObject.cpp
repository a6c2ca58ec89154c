#include "store/IDataObject.h"

#include "platform/system/RuntimeError.h"

namespace qb {

using namespace Qt::StringLiterals;

RecordState IDataObject::StateForLet(RecordState state, const QString& source)
{
    switch (state) {
    case RecordState::Clean:
        return RecordState::Edited;
    case RecordState::New:
    case RecordState::Edited:
        return state;
    case RecordState::MarkedForDelete:
        throw RuntimeError(ErrorNumber::RecordAboutToBeDeleted, u"This Record is About to be deleted"_s, source);
    case RecordState::Deleted:
        throw RuntimeError(ErrorNumber::RecordHasBeenDeleted, u"This record has been deleted"_s, source);
    }
    throw RuntimeError(ErrorNumber::RecordNotCreated, u"This record has not been created yet"_s, source);
}

} // namespace qb
