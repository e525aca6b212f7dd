#include "App/CommandLine.h"
#include "Utils/AppConfig.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

class TestAppConfig : public QObject {
    Q_OBJECT

private slots:
    void fileThenEnvironmentOverride();
    void unreadableOrCorruptFileGivesDefaults();
    void missingCredentialIsLoggedNotFatal();
    void valuesAreReadAsWritten();
    void standInCredentialsStayOnThisMachine();
    void badPortFallsBackToTheFixedOne();
    void everyKeyIsDocumented();
    void credentialsOthersCanReadAreWarnedOf();

private:
    QString writeFile(const QByteArray& contents);
    QTemporaryDir mDir;
};

QString TestAppConfig::writeFile(const QByteArray& contents)
{
    const QString path = mDir.filePath(QStringLiteral("zorvane.ini"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        qFatal("cannot write %s", qPrintable(path));
    }
    file.write(contents);
    return path;
}

void TestAppConfig::fileThenEnvironmentOverride()
{
    const QString path = writeFile(
        "[gateway]\nhost=speech.example.net\ncontrolPort=7000\n"
        "[backend]\nurl=https://api.example.net\n"
        "[ifly]\napiKey=from-file\n");
    const AppConfig fileOnly = AppConfig::fromSources(path, {});
    QCOMPARE(fileOnly.gatewayHost(), QStringLiteral("speech.example.net"));
    QCOMPARE(fileOnly.gatewayControlPort(), quint16(7000));
    QCOMPARE(fileOnly.backendUrl(), QUrl(QStringLiteral("https://api.example.net")));
    QCOMPARE(fileOnly.origin(AppConfig::GatewayHost), QStringLiteral("file"));
    QCOMPARE(fileOnly.origin(AppConfig::TranslateUrl), QStringLiteral("build"));

    const QHash<QString, QString> env = {
        {QStringLiteral("ZORVANE_GATEWAY_HOST"), QStringLiteral(" 10.0.0.5 ")},
        {QStringLiteral("ZORVANE_IFLY_API_KEY"), QStringLiteral("from-env")}};
    const AppConfig both = AppConfig::fromSources(path, env);
    QCOMPARE(both.gatewayHost(), QStringLiteral("10.0.0.5"));
    QCOMPARE(both.value(AppConfig::IFlyApiKey), QStringLiteral("from-env"));
    QCOMPARE(both.origin(AppConfig::IFlyApiKey), QStringLiteral("environment"));
    // Keys the environment leaves alone keep the file's value.
    QCOMPARE(both.gatewayControlPort(), quint16(7000));
}

void TestAppConfig::unreadableOrCorruptFileGivesDefaults()
{
    const AppConfig defaults = AppConfig::fromSources(QString(), {});

    static const char kGarbage[] = "\xff\xfe[[[\0\0=\n=\n[gateway\nhost";
    const QString garbage = writeFile(QByteArray(kGarbage, sizeof(kGarbage) - 1));
    const AppConfig fromGarbage = AppConfig::fromSources(garbage, {});
    QCOMPARE(fromGarbage.backendUrl(), defaults.backendUrl());

    const AppConfig fromMissing =
        AppConfig::fromSources(mDir.filePath(QStringLiteral("does-not-exist.ini")), {});
    QCOMPARE(fromMissing.gatewayHost(), defaults.gatewayHost());

    // A folder where the file should be.
    const AppConfig fromFolder = AppConfig::fromSources(mDir.path(), {});
    QCOMPARE(fromFolder.searchUrl(), defaults.searchUrl());
}

void TestAppConfig::missingCredentialIsLoggedNotFatal()
{
    const QString path = writeFile("[translate]\nkey=\n");
    const AppConfig config = AppConfig::fromSources(path, {});
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("missing credential translate/key.*"
                                                                         "ZORVANE_TRANSLATE_KEY")));
    QCOMPARE(config.credential(AppConfig::TranslateKey), QString());
    // A present credential is returned without a word.
    QVERIFY(!config.credential(AppConfig::TranslateAppId).isEmpty());
}

void TestAppConfig::valuesAreReadAsWritten()
{
    const QString path = writeFile(
        "; a comment\r\n# another\r\n[ifly]\r\napiSecret = a,b;c=d \r\n"
        "apiKey=\"quoted;value, with spaces\"\r\n[gateway]\r\nhost=speech.example.net\r\n");
    const AppConfig config = AppConfig::fromSources(path, {});
    QCOMPARE(config.value(AppConfig::IFlyApiSecret), QStringLiteral("a,b;c=d"));
    QCOMPARE(config.value(AppConfig::IFlyApiKey), QStringLiteral("quoted;value, with spaces"));
    QCOMPARE(config.gatewayHost(), QStringLiteral("speech.example.net"));
}

void TestAppConfig::standInCredentialsStayOnThisMachine()
{
    const QString standIn = AppConfig::fromSources(QString(), {}).value(AppConfig::TranslateKey);
    auto keyFor = [&](const QString& url, const QString& key = QString()) {
        QHash<QString, QString> env{{QStringLiteral("ZORVANE_TRANSLATE_URL"), url}};
        if (!key.isEmpty()) {
            env.insert(QStringLiteral("ZORVANE_TRANSLATE_KEY"), key);
        }
        return AppConfig::fromSources(QString(), env).credential(AppConfig::TranslateKey);
    };
    for (const char* local :
         {"http://127.0.0.1:9724", "http://localhost:1", "http://[::1]:9724", "http://127.8.0.1"}) {
        QCOMPARE(keyFor(QString::fromLatin1(local)), standIn);
    }
    // Only the address set: the service there gets no stand-in, the request fails.
    for (const char* remote : {"https://fanyi.example.net", "http://10.0.0.5:9724", "not a url"}) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                               "not sending the stand-in credential translate/key.*"
                                               "ZORVANE_TRANSLATE_KEY")));
        QCOMPARE(keyFor(QString::fromLatin1(remote)), QString());
    }
    QCOMPARE(keyFor(QStringLiteral("https://fanyi.example.net"), QStringLiteral("own,key;1")),
             QStringLiteral("own,key;1"));
}

void TestAppConfig::badPortFallsBackToTheFixedOne()
{
    for (const char* bad : {"seventy", "0", "70000", "-1", ""}) {
        const AppConfig config = AppConfig::fromSources(
            QString(), {{QStringLiteral("ZORVANE_GATEWAY_CONTROL_PORT"), QString::fromLatin1(bad)}});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("not a port number")));
        QCOMPARE(config.gatewayControlPort(), quint16(9721));
    }
}

void TestAppConfig::everyKeyIsDocumented()
{
    QFile doc(QStringLiteral(ZORVANE_CONFIGURATION_DOC));
    QVERIFY2(doc.open(QIODevice::ReadOnly), ZORVANE_CONFIGURATION_DOC);
    const QString text = QString::fromUtf8(doc.readAll());
    for (int i = 0; i < AppConfig::KeyCount; ++i) {
        const AppConfig::KeyInfo& info = AppConfig::info(static_cast<AppConfig::Key>(i));
        QVERIFY2(text.contains(QLatin1Char('`') + QLatin1String(info.name) + QLatin1Char('`')), info.name);
        QVERIFY2(text.contains(QLatin1Char('`') + QLatin1String(info.envName) + QLatin1Char('`')),
                 info.envName);
    }
}

void TestAppConfig::credentialsOthersCanReadAreWarnedOf()
{
    static QStringList lines;
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { lines << text; });
    auto warningsFor = [this](const QByteArray& contents, QFileDevice::Permissions mode) {
        lines.clear();
        const QString path = writeFile(contents);
        QFile::setPermissions(path, mode);
        const AppConfig config = AppConfig::fromSources(path, {});
        lines << CommandLine::startLine(config, path);  // what the start logs of the file
        return lines;
    };
    const QFileDevice::Permissions owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    const QByteArray secret = "[ifly]\napiSecret=TopSecret42\n[gateway]\nhost=speech.example.net\n";

    const QStringList world = warningsFor(secret, owner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    const QStringList group = warningsFor(secret, owner | QFileDevice::ReadGroup);
    const QStringList own = warningsFor(secret, owner);
    const QStringList noCredential =
        warningsFor("[gateway]\nhost=speech.example.net\n", owner | QFileDevice::ReadOther);
    qInstallMessageHandler(previous);

    for (const QStringList& warned : {world, group}) {
        QCOMPARE(warned.filter(QStringLiteral("chmod 600")).size(), 1);
        QVERIFY(
            warned.filter(QStringLiteral("chmod 600")).first().contains(QStringLiteral("ifly/apiSecret")));
    }
    QCOMPARE(own.filter(QStringLiteral("chmod")).size(), 0);
    QCOMPARE(noCredential.filter(QStringLiteral("chmod")).size(), 0);
    // Where a value came from is logged, never the value.
    QCOMPARE((world + group + own).filter(QStringLiteral("TopSecret42")).size(), 0);
}

QTEST_GUILESS_MAIN(TestAppConfig)
#include "tst_appconfig.moc"
