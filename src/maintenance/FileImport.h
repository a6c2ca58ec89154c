#pragma once

#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "store/Library.h"

#include <QStringList>
#include <vector>

namespace qb {

/// How files are taken into an item. The numbers are those of the stored setting.
enum class ImportOption {
    AsTheyAre = 1,
    ZipEach = 2, ///< each file into an archive of its own
    ZipAll = 3,  ///< all files into one archive
};

/// What is to be taken in, once it is known which archives lie beside the chosen files.
struct FileImportPlan {
    QStringList Files; ///< paths; a file whose archive lies beside it is replaced by that
    struct Compressible {
        int Index;       ///< of Files
        QString ZipName; ///< without a folder
    };
    std::vector<Compressible> Candidates; ///< files that could be compressed
};

/// Looks at the chosen files. A file with the extension "zip" is never compressed.
FileImportPlan PlanFileImport(const QStringList& files);

struct FileImportOptions {
    ImportOption Option = ImportOption::AsTheyAre;
    QString ZipName;     ///< for ImportOption::ZipAll: the name of the archive
    QString Description; ///< RTF, of each file
    /// All files or none; otherwise those that came before one that failed stay.
    bool Whole = false;
    /// With Whole: told the IDs before they count. What it raises takes everything back.
    Hook<void(const QStringList& keys)> BeforeCommit{};
};

struct FileImportResult {
    QStringList Keys;       ///< of the rows made, in order
    bool Cancelled = false; ///< those that were complete stay
    bool Complete = false;  ///< false also when a file failed, of which the user has been told
};

/// Takes the files of a plan into the item of @p itemKey. Where the item has a file of that name, a
/// number in brackets goes before the extension. Archives are made in the library's own folder first.
/// @p work counts bytes. Raises RuntimeError 75 when an archive can't be made; nothing was stored then.
FileImportResult ImportStoredFiles(Library& library, const QString& itemKey, const FileImportPlan& plan,
                                   const FileImportOptions& options, Work& work = NoWork());

/// @p name with ".zip" behind it unless it ends so, in whatever case.
QString WithZipExtension(const QString& name);

/// Whether a name ends in ".zip", in whatever case.
bool HasZipExtension(const QString& name);

} // namespace qb
