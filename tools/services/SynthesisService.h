#pragma once

#include "HttpService.h"

// Text to speech at /text2audio: checks the token and the client identifier, then speaks the
// text with espeak-ng (Mandarin voice for Chinese text) and answers with the WAV audio. The
// player reads the format from the bytes, whatever the file is called. Without espeak-ng the
// answer is a short tone, so that playback can still be followed.
class SynthesisService : public HttpService {
public:
    SynthesisService(const Fault* fault, const QString& token, const QString& cuid);

    // spd, pit and vol run from 0 to 15 as the query gives them.
    static QByteArray speak(const QString& text, int spd, int pit, int vol);
    static QByteArray tone(int milliseconds);
    // Sets the RIFF and data chunk sizes from the bytes actually present.
    static QByteArray withSizes(QByteArray wav);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;

private:
    static QByteArray error(int number, const QString& message);

    QString mToken;
    QString mCuid;
};
