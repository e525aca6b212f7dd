#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Turns a stream of 16 kHz, 16-bit mono little-endian PCM into recognition results: partial
// results while a sentence is spoken (they grow and may be revised) and a final one when it
// closes. One engine serves one recognition session.
class RecognitionEngine {
public:
    struct Result {
        bool final = false;
        QString text;
    };

    virtual ~RecognitionEngine() = default;
    virtual QList<Result> feed(const QByteArray& pcm) = 0;
    // The audio has ended: the sentence in progress closes.
    virtual QList<Result> finish() = 0;
};
