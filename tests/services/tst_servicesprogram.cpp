#include "GatewayService.h"
#include "ServiceSet.h"
#include "Utils/AppConfig.h"

#include <QProcess>
#include <QSettings>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Run {
    int exitCode = -1;
    QString out;
    QString err;
};

Run runServices(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(ZORVANE_SERVICES_PROGRAM), arguments);
    Run run;
    if (!process.waitForFinished(10000)) {
        process.kill();
        process.waitForFinished();
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

}  // namespace

// The stand-in program as a user starts it.
class TestServicesProgram : public QObject {
    Q_OBJECT

private slots:
    void defaultPortsAreTheApplicationDefaults();
    void freePortsPrintAConfigurationThatWorks();
    void badArgumentsAreRefused_data();
    void badArgumentsAreRefused();
    void faultSwitches();
};

void TestServicesProgram::defaultPortsAreTheApplicationDefaults()
{
    // With no configuration at all the application and the stand-ins meet.
    const AppConfig config = AppConfig::fromSources(QString(), {});
    QCOMPARE(ServiceSet::defaultPort(ServiceSet::Gateway), config.gatewayControlPort());
    QCOMPARE(ServiceSet::defaultPort(ServiceSet::Gateway), quint16(9721));
    const QList<QPair<ServiceSet::Id, QUrl>> urls{
        {ServiceSet::Backend, config.backendUrl()},     {ServiceSet::IFly, config.iflyUrl()},
        {ServiceSet::Translate, config.translateUrl()}, {ServiceSet::Token, config.tokenUrl()},
        {ServiceSet::Synthesis, config.synthesisUrl()}, {ServiceSet::IpLookup, config.ipLookupUrl()},
        {ServiceSet::Search, config.searchUrl()}};
    QSet<int> ports{ServiceSet::defaultPort(ServiceSet::Gateway)};
    for (const auto& [id, url] : urls) {
        QCOMPARE(url.host(), QStringLiteral("127.0.0.1"));
        QCOMPARE(ServiceSet::defaultPort(id), url.port());
        ports.insert(url.port());
    }
    QCOMPARE(ports.size(), int(ServiceSet::Count));
}

void TestServicesProgram::freePortsPrintAConfigurationThatWorks()
{
    QProcess process;
    process.start(
        QStringLiteral(ZORVANE_SERVICES_PROGRAM),
        {QStringLiteral("--free-ports"), QStringLiteral("--fault"), QStringLiteral("translate:delay=50"),
         QStringLiteral("--gateway-counts"), QStringLiteral("0,4")});
    QString out;
    QTRY_VERIFY_WITH_TIMEOUT(
        (out += QString::fromUtf8(process.readAllStandardOutput())).contains(QLatin1String("ready")), 10000);
    QVERIFY(out.contains(QLatin1String("translate on 127.0.0.1:")));
    QVERIFY(out.contains(QLatin1String("faults: delay=50")));
    QVERIFY(out.contains(QLatin1String("(count 0)")) && out.contains(QLatin1String("(count 4)")));

    // The printed snippet is a configuration file the application reads as it is.
    QTemporaryDir dir;
    const QString ini = dir.filePath(QStringLiteral("zorvane.ini"));
    QFile file(ini);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        out.mid(out.indexOf(QLatin1String("[gateway]"))).section(QLatin1String("\nready"), 0, 0).toUtf8());
    file.close();
    const AppConfig config = AppConfig::fromSources(ini, {});
    QVERIFY(config.gatewayControlPort() != ServiceSet::defaultPort(ServiceSet::Gateway));
    QVERIFY(config.backendUrl().port() != ServiceSet::defaultPort(ServiceSet::Backend));

    // The gateway named there answers its server list.
    QTcpSocket control;
    control.connectToHost(QStringLiteral("127.0.0.1"), config.gatewayControlPort());
    QVERIFY(control.waitForConnected(3000));
    control.write(QByteArray::fromHex("5a5b6c0300000000"));
    QTRY_VERIFY(control.bytesAvailable() > 0);
    QVERIFY(control.readAll().contains("\"count\":4"));

    process.terminate();
    QVERIFY(process.waitForFinished(5000));
}

void TestServicesProgram::badArgumentsAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown service") << QStringList{QStringLiteral("--fault"), QStringLiteral("mail:refuse")}
                                     << QStringLiteral("SERVICE:SWITCH");
    QTest::newRow("unknown switch") << QStringList{QStringLiteral("--fault"),
                                                   QStringLiteral("backend:explode")}
                                    << QStringLiteral("explode");
    QTest::newRow("port out of range")
        << QStringList{QStringLiteral("--port"), QStringLiteral("backend=70000")}
        << QStringLiteral("SERVICE=PORT");
    QTest::newRow("counts") << QStringList{QStringLiteral("--gateway-counts"), QStringLiteral("1,-2")}
                            << QStringLiteral("-2");
    QTest::newRow("params") << QStringList{QStringLiteral("--gateway-params"), QStringLiteral("accept,maybe")}
                            << QStringLiteral("maybe");
    QTest::newRow("engine") << QStringList{QStringLiteral("--engine"), QStringLiteral("oracle")}
                            << QStringLiteral("oracle");
    QTest::newRow("script") << QStringList{QStringLiteral("--script"), QStringLiteral("/nonexistent/script")}
                            << QStringLiteral("/nonexistent/script");
    QTest::newRow("installer size") << QStringList{QStringLiteral("--installer-kib"), QStringLiteral("lots")}
                                    << QStringLiteral("lots");
}

void TestServicesProgram::badArgumentsAreRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Run run = runServices(arguments << QStringLiteral("--free-ports"));
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY(!run.out.contains(QLatin1String("ready")));
}

void TestServicesProgram::faultSwitches()
{
    Fault fault;
    QString error;
    QVERIFY(fault.apply(QStringLiteral("delay=250"), &error));
    QVERIFY(fault.apply(QStringLiteral("error=-3001"), &error));
    QVERIFY(fault.apply(QStringLiteral("malformed"), &error));
    QCOMPARE(fault.delayMs.load(), 250);
    QCOMPARE(fault.errorCode.load(), -3001);
    QVERIFY(fault.malformed);
    QVERIFY(fault.apply(QStringLiteral("off"), &error));
    QCOMPARE(fault.describe(), QStringLiteral("none"));
    for (const char* bad : {"delay=-1", "delay=", "status=99", "status=600", "error=x", ""}) {
        error.clear();
        QVERIFY2(!fault.apply(QLatin1String(bad), &error), bad);
        QVERIFY2(!error.isEmpty(), bad);
    }
}

QTEST_GUILESS_MAIN(TestServicesProgram)
#include "tst_servicesprogram.moc"
