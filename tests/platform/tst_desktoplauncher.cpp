#include "Platform/DesktopEntry.h"
#include "Platform/DesktopLauncher.h"

#include <QDir>
#include <QStandardPaths>
#include <QtTest>

// Desktop entries as the launcher reads them, and a real start of an installed one.
class TestDesktopLauncher : public QObject {
    Q_OBJECT

private slots:
    void execQuotingAndFieldCodes_data();
    void execQuotingAndFieldCodes();
    void firstLaunchableEntryStarts();
};

void TestDesktopLauncher::execQuotingAndFieldCodes_data()
{
    QTest::addColumn<QString>("exec");
    QTest::addColumn<QStringList>("arguments");  // empty: refused
    QTest::newRow("plain") << QStringLiteral("gnome-calculator")
                           << QStringList{QStringLiteral("gnome-calculator")};
    QTest::newRow("file codes dropped")
        << QStringLiteral("firefox-esr %u") << QStringList{QStringLiteral("firefox-esr")};
    QTest::newRow("codes inside a word")
        << QStringLiteral("app --file=%f --x")
        << QStringList{QStringLiteral("app"), QStringLiteral("--file="), QStringLiteral("--x")};
    QTest::newRow("percent") << QStringLiteral("printf 100%%")
                             << QStringList{QStringLiteral("printf"), QStringLiteral("100%")};
    QTest::newRow("quoted") << QStringLiteral(R"("/opt/My App/run" "a \"b\"" c\ d)")
                            << QStringList{QStringLiteral("/opt/My App/run"), QStringLiteral("a \"b\""),
                                           QStringLiteral("c\\"), QStringLiteral("d")};
    QTest::newRow("icon and name") << QStringLiteral("app %i %c")
                                   << QStringList{QStringLiteral("app"), QStringLiteral("--icon"),
                                                  QStringLiteral("calc"), QStringLiteral("Calculator")};
    QTest::newRow("open quote") << QStringLiteral("\"app") << QStringList();
    QTest::newRow("lone percent") << QStringLiteral("app %") << QStringList();
    QTest::newRow("only codes") << QStringLiteral("%U") << QStringList();
}

void TestDesktopLauncher::execQuotingAndFieldCodes()
{
    QFETCH(QString, exec);
    QFETCH(QStringList, arguments);
    QStringList split;
    const bool ok = DesktopEntry::splitExec(exec, QStringLiteral("Calculator"), QStringLiteral("calc"),
                                            QStringLiteral("/x.desktop"), &split);
    QCOMPARE(ok, !arguments.isEmpty());
    if (ok) {
        QCOMPARE(split, arguments);
    }
    QCOMPARE(DesktopEntry::unescapeValue(QStringLiteral(R"(a\sb\\c\"d)")), QStringLiteral(R"(a b\c\"d)"));
}

void TestDesktopLauncher::firstLaunchableEntryStarts()
{
    // The test's own data folder is the first place entries are looked up.
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation);
    QVERIFY(QDir().mkpath(folder));
    const QString marker = QDir(folder).filePath(QStringLiteral("started marker"));
    auto write = [&](const QString& id, const QByteArray& body) {
        QFile file(QDir(folder).filePath(id));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Action x]\nExec=false\n\n[Desktop Entry]\nType=Application\nName=Test\n" + body);
    };
    write(QStringLiteral("zorvane-hidden.desktop"), "Exec=touch /tmp/never\nHidden=true\n");
    write(QStringLiteral("zorvane-tryexec.desktop"),
          "Exec=touch /tmp/never\nTryExec=zorvane-no-such-program\n");
    write(QStringLiteral("zorvane-touch.desktop"), "Exec=touch \"" + marker.toUtf8() + "\" %U\n");

    const QStringList ids{QStringLiteral("zorvane-missing.desktop"), QStringLiteral("zorvane-hidden.desktop"),
                          QStringLiteral("zorvane-tryexec.desktop"), QStringLiteral("zorvane-touch.desktop")};
    QCOMPARE(QFileInfo(DesktopLauncher::findInstalled(ids)).fileName(),
             QStringLiteral("zorvane-touch.desktop"));
    DesktopLauncher launcher;
    QVERIFY(launcher.launchApplication(ids));
    // Started without a shell: the quoted path with its space arrives as one argument.
    QTRY_VERIFY(QFile::exists(marker));
    QVERIFY(!launcher.launchApplication(ids.mid(0, 3)));

    // A path the backend names: an entry file is launched, a program is run, not opened.
    QFile::remove(marker);
    launcher.openLocalPath(QDir(folder).filePath(QStringLiteral("zorvane-touch.desktop")));
    QTRY_VERIFY(QFile::exists(marker));
    QFile::remove(marker);
    const QString program = QDir(folder).filePath(QStringLiteral("zorvane-program"));
    QFile script(program);
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\ntouch \"" + marker.toUtf8() + "\"\n");
    script.close();
    script.setPermissions(script.permissions() | QFileDevice::ExeOwner);
    launcher.openLocalPath(program);
    QTRY_VERIFY(QFile::exists(marker));
}

QTEST_GUILESS_MAIN(TestDesktopLauncher)
#include "tst_desktoplauncher.moc"
