#include "BaiduSpeech/VolumeJudge.h"

#include <QtEndian>
#include <QtTest>

namespace {

// A packet of 160 samples: `loud` of them at `level`, the rest at `floor`.
QByteArray packet(int level, int loud, int floor = 200)
{
    QByteArray bytes(320, '\0');
    for (int i = 0; i < 160; ++i) {
        qToLittleEndian(static_cast<qint16>(i < loud ? level : floor), bytes.data() + 2 * i);
    }
    return bytes;
}

// A sentence: speech packets, then the quiet tail of three.
QList<QByteArray> sentence(int level, int loud)
{
    QList<QByteArray> packets;
    for (int i = 0; i < 8; ++i) {
        packets << packet(level, loud);
    }
    for (int i = 0; i < 3; ++i) {
        packets << packet(0, 0, 100);
    }
    return packets;
}

// Loud: 10 of 160 samples at 30000 (6 % high). Quiet: nothing reaches 11000. Good: low but not high.
QList<QByteArray> loud()
{
    return sentence(30000, 10);
}
QList<QByteArray> quiet()
{
    return sentence(5000, 160);
}
QList<QByteArray> good()
{
    return sentence(15000, 160);
}

}  // namespace

class TestVolumeJudge : public QObject {
    Q_OBJECT

private slots:
    void ratios();
    void runsOfVerdicts();
    void shortSentences();
};

void TestVolumeJudge::ratios()
{
    const QList<QByteArray> group = {packet(30000, 16), packet(30000, 16), packet(30000, 16)};
    QCOMPARE(VolumeJudge::getHighVolumeRatio(group, 100), 10.0f);
    QCOMPARE(VolumeJudge::getLowVolumeRatio(group, 100), 10.0f);
    // Negative excursions never count as loud.
    QCOMPARE(VolumeJudge::getHighVolumeRatio({packet(-30000, 160)}, -32768), 0.0f);
    // Fewer than 100 samples above the floor: no ratio.
    QCOMPARE(VolumeJudge::getVolumeRatio({packet(500, 99, 0)}, 11000, 100), -1.0f);
}

void TestVolumeJudge::runsOfVerdicts()
{
    VolumeJudge judge;
    QStringList log;
    QList<QByteArray> s = loud();
    QCOMPARE(judge.dynamicChangeVolume(&s, &log), 0);
    QVERIFY(s.isEmpty());
    QCOMPARE(log.size(), 4);
    QVERIFY(log.at(0).startsWith(QStringLiteral("高:")));
    QCOMPARE(log.at(3), QStringLiteral("type:2, count:1"));
    s = loud();
    QCOMPARE(judge.dynamicChangeVolume(&s, nullptr), -1);
    QCOMPARE(judge.adjust().type, 0);  // the run starts over

    // A change of verdict restarts the count: loud, quiet, loud gives no step.
    for (auto make : {loud, quiet, loud}) {
        s = make();
        QCOMPARE(judge.dynamicChangeVolume(&s, nullptr), 0);
    }
    QCOMPARE(judge.adjust().count, 1);

    // Three quiet sentences in a row raise the volume.
    VolumeJudge quietJudge;
    for (int i = 0; i < 2; ++i) {
        s = quiet();
        QCOMPARE(quietJudge.dynamicChangeVolume(&s, nullptr), 0);
    }
    s = quiet();
    QCOMPARE(quietJudge.dynamicChangeVolume(&s, nullptr), 1);

    // A sentence in the good band clears a run.
    s = quiet();
    quietJudge.dynamicChangeVolume(&s, nullptr);
    s = good();
    QCOMPARE(quietJudge.dynamicChangeVolume(&s, nullptr), 0);
    QCOMPARE(quietJudge.adjust().type, 0);
}

void TestVolumeJudge::shortSentences()
{
    VolumeJudge judge;
    QList<QByteArray> two = {packet(30000, 160), packet(0, 0)};
    QCOMPARE(judge.dynamicChangeVolume(&two, nullptr), 0);
    QCOMPARE(two.size(), 2);  // untouched
    // A silent tail has no noise floor: the sentence is passed over without reading past it.
    QList<QByteArray> silentTail = {packet(30000, 160), packet(30000, 160), packet(30000, 160),
                                    packet(30000, 160), packet(0, 0, 0),    packet(0, 0, 0),
                                    packet(0, 0, 0)};
    QCOMPARE(judge.dynamicChangeVolume(&silentTail, nullptr), 0);
    QVERIFY(silentTail.isEmpty());
    QCOMPARE(judge.adjust().type, 0);
    // No ratio at all (nothing above the floor) reads as too quiet.
    QList<QByteArray> flat = sentence(100, 0);
    judge.dynamicChangeVolume(&flat, nullptr);
    QCOMPARE(judge.adjust().type, 1);
}

QTEST_GUILESS_MAIN(TestVolumeJudge)
#include "tst_volumejudge.moc"
