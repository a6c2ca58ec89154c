#pragma once

#include "support/ui/Icons.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QTest>
#include <QWidget>

namespace qb::test {

/// Writes a picture of a widget to the build folder, for people to look at.
void TakePicture(QWidget& widget, const QString& name);

/// A dark scheme, as a desktop sets it.
QPalette DarkPalette();

/// Counts the events of a kind that reach an object.
class EventCount : public QObject {
public:
    EventCount(QObject& watched, QEvent::Type kind) : m_kind(kind) { watched.installEventFilter(this); }
    int Count() const { return m_count; }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        m_count += event->type() == m_kind ? 1 : 0;
        return false;
    }

private:
    QEvent::Type m_kind;
    int m_count = 0;
};

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
