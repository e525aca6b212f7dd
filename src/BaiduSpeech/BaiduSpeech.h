#pragma once

#include "BaiduSpeech/ElvUtil.h"
#include "BaiduSpeech/VolumeJudge.h"
#include "SpeechRec/SpeechRecognizer.h"
#include "Utils/Singleton.h"

#include <QList>
#include <QTimer>

class QTcpSocket;

// The recogniser client of the speech gateway: asks the control port for the SDK servers,
// picks one, sends the parameters and streams the audio in 4096-byte frames, and turns the
// gateway's event lines into partial and final texts. Main thread.
class BaiduSpeech : public SpeechRecognizer, public Singleton<BaiduSpeech> {
    Q_OBJECT

public:
    enum State { Idle = 0, Running = 1, Skipped = 2 };
    static constexpr int kFrameBytes = 4096;
    static constexpr int kConnectTimeoutMs = 3000;
    // A server list that stops short of parsing is taken as it is after this long without more.
    static constexpr int kListQuietMs = 1000;
    static constexpr int kQuietVolumeBand = 150;
    static constexpr int kQuietMsForSilence = 500;
    // Packets kept for the volume judgment without growing the list: 16 s of 8 ms frames.
    static constexpr int kSamplesReserved = 2048;

    // Tests hand in the recorder (not owned, may be null) and the gateway.
    BaiduSpeech(const QString& host, quint16 controlPort, QObject* parent = nullptr);
    ~BaiduSpeech() override;

    void start(int language);
    void stop() override;
    void skip();
    bool isRunning() const override;

    static QString buildID();
    static SDKServer getPort(const QList<SDKServer>& list);
    // Removes the first entry with the server's port; a server not listed leaves the list as it is.
    static void removeOne(QList<SDKServer>* list, const SDKServer& server);
    static int calcAvg(const QByteArray& data);

    // Tests: the timers, to expire them without waiting.
    QTimer* timerStart() { return &mTimerStart; }
    QTimer* timerEnd() { return &mTimerEnd; }
    QTimer* timerTail() { return &mTimerTail; }
    // Fuzzing: the readers of the control and SDK sockets, fed what one read returned, and
    // the SDK server the list led to.
    void readControl(const QByteArray& bytes, bool ended);
    void readSdk(const QByteArray& bytes);
    SDKServer currentServer() const { return mCurrentServer; }

signals:
    void signalChangeVolume(int volume);
    void signalDebugLog(QString log);

public slots:
    void onAudioData(const QByteArray& data) override;
    void onStartTimeout();
    void onEndTimeout();
    void onTailTimeout();

private:
    friend class Singleton<BaiduSpeech>;
    BaiduSpeech();

    void connectControl();
    // Connects without waiting; a connection not up within kConnectTimeoutMs is given up with
    // the warning and the notice.
    void connectAsync(QTcpSocket* socket, QTimer* timer, quint16 port);
    void connectFailed(QTcpSocket* socket);
    void readPortList();
    void onControlReadyRead(bool ended);
    // Gives up the current server and tries the next.
    void reconnectSDKServer();
    // Connects to the best server left; with none, asks for the list once more.
    void connectSdkServer();
    void sendStart();
    void onSDKReadyRead();
    void handleSocketMessage(const SocketMessage& message);
    void sendMessage(const QByteArray& frame);
    void sendEnd();
    bool sdkWritable() const;
    void dynamicChangeVolume();

    QString mHost;
    quint16 mControlPort;
    QTcpSocket* mControlSocket;
    QTcpSocket* mSDKSocket;
    QByteArray mAudioBuffer;
    int mState = Idle;
    bool mParamsAccepted = false;
    QString mUid;
    int mLanguage = 0;
    quint64 mUtterance = 0;     // counts start(): each press's recognition is one utterance
    quint64 mSdkUtterance = 0;  // the utterance the SDK connection was opened for
    QList<SDKServer> mServerList;
    SDKServer mCurrentServer;
    bool mListRenewed = false;  // the control port was asked again this session
    QByteArray mControlReply;   // the server list as far as it came
    QByteArray mOpenLine;       // received since the last line feed on the SDK socket
    bool mFlushSeen = false;
    bool mSilenceSent = false;
    int mMinVolume = 32767;
    int mQuietMs = 0;
    int mVolume = 0;
    QTimer mTimerStart;
    QTimer mTimerEnd;
    QTimer mTimerTail;
    QTimer mControlConnect;
    QTimer mControlQuiet;
    QTimer mSdkConnect;
    QList<QByteArray> mSamples;
    VolumeJudge mVolumeJudge;
};
