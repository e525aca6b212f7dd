#include "ServiceSet.h"

#include "BackendService.h"
#include "LookupService.h"
#include "SearchService.h"
#include "SynthesisService.h"
#include "TokenService.h"
#include "TranslateService.h"
#include "Utils/AppConfig.h"

#include <QTextStream>

namespace {

struct ServiceInfo {
    const char* name;
    AppConfig::Key key;  // the application's setting that addresses it
    const char* what;
};

const ServiceInfo kServices[ServiceSet::Count] = {
    {"gateway", AppConfig::GatewayControlPort,
     "speech gateway: control port (server list) and SDK ports (parameters, audio, results)"},
    {"backend", AppConfig::BackendUrl, "vendor backend under /BelmorZorvaneV2Mac, uploads at /__uploads"},
    {"ifly", AppConfig::IFlyUrl, "dictation web socket /v2/iat (signed URL checked)"},
    {"translate", AppConfig::TranslateUrl, "text translation /api/trans/vip/translate (sign checked)"},
    {"token", AppConfig::TokenUrl, "synthesis token /oauth/2.0/token"},
    {"synthesis", AppConfig::SynthesisUrl, "text to speech /text2audio (espeak-ng)"},
    {"iplookup", AppConfig::IpLookupUrl, "IP lookup /service/getIpInfo.php"},
    {"search", AppConfig::SearchUrl, "web search page (any path)"},
};

QString buildDefault(AppConfig::Key key)
{
    return QString::fromUtf8(AppConfig::info(key).buildDefault);
}

}  // namespace

QString ServiceSet::name(Id id)
{
    return QString::fromLatin1(kServices[id].name);
}

bool ServiceSet::idFromName(const QString& name, Id* id)
{
    for (int i = 0; i < Count; ++i) {
        if (name == QLatin1String(kServices[i].name)) {
            *id = static_cast<Id>(i);
            return true;
        }
    }
    return false;
}

QString ServiceSet::describe(Id id)
{
    return QString::fromUtf8(kServices[id].what);
}

quint16 ServiceSet::defaultPort(Id id)
{
    if (id == Gateway) {
        return static_cast<quint16>(buildDefault(AppConfig::GatewayControlPort).toUInt());
    }
    return static_cast<quint16>(QUrl(buildDefault(kServices[id].key)).port());
}

ServiceSet::ServiceSet(QObject* parent)
    : QObject(parent),
      mAppVersion(QStringLiteral(ZORVANE_APP_VERSION)),
      mGateway(new GatewayService(&mFaults[Gateway], &mEngines, this)),
      mIFly(new IFlyService(&mFaults[IFly], &mEngines,
                            {buildDefault(AppConfig::IFlyAppId), buildDefault(AppConfig::IFlyApiKey),
                             buildDefault(AppConfig::IFlyApiSecret)},
                            this))
{
    for (int i = 0; i < Count; ++i) {
        mPorts[i] = defaultPort(static_cast<Id>(i));
    }
}

ServiceSet::~ServiceSet()
{
    stop();
}

void ServiceSet::setAllPortsFree()
{
    mPorts.fill(0);
}

HttpService* ServiceSet::http(Id id) const
{
    return mHttp[id].get();
}

bool ServiceSet::start(QString* error)
{
    const QString searchBase = QStringLiteral("http://127.0.0.1:%1");
    // The search page comes first: the seed's URLs name its port.
    mHttp[Search] = std::make_unique<SearchService>(&mFaults[Search]);
    mHttp[Translate] = std::make_unique<TranslateService>(
        &mFaults[Translate], buildDefault(AppConfig::TranslateAppId), buildDefault(AppConfig::TranslateKey));
    mHttp[Token] = std::make_unique<TokenService>(&mFaults[Token], buildDefault(AppConfig::TokenClientId),
                                                  buildDefault(AppConfig::TokenClientSecret));
    mHttp[Synthesis] =
        std::make_unique<SynthesisService>(&mFaults[Synthesis],
                                           TokenService::tokenFor(buildDefault(AppConfig::TokenClientId),
                                                                  buildDefault(AppConfig::TokenClientSecret)),
                                           buildDefault(AppConfig::SynthesisCuid));
    mHttp[IpLookup] = std::make_unique<LookupService>(&mFaults[IpLookup]);

    for (Id id : {Search, Translate, Token, Synthesis, IpLookup}) {
        if (!mFaults[id].refuse && !mHttp[id]->start(mPorts[id], error)) {
            return false;
        }
        if (mHttp[id]->isListening()) {
            mPorts[id] = mHttp[id]->port();
        }
    }
    mSeed = std::make_unique<BackendSeed>(searchBase.arg(mPorts[Search]), mAppVersion);
    mHttp[Backend] =
        std::make_unique<BackendService>(&mFaults[Backend], mSeed.get(), &mUploads, mInstallerKib);
    if (!mFaults[Backend].refuse && !mHttp[Backend]->start(mPorts[Backend], error)) {
        return false;
    }
    if (mHttp[Backend]->isListening()) {
        mPorts[Backend] = mHttp[Backend]->port();
    }
    if (!mGateway->start(mPorts[Gateway], error)) {
        return false;
    }
    mPorts[Gateway] = mGateway->port();
    if (!mIFly->start(mPorts[IFly], error)) {
        return false;
    }
    mPorts[IFly] = mIFly->port();
    // The two Qt services close their port again rather than not opening it, so that the port
    // is known and can be opened again.
    mGateway->setListening(!mFaults[Gateway].refuse);
    mIFly->setListening(!mFaults[IFly].refuse);
    return true;
}

void ServiceSet::stop()
{
    for (auto& service : mHttp) {
        if (service) {
            service->stop();
        }
    }
    mGateway->setListening(false);
    mIFly->setListening(false);
}

void ServiceSet::setRefused(Id id, bool refused)
{
    mFaults[id].refuse = refused;
    if (id == Gateway) {
        mGateway->setListening(!refused);
    } else if (id == IFly) {
        mIFly->setListening(!refused);
    } else if (HttpService* service = http(id)) {
        QString error;
        if (refused) {
            service->stop();
        } else if (!service->isListening()) {
            service->start(mPorts[id], &error);
        }
    }
}

bool ServiceSet::applyFault(Id id, const QString& text, QString* error)
{
    const bool wasRefused = mFaults[id].refuse;
    if (!mFaults[id].apply(text, error)) {
        return false;
    }
    if (mFaults[id].refuse != wasRefused) {
        setRefused(id, mFaults[id].refuse);
    }
    return true;
}

quint16 ServiceSet::port(Id id) const
{
    return mPorts[id];
}

QUrl ServiceSet::url(Id id) const
{
    if (id == Gateway) {
        return QUrl(QStringLiteral("tcp://127.0.0.1:%1").arg(mPorts[id]));
    }
    QUrl url(buildDefault(kServices[id].key));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(mPorts[id]);
    return url;
}

bool ServiceSet::usesDefaultPorts() const
{
    for (int i = 0; i < Count; ++i) {
        if (mPorts[i] != defaultPort(static_cast<Id>(i))) {
            return false;
        }
    }
    return true;
}

QString ServiceSet::configSnippet() const
{
    QString text;
    QTextStream out(&text);
    out << "# Zorvane configuration for these stand-in services (zorvane.ini or $ZORVANE_CONFIG)\n";
    out << "[gateway]\nhost=127.0.0.1\ncontrolPort=" << mPorts[Gateway] << "\n\n";
    for (int i = Backend; i < Count; ++i) {
        const QString key = QString::fromLatin1(AppConfig::info(kServices[i].key).name);
        out << '[' << key.section(QLatin1Char('/'), 0, 0) << "]\n"
            << key.section(QLatin1Char('/'), 1) << '=' << url(static_cast<Id>(i)).toString() << "\n\n";
    }
    const QString backend = url(Backend).toString();
    out << "[web]\nproductSite=" << backend << "/\ncontactPage=" << backend << "/contact\n";
    return text;
}
