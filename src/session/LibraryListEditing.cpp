// The list of libraries itself: how it is kept, and the commands that change it.

#include "config/Remembered.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "session/FileDialogs.h"
#include "session/ItemTree.h"
#include "session/LibraryEntries.h"
#include "session/LibraryList.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/SideFolders.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;
const QString LibraryFilter = u"KT Quillbase Databases|*.qbd"_s;

void SayThatItBreaksTheList(const QString& what)
{
    Prompts::Current().MsgBox(
        {.Text =
             u"%1 can't contain the characters \"|\" and \";\", which separate the entries of the list of libraries."_s
                 .arg(what),
         .Caption = ApplicationTitle,
         .Icon = MsgBoxIcon::Exclamation});
}

QString JournalOf(const QString& library)
{
    return library + u"-journal"_s;
}

/// Holds an old library aside while a new one is made in its place, and puts it back unless the
/// new one came about. An unfinished journal belongs to its library and goes where that goes.
class HeldAside {
public:
    /// What is held aside is the user's: its name is one that nobody clears away, should the program end now.
    explicit HeldAside(const QString& path)
        : m_path(path), m_aside(NumberedName(path + u".replaced"_s, [](const QString& name) {
              return QFileInfo::exists(name) || QFileInfo::exists(JournalOf(name));
          }))
    {
        if (!QFileInfo::exists(path))
            return;
        QFile::rename(JournalOf(path), JournalOf(m_aside));
        if (!QFile::rename(path, m_aside))
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' can't be replaced; it was left as it is."_s.arg(QDir::toNativeSeparators(path)),
                               u"CreateNewDatabase"_s);
        m_held = true;
        for (const QString& folder : {FilesFolderOf(path).chopped(1), HTMLFolderOf(path).chopped(1)}) {
            const QString aside = NumberedPath(folder);
            if (aside != folder && QDir().rename(folder, aside))
                m_folders.emplace_back(folder, aside);
        }
    }
    ~HeldAside()
    {
        if (!m_held)
            return;
        QFile::rename(m_aside, m_path);
        QFile::rename(JournalOf(m_aside), JournalOf(m_path));
        for (const auto& [folder, aside] : m_folders)
            QDir().rename(aside, folder);
    }
    HeldAside(const HeldAside&) = delete;
    HeldAside& operator=(const HeldAside&) = delete;

    /// What it stored beside itself stays, under other names.
    void Drop()
    {
        m_held = false;
        QFile::remove(m_aside);
        QFile::remove(JournalOf(m_aside));
    }

private:
    QString m_path;
    QString m_aside;
    std::vector<std::pair<QString, QString>> m_folders; ///< and their names aside
    bool m_held = false;
};

} // namespace

// The stored list: "path|alias;" for each library.

void LibraryList::CreateDBArray()
{
    Guarded(ModuleName, u"CreateDBArray"_s, [this] {
        m_session.DatabaseList.clear();
        const ComboGuard guard(*this);
        m_storedList = LibraryEntriesOf(Remembered(Memory::ChosenDatabases));
        for (const LibraryEntry& entry : m_storedList)
            AddToList(entry.Path, entry.Alias);
        if (m_session.DatabaseList.empty()) {
            const QString path = DefaultLibraryPath();
            if (!QFileInfo::exists(path) && !CreateNewDatabase(path, LanguageType::VB, {})) {
                Prompts::Current().MsgBox(
                    {.Text = u"Database could not be created. You will have to select existing one, "
                             "or try to create a new one using the 'File' menu."_s,
                     .Caption = u"No Database to Use"_s,
                     .Icon = MsgBoxIcon::Critical});
            } else {
                AddToList(path, u"KT Quillbase"_s);
                SaveDatabasesToSettings();
            }
        }
        SetComboToPresentDB();
    });
}

/// Another program may have changed the list since it was read: what was changed here is changed there.
void LibraryList::SaveDatabasesToSettings()
{
    const bool saved = RememberMerged(Memory::ChosenDatabases, [this](const QString& stored) {
        if (stored.isEmpty()) // the store was lost rather than emptied
            return TextOfLibraryEntries(m_session.DatabaseList);
        return TextOfLibraryEntries(
            MergedLibraryEntries(m_storedList, m_session.DatabaseList, LibraryEntriesOf(stored)));
    });
    if (saved)
        m_storedList = m_session.DatabaseList;
}

std::optional<int> LibraryList::FindCurrentDBArrayIndex(const QString& path) const
{
    const QString& wanted = path.isEmpty() ? m_session.CurrentDatabasePath : path;
    for (size_t i = 0; i < m_session.DatabaseList.size(); ++i) {
        if (m_session.DatabaseList[i].Path == wanted)
            return int(i);
    }
    return std::nullopt;
}

QString LibraryList::AliasOf(const QString& path) const
{
    const auto index = FindCurrentDBArrayIndex(path);
    return index ? m_session.DatabaseList[size_t(*index)].Alias : fnExtractPathOrFileName(path, PathPart::FileName);
}

void LibraryList::SetComboToPresentDB()
{
    const ComboGuard guard(*this);
    if (m_session.CurrentDatabasePath.isEmpty() && !m_session.DatabaseList.empty())
        m_session.CurrentDatabasePath = m_session.DatabaseList.front().Path;
    if (const auto index = FindCurrentDBArrayIndex())
        m_shell.SetComboIndex(*index);
    else if (!m_session.CurrentDatabasePath.isEmpty()) // a library without a place in the list
        m_shell.SetComboText(u'*' + fnExtractPathOrFileName(m_session.CurrentDatabasePath, PathPart::FileName));
}

void LibraryList::AddToList(const QString& path, const QString& alias)
{
    m_session.DatabaseList.push_back({path, alias});
    m_shell.InsertComboEntry(m_shell.ComboCount(), alias);
}

void LibraryList::RemoveDatabaseFromList(int index)
{
    const ComboGuard guard(*this);
    m_shell.RemoveComboEntry(index);
    m_session.DatabaseList.erase(m_session.DatabaseList.begin() + index);
}

void LibraryList::ForgetLibrary(const QString& path)
{
    if (const auto index = FindCurrentDBArrayIndex(path))
        RemoveDatabaseFromList(*index);
    SaveDatabasesToSettings();
}

// Adding

void LibraryList::SaveUsedDatabasesList(const QString& path)
{
    const ComboGuard guard(*this);
    if (const auto index = FindCurrentDBArrayIndex(path)) {
        Prompts::Current().MsgBox(
            {.Text = u"This database is already in list with an alias of '%1'. You will be automatically "
                     "swithced to it."_s.arg(AliasOf(path)),
             .Caption = ApplicationTitle,
             .Icon = MsgBoxIcon::Information});
        m_shell.SetComboIndex(*index);
        return;
    }
    if (BreaksLibraryEntries(path)) {
        SayThatItBreaksTheList(u"The path of a library in the list"_s);
        ShowAsInterim(path);
        return;
    }
    const auto alias = AskForAlias(path);
    if (!alias) {
        ShowAsInterim(path);
        return;
    }
    AddToList(path, *alias);
    m_shell.SetComboIndex(int(m_session.DatabaseList.size()) - 1);
    SaveDatabasesToSettings();
}

std::optional<QString> LibraryList::AskForAlias(const QString& path)
{
    for (;;) {
        const auto alias = Prompts::Current().InputBox(
            u"Do you wish to include this database to the list of your favourite databases?\nIf so, enter an alias for "
            "this database to be used in the list. Otherwise select Cancel."_s,
            u"Include to Favourites List"_s, fnExtractPathOrFileName(path, PathPart::FileName));
        if (!alias || alias->isEmpty())
            return std::nullopt;
        if (!BreaksLibraryEntries(*alias))
            return alias;
        SayThatItBreaksTheList(u"An alias"_s);
    }
}

/// The library is used without a place in the list.
void LibraryList::ShowAsInterim(const QString& path)
{
    Prompts::Current().MsgBox({.Text = u"Database will not be saved in the list."_s, .Caption = u"Interim Database"_s});
    m_shell.SetComboText(u'*' + fnExtractPathOrFileName(path, PathPart::FileName));
}

bool LibraryList::CreateNewDatabase(const QString& path, LanguageType type, const QString& languageFile)
{
    return Guarded(
        ModuleName, u"CreateNewDatabase"_s,
        [&] {
            HeldAside old(path);
            const bool created = CDBCreate().CreateNewDB(path, type, languageFile) && QFileInfo::exists(path);
            if (created)
                old.Drop();
            return created;
        },
        false);
}

void LibraryList::mnuNewDatabase_Click()
{
    Guarded(ModuleName, u"mnuNewDatabase_Click"_s, [this] {
        const LanguageChoice language = m_shell.AskForLanguage();
        if (language.Type == LanguageType::None)
            return;
        const QString path = GetFileName(true, u"Enter Name and Path for the New Database"_s, LibraryFilter);
        if (path.isEmpty())
            return;
        const bool replacesOpenOne = path == m_session.CurrentDatabasePath;
        if (replacesOpenOne && !m_tree.SaveItem())
            return;
        if (replacesOpenOne)
            CloseDatabase();
        if (!CreateNewDatabase(path, language.Type, language.File)) {
            Prompts::Current().MsgBox({.Text = u"Program was not able to create the database."_s,
                                       .Caption = u"Databese Not Created"_s,
                                       .Icon = MsgBoxIcon::Critical});
            if (replacesOpenOne && SetupDBConnection())
                ShowLibrary();
            return;
        }
        SelectDatabase(path);
        if (language.Type == LanguageType::SelfDefined && DisplayKeywordDefiner)
            DisplayKeywordDefiner();
    });
}

// Alias

void LibraryList::mnuNewAliasItem_Click()
{
    const QString alias = AliasOf(m_session.CurrentDatabasePath);
    const auto text = Prompts::Current().InputBox(
        u"Insert new alias for current database instead of '%1'.\n\nComplete path to the open database is:\n%2"_s.arg(
            alias, QDir::toNativeSeparators(m_session.CurrentDatabasePath)),
        u"New Alias"_s, alias);
    if (text && !text->isEmpty())
        ChangeAlias(*text, false);
}

void LibraryList::ChangeAlias(const QString& alias, bool ask)
{
    Guarded(ModuleName, u"ChangeAlias"_s, [&] {
        const ComboGuard guard(*this);
        const auto index = FindCurrentDBArrayIndex();
        if (!index || alias.isEmpty())
            return SetComboToPresentDB();
        if (BreaksLibraryEntries(alias)) {
            SayThatItBreaksTheList(u"An alias"_s);
            return m_shell.SetComboIndex(*index);
        }
        if (ask
            && Prompts::Current().MsgBox({.Text = u"Do you really wish to change the alias for this database?"_s,
                                          .Caption = u"Alias Change"_s,
                                          .Buttons = MsgBoxButtons::YesNo,
                                          .Icon = MsgBoxIcon::Question})
                   != MsgBoxResult::Yes)
            return m_shell.SetComboIndex(*index);
        m_shell.RemoveComboEntry(*index);
        m_shell.InsertComboEntry(*index, alias);
        m_shell.SetComboIndex(*index);
        m_session.DatabaseList[size_t(*index)].Alias = alias;
        SaveDatabasesToSettings();
    });
}

// Removing

void LibraryList::mnuRemoveDBItem_Click()
{
    Guarded(ModuleName, u"mnuRemoveDBItem_Click"_s, [this] {
        const MsgBoxResult keep = Prompts::Current().MsgBox(
            {.Text = u"Would you like to keep the database on your hard drive?"_s,
             .Caption = u"Remove Database"_s,
             .Buttons = MsgBoxButtons::YesNoCancel,
             .Icon = MsgBoxIcon::Question});
        if (keep == MsgBoxResult::Cancel || !m_tree.SaveItem())
            return;
        const QString path = m_session.CurrentDatabasePath;
        if (const auto index = FindCurrentDBArrayIndex())
            RemoveDatabaseFromList(*index);
        CloseDatabase();
        m_session.CurrentDatabasePath.clear();
        Remember(Memory::LastDB, {});
        SaveDatabasesToSettings();
        m_tree.ClearTreeView();
        if (!SetFirstDBPresent()) {
            m_shell.SetComboText({});
            EnableControls(false);
        }
        if (keep == MsgBoxResult::No)
            DeleteFromDisk(path);
    });
}

/// Empty for one that can't be read.
QString LibraryList::IdentityOf(const QString& path)
{
    try {
        return LibraryIdentity(*DBEngine::OpenDatabase(path, DBEngine::Access::ReadOnly));
    } catch (const RuntimeError&) {
        return {};
    }
}

void LibraryList::DeleteFromDisk(const QString& path)
{
    const MsgBoxResult sure = Prompts::Current().MsgBox(
        {.Text =
             u"The program is about to delete the database file and all coherent files from your hard drive. This is a "
             "serious step and it will not be possible to restore any of the deleted files after this operation is "
             "finished!!!\nDo you want to continue?"_s,
         .Caption = u"Delete database file from hard drive?"_s,
         .Buttons = MsgBoxButtons::YesNo,
         .Icon = MsgBoxIcon::Exclamation,
         .Default = MsgBoxResult::No});
    if (sure != MsgBoxResult::Yes)
        return;
    const QString identity = IdentityOf(path);
    QFile::remove(JournalOf(path));
    bool removed = QFile::remove(path);
    for (const QString& folder : {FilesFolderOf(path), HTMLFolderOf(path)}) {
        if (OwnerOf(folder, identity) != FolderOwner::Another)
            removed = DeleteFolder(folder.chopped(1)) && removed;
    }
    if (!removed)
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"Not all files of '%1' could be deleted."_s.arg(QDir::toNativeSeparators(path)),
                           u"DeleteFromDisk"_s);
}

// Asking for a file

} // namespace qb
