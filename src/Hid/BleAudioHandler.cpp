#include "Hid/BleAudioHandler.h"

#include "Hid/SbcDecoder.h"

#include <QtGlobal>

#include <cstring>

namespace {

// The longest frame put together here (a short group A packet of the 64-byte kind).
constexpr int kMaxFrame = 64;

void putPrefix(unsigned char* frame, unsigned char bitpool)
{
    frame[0] = 0x9C;
    frame[1] = 0x31;
    frame[2] = bitpool;
}

// length bytes of packet from offset into out, zero-filled where the packet is short.
void take(const QByteArray& packet, int offset, int length, unsigned char* out)
{
    const int available = qBound(0, packet.size() - offset, length);
    if (available > 0) {
        std::memcpy(out, packet.constData() + offset, static_cast<size_t>(available));
    }
    std::memset(out + available, 0, static_cast<size_t>(length - available));
}

}  // namespace

BleAudioHandler::BleAudioHandler(QObject* parent) : QObject(parent) {}

int BleAudioHandler::decode(const unsigned char* frame, int length, bool emitSilence)
{
    QByteArray output(kPcmFrameBytes, '\0');
    int capacity = kPcmFrameBytes;
    const int result = SBC_Decode(frame, length, reinterpret_cast<unsigned char*>(output.data()), &capacity);
    if (result > 0 || emitSilence) {
        if (emitSilence) {
            emit signalAudioActive();
        }
        emit signalAudioData(output);
    }
    return result;
}

void BleAudioHandler::appendToBuffer(const unsigned char* bytes, int length)
{
    const int fits = std::min(length, kBufferCapacity - mBufferSize);
    std::memcpy(mBuffer + mBufferSize, bytes, static_cast<size_t>(fits));
    mBufferSize += fits;
}

bool BleAudioHandler::handlePacket(const QByteArray& packet)
{
    if (packet.isEmpty()) {
        return false;
    }
    if (mResetPending.exchange(false)) {
        mBufferSize = 0;
    }
    const auto first = static_cast<quint8>(packet.at(0));
    const int fragment = (first >> 5) & 0x07;
    unsigned char frame[kMaxFrame];
    switch (first) {
        case 7:
        case 15:
            if (packet.size() >= 100) {
                for (int i = 0; i < 2; ++i) {
                    putPrefix(frame, 0x16);
                    take(packet, 2 + 49 * i, 49, frame + 3);
                    decode(frame, 52, false);
                }
                emit signalAudioActive();
            } else {
                const int length = ((first >> 2) & 0x03) == 3 ? 30 : 64;
                take(packet, 2, length, frame);
                decode(frame, length, true);
            }
            return true;
        case 38:
            putPrefix(frame, 0x06);
            take(packet, 2, 17, frame + 3);
            decode(frame, 20, true);
            return true;
        case 18:
        case 50:
        case 82:
        case 114:
            if (fragment == 0 || fragment == 2) {
                // A restart without a decode keeps what was there.
                putPrefix(frame, 0x0F);
                take(packet, 2, 18, frame + 3);
                appendToBuffer(frame, 21);
            } else {
                take(packet, 2, 17, frame);
                appendToBuffer(frame, 17);
                const int have = std::min(mBufferSize, 38);
                std::memcpy(frame, mBuffer, static_cast<size_t>(have));
                std::memset(frame + have, 0, static_cast<size_t>(38 - have));
                decode(frame, 38, true);
                mBufferSize = 0;
            }
            return true;
        case 14:
        case 46:
        case 78:
            if (fragment == 0) {
                mBufferSize = 0;
            }
            take(packet, 2, 18, frame);
            appendToBuffer(frame, 18);
            if ((fragment == 1 || fragment == 2) && mBufferSize >= 27) {
                putPrefix(frame, 0x0B);
                std::memcpy(frame + 3, mBuffer, 27);
                decode(frame, 30, true);
                mBufferSize -= 27;
                std::memmove(mBuffer, mBuffer + 27, static_cast<size_t>(mBufferSize));
            }
            return true;
        default:
            return false;
    }
}
