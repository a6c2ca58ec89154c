#include "support/ErrorRoutine.h"

#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/Shell.h"
#include "support/Addresses.h"
#include "support/DateFormatCustom.h"

#include <QFile>
#include <QTextStream>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int DaysKept = 90;
constexpr qsizetype DateLength = 18; // the 17 characters of the date and the first of the blanks behind

int HandledErrors = 0;

void ClearAttributes(const QString& file)
{
    QFile::setPermissions(file, QFile::permissions(file) | QFile::WriteOwner | QFile::WriteUser);
}

void WriteLog(const QString& line)
{
    const QString kept = CleanUpErrorLog(DaysKept);
    QFile log(ErrorLogFile());
    if (log.exists())
        ClearAttributes(log.fileName());
    if (log.open(QIODevice::WriteOnly | QIODevice::Truncate)) // what is kept is written anew
        log.write((kept + line + u'\n').toUtf8());
}

/// What has become of a file is for the user to know, and no fault of the program.
bool IsOfAFile(long number)
{
    return number == ErrorNumber::ReadOnly || number == ErrorNumber::CannotOpen;
}

void ReportByMail(long number, const QString& description, const QString& module, const QString& procedure)
{
    Mail mail;
    mail.To = BugReportAddress();
    mail.Subject = ApplicationTitle + u" Error"_s;
    mail.Body = u"\r\nPlease describe what have you been doing just before the error occured:\r\n\r\n\r\n"_s
                + QStringList{description, module, procedure, QString::number(number)}.join(u", "_s);
    if (!OpenMail(mail))
        Prompts::Current().MsgBox(
            {.Text = u"No mail program could be started. The error stands in the file '%1'."_s.arg(ErrorLogFile()),
             .Caption = ApplicationTitle,
             .Icon = MsgBoxIcon::Information});
}

} // namespace

QString ErrorLogFile()
{
    return ApplicationFolder() + u"ErrorLog.txt"_s;
}

int HandledErrorCount()
{
    return HandledErrors;
}

void HandleError(long number, const QString& description, const QString& module, const QString& procedure,
                 const QString& source, bool showDialog)
{
    ++HandledErrors;
    try {
        WriteLog(u"%1  -  %2, %3, %4, %5, %6"_s.arg(DateFormatCustom(Clock::Now(), DatePattern::Log))
                     .arg(number)
                     .arg(description, module, procedure, source));
        if (showDialog && IsOfAFile(number))
            Prompts::Current().MsgBox(
                {.Text = description, .Caption = ApplicationTitle, .Icon = MsgBoxIcon::Exclamation});
        else if (showDialog && Prompts::Current().ShowError(description))
            ReportByMail(number, description, module, procedure);
    } catch (const std::exception&) {
        // An error while an error is reported must not hide the first one or stop the program.
    }
}

QString CleanUpErrorLog(int days)
{
    QFile log(ErrorLogFile());
    if (!log.exists())
        return {};
    ClearAttributes(log.fileName());
    QString kept;
    if (log.open(QIODevice::ReadOnly)) {
        const Date limit = Clock::Today().AddDays(-days);
        QTextStream lines(&log);
        for (QString line; lines.readLineInto(&line);) {
            const Date date = DateFromLogText(line.left(DateLength).trimmed(), Clock::Today());
            if (!date.IsNone() && date >= limit)
                kept += line + u'\n';
        }
        log.close();
    }
    log.remove();
    return kept;
}

} // namespace qb
