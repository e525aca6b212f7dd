// The Bluetooth audio channel as it runs: a tone encoded as the mouse sends it, in one packet
// group, through the device manager with packets lost and foreign packets (records, noise) in
// between. Oracle: whatever came before, a clean stretch of the stream decodes again.
#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "FuzzSupport.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "SbcPacketizer.h"

#include <QtEndian>

#include <cmath>

namespace {

constexpr int kGroups = 6;
// Enough for every group to meet a frame start and then decode two whole frames.
constexpr int kCleanStretch = 12;

// 64 frames of a 440 Hz tone, as each group's packets: a whole number of each group's cycles.
const QList<QByteArray>& tonePackets(int group)
{
    static QList<QByteArray> packets[kGroups];
    if (packets[group].isEmpty()) {
        QByteArray pcm(64 * BleAudioHandler::kPcmFrameBytes, '\0');
        for (int i = 0; i < pcm.size() / 2; ++i) {
            const auto sample = static_cast<qint16>(8000 * std::sin(2 * M_PI * 440 * i / 16000.0));
            qToLittleEndian(sample, pcm.data() + 2 * i);
        }
        packets[group] = SbcPacketizer(static_cast<SbcPacketizer::Group>(group)).feed(pcm);
    }
    return packets[group];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    if (size < 1) {
        return 0;
    }
    FakeHidBackend hidBackend;
    FakeBleTransport bleTransport;
    HidManager hid{&hidBackend};
    BLEManager ble{&bleTransport, nullptr};
    DeviceManager device{&hid, &ble};
    QList<QByteArray> frames;
    QObject::connect(&device, &DeviceManager::signalAudioData, [&](const QByteArray& pcm) { frames << pcm; });

    const QList<QByteArray>& stream = tonePackets(data[0] % kGroups);
    int next = 0;
    // Each byte: deliver the next packet (0), lose it (1), or send a foreign packet of the
    // following byte >> 2 input bytes (2, 3).
    for (size_t at = 1; at < size; ++at) {
        switch (data[at] & 3) {
            case 0:
                device.handleBlePacket(stream.at(next++ % stream.size()));
                break;
            case 1:
                ++next;
                break;
            default: {
                const size_t length = std::min<size_t>(data[at] >> 2, size - at - 1);
                device.handleBlePacket(fuzzBytes(data + at + 1, length));
                at += length;
                break;
            }
        }
    }
    frames.clear();
    for (int i = 0; i < kCleanStretch; ++i) {
        device.handleBlePacket(stream.at(next++ % stream.size()));
    }
    fuzzCheck(frames.size() >= 2, "a clean stretch of audio gives no frames");
    for (int i = frames.size() - 2; i < frames.size(); ++i) {
        fuzzCheck(frames.at(i).count('\0') != frames.at(i).size(),
                  "a clean stretch of audio plays as silence");
    }
    QCoreApplication::processEvents();
    return 0;
}
