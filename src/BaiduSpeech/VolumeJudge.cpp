#include "BaiduSpeech/VolumeJudge.h"

#include <QtEndian>

#include <algorithm>
#include <vector>

namespace {

template <typename Fn>
void forEachSample(const QByteArray& packet, Fn fn)
{
    const int count = packet.size() / 2;
    for (int i = 0; i < count; ++i) {
        fn(qFromLittleEndian<qint16>(packet.constData() + 2 * i));
    }
}

QString ratios(const char* title, const QList<VolumeRatio>& list, bool high)
{
    QString text = QString::fromUtf8(title);
    for (const VolumeRatio& r : list) {
        text += QString::asprintf("%0.2f, ", double(high ? r.high : r.low));
    }
    return text;
}

}  // namespace

float VolumeJudge::getVolumeRatio(const QList<QByteArray>& group, int level, int noise)
{
    int hits = 0;
    int total = 0;
    for (const QByteArray& packet : group) {
        forEachSample(packet, [&](qint16 value) {
            if (value >= level) {
                ++hits;
            }
            if (value > noise) {
                ++total;
            }
        });
    }
    if (total < kMinSamples) {
        return -1.0f;
    }
    return static_cast<float>(hits) / static_cast<float>(total) * 100.0f;
}

float VolumeJudge::getLowVolumeRatio(const QList<QByteArray>& group, int noise)
{
    return getVolumeRatio(group, kLowLevel, noise);
}

float VolumeJudge::getHighVolumeRatio(const QList<QByteArray>& group, int noise)
{
    return getVolumeRatio(group, kHighLevel, noise);
}

int VolumeJudge::dynamicChangeVolume(QList<QByteArray>* samples, QStringList* log)
{
    if (samples->size() < kTailPackets) {
        return 0;
    }
    // The noise floor: the 60 positive samples between the 70th and the 11th from the top of
    // the quiet tail.
    std::vector<qint16> tail;
    for (int i = samples->size() - kTailPackets; i < samples->size(); ++i) {
        forEachSample(samples->at(i), [&](qint16 value) {
            if (value > 0) {
                tail.push_back(value);
            }
        });
    }
    if (tail.size() < 70) {
        samples->clear();
        return 0;
    }
    std::sort(tail.begin(), tail.end());
    long long sum = 0;
    for (size_t i = tail.size() - 70; i < tail.size() - 10; ++i) {
        sum += tail[i];
    }
    const int noise = static_cast<int>(sum / 60.0);

    // Groups of three packets; the packet at which a group is judged is passed over.
    QList<VolumeRatio> list;
    QList<QByteArray> group;
    for (const QByteArray& packet : qAsConst(*samples)) {
        if (group.size() < kGroupPackets) {
            group.append(packet);
            continue;
        }
        const float low = getLowVolumeRatio(group, noise);
        const float high = getHighVolumeRatio(group, noise);
        if (low > -1.0f && high > -1.0f) {
            list.append({high, low});
        }
        group.clear();
    }

    float maxHigh = 0.0f;
    float minLow = 0.0f;  // the largest low, as the judgment has always taken it
    for (const VolumeRatio& r : qAsConst(list)) {
        maxHigh = std::max(maxHigh, r.high);
        minLow = std::max(minLow, r.low);
    }

    int step = 0;
    if (maxHigh > kLimit) {
        if (mVolumeAdjust.type == 2) {
            if (++mVolumeAdjust.count >= 2) {
                step = -1;
                mVolumeAdjust = Adjust();
            }
        } else {
            mVolumeAdjust = {2, 1};
        }
    } else if (minLow < kLimit) {
        if (mVolumeAdjust.type == 1) {
            if (++mVolumeAdjust.count >= 3) {
                step = 1;
                mVolumeAdjust = Adjust();
            }
        } else {
            mVolumeAdjust = {1, 1};
        }
    } else {
        mVolumeAdjust = Adjust();
    }

    if (log != nullptr) {
        *log << ratios("高:", list, true) << ratios("低:", list, false)
             << QStringLiteral("maxHigh:%1, minLow:%2").arg(double(maxHigh)).arg(double(minLow))
             << QStringLiteral("type:%1, count:%2").arg(mVolumeAdjust.type).arg(mVolumeAdjust.count);
    }
    samples->clear();
    return step;
}
