#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

// Share, in percent, of the samples above the noise floor that reach a high and a low level.
struct VolumeRatio {
    float high = 0;
    float low = 0;
};

// Judges once per sentence how loud the speech arrived and, after a run of like verdicts,
// asks for one step of the mouse's microphone volume: -1 after two too-loud sentences in a
// row, +1 after three too-quiet ones. The run crosses sessions.
class VolumeJudge {
public:
    struct Adjust {
        int type = 0;  // 0 none, 1 too quiet, 2 too loud
        int count = 0;
    };

    static constexpr int kTailPackets = 3;
    static constexpr int kGroupPackets = 3;
    static constexpr int kHighLevel = 29000;
    static constexpr int kLowLevel = 11000;
    static constexpr int kMinSamples = 100;
    static constexpr float kLimit = 1.5f;

    // Judges the packets of one sentence (16-bit mono PCM) and clears them. Returns the step,
    // 0 for none; log receives the diagnostic lines. Fewer than 3 packets: nothing happens and
    // the packets stay. A quiet tail with fewer than 70 positive samples gives no noise floor:
    // the sentence is passed over (the packets are cleared, the run is left as it was).
    int dynamicChangeVolume(QList<QByteArray>* samples, QStringList* log);

    static float getVolumeRatio(const QList<QByteArray>& group, int level, int noise);
    static float getLowVolumeRatio(const QList<QByteArray>& group, int noise);
    static float getHighVolumeRatio(const QList<QByteArray>& group, int noise);

    Adjust adjust() const { return mVolumeAdjust; }

private:
    Adjust mVolumeAdjust;
};
