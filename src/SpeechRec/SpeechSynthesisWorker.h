#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QUrl>

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

signals:
    void signalResult(QByteArray data);

public slots:
    void onSpeechSynthesis(QString text, int per, int spd, int pit, int vol);

private:
    struct Piece {
        QString text;
        int per;
        int spd;
        int pit;
        int vol;
    };

    Service mService;
    QList<Piece> mPieces;  // this thread only
    bool mBusy = false;
};
