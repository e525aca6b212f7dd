#pragma once

#include "BackendSeed.h"
#include "EngineFactory.h"
#include "Fault.h"
#include "GatewayService.h"
#include "IFlyService.h"
#include "UploadLog.h"

#include <QObject>
#include <QUrl>

#include <array>
#include <memory>

class BackendService;
class HttpService;

// Every stand-in on loopback, each on the port the application uses by default unless told
// otherwise. Lives on the thread that runs its event loop (the web socket and the gateway are
// served there; the HTTP services have threads of their own).
class ServiceSet : public QObject {
    Q_OBJECT

public:
    enum Id { Gateway, Backend, IFly, Translate, Token, Synthesis, IpLookup, Search, Count };

    static QString name(Id id);
    static bool idFromName(const QString& name, Id* id);
    static QString describe(Id id);
    // The port in the application's build defaults.
    static quint16 defaultPort(Id id);

    explicit ServiceSet(QObject* parent = nullptr);
    ~ServiceSet() override;

    // Before start(): 0 picks a free port.
    void setPort(Id id, quint16 port) { mPorts[id] = port; }
    void setAllPortsFree();
    void setAppVersion(const QString& version) { mAppVersion = version; }
    void setInstallerKib(int kib) { mInstallerKib = kib; }

    Fault& fault(Id id) { return mFaults[id]; }
    EngineFactory& engines() { return mEngines; }
    UploadLog& uploads() { return mUploads; }
    GatewayService& gateway() { return *mGateway; }
    IFlyService& ifly() { return *mIFly; }

    // Starts every service; one whose fault says refuse does not listen.
    bool start(QString* error);
    void stop();
    // Refuses connections from now on (or listens again).
    void setRefused(Id id, bool refused);
    // A fault switch as --fault takes it ("refuse", "status=500", "off", ...), while running:
    // a refused port stops listening and listens again when cleared.
    bool applyFault(Id id, const QString& text, QString* error);

    quint16 port(Id id) const;
    // The address the application is configured with for this service.
    QUrl url(Id id) const;
    bool usesDefaultPorts() const;
    // An INI file for the application that points every service here.
    QString configSnippet() const;

private:
    HttpService* http(Id id) const;

    std::array<quint16, Count> mPorts{};
    std::array<Fault, Count> mFaults;
    EngineFactory mEngines;
    UploadLog mUploads;
    QString mAppVersion;
    int mInstallerKib = 512;
    std::unique_ptr<BackendSeed> mSeed;
    GatewayService* mGateway;
    IFlyService* mIFly;
    std::array<std::unique_ptr<HttpService>, Count> mHttp;
};
