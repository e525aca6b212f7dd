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
    QCOMPARE(config.gatewayHost(), QStringLiteral("127.0.0.1"));
    QCOMPARE(ServiceSet::defaultPort(ServiceSet::Gateway), config.gatewayControlPort());
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
    const auto row = [](const char* name, const char* option, const char* value, const char* message) {
        QTest::newRow(name) << QStringList{QLatin1String(option), QLatin1String(value)}
                            << QString::fromLatin1(message);
    };
    row("unknown service", "--fault", "mail:refuse", "SERVICE:SWITCH");
    row("unknown switch", "--fault", "backend:explode", "explode");
    row("port out of range", "--port", "backend=70000", "SERVICE=PORT");
    row("counts", "--gateway-counts", "1,-2", "-2");
    row("params", "--gateway-params", "accept,maybe", "maybe");
    row("engine", "--engine", "oracle", "oracle");
    row("script", "--script", "/nonexistent/script", "/nonexistent/script");
    row("installer size", "--installer-kib", "lots", "lots");
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
