#pragma once

#include "support/ui/Icons.h"

#include <QApplication>
#include <QDir>
#include <QPalette>
#include <QTest>
#include <QWidget>

namespace qb::test {

/// Writes a picture of a widget to the build folder, for people to look at.
inline void TakePicture(QWidget& widget, const QString& name)
{
    const QString folder = qEnvironmentVariable("QUILLBASE_PICTURES");
    QCoreApplication::processEvents(); // layouts that wait
    if (!folder.isEmpty() && QDir().mkpath(folder))
        widget.grab().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
}

/// A dark scheme, as a desktop sets it.
inline QPalette DarkPalette()
{
    QPalette palette(QColor(0x31, 0x36, 0x3b), QColor(0x2a, 0x2e, 0x32));
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x20));
    palette.setColor(QPalette::Link, QColor(0x1d, 0x99, 0xf3));
    return palette;
}

} // namespace qb::test

/// A test program with a window.
#define QB_GUI_TEST_MAIN(TestClass)                                                                                    \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        QApplication application(argc, argv);                                                                          \
        qb::InitialiseIcons();                                                                                         \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
