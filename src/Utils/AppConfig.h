#pragma once

#include "Utils/Singleton.h"

#include <QHash>
#include <QString>
#include <QUrl>

// Every host, port and credential of the outside services. Build-time defaults point at
// the stand-in services on 127.0.0.1; the configuration file and then the environment
// override them (docs/configuration.md lists every key).
class AppConfig : public Singleton<AppConfig> {
public:
    enum Key {
        GatewayHost,
        GatewayControlPort,
        BackendUrl,
        IpLookupUrl,
        IFlyUrl,
        IFlyAppId,
        IFlyApiKey,
        IFlyApiSecret,
        TranslateUrl,
        TranslateAppId,
        TranslateKey,
        TokenUrl,
        TokenClientId,
        TokenClientSecret,
        SynthesisUrl,
        SynthesisCuid,
        SearchUrl,
        ProductSiteUrl,
        ContactPageUrl,
        DeviceVirtualSocket,
        KeyCount
    };

    struct KeyInfo {
        const char* name;     // "group/key" in the configuration file
        const char* envName;  // environment variable that overrides it
        const char* buildDefault;
        bool credential;                // an empty value is reported as a missing credential
        const char* standIn = nullptr;  // credential: the value only the stand-in services accept
        Key sentTo = KeyCount;          // credential: the service address it goes to
    };

    static const KeyInfo& info(Key key);

    // Builds a configuration from the build defaults, then the file, then the environment.
    // An empty filePath skips the file; a missing or unreadable file is logged and skipped.
    // The file's values are taken as written: `,` and `;` are part of them.
    static AppConfig fromSources(const QString& filePath, const QHash<QString, QString>& environment);

    // The file that getInstance() reads: $ZORVANE_CONFIG, else
    // <config folder>/ZorvaneV2/zorvane.ini.
    static QString defaultFilePath();

    QString value(Key key) const;

    QString gatewayHost() const { return value(GatewayHost); }
    quint16 gatewayControlPort() const;
    QUrl backendUrl() const { return QUrl(value(BackendUrl)); }
    QUrl ipLookupUrl() const { return QUrl(value(IpLookupUrl)); }
    QUrl iflyUrl() const { return QUrl(value(IFlyUrl)); }
    QUrl translateUrl() const { return QUrl(value(TranslateUrl)); }
    QUrl tokenUrl() const { return QUrl(value(TokenUrl)); }
    QUrl synthesisUrl() const { return QUrl(value(SynthesisUrl)); }
    QUrl searchUrl() const { return QUrl(value(SearchUrl)); }
    QUrl productSiteUrl() const { return QUrl(value(ProductSiteUrl)); }
    QUrl contactPageUrl() const { return QUrl(value(ContactPageUrl)); }
    QString deviceVirtualSocket() const { return value(DeviceVirtualSocket); }

    // A credential, or an empty text after one log line: when it is missing, or when it is the
    // stand-in value and its service lies outside this machine (never sent there).
    QString credential(Key key) const;

    // Where each value came from ("build", "file" or "environment"), for the troubleshooting log.
    QString origin(Key key) const;

private:
    friend class Singleton<AppConfig>;
    struct Uninitialised {};
    AppConfig();  // the process configuration: defaultFilePath() and the environment
    explicit AppConfig(Uninitialised) {}

    QString mValues[KeyCount];
    QString mOrigins[KeyCount];
};
