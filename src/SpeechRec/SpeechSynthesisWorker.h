#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QUrl>

#include <atomic>

// Runs on the synthesis thread: a token, then the audio of one piece of text, both by
// blocking requests. The token is fetched for every piece.
class SpeechSynthesisWorker : public QObject {
    Q_OBJECT

public:
    struct Service {
        QUrl tokenUrl;
        QUrl synthesisUrl;
        QString clientId;
        QString clientSecret;
        QString cuid;
    };

    explicit SpeechSynthesisWorker(const Service& service, QObject* parent = nullptr);

    QString getToken();
    static QString parseToken(const QByteArray& reply);
    static QString urlEncode(QString text);
    // The synthesis request for one piece.
    QString synthesisUrl(const QString& text, const QString& token, int per, int spd, int pit, int vol) const;

    // Any thread: the pieces asked for so far are dropped, fetched or not.
    void cancel() { ++mCancels; }
    quint64 cancels() const { return mCancels.load(); }

signals:
    // The audio of one piece; round is cancels() when the piece arrived.
    void signalResult(QByteArray data, quint64 round);

public slots:
    void onSpeechSynthesis(QString text, int per, int spd, int pit, int vol);

private:
    struct Piece {
        QString text;
        int per;
        int spd;
        int pit;
        int vol;
        quint64 round;
    };

    Service mService;
    QList<Piece> mPieces;  // this thread only
    bool mBusy = false;
    std::atomic<quint64> mCancels{0};
};
