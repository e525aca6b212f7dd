#include "Platform/InputMethodSwitch.h"
#include "PrivateBus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <QtTest>

namespace {

// ibus as the switch sees it on its bus: a global engine with the layout it types on, and
// SetGlobalEngine, whose first call is answered late (after the new engine has started) or
// never. Served from a thread of its own, as the switch blocks while it waits.
class FakeIbus : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.IBus")
    Q_PROPERTY(QDBusVariant GlobalEngine READ globalEngine)

public:
    void reset(const QString& engine, const QString& layout, int firstDelayMs)
    {
        QMutexLocker lock(&mMutex);
        mEngine = engine;
        mLayout = layout;
        mFirstDelayMs = firstDelayMs;
        mSwitches.clear();
    }
    QString engine() const
    {
        QMutexLocker lock(&mMutex);
        return mEngine;
    }
    QStringList switches() const
    {
        QMutexLocker lock(&mMutex);
        return mSwitches;
    }

    QDBusVariant globalEngine() const
    {
        QMutexLocker lock(&mMutex);
        QDBusArgument description;
        description.beginStructure();
        description << QStringLiteral("IBusEngineDesc") << QVariantMap() << mEngine;
        for (int field = 0; field < 6; ++field) {
            description << QString();  // long name, description, language, licence, author, icon
        }
        description << mLayout;
        description.endStructure();
        return QDBusVariant(QVariant::fromValue(description));
    }

public slots:
    void SetGlobalEngine(const QString& name)
    {
        QMutexLocker lock(&mMutex);
        mSwitches << name;
        if (mSwitches.size() > 1 || mFirstDelayMs == 0) {
            mEngine = name;
            return;
        }
        setDelayedReply(true);
        if (mFirstDelayMs < 0) {
            return;
        }
        QTimer::singleShot(mFirstDelayMs, this, [this, name, call = message(), bus = connection()]() {
            setEngine(name);
            bus.send(call.createReply());
        });
    }

private:
    void setEngine(const QString& name)
    {
        QMutexLocker lock(&mMutex);
        mEngine = name;
    }

    mutable QMutex mMutex;
    QString mEngine;
    QString mLayout;
    int mFirstDelayMs = 0;
    QStringList mSwitches;
};

}  // namespace

class TestInputMethodSwitch : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void busFoundFromTheSessionsDisplay();
    void composingEngineIsSetAsideAndGivenBack_data();
    void composingEngineIsSetAsideAndGivenBack();

private:
    QProcess mBus;
    QByteArray mAddress;
    QThread mServerThread;
    FakeIbus* mIbus = nullptr;
};

void TestInputMethodSwitch::initTestCase()
{
    // fcitx5 is looked for on the session bus: none here.
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    mBus.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                               QStringLiteral("--print-address=1"), busInRuntimeFolder()});
    QVERIFY(mBus.waitForReadyRead(5000));
    mAddress = mBus.readLine().trimmed();
    qputenv("IBUS_ADDRESS", mAddress);
    QDBusConnection server =
        QDBusConnection::connectToBus(QString::fromUtf8(mAddress), QStringLiteral("ibus"));
    QVERIFY(server.registerService(QStringLiteral("org.freedesktop.IBus")));
    mIbus = new FakeIbus;
    mIbus->moveToThread(&mServerThread);
    connect(&mServerThread, &QThread::finished, mIbus, &QObject::deleteLater);
    mServerThread.start();
    QVERIFY(server.registerObject(QStringLiteral("/org/freedesktop/IBus"), mIbus,
                                  QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties));
}

void TestInputMethodSwitch::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("ibus"));
    mServerThread.quit();
    mServerThread.wait();
    mBus.terminate();
    mBus.waitForFinished(3000);
}

// Without IBUS_ADDRESS, the file ibus writes per display. In a Wayland session (GNOME starts ibus
// from the shell) it is named after the Wayland display, though Xwayland's DISPLAY is set too.
void TestInputMethodSwitch::busFoundFromTheSessionsDisplay()
{
    QString machine;
    for (const char* path : {"/var/lib/dbus/machine-id", "/etc/machine-id"}) {
        QFile file(QString::fromLatin1(path));
        if (machine.isEmpty() && file.open(QIODevice::ReadOnly)) {
            machine = QString::fromLatin1(file.readAll().trimmed());
        }
    }
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                           QStringLiteral("/ibus/bus/");
    QVERIFY(QDir().mkpath(folder));
    const auto write = [&](const QString& name, const QByteArray& address) {
        QFile file(folder + machine + name);
        return file.open(QIODevice::WriteOnly) && file.write("# ibus\nIBUS_ADDRESS=" + address + "\n") > 0;
    };
    QVERIFY(write(QStringLiteral("-unix-wayland-7"), mAddress));
    // A daemon of an earlier X session, gone.
    QVERIFY(write(QStringLiteral("-unix-7"), "unix:path=/nonexistent/ibus"));
    qunsetenv("IBUS_ADDRESS");
    qputenv("WAYLAND_DISPLAY", "wayland-7");
    qputenv("DISPLAY", ":7");
    const bool connected = InputMethodSwitch::ibusBus().isConnected();
    qputenv("IBUS_ADDRESS", mAddress);
    QVERIFY(connected);
}

void TestInputMethodSwitch::composingEngineIsSetAsideAndGivenBack_data()
{
    QTest::addColumn<QString>("engine");
    QTest::addColumn<QString>("layout");
    QTest::addColumn<int>("firstDelayMs");
    QTest::addColumn<bool>("switched");
    const QString pinyin = QStringLiteral("libpinyin");
    QTest::newRow("at once") << pinyin << QStringLiteral("us") << 0 << true;
    // The first switch starts the engine's process: on a loaded machine that took longer than
    // a plain call may, and typing must not begin before it is done.
    QTest::newRow("late") << pinyin << QStringLiteral("default") << 800 << true;
    // Still under way as far as we know: the engine must be given back all the same.
    QTest::newRow("never answered") << pinyin << QStringLiteral("us") << -1 << true;
    // Another layout's engine, or a layout itself: switching would change the keyboard map.
    QTest::newRow("another layout") << QStringLiteral("anthy") << QStringLiteral("jp") << 0 << false;
    QTest::newRow("a layout") << QStringLiteral("xkb:de::ger") << QStringLiteral("de") << 0 << false;
}

void TestInputMethodSwitch::composingEngineIsSetAsideAndGivenBack()
{
    QFETCH(QString, engine);
    QFETCH(QString, layout);
    QFETCH(int, firstDelayMs);
    QFETCH(bool, switched);
    mIbus->reset(engine, layout, firstDelayMs);
    InputMethodSwitch inputMethod;
    QElapsedTimer clock;
    clock.start();
    inputMethod.suspend();
    QVERIFY2(clock.elapsed() < 5000, "a switch that is not answered must not hold the typing for long");
    QCOMPARE(inputMethod.isSuspended(), switched);
    if (switched && firstDelayMs >= 0) {
        QCOMPARE(mIbus->engine(), QStringLiteral("xkb:us::eng"));
    }
    // Typing more pieces switches nothing more.
    inputMethod.suspend();
    inputMethod.restore();
    const QStringList switches =
        switched ? QStringList{QStringLiteral("xkb:us::eng"), engine} : QStringList();
    QCOMPARE(mIbus->switches(), switches);
    QCOMPARE(mIbus->engine(), engine);
    QVERIFY(!inputMethod.isSuspended());
}

QTEST_GUILESS_MAIN(TestInputMethodSwitch)
#include "tst_inputmethodswitch.moc"
