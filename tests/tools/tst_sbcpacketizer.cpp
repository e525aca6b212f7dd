#include "SbcPacketizer.h"

#include <QtEndian>
#include <QtMath>
#include <QtTest>

#include <sbc/sbc.h>

namespace {

QByteArray sine(int samples, double hz)
{
    QByteArray pcm(samples * 2, '\0');
    for (int i = 0; i < samples; ++i) {
        const auto v = static_cast<qint16>(8000 * std::sin(2 * M_PI * hz * i / 16000.0));
        qToLittleEndian(v, pcm.data() + 2 * i);
    }
    return pcm;
}

// Puts back what the device leaves out and decodes with a reference decoder.
QByteArray decodeFrames(const QList<QByteArray>& frames)
{
    sbc_t sbc;
    sbc_init(&sbc, 0);
    sbc.endian = SBC_LE;
    QByteArray pcm;
    for (const QByteArray& frame : frames) {
        QByteArray out(512, '\0');
        size_t written = 0;
        if (sbc_decode(&sbc, frame.constData(), static_cast<size_t>(frame.size()), out.data(), out.size(),
                       &written) != frame.size()) {
            return QByteArray();
        }
        pcm.append(out.left(static_cast<int>(written)));
    }
    sbc_finish(&sbc);
    return pcm;
}

QByteArray prefix(int bitpool)
{
    return QByteArray("\x9c\x31", 2) + static_cast<char>(bitpool);
}

}  // namespace

class TestSbcPacketizer : public QObject {
    Q_OBJECT

private slots:
    void packetLayouts_data();
    void packetLayouts();
    void partialFramesWait();
};

void TestSbcPacketizer::packetLayouts_data()
{
    QTest::addColumn<int>("group");
    QTest::newRow("A short 64") << int(SbcPacketizer::GroupAShort64);
    QTest::newRow("A short 30") << int(SbcPacketizer::GroupAShort30);
    QTest::newRow("A long") << int(SbcPacketizer::GroupALong);
    QTest::newRow("B") << int(SbcPacketizer::GroupB);
    QTest::newRow("C") << int(SbcPacketizer::GroupC);
    QTest::newRow("D") << int(SbcPacketizer::GroupD);
}

void TestSbcPacketizer::packetLayouts()
{
    QFETCH(int, group);
    const auto g = static_cast<SbcPacketizer::Group>(group);
    SbcPacketizer packetizer(g);
    const int frames = 8;
    const QList<QByteArray> packets = packetizer.feed(sine(128 * frames, 440));
    const int bitpool = SbcPacketizer::bitpool(g);
    const int length = SbcPacketizer::frameLength(g);

    // Rebuild the frames the way the receiving side must.
    QList<QByteArray> rebuilt;
    QByteArray buffer;
    for (const QByteArray& p : packets) {
        const auto first = static_cast<quint8>(p.at(0));
        switch (g) {
            case SbcPacketizer::GroupAShort64:
            case SbcPacketizer::GroupAShort30:
                QCOMPARE(int(first), g == SbcPacketizer::GroupAShort64 ? 7 : 15);
                QCOMPARE(((first >> 2) & 3), g == SbcPacketizer::GroupAShort64 ? 1 : 3);
                QCOMPARE(p.size(), 2 + length);
                rebuilt << p.mid(2);
                break;
            case SbcPacketizer::GroupALong:
                QCOMPARE(int(first), 7);
                QCOMPARE(p.size(), 100);
                rebuilt << prefix(bitpool) + p.mid(2, 49) << prefix(bitpool) + p.mid(51, 49);
                break;
            case SbcPacketizer::GroupB:
                QCOMPARE(int(first), 38);
                QCOMPARE(p.size(), 20);
                rebuilt << prefix(bitpool) + p.mid(2, 17);
                break;
            case SbcPacketizer::GroupC: {
                QCOMPARE(first & 0x1F, 18);
                const int fragment = first >> 5;
                QCOMPARE(p.size(), 20);
                if (fragment == 0 || fragment == 2) {
                    buffer = prefix(bitpool) + p.mid(2, 18);
                } else {
                    rebuilt << buffer + p.mid(2, 17);
                }
                break;
            }
            case SbcPacketizer::GroupD:
                QCOMPARE(first & 0x1F, 14);
                QCOMPARE(p.size(), 20);
                buffer += p.mid(2, 18);
                if ((first >> 5) != 0 && buffer.size() >= 27) {
                    rebuilt << prefix(bitpool) + buffer.left(27);
                    buffer.remove(0, 27);
                }
                break;
        }
    }
    QCOMPARE(rebuilt.size(), frames);
    for (const QByteArray& frame : rebuilt) {
        QCOMPARE(frame.size(), length);
        QCOMPARE(static_cast<quint8>(frame.at(0)), quint8(0x9c));
        QCOMPARE(static_cast<quint8>(frame.at(1)), quint8(0x31));
    }
    // Every rebuilt frame passes the reference decoder's checks (sync, CRC) and gives 8 ms.
    QCOMPARE(decodeFrames(rebuilt).size(), frames * 256);
}

void TestSbcPacketizer::partialFramesWait()
{
    SbcPacketizer packetizer(SbcPacketizer::GroupB);
    const QByteArray pcm = sine(128 * 2, 1000);
    QCOMPARE(packetizer.feed(pcm.left(255)).size(), 0);
    QCOMPARE(packetizer.feed(pcm.mid(255, 200)).size(), 1);
    QCOMPARE(packetizer.feed(pcm.mid(455)).size(), 1);
    SbcPacketizer::Group g;
    QVERIFY(SbcPacketizer::groupFromName(QStringLiteral("D"), &g));
    QCOMPARE(g, SbcPacketizer::GroupD);
    QVERIFY(!SbcPacketizer::groupFromName(QStringLiteral("E"), &g));
}

QTEST_GUILESS_MAIN(TestSbcPacketizer)
#include "tst_sbcpacketizer.moc"
