#pragma once

#include "RecognitionEngine.h"

#include <QStringList>

#include <atomic>
#include <memory>

// A deterministic engine: it "hears" the sentences of a script, one per stretch of speech.
// Speech is any 20 ms window louder than a low threshold. Every 200 ms of a sentence shows the
// next partial stage; 600 ms of quiet, or the end of the audio, closes it with the whole
// sentence. A script line is one sentence; "|" separates partial stages written out by hand
// (which is how a revision is scripted: "我想|我想去北经|我想去北京。"), else the stages are
// the sentence's prefixes, two characters or one word at a time. Engines made with the same
// counter go through the script together: each session hears the sentence after the last one
// heard, as a user saying different things in turn would expect.
class ScriptedEngine : public RecognitionEngine {
public:
    static constexpr int kWindowBytes = 640;  // 20 ms
    static constexpr int kSpeechLevel = 200;  // mean absolute sample value
    static constexpr int kStageMs = 200;
    static constexpr int kEndQuietMs = 600;

    explicit ScriptedEngine(const QStringList& script, std::shared_ptr<std::atomic<int>> sentence =
                                                           std::make_shared<std::atomic<int>>(0));

    QList<Result> feed(const QByteArray& pcm) override;
    QList<Result> finish() override;

    static QStringList defaultScript();
    // The partial stages of a script line; the last one is the final text.
    static QStringList stagesOf(const QString& line);

private:
    Result closeSentence();

    QStringList mScript;
    QByteArray mPending;
    std::shared_ptr<std::atomic<int>> mSentence;  // the next sentence to hear
    bool mSpeaking = false;
    int mSpokenMs = 0;
    int mQuietMs = 0;
    int mStage = -1;
};
