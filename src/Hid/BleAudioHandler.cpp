#include "Hid/BleAudioHandler.h"

#include "Hid/SbcDecoder.h"

namespace {

QByteArray prefix(char bitpool)
{
    QByteArray bytes("\x9c\x31", 2);
    bytes.append(bitpool);
    return bytes;
}

// length bytes of packet from offset, zero-filled where the packet is short.
QByteArray take(const QByteArray& packet, int offset, int length)
{
    QByteArray part = packet.mid(offset, length);
    if (part.size() < length) {
        part.append(QByteArray(length - part.size(), '\0'));
    }
    return part;
}

}  // namespace

BleAudioHandler::BleAudioHandler(QObject* parent) : QObject(parent) {}

int BleAudioHandler::decode(const QByteArray& frame, int length, bool emitSilence)
{
    QByteArray output(kPcmFrameBytes, '\0');
    int capacity = kPcmFrameBytes;
    const QByteArray padded = take(frame, 0, length);
    const int result = SBC_Decode(reinterpret_cast<const unsigned char*>(padded.constData()), length,
                                  reinterpret_cast<unsigned char*>(output.data()), &capacity);
    if (result > 0 || emitSilence) {
        if (emitSilence) {
            emit signalAudioActive();
        }
        emit signalAudioData(output);
    }
    return result;
}

bool BleAudioHandler::handlePacket(const QByteArray& packet)
{
    if (packet.isEmpty()) {
        return false;
    }
    const auto first = static_cast<quint8>(packet.at(0));
    const int fragment = (first >> 5) & 0x07;
    switch (first) {
        case 7:
        case 15:
            if (packet.size() >= 100) {
                for (int i = 0; i < 2; ++i) {
                    decode(prefix(0x16) + take(packet, 2 + 49 * i, 49), 52, false);
                }
                emit signalAudioActive();
            } else {
                const int length = ((first >> 2) & 0x03) == 3 ? 30 : 64;
                decode(take(packet, 2, length), length, true);
            }
            return true;
        case 38:
            decode(prefix(0x06) + take(packet, 2, 17), 20, true);
            return true;
        case 18:
        case 50:
        case 82:
        case 114:
            if (fragment == 0 || fragment == 2) {
                // A restart without a decode keeps what was there.
                mBuffer.append(prefix(0x0F) + take(packet, 2, 18));
            } else {
                mBuffer.append(take(packet, 2, 17));
                decode(mBuffer.left(38), 38, true);
                mBuffer.clear();
            }
            return true;
        case 14:
        case 46:
        case 78:
            mBuffer.append(take(packet, 2, 18));
            if ((fragment == 1 || fragment == 2) && mBuffer.size() >= 27) {
                decode(prefix(0x0B) + mBuffer.left(27), 30, true);
                mBuffer.remove(0, 27);
            }
            return true;
        default:
            return false;
    }
}
