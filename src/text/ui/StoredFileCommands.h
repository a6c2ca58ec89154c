#pragma once

#include "text/FileDetailsView.h"

namespace qb {

/// The list of the files that are stored with the current item, and the commands of a panel on it. There has to be a
/// list for what works on files.
class StoredFileCommands {
public:
    FileDetailsView* FileControl() const { return ctlFileDetails1; }

    void AddFile() { ctlFileDetails1->AddFile(); }
    void DeleteFile() { ctlFileDetails1->DeleteFile(); }
    void ExportFile() { ctlFileDetails1->ExportFile(); }
    void UnzipToDirectory() { ctlFileDetails1->UnzipToDirectory(); }
    /// Nothing where there is no list yet.
    void FileNotesSetFocus()
    {
        if (ctlFileDetails1)
            ctlFileDetails1->NotesSetFocus();
    }

protected:
    StoredFileCommands() = default;
    ~StoredFileCommands() = default;

    FileDetailsView* ctlFileDetails1 = nullptr;
};

} // namespace qb
