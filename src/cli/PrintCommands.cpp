// Printing, which the window's program does for the command line: it has the fonts.

#include "cli/PrintCommands.h"

#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "cli/ProgressLine.h"
#include "platform/system/RuntimeError.h"
#include "printing/PrintHelperJob.h"
#include "printing/PrintTarget.h"
#include "store/ItemBranch.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void Fail(long number, const QString& reason)
{
    throw RuntimeError(number, reason + u" Nothing was printed."_s, u"print"_s);
}

/// The program beside this one.
QString HelperPath()
{
    const QFileInfo program(QCoreApplication::applicationDirPath() + u"/quillbase"_s);
    if (!program.isFile() || !program.isExecutable())
        Fail(ErrorNumber::FileNotFound, u"Printing needs the program with the window, which is not installed: there is "
                                        "no '%1'."_s.arg(program.filePath()));
    return program.filePath();
}

/// It shows nothing, so it needs no display; nor anything of the desktop's.
QProcessEnvironment HelperEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    environment.remove(u"QT_QPA_PLATFORMTHEME"_s);
    environment.remove(u"QT_STYLE_OVERRIDE"_s);
    return environment;
}

/// What the helper says in the end; what it says before goes to @p line.
PrintHelperAnswer Listen(QProcess& helper, ProgressLine& line)
{
    PrintHelperAnswer last;
    const auto take = [&] {
        while (helper.canReadLine()) {
            const PrintHelperAnswer answer = PrintHelperAnswer::FromLine(helper.readLine());
            if (answer.What == PrintHelperAnswer::Progress)
                line.Advance(answer.Pages, answer.Of);
            else if (answer.What != PrintHelperAnswer::Nothing)
                last = answer;
        }
    };
    while (helper.waitForReadyRead(-1))
        take();
    helper.waitForFinished(-1);
    take();
    return last;
}

PrintHelperAnswer Run(const PrintHelperJob& job)
{
    ProgressLine line(u"pages"_s);
    QProcess helper;
    helper.setProcessEnvironment(HelperEnvironment());
    helper.start(HelperPath(), {QString::fromLatin1(PrintHelperOption)});
    helper.write(job.ToLine());
    helper.closeWriteChannel();
    const PrintHelperAnswer answer = Listen(helper, line);
    if (answer.What == PrintHelperAnswer::Failed)
        throw RuntimeError(answer.Error, answer.Reason, u"print"_s);
    if (answer.What != PrintHelperAnswer::Done || helper.exitStatus() != QProcess::NormalExit)
        Fail(ErrorNumber::FileNotFound,
             u"'%1' ended without an answer: %2."_s.arg(
                 helper.program(), QString::fromLocal8Bit(helper.readAllStandardError()).trimmed()));
    return answer;
}

int Report(const Arguments& arguments, const PrintHelperJob& job, const QString& verb)
{
    {
        const auto library = OpenLibrary(job.Library, DBEngine::Access::ReadOnly);
        if (job.Item != 0)
            RequireItem(*library, job.Item);
    }
    if (!job.File.isEmpty())
        RequirePrintableFile(job.File);
    const PrintHelperAnswer answer = Run(job);
    const QString target = job.File.isEmpty() ? answer.Printer : QFileInfo(job.File).absoluteFilePath();
    if (arguments.Json())
        Print(QJsonObject{{verb, target}, {u"pages"_s, answer.Pages}});
    else
        Print(u"%1 %2 on %3\n"_s.arg(answer.Pages)
                  .arg(answer.Pages == 1 ? u"page"_s : u"pages"_s, job.File.isEmpty() ? target : job.File));
    return 0;
}

} // namespace

int PrintItem(const QStringList& words)
{
    const Arguments arguments(words, {{"branch", ""}, {"to", "target"}}, 2);
    const qint64 item = arguments.Id(1);
    if (item == 0 && !arguments.Has(u"branch"_s))
        throw UsageError{u"The root is no item; with --branch all items are printed."_s};
    if (arguments.Has(u"to"_s) && arguments.Value(u"to"_s).isEmpty())
        throw UsageError{u"--to needs the name of a PDF file or of a printer."_s};
    const PrintTarget target = PrintTargetNamed(arguments.Value(u"to"_s));
    return Report(arguments,
                  {.Library = arguments.Positional(0),
                   .Item = item,
                   .Branch = arguments.Has(u"branch"_s),
                   .File = target.File,
                   .Printer = target.Printer},
                  u"print"_s);
}

int ExportPdf(const Arguments& arguments)
{
    return Report(arguments,
                  {.Library = arguments.Positional(0),
                   .Item = arguments.Id(1),
                   .Branch = true,
                   .File = arguments.Positional(2),
                   .Printer = {}},
                  u"export"_s);
}

} // namespace qb::cli
