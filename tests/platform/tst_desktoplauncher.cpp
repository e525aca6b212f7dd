#include "Platform/DesktopEntry.h"
#include "Platform/DesktopLauncher.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

void writeFile(const QString& path, const QByteArray& body)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(body);
}

QString readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

}  // namespace

// Desktop entries as the launcher reads them, and a real start of an installed one.
class TestDesktopLauncher : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void execQuotingAndFieldCodes_data();
    void execQuotingAndFieldCodes();
    void firstLaunchableEntryStarts();
    void userDefaultsComeFirst();
    void entriesForOtherDesktops();
    void startedProgramsGetTheUserEnvironment();
    void pageNotOpenedLogsNoQuery();

private:
    // An entry (in the user's applications unless a folder is given) whose program leaves a
    // file named after it in the marks folder; arguments it is given become files there too.
    void writeEntry(const QString& id, const QByteArray& extra = QByteArray(),
                    const QString& folder = QString());
    QString mark(const QString& name) const { return mRoot.filePath(QStringLiteral("marks/") + name); }

    QTemporaryDir mRoot;
};

void TestDesktopLauncher::initTestCase()
{
    // The system's folders stay out: only this test's entries and associations count.
    qputenv("XDG_DATA_DIRS", mRoot.filePath(QStringLiteral("share")).toUtf8());
    qputenv("XDG_CONFIG_DIRS", mRoot.filePath(QStringLiteral("etc")).toUtf8());
    qputenv("PATH", mRoot.filePath(QStringLiteral("bin")).toUtf8() + ":/usr/bin:/bin");
    QVERIFY(QDir().mkpath(mark(QString())));
}

void TestDesktopLauncher::writeEntry(const QString& id, const QByteArray& extra, const QString& folder)
{
    const QString applications =
        folder.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation) : folder;
    writeFile(QDir(applications).filePath(id), "[Desktop Entry]\nType=Application\nName=" + id.toUtf8() +
                                                   "\nExec=touch \"" + mark(id).toUtf8() + "\"\n" + extra);
}

void TestDesktopLauncher::execQuotingAndFieldCodes_data()
{
    QTest::addColumn<QString>("exec");
    QTest::addColumn<QStringList>("arguments");  // empty: refused
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
    const QString marker = QDir(folder).filePath(QStringLiteral("started marker"));
    auto write = [&](const QString& id, const QByteArray& body) {
        writeFile(QDir(folder).filePath(id),
                  "[Desktop Action x]\nExec=false\n\n[Desktop Entry]\nType=Application\nName=Test\n" + body);
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
    QVERIFY(launcher.launchApplication({QString(), QString(), ids, {}}));
    // Started without a shell: the quoted path with its space arrives as one argument.
    QTRY_VERIFY(QFile::exists(marker));
    QVERIFY(!launcher.launchApplication({QString(), QString(), ids.mid(0, 3), {}}));

    // A path the backend names: an entry file is launched, a program is run, not opened.
    QFile::remove(marker);
    launcher.openLocalPath(QDir(folder).filePath(QStringLiteral("zorvane-touch.desktop")));
    QTRY_VERIFY(QFile::exists(marker));
    QFile::remove(marker);
    const QString program = QDir(folder).filePath(QStringLiteral("zorvane-program"));
    writeFile(program, "#!/bin/sh\ntouch \"" + marker.toUtf8() + "\"\n");
    QFile::setPermissions(program, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    launcher.openLocalPath(program);
    QTRY_VERIFY(QFile::exists(marker));
}

void TestDesktopLauncher::userDefaultsComeFirst()
{
    const QString http = QStringLiteral("x-scheme-handler/http");
    const QString configHome = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    for (const char* id : {"fixed.desktop", "chosen.desktop", "vendor.desktop", "site.desktop"}) {
        writeEntry(QString::fromLatin1(id));
    }
    auto handler = [&] { return QFileInfo(DesktopLauncher::defaultHandler(http)).fileName(); };
    QCOMPARE(handler(), QString());
    // Lowest first: the data folders, the config folders, the user's own file, the desktop's.
    writeFile(mRoot.filePath(QStringLiteral("share/applications/mimeapps.list")),
              "[Default Applications]\nx-scheme-handler/http=site.desktop;\n");
    QCOMPARE(handler(), QStringLiteral("site.desktop"));
    writeFile(mRoot.filePath(QStringLiteral("etc/mimeapps.list")),
              "[Added Associations]\nx-scheme-handler/http=fixed.desktop;\n"
              "[Default Applications]\nx-scheme-handler/https=fixed.desktop\n"
              "x-scheme-handler/http=vendor.desktop;\n");
    QCOMPARE(handler(), QStringLiteral("vendor.desktop"));
    // A default that is not installed gives way to the next one.
    writeFile(configHome + QStringLiteral("/mimeapps.list"),
              "[Default Applications]\nx-scheme-handler/http=gone.desktop;chosen.desktop;\n");
    QCOMPARE(handler(), QStringLiteral("chosen.desktop"));
    writeFile(configHome + QStringLiteral("/xfce-mimeapps.list"),
              "[Default Applications]\nx-scheme-handler/http=fixed.desktop\n");
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
    QCOMPARE(handler(), QStringLiteral("chosen.desktop"));
    qputenv("XDG_CURRENT_DESKTOP", "X-Generic:XFCE");
    QCOMPARE(handler(), QStringLiteral("fixed.desktop"));
    QFile::remove(configHome + QStringLiteral("/xfce-mimeapps.list"));

    // Started: the default, then the Debian alternative, then the fixed list; each with the
    // row's arguments.
    DesktopLauncher launcher;
    const AppChoice browser{http,
                            QStringLiteral("x-www-browser"),
                            {QStringLiteral("fixed.desktop")},
                            {mark(QStringLiteral("argument"))}};
    QVERIFY(launcher.launchApplication(browser));
    QTRY_VERIFY(QFile::exists(mark(QStringLiteral("chosen.desktop"))));
    QTRY_VERIFY(QFile::exists(mark(QStringLiteral("argument"))));
    for (const char* file : {"share/applications/mimeapps.list", "etc/mimeapps.list"}) {
        QFile::remove(mRoot.filePath(QString::fromLatin1(file)));
    }
    QFile::remove(configHome + QStringLiteral("/mimeapps.list"));
    writeFile(mRoot.filePath(QStringLiteral("bin/x-www-browser")),
              "#!/bin/sh\ntouch \"" + mark(QStringLiteral("alternative")).toUtf8() + "\"\n");
    QFile::setPermissions(mRoot.filePath(QStringLiteral("bin/x-www-browser")),
                          QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    QVERIFY(launcher.launchApplication(browser));
    QTRY_VERIFY(QFile::exists(mark(QStringLiteral("alternative"))));
    QVERIFY(!QFile::exists(mark(QStringLiteral("fixed.desktop"))));
    QFile::remove(mRoot.filePath(QStringLiteral("bin/x-www-browser")));
    QVERIFY(launcher.launchApplication(browser));
    QTRY_VERIFY(QFile::exists(mark(QStringLiteral("fixed.desktop"))));
}

void TestDesktopLauncher::entriesForOtherDesktops()
{
    writeEntry(QStringLiteral("kde-only.desktop"), "OnlyShowIn=KDE;\n");
    writeEntry(QStringLiteral("not-gnome.desktop"), "NotShowIn=GNOME;Unity;\n");
    writeEntry(QStringLiteral("anywhere.desktop"));
    const QStringList ids{QStringLiteral("kde-only.desktop"), QStringLiteral("not-gnome.desktop"),
                          QStringLiteral("anywhere.desktop")};
    auto found = [&] { return QFileInfo(DesktopLauncher::findInstalled(ids)).fileName(); };
    qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    QCOMPARE(found(), QStringLiteral("anywhere.desktop"));
    qputenv("XDG_CURRENT_DESKTOP", "KDE");
    QCOMPARE(found(), QStringLiteral("kde-only.desktop"));
    qunsetenv("XDG_CURRENT_DESKTOP");
    QCOMPARE(found(), QStringLiteral("not-gnome.desktop"));
}

void TestDesktopLauncher::startedProgramsGetTheUserEnvironment()
{
    // The user's own: a platform for Qt, none for GL, a variable of theirs. Zorvane then sets
    // both Qt variables for itself.
    qputenv("QT_QPA_PLATFORM", "wayland");
    qunsetenv("QT_XCB_GL_INTEGRATION");
    qputenv("ZORVANE_USERS_OWN", "kept");
    DesktopLauncher::setOwnVariable("QT_QPA_PLATFORM", "xcb");
    DesktopLauncher::setOwnVariable("QT_XCB_GL_INTEGRATION", "none");
    DesktopLauncher::setOwnVariable("QT_QPA_PLATFORM", "offscreen");
    QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));

    // Programs that write down their environment, started each way a voice command starts one:
    // an application's entry and the opener of a page.
    for (const char* name : {"print-env", "xdg-open"}) {
        const QString program = mRoot.filePath(QStringLiteral("bin/") + QLatin1String(name));
        writeFile(program, "#!/bin/sh\nto=\"" + mark(QString()).toUtf8() +
                               "/env-$(basename \"$0\")\"\nenv > \"$to.part\" && mv \"$to.part\" \"$to\"\n");
        QFile::setPermissions(program, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }
    writeFile(QDir(QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation))
                  .filePath(QStringLiteral("print-env.desktop")),
              "[Desktop Entry]\nType=Application\nName=Env\nExec=print-env\n");
    DesktopLauncher launcher;
    QVERIFY(launcher.launchApplication({QString(), QString(), {QStringLiteral("print-env.desktop")}, {}}));
    launcher.openUrl(QUrl(QStringLiteral("https://example.invalid/")));
    for (const char* started : {"env-print-env", "env-xdg-open"}) {
        QTRY_VERIFY(QFile::exists(mark(QLatin1String(started))));
        const QString environment = QLatin1Char('\n') + readAll(mark(QLatin1String(started)));
        QVERIFY2(environment.contains(QLatin1String("\nQT_QPA_PLATFORM=wayland\n")), started);
        QVERIFY2(!environment.contains(QLatin1String("QT_XCB_GL_INTEGRATION")), started);
        QVERIFY2(environment.contains(QLatin1String("\nZORVANE_USERS_OWN=kept\n")), started);
    }
}

void TestDesktopLauncher::pageNotOpenedLogsNoQuery()
{
    // No opener to be found: the log names the page, not what the user searched for.
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", mRoot.filePath(QStringLiteral("nothing")).toUtf8());
    static QStringList lines;
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { lines << text; });
    DesktopLauncher().openUrl(QUrl(QStringLiteral("https://example.invalid/s?wd=我的话")));
    qInstallMessageHandler(previous);
    qputenv("PATH", path);
    QVERIFY(!lines.isEmpty());
    for (const QString& line : qAsConst(lines)) {
        QVERIFY2(!line.contains(QStringLiteral("wd=")) && !line.contains(QStringLiteral("%E6")),
                 qPrintable(line));
    }
}

QTEST_GUILESS_MAIN(TestDesktopLauncher)
#include "tst_desktoplauncher.moc"
