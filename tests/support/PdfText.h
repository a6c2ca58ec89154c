#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>

namespace qb::test {

/// What another program says of a PDF file; fails the test when it can't read it.
inline QString AskedOfPdf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        QTest::qFail(qPrintable(program + QStringLiteral(": ") + QString::fromUtf8(process.readAllStandardError())),
                     __FILE__, __LINE__);
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// The text of a PDF file as it stands on its pages, or on one of them, counted from 1.
inline QString PdfText(const QString& file, int page = 0)
{
    QStringList arguments{QStringLiteral("-layout"), QStringLiteral("-enc"), QStringLiteral("UTF-8")};
    if (page > 0)
        arguments << QStringLiteral("-f") << QString::number(page) << QStringLiteral("-l") << QString::number(page);
    return AskedOfPdf(QStringLiteral("pdftotext"), arguments << file << QStringLiteral("-"));
}

/// A line of what is known of the file as a whole: "Pages", "Title", "Page size".
inline QString PdfFact(const QString& file, const QString& name)
{
    for (const QString& line : AskedOfPdf(QStringLiteral("pdfinfo"), {file}).split(u'\n')) {
        if (line.startsWith(name + u':'))
            return line.mid(name.size() + 1).trimmed();
    }
    return {};
}

inline int PdfPages(const QString& file)
{
    return PdfFact(file, QStringLiteral("Pages")).toInt();
}

} // namespace qb::test
