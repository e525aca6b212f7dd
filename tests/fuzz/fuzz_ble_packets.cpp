// Bluetooth notifications of any length and group, audio and records mixed, through the
// packet handler and the SBC decoder.
#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "FuzzSupport.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    FakeHidBackend hidBackend;
    FakeBleTransport bleTransport;
    HidManager hid{&hidBackend};
    BLEManager ble{&bleTransport, nullptr};
    DeviceManager device{&hid, &ble};
    for (const QByteArray& packet : fuzzPieces(fuzzBytes(data, size))) {
        device.handleBlePacket(packet);
    }
    QCoreApplication::processEvents();
    return 0;
}
