#pragma once

#include "IFlySpeech/IFlyMessage.h"
#include "SpeechRec/SpeechRecognizer.h"
#include "Utils/Singleton.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QScopedPointer>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>

#include <functional>

// The dictation web service client: one web socket per utterance, first/continue/end frames
// of Base64 audio, dynamic correction of the text (pgs "apd" settles, anything else replaces
// the unsettled part), a 10 s idle stop, and after 45 s a quiet renewal of the connection
// with the audio of that moment held back. Same signals as the gateway client. Main thread.
class IFlyWebSpeech : public SpeechRecognizer, public Singleton<IFlyWebSpeech> {
    Q_OBJECT

public:
    struct Service {
        QUrl url;
        QString appId;
        QString apiKey;
        QString apiSecret;
    };
    static constexpr int kIdleMs = 10000;
    static constexpr int kRenewAfterMs = 45000;
    // A reply carries the words of a sentence or two, a few kilobytes at most. A message or
    // frame past this closes the connection, which ends the session as a socket error would.
    static constexpr qint64 kMaxReplyBytes = 256 * 1024;

    // Tests hand in the recorder (may be null), the service and the device type source.
    // deviceType: the mouse's link (0 the receiver, 1 Bluetooth); the microphone is asked for on
    // the receiver only. Unset, it is never asked for.
    IFlyWebSpeech(const Service& service, std::function<int()> deviceType, QObject* parent = nullptr);
    ~IFlyWebSpeech() override;

    void start(QString language, QString accent, int mode);
    void stop() override;
    bool isRunning() const override;
    void setDeviceType(std::function<int()> deviceType) { mDeviceType = std::move(deviceType); }

    // The signed URL of a connection made at `now`.
    static QUrl buildAuthUrl(const Service& service, const QDateTime& now);
    int getVolume(const QByteArray& data) const;
    static int avgVolume(const QByteArray& data);

    // Tests: the idle timer, and the age a connection pretends to have.
    QTimer* idleTimer() { return &mTimerIdle; }
    void addConnectionAge(qint64 ms) { mAgeOffsetMs += ms; }
    bool isRestarting() const { return mRestarting; }

public slots:
    void onAudioData(const QByteArray& data) override;

private slots:
    void onConnected();
    void onReceiver(const QString& text);
    void onDisconnected();
    void connectSocket();
    void reconnect();

private:
    friend class Singleton<IFlyWebSpeech>;
    IFlyWebSpeech();

    void sendAudio(const QByteArray& data);
    void sendEndFrame();
    void sendFrame(const QJsonObject& frame);
    void dropSocket();
    bool isConnected() const;
    qint64 connectionAgeMs() const;

    Service mService;
    std::function<int()> mDeviceType;
    QScopedPointer<QWebSocket> socket;
    int mFrameStatus = 0;
    QString mLanguage;
    QString mAccent;
    QString mTempResult;
    QString mResult;
    QList<int> mVolumes;
    QElapsedTimer mConnectTime;
    qint64 mAgeOffsetMs = 0;
    int mRunning = 0;
    bool mRestarting = false;
    QList<QByteArray> mPendingAudio;
    QTimer mTimerIdle;
    int mMode = 0;
};
