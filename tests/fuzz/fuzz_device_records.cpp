// Records of any route and type reaching the device manager, as a receiver or the mouse over
// Bluetooth could send them: 32 bytes each, in any order.
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
    const QByteArray input = fuzzBytes(data, size);
    for (int at = 0; at < input.size(); at += 32) {
        device.handleMessage(st_small_base_com_msg::fromBytes(input.mid(at, 32)));
    }
    QCoreApplication::processEvents();
    return 0;
}
