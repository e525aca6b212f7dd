#include "Platform/AppAutoRunUtils.h"
#include "Platform/InternetUtils.h"
#include "Utils/TextUtils.h"

#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

class TestSystem : public QObject {
    Q_OBJECT

private slots:
    void textUtils();
    void autostartRoundTrip();
    void autostartEntryQuotesItsPath();
    void onlineDecision();
    void networkStateIsReadWithoutCrashing();
};

void TestSystem::textUtils()
{
    QVERIFY(TextUtils::isEmpty(QString()));
    QVERIFY(TextUtils::isEmpty(QStringLiteral("")));
    QVERIFY(!TextUtils::isEmpty(QStringLiteral(" ")));
    QVERIFY(TextUtils::equals(QStringLiteral("Ab"), QStringLiteral("Ab")));
    QVERIFY(!TextUtils::equals(QStringLiteral("Ab"), QStringLiteral("ab")));
    const QString text = QStringLiteral("打开 计算器 👋");
    QCOMPARE(TextUtils::base64Decode(TextUtils::base64Encode(text)), text);
    QCOMPARE(TextUtils::base64Encode(QStringLiteral("zorvane_db")), QStringLiteral("em9ydmFuZV9kYg=="));
    QCOMPARE(TextUtils::base64Decode(QStringLiteral("!!!")), QString());
}

void TestSystem::autostartRoundTrip()
{
    AppAutoRunUtils* autorun = AppAutoRunUtils::getInstance();
    QSignalSpy changes(autorun, &AppAutoRunUtils::signalChangeAutoRun);
    QVERIFY(autorun->setAppAutoRun(false));
    QVERIFY(!autorun->isAppAutoRun());
    QCOMPARE(changes.size(), 0);

    QVERIFY(autorun->setAppAutoRun(true));
    QVERIFY(autorun->isAppAutoRun());
    QVERIFY(AppAutoRunUtils::autostartPath().endsWith(QStringLiteral("/autostart/zorvane.desktop")));
    QSettings entry(AppAutoRunUtils::autostartPath(), QSettings::IniFormat);
    QCOMPARE(entry.value(QStringLiteral("Desktop Entry/Type")).toString(), QStringLiteral("Application"));
    QFile file(AppAutoRunUtils::autostartPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    QVERIFY2(text.contains(QStringLiteral("\nExec=\"") + QCoreApplication::applicationFilePath() +
                           QStringLiteral("\"\n")),
             qPrintable(text));
    QVERIFY(autorun->setAppAutoRun(true));  // again: no change, no signal
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(0).toBool(), true);

    QVERIFY(autorun->setAppAutoRun(false));
    QVERIFY(!QFile::exists(AppAutoRunUtils::autostartPath()));
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.at(1).at(0).toBool(), false);
}

void TestSystem::autostartEntryQuotesItsPath()
{
    const QString entry =
        QString::fromUtf8(AppAutoRunUtils::desktopEntry(QStringLiteral("/opt/My \"Apps\"/$zorvane")));
    QVERIFY2(entry.contains(QStringLiteral("Exec=\"/opt/My \\\"Apps\\\"/\\$zorvane\"\n")), qPrintable(entry));
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

void TestSystem::networkStateIsReadWithoutCrashing()
{
    InternetUtils* net = InternetUtils::getInstance();
    QSignalSpy spy(net, &InternetUtils::signalInternetStateChange);
    const bool before = net->isOnline();
    net->refresh();
    // Nothing changed between the two looks: no signal.
    QCOMPARE(net->isOnline(), before);
    QCOMPARE(spy.size(), 0);
}

QTEST_GUILESS_MAIN(TestSystem)
#include "tst_system.moc"
