#pragma once

#include "HttpService.h"

#include <QHash>

// Text to speech at /text2audio: checks the token, the client identifier and every other
// parameter as the service does (language, client type, voice, and speed, pitch and volume as
// whole numbers from 0 to 15), then speaks the text with espeak-ng (Mandarin voice for Chinese
// text) and answers with the WAV audio. The player reads the format from the bytes, whatever
// the file is called. Without espeak-ng the answer is a short tone, so that playback can
// still be followed.
class SynthesisService : public HttpService {
public:
    SynthesisService(const Fault* fault, const QString& token, const QString& cuid);

    // spd, pit and vol run from 0 to 15 as the query gives them.
    static QByteArray speak(const QString& text, int spd, int pit, int vol);
    static QByteArray tone(int milliseconds);
    // Sets the RIFF and data chunk sizes from the bytes actually present.
    static QByteArray withSizes(QByteArray wav);
    // The error number of a query (decoded values by name) that the service refuses, with its
    // message, or 0.
    static int checkQuery(const QHash<QString, QString>& query, const QString& token, const QString& cuid,
                          QString* message);
    static constexpr int kMaxTextChars = 1024;

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;

private:
    static QByteArray error(int number, const QString& message);

    QString mToken;
    QString mCuid;
};
