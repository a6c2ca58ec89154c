#pragma once

#include "support/ui/Icons.h"

#include <QApplication>
#include <QDir>
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
