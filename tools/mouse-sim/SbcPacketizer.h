#pragma once

#include <QByteArray>
#include <QList>

#include <memory>

// What the mouse sends over Bluetooth while the voice key is held: 16 kHz mono PCM encoded
// as SBC (16 blocks, 8 subbands, loudness) and cut into notification packets of one group.
// The device leaves out each frame's first three bytes (sync word, configuration, bitpool)
// except in the short group A packets, which carry whole frames.
//
//  group      first byte          frame  per packet
//  A short    7 (64-byte frames)   64    [7, 0, whole frame]
//  A short    15 (30-byte frames)  30    [15, 0, whole frame]
//  A long     7                    52    [7, 0, frame 1 from byte 3, frame 2 from byte 3] = 100
//  B          38                   20    [38, 0, frame from byte 3] padded to 20
//  C          18 | fragment << 5   38    fragments 0+1 (or 2+3): 18 + 17 frame bytes
//  D          14 | fragment << 5   30    fragments 0, 1, 2: 18 bytes each, two frames
class SbcPacketizer {
public:
    enum Group { GroupAShort64, GroupAShort30, GroupALong, GroupB, GroupC, GroupD };

    explicit SbcPacketizer(Group group);
    ~SbcPacketizer();

    static bool groupFromName(const QString& name, Group* group);
    static int bitpool(Group group);
    static int frameLength(Group group);

    // Encodes every whole 8 ms frame (256 bytes of PCM) and returns the packets completed;
    // a partial frame waits for the next call.
    QList<QByteArray> feed(const QByteArray& pcm);

private:
    QByteArray encodeFrame(const char* pcm);

    Group mGroup;
    struct Encoder;
    std::unique_ptr<Encoder> mEncoder;
    QByteArray mPending;  // PCM not yet a whole frame
    QByteArray mCarry;    // group A long and D: frame bytes waiting for their packet
    int mFrameCount = 0;  // group C: which fragment pair comes next
};
