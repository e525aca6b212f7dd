#include "SbcPacketizer.h"

#include <QString>

#include <sbc/sbc.h>

namespace {
constexpr int kPcmFrameBytes = 256;  // 128 samples of 16 bits
constexpr int kStrippedPrefix = 3;
constexpr int kNotification = 20;

QByteArray packet(int firstByte, const QByteArray& body, int padTo = 0)
{
    QByteArray bytes;
    bytes.append(static_cast<char>(firstByte));
    bytes.append('\0');
    bytes.append(body);
    if (bytes.size() < padTo) {
        bytes.append(QByteArray(padTo - bytes.size(), '\0'));
    }
    return bytes;
}
}  // namespace

struct SbcPacketizer::Encoder {
    sbc_t sbc;
};

SbcPacketizer::SbcPacketizer(Group group) : mGroup(group), mEncoder(std::make_unique<Encoder>())
{
    sbc_init(&mEncoder->sbc, 0);
    mEncoder->sbc.frequency = SBC_FREQ_16000;
    mEncoder->sbc.blocks = SBC_BLK_16;
    mEncoder->sbc.subbands = SBC_SB_8;
    mEncoder->sbc.mode = SBC_MODE_MONO;
    mEncoder->sbc.allocation = SBC_AM_LOUDNESS;
    mEncoder->sbc.bitpool = static_cast<uint8_t>(bitpool(group));
    mEncoder->sbc.endian = SBC_LE;
}

SbcPacketizer::~SbcPacketizer()
{
    sbc_finish(&mEncoder->sbc);
}

bool SbcPacketizer::groupFromName(const QString& name, Group* group)
{
    const QString n = name.toLower();
    if (n == QLatin1String("a64")) {
        *group = GroupAShort64;
    } else if (n == QLatin1String("a30")) {
        *group = GroupAShort30;
    } else if (n == QLatin1String("a") || n == QLatin1String("along")) {
        *group = GroupALong;
    } else if (n == QLatin1String("b")) {
        *group = GroupB;
    } else if (n == QLatin1String("c")) {
        *group = GroupC;
    } else if (n == QLatin1String("d")) {
        *group = GroupD;
    } else {
        return false;
    }
    return true;
}

int SbcPacketizer::bitpool(Group group)
{
    switch (group) {
        case GroupAShort64:
            return 28;
        case GroupAShort30:
            return 11;
        case GroupALong:
            return 22;
        case GroupB:
            return 6;
        case GroupC:
            return 15;
        case GroupD:
            return 11;
    }
    return 0;
}

int SbcPacketizer::frameLength(Group group)
{
    // Mono, 8 subbands, 16 blocks: 4 header bytes, 4 of scale factors, 2 per bitpool unit.
    return 8 + 2 * bitpool(group);
}

QByteArray SbcPacketizer::encodeFrame(const char* pcm)
{
    QByteArray frame(frameLength(mGroup) + 16, '\0');
    ssize_t written = 0;
    const ssize_t consumed = sbc_encode(&mEncoder->sbc, pcm, kPcmFrameBytes, frame.data(),
                                        static_cast<size_t>(frame.size()), &written);
    if (consumed != kPcmFrameBytes || written != frameLength(mGroup)) {
        return QByteArray();
    }
    frame.resize(static_cast<int>(written));
    return frame;
}

QList<QByteArray> SbcPacketizer::feed(const QByteArray& pcm)
{
    QList<QByteArray> packets;
    mPending.append(pcm);
    int offset = 0;
    for (; offset + kPcmFrameBytes <= mPending.size(); offset += kPcmFrameBytes) {
        const QByteArray frame = encodeFrame(mPending.constData() + offset);
        if (frame.isEmpty()) {
            continue;
        }
        const QByteArray body = frame.mid(kStrippedPrefix);
        switch (mGroup) {
            case GroupAShort64:
                packets.append(packet(7, frame));
                break;
            case GroupAShort30:
                packets.append(packet(15, frame));
                break;
            case GroupALong:
                mCarry.append(body);
                if (mCarry.size() == 2 * body.size()) {
                    packets.append(packet(7, mCarry));
                    mCarry.clear();
                }
                break;
            case GroupB:
                packets.append(packet(38, body, kNotification));
                break;
            case GroupC: {
                const int first = (mFrameCount % 2 == 0) ? 0 : 2;
                packets.append(packet(18 | (first << 5), body.left(18)));
                packets.append(packet(18 | ((first + 1) << 5), body.mid(18), kNotification));
                ++mFrameCount;
                break;
            }
            case GroupD:
                mCarry.append(body);
                if (mCarry.size() == 2 * body.size()) {
                    for (int fragment = 0; fragment < 3; ++fragment) {
                        packets.append(packet(14 | (fragment << 5), mCarry.mid(18 * fragment, 18)));
                    }
                    mCarry.clear();
                }
                break;
        }
    }
    mPending.remove(0, offset);
    return packets;
}
