#pragma once

#include "support/ui/Icons.h"

#include <QApplication>
#include <QPalette>
#include <QTest>
#include <QWidget>

namespace qb::test {

/// Writes a picture of a widget to the build folder, for people to look at.
void TakePicture(QWidget& widget, const QString& name);

/// A dark scheme, as a desktop sets it.
QPalette DarkPalette();

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
