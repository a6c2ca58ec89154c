#include "platform/system/Shell.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the desktop is asked and told.
class TestShell : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void programs_areKnownByTheirNames_data()
    {
        QTest::addColumn<bool>("isProgram");
        for (const char* name :
             {"setup.exe", "SETUP.EXE", "a.com", "a.bat", "a.cmd", "a.msi", "a.scr", "a.ps1", "a.vbs", "x.AppImage",
              "x.run", "run.sh", "x.desktop", "lib.so", "app.jar", "p.deb", "p.rpm"})
            QTest::newRow(name) << true;
        for (const char* name : {"a.txt", "a.cpp", "a.py", "a.js", "a.pl", "a.rb", "a.pdf", "a.png", "a.zip", "exe",
                                 "com", "Makefile", "no.such-type", ""})
            QTest::newRow(name) << false;
    }
    void programs_areKnownByTheirNames()
    {
        QFETCH(bool, isProgram);
        QCOMPARE(IsProgram(QString::fromLatin1(QTest::currentDataTag())), isProgram);
    }

    void application_isTheDesktops()
    {
        const TemporaryHome home;
        const QString program = home.Path(u"bin/xdg-mime"_s);
        WriteFile(program, "#!/bin/sh\n[ \"$*\" = 'query default image/png' ] && echo viewer.desktop\n");
        QVERIFY(QFile::setPermissions(program, QFile::permissions(program) | QFile::ExeOwner));
        const QByteArray before = qgetenv("PATH");
        qputenv("PATH", home.Path(u"bin"_s).toUtf8() + ':' + before);
        const QString known = FindAssociatedProgram(u"a.png"_s);
        const QString unknown = FindAssociatedProgram(u"a.pdf"_s);
        qputenv("PATH", home.Path(u"none"_s).toUtf8());
        const QString noDesktop = FindAssociatedProgram(u"a.png"_s);
        qputenv("PATH", before);
        QCOMPARE(known, u"viewer.desktop"_s);
        QCOMPARE(unknown, QString());
        QCOMPARE(noDesktop, QString());
    }
};

QB_TEST_MAIN(TestShell)
#include "tst_shell.moc"
