#include "printing/ui/PdfFile.h"

#include "maintenance/ReplacedFile.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "printing/PrintTarget.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPageSize>
#include <QPdfWriter>
#include <QPrinter>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"Printing"_s;

QPageLayout LayoutOf(const PrintSetup& setup)
{
    const QPageSize size(QSizeF(setup.Width, setup.Height), QPageSize::Millimeter, {}, QPageSize::FuzzyMatch);
    QPageLayout layout(size, setup.Landscape ? QPageLayout::Landscape : QPageLayout::Portrait, QMarginsF());
    layout.setMode(QPageLayout::FullPageMode); // the margins are laid out here
    return layout;
}

void RequireNotCancelled(Work& work)
{
    if (work.IsCancelled())
        throw RuntimeError(ErrorNumber::Cancelled, u"The print was stopped; nothing was printed."_s, Procedure);
}

[[noreturn]] void RaiseUnwritable(const QString& file, const QString& reason)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"'%1' can't be written: %2. Nothing was printed."_s.arg(QDir::toNativeSeparators(file), reason),
                       Procedure);
}

void PaintPages(PagedPrint& print, QFile& out, const QString& target, Work& work)
{
    QPdfWriter writer(&out);
    writer.setResolution(PaperDevice::DotsPerInch);
    writer.setPageLayout(LayoutOf(print.Setup()));
    writer.setTitle(print.Title());
    writer.setCreator(u"KT Quillbase"_s);
    QPainter painter;
    if (!painter.begin(&writer))
        RaiseUnwritable(target, u"no PDF can be made here"_s);
    for (int page = 0; page < print.Pages(); ++page) {
        if (page > 0)
            writer.newPage();
        print.Paint(painter, page);
        work.Advance(page + 1, print.Pages());
        RequireNotCancelled(work);
        if (out.error() != QFileDevice::NoError)
            break; // the disk is full: what comes next is lost too
    }
    painter.end();
}

/// Counts for a work while the pages are looked for, which takes about half of the time, in silence.
class QuietWork : public Work {
public:
    explicit QuietWork(Work& work) : m_work(work) {}
    bool IsCancelled() override { return m_work.IsCancelled(); }
    void Advance(qint64, qint64) override { m_work.Pulse(); }

private:
    Work& m_work;
};

} // namespace

int WritePdf(PagedPrint& print, const QString& file, const QString& library, Work& work)
{
    RequirePrintableFile(file);
    RequireReplaceable(file, library, u"a print"_s);
    QuietWork quiet(work);
    print.FindAllPages(quiet);
    const QFileInfo target(file);
    StagedFiles stage(target.absolutePath());
    const QString staged = stage.PathFor(target.fileName());
    QFile out(staged);
    if (!out.open(QIODevice::WriteOnly))
        RaiseUnwritable(file, out.errorString());
    PaintPages(print, out, file, work);
    if (!out.flush() || out.error() != QFileDevice::NoError)
        RaiseUnwritable(file, out.errorString());
    out.close();
    KeepNoMoreRightsThan(library, staged);
    stage.Flush(work); // which may take its time
    RequireNotCancelled(work);
    stage.PutInPlace(false, work);
    stage.Flush(work); // what is reported as done outlives the machine
    return print.Pages();
}

void ApplyTo(QPrinter& printer, const PrintSetup& setup)
{
    printer.setPageLayout(LayoutOf(setup));
    printer.setFullPage(true);
}

int PrintOn(PagedPrint& print, QPrinter& printer, Work& work)
{
    QuietWork quiet(work);
    print.FindAllPages(quiet);
    const int first = std::max(1, printer.fromPage());
    const int last = printer.toPage() > 0 ? std::min(printer.toPage(), print.Pages()) : print.Pages();
    if (first > last)
        throw RuntimeError(ErrorNumber::ValueNotAllowed,
                           u"There are only %1 pages. Nothing was printed."_s.arg(print.Pages()), Procedure);
    printer.setDocName(print.Title());
    printer.setCreator(u"KT Quillbase"_s);
    QPainter painter;
    if (!painter.begin(&printer))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The printer '%1' can't be used. Nothing was printed."_s.arg(printer.printerName()),
                           Procedure);
    painter.scale(double(printer.logicalDpiX()) / PaperDevice::DotsPerInch,
                  double(printer.logicalDpiY()) / PaperDevice::DotsPerInch);
    for (int page = first; page <= last; ++page) {
        if (page > first)
            printer.newPage();
        print.Paint(painter, page - 1);
        work.Advance(page - first + 1, last - first + 1);
        if (work.IsCancelled())
            printer.abort();
        RequireNotCancelled(work);
    }
    painter.end();
    return last - first + 1;
}

} // namespace qb
