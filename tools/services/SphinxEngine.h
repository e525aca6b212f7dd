#pragma once

#include "RecognitionEngine.h"

struct ps_decoder_s;

// Real offline English recognition with pocketsphinx: partial hypotheses every 300 ms of
// speech, a final one when the decoder hears the speech end or the audio ends. Decoders are
// costly to load, so the idle ones are kept for the next session (one thread only).
class SphinxEngine : public RecognitionEngine {
public:
    SphinxEngine();
    ~SphinxEngine() override;
    SphinxEngine(const SphinxEngine&) = delete;
    SphinxEngine& operator=(const SphinxEngine&) = delete;

    // False (with the reason on stderr) when the model cannot be loaded.
    bool isReady() const { return mDecoder != nullptr; }
    // Loads a decoder for the first session ahead of it: loading takes seconds on a machine
    // that has not read the model yet, far over the half second a client waits for its session
    // to be acknowledged. False when the model cannot be loaded.
    static bool preload();

    QList<Result> feed(const QByteArray& pcm) override;
    QList<Result> finish() override;

private:
    Result closeUtterance();

    ps_decoder_s* mDecoder = nullptr;
    bool mWasSpeaking = false;
    int mSinceHypMs = 0;
    QString mLastPartial;
};
