#include "Hid/VirtualDeviceConnection.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

// Each user of a Unix socket refuses a path over 107 bytes with a message that names the
// path and the limit, instead of an error that says nothing about why.
class TestSocketPaths : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void simulatorRefusesToListen();
    void deviceConnectionRefusesOnceAndLogsOnce();
    void singleInstanceGuardSaysWhyItIsOff();

private:
    // A message naming this path and the limit.
    QRegularExpression namesPathAndLimit(const QString& path) const;

    QTemporaryDir mTemp;
    QString mLongDir;  // 100 more bytes below the temporary folder
};

void TestSocketPaths::initTestCase()
{
    QVERIFY(mTemp.isValid());
    mLongDir = mTemp.path() + QLatin1Char('/') + QString(100, QLatin1Char('d'));
    QVERIFY(QDir().mkpath(mLongDir));
    QVERIFY(QFile::setPermissions(mLongDir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(mLongDir.size() + 4 > 107);
}

QRegularExpression TestSocketPaths::namesPathAndLimit(const QString& path) const
{
    return QRegularExpression(QRegularExpression::escape(path) + QStringLiteral(".*\\b107\\b"));
}

void TestSocketPaths::simulatorRefusesToListen()
{
    const QString path = mLongDir + QStringLiteral("/mouse-sim");
    QProcess sim;
    sim.start(QStringLiteral(MOUSE_SIM_BINARY), {path});
    QVERIFY(sim.waitForFinished(10000));
    QCOMPARE(sim.exitCode(), 1);
    const QString error = QString::fromLocal8Bit(sim.readAllStandardError());
    QVERIFY2(namesPathAndLimit(path).match(error).hasMatch(), qPrintable(error));
    QVERIFY(!QFile::exists(path));
}

void TestSocketPaths::deviceConnectionRefusesOnceAndLogsOnce()
{
    const QString path = mLongDir + QStringLiteral("/mouse-sim");
    VirtualDeviceConnection connection(
        path, [](int, const QByteArray&) {}, [] {});
    QTest::ignoreMessage(QtWarningMsg, namesPathAndLimit(path));
    QVERIFY(!connection.ensureConnected());
    // The link retries every tick; the reason is written once, not on every try.
    QVERIFY(!connection.send(VirtualDeviceConnection::HidInterfaces, QByteArray()));
}

void TestSocketPaths::singleInstanceGuardSaysWhyItIsOff()
{
    const QString data = mTemp.path() + QStringLiteral("/data");
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), mLongDir);
    env.insert(QStringLiteral("XDG_DATA_HOME"), data);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QProcess app;
    app.setProcessEnvironment(env);
    app.setProcessChannelMode(QProcess::ForwardedChannels);
    app.start(QStringLiteral(ZORVANE_BINARY), QStringList());
    QVERIFY(app.waitForStarted());

    // The program keeps running without the guard; its log tells why.
    QFile log(data + QStringLiteral("/ZorvaneV2/ZorvaneLog.txt"));
    const QRegularExpression expected = namesPathAndLimit(mLongDir + QStringLiteral("/Zorvane"));
    QString text;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 30000 && app.state() == QProcess::Running) {
        if (log.open(QIODevice::ReadOnly)) {
            text = QString::fromUtf8(log.readAll());
            log.close();
            if (expected.match(text).hasMatch()) {
                break;
            }
        }
        app.waitForFinished(100);
    }
    const bool stillRunning = app.state() == QProcess::Running;
    app.kill();
    app.waitForFinished();
    QVERIFY2(expected.match(text).hasMatch(), qPrintable(text));
    QVERIFY(stillRunning);
}

QTEST_GUILESS_MAIN(TestSocketPaths)
#include "tst_socketpaths.moc"
