#include "Platform/AppAutoRunUtils.h"
#include "Platform/InternetUtils.h"
#include "Utils/TextUtils.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class TestSystem : public QObject {
    Q_OBJECT

private slots:
    void textUtils();
    void autostartRoundTrip();
    void autostartExecIsQuotedWhenNeeded();
    void onlineDecision();
};

void TestSystem::textUtils()
{
    QVERIFY(!TextUtils::isEmpty(QStringLiteral(" \t")));  // whitespace is text

    const QString text = QStringLiteral("打开 计算器 👋");
    QCOMPARE(TextUtils::base64Decode(TextUtils::base64Encode(text)), text);
    QCOMPARE(TextUtils::base64Encode(QStringLiteral("zorvane_db")), QStringLiteral("em9ydmFuZV9kYg=="));
    QCOMPARE(TextUtils::base64Encode(QString()), QString());
    // "a\xff\xfeb": bytes that are no UTF-8 come back as replacement characters, not as garbage or a crash.
    QCOMPARE(TextUtils::base64Decode(QStringLiteral("Yf/+Yg==")), QStringLiteral("a\uFFFD\uFFFDb"));
    // Not Base64 at all: what is outside the alphabet is skipped.
    QCOMPARE(TextUtils::base64Decode(QStringLiteral("!!!")), QString());
    QCOMPARE(TextUtils::base64Decode(QStringLiteral("em9y\ndmFu ZV9kYg==")), QStringLiteral("zorvane_db"));
}

void TestSystem::autostartRoundTrip()
{
    // Not installed, whatever this machine has installed: the entry starts the asking copy.
    QTemporaryDir share;
    qputenv("XDG_DATA_DIRS", share.path().toLocal8Bit());
    AppAutoRunUtils* autorun = AppAutoRunUtils::getInstance();
    QSignalSpy changes(autorun, &AppAutoRunUtils::signalChangeAutoRun);
    QVERIFY(AppAutoRunUtils::autostartPath().startsWith(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME"))));
    QVERIFY(AppAutoRunUtils::autostartPath().endsWith(QStringLiteral("/autostart/zorvane.desktop")));
    QVERIFY(autorun->setAppAutoRun(false));
    QVERIFY(!autorun->isAppAutoRun());
    QCOMPARE(changes.size(), 0);

    QVERIFY(autorun->setAppAutoRun(true));
    QVERIFY(autorun->isAppAutoRun());
    QFile file(AppAutoRunUtils::autostartPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    QCOMPARE(lines.value(0), QStringLiteral("[Desktop Entry]"));
    QVERIFY(lines.contains(QStringLiteral("Type=Application")));
    QVERIFY(lines.contains(QStringLiteral("X-GNOME-Autostart-enabled=true")));
    QVERIFY(lines.contains(QStringLiteral("Exec=") +
                           AppAutoRunUtils::execArgument(QCoreApplication::applicationFilePath())));
    QVERIFY(autorun->setAppAutoRun(true));  // again: no change, no signal
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(0).toBool(), true);

    QVERIFY(autorun->setAppAutoRun(false));
    QVERIFY(!QFile::exists(AppAutoRunUtils::autostartPath()));
    QVERIFY(!autorun->isAppAutoRun());
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.at(1).at(0).toBool(), false);

    // Installed, the entry starts the packaged program, not the copy that asks (a build tree).
    QDir(share.path()).mkpath(QStringLiteral("applications"));
    QFile packaged(share.path() + QStringLiteral("/applications/zorvane.desktop"));
    QVERIFY(packaged.open(QIODevice::WriteOnly));
    packaged.write("[Desktop Entry]\nType=Application\nName=Zorvane\nExec=sh %U\n");
    packaged.close();
    const QString installed = QStandardPaths::findExecutable(QStringLiteral("sh"));
    QCOMPARE(AppAutoRunUtils::installedProgram(), installed);
    QVERIFY(autorun->setAppAutoRun(true));
    file.close();
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(QString::fromUtf8(file.readAll())
                .contains(QStringLiteral("\nExec=") + installed + QLatin1Char('\n')));
    file.close();
    QVERIFY(autorun->setAppAutoRun(false));
    qunsetenv("XDG_DATA_DIRS");
}

void TestSystem::autostartExecIsQuotedWhenNeeded()
{
    QCOMPARE(AppAutoRunUtils::execArgument(QStringLiteral("/usr/bin/zorvane")),
             QStringLiteral("/usr/bin/zorvane"));
    QCOMPARE(AppAutoRunUtils::execArgument(QStringLiteral("/opt/100%/zorvane")),
             QStringLiteral("/opt/100%%/zorvane"));
    QCOMPARE(AppAutoRunUtils::execArgument(QStringLiteral("/home/li/My Apps/zorvane")),
             QStringLiteral("\"/home/li/My Apps/zorvane\""));
    QCOMPARE(AppAutoRunUtils::execArgument(QStringLiteral("/opt/\"A\"/$z`")),
             QStringLiteral("\"/opt/\\\\\"A\\\\\"/\\\\$z\\\\`\""));
    // A backslash in the path: four in the file.
    QCOMPARE(AppAutoRunUtils::execArgument(QStringLiteral("/opt/a\\b")),
             QStringLiteral("\"/opt/a\\\\\\\\b\""));
}

void TestSystem::onlineDecision()
{
    using I = InternetUtils::Interface;
    I loopback{QStringLiteral("lo"), true, true, true, true};
    I wifiDown{QStringLiteral("wlan0"), false, false, false, true};
    I cableNoAddress{QStringLiteral("eth0"), true, true, false, false};
    I cable{QStringLiteral("eth0"), true, true, false, true};
    I cableUnplugged{QStringLiteral("eth0"), true, false, false, true};
    QVERIFY(!InternetUtils::isOnline({}));
    QVERIFY(!InternetUtils::isOnline({loopback, wifiDown, cableNoAddress, cableUnplugged}));
    QVERIFY(InternetUtils::isOnline({loopback, cable}));
}

QTEST_GUILESS_MAIN(TestSystem)
#include "tst_system.moc"
