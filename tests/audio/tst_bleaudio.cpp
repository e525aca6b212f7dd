#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "Hid/BLEManager.h"
#include "Hid/BleAudioHandler.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "Hid/SbcDecoder.h"
#include "SbcFrames.h"
#include "SbcPacketizer.h"

#include <QSignalSpy>
#include <QtEndian>
#include <QtMath>
#include <QtTest>

#include <sbc/sbc.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizer runtimes export this; GCC ships no header for it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*mallocHook)(const volatile void*, size_t),
                                                         void (*freeHook)(const volatile void*));
#define ZORVANE_COUNTS_ALLOCATIONS 1
#endif

namespace {

// Heap allocations made on the thread that counts, through the sanitizer's allocator hooks.
thread_local bool tCounting = false;
int gAllocations = 0;

#ifdef ZORVANE_COUNTS_ALLOCATIONS
void onMalloc(const volatile void*, size_t)
{
    if (tCounting) {
        ++gAllocations;
    }
}
void onFree(const volatile void*) {}
#endif

QByteArray sine(int samples, double hz, double amplitude = 8000)
{
    QByteArray pcm(samples * 2, '\0');
    for (int i = 0; i < samples; ++i) {
        qToLittleEndian(static_cast<qint16>(amplitude * std::sin(2 * M_PI * hz * i / 16000.0)),
                        pcm.data() + 2 * i);
    }
    return pcm;
}

const unsigned char* bytes(const QByteArray& data)
{
    return reinterpret_cast<const unsigned char*>(data.constData());
}

// The codec's result for the first length bytes, into room for *out bytes.
int decode(const QByteArray& frame, int length, int* out)
{
    QByteArray pcm(std::max(*out, 0), '\0');
    return SBC_Decode(bytes(frame), length, reinterpret_cast<unsigned char*>(pcm.data()), out);
}

// A whole frame into pcm: the bytes written, or below zero on failure.
int decodeInto(const QByteArray& frame, QByteArray* pcm)
{
    pcm->fill('\0', 256);
    int outBytes = 256;
    return SBC_Decode(bytes(frame), frame.size(), reinterpret_cast<unsigned char*>(pcm->data()), &outBytes) >
                   0
               ? outBytes
               : -outBytes - 1;
}

double rmsDifference(const QByteArray& a, const QByteArray& b)
{
    const int n = std::min(a.size(), b.size()) / 2;
    double sum = 0;
    for (int i = 0; i < n; ++i) {
        const double d = qFromLittleEndian<qint16>(a.constData() + 2 * i) -
                         qFromLittleEndian<qint16>(b.constData() + 2 * i);
        sum += d * d;
    }
    return n > 0 ? std::sqrt(sum / n) : 1e9;
}

}  // namespace

class TestBleAudio : public QObject {
    Q_OBJECT

private slots:
    void init() { SBC_Init_Decoder(); }
    void resultCodes();
    void decodesASineAndKeepsStateAcrossFrames();
    void failedFirstFrameDoesNotSpoilTheRest();
    void groupALongAndShort();
    void groupBWithABadCrcIsSilence();
    void groupCWithALostFragment();
    void groupDResynchronisesAfterALostFragment();
    void shortPacketsOfEveryKind();
    void aFrameAllocatesOnlyItsOutput();
};

void TestBleAudio::resultCodes()
{
    const QByteArray frame = encodeSbcFrames(sine(128, 440), 6).first();
    QCOMPARE(frame.size(), 20);
    int out = 256;
    QCOMPARE(decode(frame, 19, &out), -1);
    QCOMPARE(out, 256);  // unchanged
    out = 100;
    QCOMPARE(decode(frame, 20, &out), -2);
    QCOMPARE(out, 128);  // samples needed
    QByteArray badSync = frame;
    badSync[0] = 0x9D;
    out = 256;
    QCOMPARE(decode(badSync, 20, &out), -3);
    QCOMPARE(out, 0);
    QByteArray badCrc = frame;
    badCrc[3] = static_cast<char>(badCrc[3] ^ 0x5A);
    out = 256;
    QCOMPARE(decode(badCrc, 20, &out), -4);
    QCOMPARE(out, 0);
    out = 256;
    QCOMPARE(decode(frame, 20, &out), 20);
    QCOMPARE(out, 256);
    // The CRC we compute is the one the encoder wrote, for every bitpool the mouse uses.
    for (int bitpool : {6, 11, 15, 22, 28}) {
        const QByteArray f = encodeSbcFrames(sine(128, 700), bitpool).first();
        QCOMPARE(SbcFrame::frameLength(bytes(f)), f.size());
        QCOMPARE(SbcFrame::crc(bytes(f), f.size()), static_cast<unsigned char>(f.at(3)));
    }
    // Every length short of the frame, under the address sanitizer: nothing read past the end.
    const QByteArray full = encodeSbcFrames(sine(128, 440), 28).first();
    for (int length = 1; length < full.size(); ++length) {
        out = 256;
        QCOMPARE(decode(full.left(length), length, &out), -1);
    }
}

void TestBleAudio::decodesASineAndKeepsStateAcrossFrames()
{
    const QByteArray input = sine(128 * 20, 440);
    const QList<QByteArray> frames = encodeSbcFrames(input, 28);
    QByteArray decoded;
    QByteArray pcm;
    for (const QByteArray& frame : frames) {
        QCOMPARE(decodeInto(frame, &pcm), 256);
        decoded += pcm;
    }
    // The codec delays by 73 samples at 8 subbands; after that the sine comes back closely.
    const int delay = 73;
    const double error = rmsDifference(decoded.mid(2 * (delay + 256)), input.mid(2 * 256));
    QVERIFY2(error < 600, qPrintable(QString::number(error)));

    // Frame 5 decoded after frames 0-4 differs from frame 5 on a fresh state.
    SBC_Init_Decoder();
    QByteArray fresh;
    decodeInto(frames.at(5), &fresh);
    QVERIFY(fresh != decoded.mid(5 * 256, 256));
}

void TestBleAudio::failedFirstFrameDoesNotSpoilTheRest()
{
    const QByteArray input = sine(128 * 12, 523);
    const QList<QByteArray> frames = encodeSbcFrames(input, 22);
    QByteArray reference;
    QByteArray pcm;
    for (const QByteArray& f : frames) {
        decodeInto(f, &pcm);
        reference += pcm;
    }
    // First frames that fail: scrambled data, and one that passes the sync and CRC tests but
    // that the codec refuses (a bitpool beyond what 8 subbands allow).
    SBC_Init_Decoder();
    QByteArray garbage = frames.first();
    for (int i = 4; i < garbage.size(); ++i) {
        garbage[i] = static_cast<char>(0xA5 ^ i);
    }
    QVERIFY(decodeInto(garbage, &pcm) < 0);
    QByteArray refused = frames.first();
    refused[2] = static_cast<char>(200);
    const int length = SbcFrame::frameLength(bytes(refused));
    refused = refused.leftJustified(length, '\x11');
    refused[3] = static_cast<char>(SbcFrame::crc(bytes(refused), length));
    int out = 1024;
    QVERIFY(decode(refused, length, &out) < 0);
    QByteArray after;
    for (const QByteArray& f : frames) {
        decodeInto(f, &pcm);
        after += pcm;
    }
    QCOMPARE(after, reference);
}

void TestBleAudio::groupALongAndShort()
{
    BleAudioHandler handler;
    QSignalSpy data(&handler, &BleAudioHandler::signalAudioData);
    QSignalSpy active(&handler, &BleAudioHandler::signalAudioActive);
    SbcPacketizer longA(SbcPacketizer::GroupALong);
    const QByteArray packet = longA.feed(sine(256, 440)).first();
    QCOMPARE(packet.size(), 100);
    QVERIFY(handler.handlePacket(packet));
    QCOMPARE(data.size(), 2);
    QCOMPARE(active.size(), 1);
    QVERIFY(data.at(0).at(0).toByteArray() != QByteArray(256, '\0'));
    // 99 bytes are a short packet: a whole frame by bits 2-3, here failing, one chunk.
    QVERIFY(handler.handlePacket(packet.left(99)));
    QCOMPARE(data.size(), 3);

    for (auto group : {SbcPacketizer::GroupAShort64, SbcPacketizer::GroupAShort30}) {
        SbcPacketizer shortA(group);
        data.clear();
        for (const QByteArray& p : shortA.feed(sine(128 * 3, 300))) {
            QVERIFY(handler.handlePacket(p));
        }
        QCOMPARE(data.size(), 3);
        QVERIFY(data.at(2).at(0).toByteArray() != QByteArray(256, '\0'));
    }
}

void TestBleAudio::groupBWithABadCrcIsSilence()
{
    BleAudioHandler handler;
    QSignalSpy data(&handler, &BleAudioHandler::signalAudioData);
    SbcPacketizer b(SbcPacketizer::GroupB);
    QByteArray packet = b.feed(sine(128, 880)).first();
    QCOMPARE(static_cast<quint8>(packet.at(0)), quint8(38));
    packet[2] = static_cast<char>(packet[2] ^ 0xFF);  // the CRC byte
    QVERIFY(handler.handlePacket(packet));
    QCOMPARE(data.size(), 1);
    QCOMPARE(data.at(0).at(0).toByteArray(), QByteArray(256, '\0'));
    // Records are not audio.
    QVERIFY(!handler.handlePacket(QByteArray::fromHex("0b000000107a01")));
    QVERIFY(!handler.handlePacket(QByteArray::fromHex("06")));
}

void TestBleAudio::groupCWithALostFragment()
{
    BleAudioHandler handler;
    QSignalSpy data(&handler, &BleAudioHandler::signalAudioData);
    SbcPacketizer c(SbcPacketizer::GroupC);
    const QList<QByteArray> packets = c.feed(sine(128 * 2, 440));  // fragments 0, 1, 2, 3
    QCOMPARE(packets.size(), 4);
    QVERIFY(handler.handlePacket(packets.at(0)));
    QVERIFY(handler.handlePacket(packets.at(1)));
    QCOMPARE(data.size(), 1);
    QVERIFY(data.at(0).at(0).toByteArray() != QByteArray(256, '\0'));
    QCOMPARE(handler.bufferSize(), 0);

    // Fragment 1 of the next frame is lost: 0, then 2 and 3.
    SbcPacketizer again(SbcPacketizer::GroupC);
    const QList<QByteArray> next = again.feed(sine(128 * 2, 440));
    data.clear();
    handler.handlePacket(next.at(0));
    handler.handlePacket(next.at(2));
    QCOMPARE(handler.bufferSize(), 42);
    handler.handlePacket(next.at(3));  // the buffer held 59 bytes; the first 38 are decoded
    QCOMPARE(data.size(), 1);
    QCOMPARE(handler.bufferSize(), 0);
}

void TestBleAudio::groupDResynchronisesAfterALostFragment()
{
    BleAudioHandler handler;
    QSignalSpy data(&handler, &BleAudioHandler::signalAudioData);
    SbcPacketizer d(SbcPacketizer::GroupD);
    const QList<QByteArray> packets = d.feed(sine(128 * 8, 440));  // four times fragments 0, 1, 2
    QCOMPARE(packets.size(), 12);
    const auto heard = [&](int from, int to) {
        data.clear();
        for (int i = from; i < to; ++i) {
            handler.handlePacket(packets.at(i));
        }
        int loud = 0;
        for (const QList<QVariant>& chunk : data) {
            loud += chunk.at(0).toByteArray() != QByteArray(256, '\0') ? 1 : 0;
        }
        return loud;
    };
    QCOMPARE(heard(0, 3), 2);
    QCOMPARE(handler.bufferSize(), 0);
    // Fragment 1 of the second pair is lost: the pairs after it are heard whole.
    handler.handlePacket(packets.at(3));
    handler.handlePacket(packets.at(5));
    QCOMPARE(heard(6, 12), 4);
    QCOMPARE(data.size(), 4);
}

void TestBleAudio::shortPacketsOfEveryKind()
{
    // Under the address sanitizer: every audio first byte with every short length.
    BleAudioHandler handler;
    QSignalSpy data(&handler, &BleAudioHandler::signalAudioData);
    for (int first : {7, 15, 38, 18, 50, 82, 114, 14, 46, 78}) {
        for (int length = 1; length < 101; ++length) {
            QByteArray packet(length, '\x33');
            packet[0] = static_cast<char>(first);
            QVERIFY(handler.handlePacket(packet));
        }
    }
    for (const QList<QVariant>& chunk : data) {
        QCOMPARE(chunk.at(0).toByteArray().size(), 256);
    }
}

void TestBleAudio::aFrameAllocatesOnlyItsOutput()
{
#ifndef ZORVANE_COUNTS_ALLOCATIONS
    QSKIP("allocations are counted through the sanitizers' allocator hooks");
#else
    __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);
    FakeHidBackend hidBackend;
    FakeBleTransport bleTransport;
    HidManager hid(&hidBackend);
    BLEManager ble(&bleTransport, nullptr);
    DeviceManager device(&hid, &ble);
    int chunks = 0;
    connect(
        &device, &DeviceManager::signalAudioData, this,
        [&chunks](const QByteArray& pcm) { chunks += pcm.size() == 256 ? 1 : 0; }, Qt::DirectConnection);
    // Every group, and a frame that fails its CRC (silence), from the packet handler on.
    QList<QByteArray> packets;
    for (auto group : {SbcPacketizer::GroupALong, SbcPacketizer::GroupAShort64, SbcPacketizer::GroupAShort30,
                       SbcPacketizer::GroupB, SbcPacketizer::GroupC, SbcPacketizer::GroupD}) {
        SbcPacketizer packetizer(group);
        packets += packetizer.feed(sine(128 * 6, 440));
    }
    QByteArray broken = packets.last();
    broken[5] = static_cast<char>(broken[5] ^ 0x3C);
    packets << broken;
    for (int round = 0; round < 2; ++round) {
        // The first round may set up what lasts (the codec, the reassembly buffer).
        chunks = 0;
        gAllocations = 0;
        tCounting = true;
        for (const QByteArray& packet : qAsConst(packets)) {
            device.handleBlePacket(packet);
        }
        tCounting = false;
    }
    QVERIFY(chunks >= 36);
    QCOMPARE(gAllocations, chunks);
#endif
}

QTEST_GUILESS_MAIN(TestBleAudio)
#include "tst_bleaudio.moc"
