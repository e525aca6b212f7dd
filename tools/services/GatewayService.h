#pragma once

#include "GatewaySession.h"

#include <QList>
#include <QObject>

class EngineFactory;
class QTcpServer;
struct Fault;

// The speech gateway: a control port that answers the server-list frame with the SDK ports
// and their counts, and the SDK ports, each of which acknowledges parameters as told
// (accept, refuse or stay silent) and runs a recognition session per connection.
class GatewayService : public QObject {
    Q_OBJECT

public:
    GatewayService(const Fault* fault, const EngineFactory* engines, QObject* parent = nullptr);

    // Counts, one per SDK port; the SDK ports are free ports chosen by the system.
    void setCounts(const QList<int>& counts) { mCounts = counts; }
    // Per SDK port, in the order of the counts; ports beyond the list accept.
    void setParamsAnswers(const QList<GatewaySession::ParamsAnswer>& answers) { mAnswers = answers; }
    static bool parseParamsAnswers(const QString& text, QList<GatewaySession::ParamsAnswer>* answers,
                                   QString* error);
    static bool parseCounts(const QString& text, QList<int>* counts, QString* error);

    bool start(quint16 controlPort, QString* error);
    void setListening(bool listening);
    quint16 port() const { return mControlPort; }
    QList<quint16> sdkPorts() const;
    int sessionCount() const { return mSessions; }

    QByteArray serverList() const;

private:
    void onControlConnection();
    void onSdkConnection(QTcpServer* server, int index);

    const Fault* mFault;
    const EngineFactory* mEngines;
    QTcpServer* mControl;
    QList<QTcpServer*> mSdk;
    QList<int> mCounts{3, 1, 2};
    QList<GatewaySession::ParamsAnswer> mAnswers;
    quint16 mControlPort = 0;
    int mSessions = 0;
};
