#include "Utils/AppConfig.h"

#include "AppConfigDefaults.h"
#include "Utils/AppPaths.h"
#include "Utils/Logging.h"

#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QProcessEnvironment>

namespace {

// Order follows AppConfig::Key.
const AppConfig::KeyInfo kKeys[AppConfig::KeyCount] = {
    {"gateway/host", "ZORVANE_GATEWAY_HOST", ZORVANE_DEFAULT_GATEWAY_HOST, false},
    {"gateway/controlPort", "ZORVANE_GATEWAY_CONTROL_PORT", ZORVANE_DEFAULT_GATEWAY_CONTROL_PORT, false},
    {"backend/url", "ZORVANE_BACKEND_URL", ZORVANE_DEFAULT_BACKEND_URL, false},
    {"ipLookup/url", "ZORVANE_IP_LOOKUP_URL", ZORVANE_DEFAULT_IP_LOOKUP_URL, false},
    {"ifly/url", "ZORVANE_IFLY_URL", ZORVANE_DEFAULT_IFLY_URL, false},
    {"ifly/appId", "ZORVANE_IFLY_APP_ID", ZORVANE_DEFAULT_IFLY_APP_ID, true, ZORVANE_STANDIN_IFLY_APP_ID,
     AppConfig::IFlyUrl},
    {"ifly/apiKey", "ZORVANE_IFLY_API_KEY", ZORVANE_DEFAULT_IFLY_API_KEY, true, ZORVANE_STANDIN_IFLY_API_KEY,
     AppConfig::IFlyUrl},
    {"ifly/apiSecret", "ZORVANE_IFLY_API_SECRET", ZORVANE_DEFAULT_IFLY_API_SECRET, true,
     ZORVANE_STANDIN_IFLY_API_SECRET, AppConfig::IFlyUrl},
    {"translate/url", "ZORVANE_TRANSLATE_URL", ZORVANE_DEFAULT_TRANSLATE_URL, false},
    {"translate/appId", "ZORVANE_TRANSLATE_APP_ID", ZORVANE_DEFAULT_TRANSLATE_APP_ID, true,
     ZORVANE_STANDIN_TRANSLATE_APP_ID, AppConfig::TranslateUrl},
    {"translate/key", "ZORVANE_TRANSLATE_KEY", ZORVANE_DEFAULT_TRANSLATE_KEY, true,
     ZORVANE_STANDIN_TRANSLATE_KEY, AppConfig::TranslateUrl},
    {"token/url", "ZORVANE_TOKEN_URL", ZORVANE_DEFAULT_TOKEN_URL, false},
    {"token/clientId", "ZORVANE_TOKEN_CLIENT_ID", ZORVANE_DEFAULT_TOKEN_CLIENT_ID, true,
     ZORVANE_STANDIN_TOKEN_CLIENT_ID, AppConfig::TokenUrl},
    {"token/clientSecret", "ZORVANE_TOKEN_CLIENT_SECRET", ZORVANE_DEFAULT_TOKEN_CLIENT_SECRET, true,
     ZORVANE_STANDIN_TOKEN_CLIENT_SECRET, AppConfig::TokenUrl},
    {"synthesis/url", "ZORVANE_SYNTHESIS_URL", ZORVANE_DEFAULT_SYNTHESIS_URL, false},
    {"synthesis/cuid", "ZORVANE_SYNTHESIS_CUID", ZORVANE_DEFAULT_SYNTHESIS_CUID, true,
     ZORVANE_STANDIN_SYNTHESIS_CUID, AppConfig::SynthesisUrl},
    {"search/url", "ZORVANE_SEARCH_URL", ZORVANE_DEFAULT_SEARCH_URL, false},
    {"web/productSite", "ZORVANE_PRODUCT_SITE_URL", ZORVANE_DEFAULT_PRODUCT_SITE_URL, false},
    {"web/contactPage", "ZORVANE_CONTACT_PAGE_URL", ZORVANE_DEFAULT_CONTACT_PAGE_URL, false},
    {"device/virtualSocket", "ZORVANE_DEVICE_SOCKET", ZORVANE_DEFAULT_DEVICE_VIRTUAL_SOCKET, false},
};

// The "group/key" values of an INI file, each exactly as written between the `=` and the end of
// the line (surrounding spaces and one pair of enclosing double quotes removed). Qt's INI rules
// would read a value holding `,` as a list (an empty text) and cut it at `;`: secrets hold both.
// Lines starting with `;` or `#` are comments. False for a file that is not text.
bool readIni(const QString& filePath, QHash<QString, QString>* values)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (bytes.contains('\0')) {
        return false;
    }
    QString text = QString::fromUtf8(bytes);
    if (text.contains(QChar::ReplacementCharacter)) {
        return false;
    }
    if (text.startsWith(QChar::ByteOrderMark)) {
        text.remove(0, 1);
    }
    QString group;
    for (const QString& rawLine : text.split(QLatin1Char('\n'))) {
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) || line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            group = line.mid(1, line.size() - 2).trimmed();
            continue;
        }
        const int equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0) {
            continue;
        }
        QString value = line.mid(equals + 1).trimmed();
        if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"'))) {
            value = value.mid(1, value.size() - 2);
        }
        values->insert(group + QLatin1Char('/') + line.left(equals).trimmed(), value);
    }
    return true;
}

bool isLoopbackHost(const QString& host)
{
    return host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 ||
           QHostAddress(host).isLoopback();
}

QHash<QString, QString> processEnvironment()
{
    QHash<QString, QString> env;
    const QProcessEnvironment system = QProcessEnvironment::systemEnvironment();
    for (const QString& name : system.keys()) {
        if (name.startsWith(QLatin1String("ZORVANE_"))) {
            env.insert(name, system.value(name));
        }
    }
    return env;
}

// Credentials in a file that other users of the machine can read are theirs too. The key
// names are logged, never their values.
void warnIfOthersCanRead(const QString& filePath, const QStringList& credentials)
{
    const QFileDevice::Permissions mode = QFileInfo(filePath).permissions();
    if (credentials.isEmpty() || !(mode & (QFileDevice::ReadGroup | QFileDevice::ReadOther))) {
        return;
    }
    qCWarning(lcConfig).noquote() << "the configuration file" << filePath << "holds credentials ("
                                  << credentials.join(QLatin1String(", "))
                                  << ") and other users can read it: chmod 600" << filePath;
}

}  // namespace

const AppConfig::KeyInfo& AppConfig::info(Key key)
{
    return kKeys[key];
}

AppConfig::AppConfig()
{
    *this = fromSources(defaultFilePath(), processEnvironment());
    for (int i = 0; i < KeyCount; ++i) {
        if (mOrigins[i] != QLatin1String("build")) {
            qCInfo(lcConfig).noquote() << kKeys[i].name << "from" << mOrigins[i];
        }
    }
}

QString AppConfig::defaultFilePath()
{
    const QString fromEnv = qEnvironmentVariable("ZORVANE_CONFIG");
    if (!fromEnv.isEmpty()) {
        return fromEnv;
    }
    return AppPaths::configFile(QStringLiteral("/zorvane.ini"));
}

AppConfig AppConfig::fromSources(const QString& filePath, const QHash<QString, QString>& environment)
{
    AppConfig config(Uninitialised{});
    for (int i = 0; i < KeyCount; ++i) {
        config.mValues[i] = QString::fromUtf8(kKeys[i].buildDefault);
        config.mOrigins[i] = QStringLiteral("build");
    }

    if (!filePath.isEmpty() && QFileInfo::exists(filePath)) {
        QHash<QString, QString> file;
        if (!readIni(filePath, &file)) {
            qCWarning(lcConfig) << "cannot read the configuration file" << filePath << "- using defaults";
        } else {
            QStringList credentials;
            for (int i = 0; i < KeyCount; ++i) {
                const QString name = QString::fromLatin1(kKeys[i].name);
                if (file.contains(name)) {
                    config.mValues[i] = file.value(name);
                    config.mOrigins[i] = QStringLiteral("file");
                    if (kKeys[i].credential && !config.mValues[i].isEmpty()) {
                        credentials << name;
                    }
                }
            }
            warnIfOthersCanRead(filePath, credentials);
        }
    }

    for (int i = 0; i < KeyCount; ++i) {
        const auto it = environment.constFind(QString::fromLatin1(kKeys[i].envName));
        if (it != environment.constEnd()) {
            config.mValues[i] = it.value().trimmed();
            config.mOrigins[i] = QStringLiteral("environment");
        }
    }
    return config;
}

QString AppConfig::value(Key key) const
{
    return mValues[key];
}

quint16 AppConfig::gatewayControlPort() const
{
    bool ok = false;
    const uint port = value(GatewayControlPort).toUInt(&ok);
    if (!ok || port == 0 || port > 65535) {
        qCWarning(lcConfig) << "gateway/controlPort is not a port number:" << value(GatewayControlPort)
                            << "- using 9721";
        return 9721;
    }
    return static_cast<quint16>(port);
}

QString AppConfig::credential(Key key) const
{
    const KeyInfo& info = kKeys[key];
    const QString v = value(key);
    if (v.isEmpty()) {
        qCWarning(lcConfig).noquote()
            << "missing credential" << info.name << "(set it in" << defaultFilePath()
            << "or the environment variable" << info.envName << ")";
        return v;
    }
    // Pointing a service at its real address without its credentials must not hand the
    // stand-ins' values to whoever answers there.
    const QString host = QUrl(value(info.sentTo)).host();
    if (info.standIn != nullptr && v == QLatin1String(info.standIn) && !isLoopbackHost(host)) {
        qCWarning(lcConfig).noquote() << "not sending the stand-in credential" << info.name << "to" << host
                                      << "(" << kKeys[info.sentTo].name << "): set the service's own in"
                                      << defaultFilePath() << "or the environment variable" << info.envName;
        return QString();
    }
    return v;
}

QString AppConfig::origin(Key key) const
{
    return mOrigins[key];
}
