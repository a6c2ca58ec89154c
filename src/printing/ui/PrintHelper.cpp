#include "printing/ui/PrintHelper.h"

#include "platform/system/Clock.h"
#include "platform/system/RuntimeError.h"
#include "printing/PrintHelperJob.h"
#include "printing/PrintOrder.h"
#include "printing/PrintTarget.h"
#include "printing/ui/PdfFile.h"
#include "store/ItemBranch.h"
#include "store/Library.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPrinter>
#include <QPrinterInfo>
#include <cstdio>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

void Answer(const PrintHelperAnswer& answer)
{
    const QByteArray line = answer.ToLine();
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fflush(stdout);
}

/// Tells the command line how far the pages are.
class ToldWork : public Work {
public:
    ToldWork() { m_lasted.start(); }
    void Advance(qint64 done, qint64 total) override
    {
        constexpr int Interval = 100; // milliseconds
        if (done == 0 || (done < total && m_lasted.elapsed() < Interval))
            return; // before the first page their number is not known
        m_lasted.restart();
        Answer({.What = PrintHelperAnswer::Progress, .Pages = done, .Of = total, .Printer = {}, .Reason = {}});
    }

private:
    QElapsedTimer m_lasted;
};

[[noreturn]] void Refuse(const QString& reason)
{
    throw RuntimeError(ErrorNumber::PathAccess, reason + u" Nothing was printed."_s, u"PrintHelper"_s);
}

QPrinterInfo PrinterNamed(const QString& name)
{
    const QPrinterInfo printer = name.isEmpty() ? QPrinterInfo::defaultPrinter() : QPrinterInfo::printerInfo(name);
    if (!printer.isNull())
        return printer;
    const QStringList names = QPrinterInfo::availablePrinterNames();
    const QString known = names.isEmpty() ? u"This machine has no printer; name a file that ends in .pdf."_s
                                          : u"There are: %1."_s.arg(names.join(u", "_s));
    Refuse(name.isEmpty() ? u"No printer is set as the one to print on. "_s + known
                          : u"There is no printer '%1'. "_s.arg(name) + known);
}

PrintHelperAnswer Print(const PrintHelperJob& job)
{
    if (!job.File.isEmpty())
        RequirePrintableFile(job.File);
    const std::unique_ptr<Library> library = Library::Open(job.Library, DBEngine::Access::ReadOnly);
    if (job.Item != 0)
        RequireItem(*library, job.Item);
    const std::vector<qint64> ids = job.Branch ? PrintOrder(*library, job.Item) : std::vector<qint64>{job.Item};
    const PrintSetup setup = PrintSetup::Last();
    LibraryPrintSource source(*library, ids, setup.Parts);
    const QString name = QFileInfo(job.Library).completeBaseName();
    const QString title = job.Item == 0
                              ? name
                              : library->QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {job.Item}).ToText();
    PagedPrint print(source, setup, {.Title = title, .Library = name, .Printed = Clock::Now()});
    if (ids.empty())
        Refuse(u"There is no item in the library."_s);
    ToldWork work;
    if (!job.File.isEmpty())
        return {.What = PrintHelperAnswer::Done,
                .Pages = WritePdf(print, job.File, job.Library, work),
                .Printer = {},
                .Reason = {}};
    QPrinter printer(PrinterNamed(job.Printer), QPrinter::HighResolution);
    ApplyTo(printer, setup);
    return {.What = PrintHelperAnswer::Done,
            .Pages = PrintOn(print, printer, work),
            .Printer = printer.printerName(),
            .Reason = {}};
}

} // namespace

int RunPrintHelper(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"quillbase"_s);
    try {
        QFile in;
        const bool opened = in.open(stdin, QIODevice::ReadOnly);
        Answer(Print(PrintHelperJob::FromLine(opened ? in.readLine() : QByteArray())));
        return 0;
    } catch (const RuntimeError& error) {
        Answer(
            {.What = PrintHelperAnswer::Failed, .Printer = {}, .Error = error.Number(), .Reason = error.Description()});
    } catch (const std::exception& error) {
        Answer({.What = PrintHelperAnswer::Failed, .Printer = {}, .Reason = QString::fromLocal8Bit(error.what())});
    }
    return 1;
}

} // namespace qb
