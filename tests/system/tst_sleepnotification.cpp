#include "Platform/SleepNotification.h"
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

class TestSleepNotification : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void prepareForSleepGivesSleepThenWake();
    void withoutABusItStaysQuiet();

private:
    void emitOnBus(const QString& path, const QString& interface, const QString& name, bool value);
    QProcess mDaemon;
    QString mAddress;
};

void TestSleepNotification::initTestCase()
{
    // A private bus stands in for the system bus.
    mDaemon.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--print-address"), QStringLiteral("--nofork"),
                   QStringLiteral("--nopidfile"), busInRuntimeFolder()});
    QVERIFY(mDaemon.waitForStarted(5000));
    QVERIFY(mDaemon.waitForReadyRead(5000));
    mAddress = QString::fromUtf8(mDaemon.readLine()).trimmed();
    QVERIFY(!mAddress.isEmpty());
}

void TestSleepNotification::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("watcher"));
    QDBusConnection::disconnectFromBus(QStringLiteral("logind"));
    mDaemon.terminate();
    mDaemon.waitForFinished(3000);
}

void TestSleepNotification::emitOnBus(const QString& path, const QString& interface, const QString& name,
                                      bool value)
{
    QDBusConnection logind = QDBusConnection::connectToBus(mAddress, QStringLiteral("logind"));
    QDBusMessage message = QDBusMessage::createSignal(path, interface, name);
    message << value;
    QVERIFY(logind.send(message));
}

void TestSleepNotification::prepareForSleepGivesSleepThenWake()
{
    QDBusConnection bus = QDBusConnection::connectToBus(mAddress, QStringLiteral("watcher"));
    QVERIFY(bus.isConnected());
    SleepNotification notification(bus);
    QVERIFY(notification.isWatching());
    QSignalSpy sleeps(&notification, &SleepNotification::signalSleepApp);
    QSignalSpy wakes(&notification, &SleepNotification::signalWakeApp);
    const QString path = QStringLiteral("/org/freedesktop/login1");
    const QString interface = QStringLiteral("org.freedesktop.login1.Manager");
    // Look-alikes go first; one sender's messages arrive in order, so they have been
    // delivered (and ignored) by the time the real one is seen.
    emitOnBus(path, interface, QStringLiteral("PrepareForShutdown"), true);
    emitOnBus(QStringLiteral("/elsewhere"), interface, QStringLiteral("PrepareForSleep"), false);
    emitOnBus(path, interface, QStringLiteral("PrepareForSleep"), true);
    QTRY_COMPARE(sleeps.size(), 1);
    QCOMPARE(wakes.size(), 0);
    emitOnBus(path, interface, QStringLiteral("PrepareForSleep"), false);
    QTRY_COMPARE(wakes.size(), 1);
    QCOMPARE(sleeps.size(), 1);
}

void TestSleepNotification::withoutABusItStaysQuiet()
{
    QDBusConnection none =
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("none"));
    QTest::ignoreMessage(QtWarningMsg, "no system bus: sleep and wake go unnoticed");
    SleepNotification notification(none);
    QVERIFY(!notification.isWatching());
    QDBusConnection::disconnectFromBus(QStringLiteral("none"));
}

QTEST_GUILESS_MAIN(TestSleepNotification)
#include "tst_sleepnotification.moc"
