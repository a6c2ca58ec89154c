#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/Output.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "support/Version.h"

#include <QCoreApplication>
#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace {

using namespace qb::cli;

constexpr CommandEntry Table[] = {
    {"new", "LIB [--language vb|cpp|none|NAME] [--language-file F]", "make a library", New},
    {"info", "LIB [ID]", "what a library holds, or what is known of an item beside its texts", Info},
    {"tree", "LIB [--depth N]", "the items as a tree", Tree},
    {"show", "LIB ID [--field title|description|info|code|usage|notes] [--raw|--rtf]", "an item, or one of its texts",
     Show},
    {"add",
     "LIB --parent ID --title T [--description T] [--info T] [--code FILE|-] [--usage FILE] [--notes FILE] "
     "[--language NAME|none]",
     "add an item; prints its ID", Add},
    {"set",
     "LIB ID [--title T] [--description T] [--info T] [--code FILE|-] [--usage FILE] [--notes FILE] [--language "
     "NAME|none] [--status own|downloaded|tested|not-working|none] [--rating N]",
     "change an item; the rating is in half stars, 1 to 10, or 0 for none", Set},
    {"move", "LIB ID PARENT", "put an item under another (0: the root)", Move},
    {"delete", "LIB ID", "delete an item and all below it", Delete},
    {"keep", "LIB ID", "keep an item that a child library has deleted", Keep},
    {"remove-deleted", "LIB", "remove all items that a child library has deleted", RemoveDeleted},
    {"link", "LIB A B [--two-way] [--note TEXT]",
     "lead from item A to item B, or both ways; with --note also of a link that is there", Link},
    {"links", "LIB ID", "the links that lead from an item", Links},
    {"unlink", "LIB A B [--side left|right|both]", "remove the link from A to B, or one side of it", Unlink},
    {"bookmarks", "LIB", "the bookmarks with their groups", Bookmarks},
    {"bookmark", "LIB ID --group G [--text T]",
     "bookmark an item in a group, which is made where there is none of that name; prints the bookmark's ID", Bookmark},
    {"bookmark-remove", "LIB ID", "remove a bookmark, by its own ID", BookmarkRemove},
    {"find",
     "LIB TEXT [--all|--regex] [--case|--ignore-case] [--word] [--accents] [--in FIELD,...] [--branch ID] "
     "[--since DATE] [--status N] [--rating N] [--language NAME] [--limit N] [--deadline SECONDS] "
     "[--replace TEXT [--dry-run]]",
     "look for a text in all texts of all items; --replace puts another in its place", Find},
    {"attach", "LIB ID FILE... [--zip each|all NAME] [--description TEXT]",
     "store files with an item; prints their IDs", Attach},
    {"files", "LIB ID", "the files stored with an item", Files},
    {"extract", "LIB FILEID TARGET", "copy a stored file to a file or into a folder", Extract},
    {"detach", "LIB FILEID", "delete a stored file", Detach},
    {"file", "describe LIB FILEID --description TEXT", "say something else of a stored file", File},
    {"page",
     "show LIB ID | set LIB ID FILE.htm [--with DIR] | delete LIB ID | picture LIB ID FILE [--width W] [--height H] | "
     "link LIB ID ADDRESS [--text T] [--before T] [--behind T] | export LIB ID DIR | defaults [LIB] OUT.qhd",
     "the web page of an item: print it, replace it (--with: its folder too), delete it, put a picture or a link at "
     "its end, copy it with its files into a folder; defaults: write the pages that new libraries begin with to a file",
     Page},
    {"import-folder", "LIB DIR [--parent ID] [--glob PATTERN]... [--encoding latin1|windows-1252] [--library-language]",
     "take the source files of a folder in", ImportFolderCommand},
    {"colorize", "LIB ID [--save] | --language NAME|F.qbl FILE|- --rtf|--html|--marks",
     "colour the code of an item, or of a file; --marks: a letter below each character tells what it is", Colorize},
    {"language", "LIB | export LIB F.qbl | import LIB F.qbl",
     "the language of a library; written to, or taken from, a definition file", Language},
    {"languages", "", "the languages that come with the program, with the names of their files", Languages},
    {"settings", "list | get NAME | set NAME VALUE [--library LIB]", "the user's settings, and those of a library",
     Settings},
    {"rtf2text", "FILE|-", "the plain text of an RTF file", RtfToText},
    {"export", "LIB ID OUT.qbx|OUT.html|OUT.pdf|DIR [--as qbx|html|pdf|markdown|files]",
     "write an item with all below it; ID 0: everything. qbx: one file for another library, with files and pages; "
     "html: one page for readers; pdf: as it is printed; markdown: a folder of texts with the stored files; files: a "
     "folder of the code texts",
     Export},
    {"import", "LIB FILE.qbx [--parent ID] [--only KEY]... [--list]",
     "take an export in, or branches of it; --list: only print what is in it", Import},
    {"print", "LIB ID [--branch] [--to FILE.pdf|PRINTER]",
     "print an item, or with --branch also all below it (ID 0: everything), to a PDF file or a printer", PrintItem},
    {"mail", "LIB ID", "open a new mail with the export of an item attached", MailItemCommand},
    {"check", "LIB [--deep]", "look for damage, lost items and missing files; --deep: read all texts and stored files",
     Check},
    {"backup", "LIB OUT.qbb [--volume SIZE]",
     "pack a library with its files and pages into one file, or volumes of a size: bytes, or with K, M or G", Backup},
    {"restore", "IN.qbb TARGET.qbd [--replace|--number]",
     "unpack a backup to a library; --replace: over the one that stands there, --number: beside it", RestoreCommand},
    {"verify", "IN.qbb", "unpack a backup aside and compare it with what it says of itself", Verify},
    {"compact", "LIB", "bring the database of a library to the size that it needs", Compact},
    {"undo-session", "LIB", "throw away what was changed in the database since the window was started",
     UndoSessionCommand},
    {"backups", "DIR", "the backups in a folder", Backups},
    {"rotate", "DIR [--last N] [--daily D] [--weekly W]",
     "delete backups NAMEyymmdd.qbb but for the last N, one a day of D days and one a week of W weeks", Rotate},
    {"restore-item", "IN.qbb ID LIB [--parent ID]", "bring one item of a backup back, as a new one; prints its ID",
     RestoreItem},
    {"removed", "LIB [--search WORDS] | show LIB ENTRY | restore LIB ENTRY [--parent ID] [--alone]",
     "what was deleted, overwritten or lost in a synchronization; one entry of it; bring an entry back with what stood "
     "below it (--alone: without) and print its ID",
     Removed},
    {"replica",
     "create LIB OUT.qbr [--description T] | open IN.qbr TARGET.qbd [--replace|--number] [--answer yes|no] | status "
     "LIB | export LIB OUT.qbs [--again] | sync LIB FILE.qbs [--dry-run] [--discard-conflicts] [--answer yes|no] | "
     "report LIB [--last N] | undo LIB | again LIB N OUT.qbs | list LIB | forget LIB N [--answer yes|no]",
     "replicas of a library: give one out, open it elsewhere, what is known of a library's part in replication, "
     "write a replica's changes into a file (--again: the file of the last export was lost), take such a file in, at "
     "the mother and then at the replica, what the last synchronizations did, undo the last one, write the last "
     "answer to the Nth replica once more, the replicas of a library, strike the Nth off",
     Replica},
    {"conflicts",
     "LIB | show LIB ID [--field F] [--diff] | resolve LIB ID --keep newer|older [--field F=newer|older]... "
     "[--move-file FILEID]... | auto LIB | discard LIB",
     "items that both sides have changed: list them, show both versions, keep one of them (with fields and files of "
     "the other), settle those that differ in looks only, give all of them up",
     Conflicts},
};

/// Notices that an error was reported on the way.
class CliPrompts : public qb::SilentPrompts {
public:
    CliPrompts() : m_before(SetCurrent(this)) {}
    ~CliPrompts() override { SetCurrent(m_before); }
    bool ShowError(const QString& description) override
    {
        m_failed = true;
        return SilentPrompts::ShowError(description);
    }
    /// No command is done that has reported an error.
    int Status(int status) const { return status == 0 && m_failed ? 1 : status; }

private:
    Prompts* m_before;
    bool m_failed = false;
};

QString UsageLine(const CommandEntry& command)
{
    return u"quillbase-cli %1 %2 [--json]"_s.arg(QLatin1StringView(command.Name), QLatin1StringView(command.Usage));
}

QString Help()
{
    QString text = u"KT Quillbase %1, command line. Exit status: 0 done, 1 refused or failed, 2 wrong usage.\n\n"_s.arg(
        qb::ProgramVersion());
    for (const CommandEntry& command : Table)
        text += UsageLine(command) + u"\n    "_s + QLatin1StringView(command.Help) + u'\n';
    return text;
}

int Run(const QStringList& words)
{
    if (words.isEmpty() || words.first() == u"--help"_s || words.first() == u"help"_s) {
        Print(Help());
        return words.isEmpty() ? 2 : 0;
    }
    if (words.first() == u"--version"_s) {
        Print(qb::ProgramVersion() + u'\n');
        return 0;
    }
    const auto* command = std::find_if(std::begin(Table), std::end(Table), [&words](const CommandEntry& one) {
        return words.first() == QLatin1StringView(one.Name);
    });
    if (command == std::end(Table)) {
        Complain(u"quillbase-cli: unknown command '%1'; --help lists them"_s.arg(words.first()));
        return 2;
    }
    try {
        return command->Run(words.mid(1));
    } catch (const UsageError& error) {
        Complain(u"quillbase-cli: %1\nusage: %2"_s.arg(error.Text, UsageLine(*command)));
        return 2;
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGXFSZ, SIG_IGN); // a limit on file sizes is an error of the write, not the end
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"quillbase-cli"_s);
    try {
        const CliPrompts prompts;
        return prompts.Status(Run(QCoreApplication::arguments().mid(1)));
    } catch (const qb::RuntimeError& error) {
        qb::cli::Complain(u"quillbase-cli: "_s + error.Description());
    } catch (const std::exception& error) {
        qb::cli::Complain(u"quillbase-cli: "_s + QString::fromLocal8Bit(error.what()));
    }
    return 1;
}
