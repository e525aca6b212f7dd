#pragma once

#include <QByteArray>
#include <QObject>

#include <atomic>

// Takes the SBC audio packets of the Bluetooth channel apart, puts back the frame prefixes the
// mouse leaves out, decodes and emits 16 kHz PCM, 256 bytes (8 ms) per frame.
//
//  first byte            group  prefix put back    frame
//  7, 15                 A      (long: 9C 31 16)   long packet (>= 100): two 52-byte frames;
//                                                  short: a whole frame of 64 (7) or 30 (15)
//  38                    B      9C 31 06           20 bytes from one packet
//  18, 50, 82, 114       C      9C 31 0F           38 bytes from fragments 0+1 or 2+3
//  14, 46, 78            D      9C 31 0B           two 30-byte frames from fragments 0, 1, 2
//
// A frame that does not decode is 256 bytes of silence, so the stream keeps its timing (but
// a long group A packet emits only what decodes). A packet shorter than its group's layout is
// zero-filled to it, which then fails its CRC and plays as silence. A lost group D fragment
// would leave every later 27-byte frame straddling two encoder frames: the buffer starts afresh
// at each fragment 0 and at each voice-key press (reset()). DeviceManager owns the
// audio-active flag: signalAudioActive() asks it to be set. Main thread only, but reset().
//
// This runs every 8 ms while the voice key is held: frames are put together on the stack and
// in a fixed reassembly buffer, so the 256-byte output is the only allocation per frame.
class BleAudioHandler : public QObject {
    Q_OBJECT

public:
    static constexpr int kPcmFrameBytes = 256;

    explicit BleAudioHandler(QObject* parent = nullptr);

    // False when the packet is not audio (a record).
    bool handlePacket(const QByteArray& packet);
    // A new stream starts: the next packet drops a partly assembled frame. Any thread (the
    // receiver's key records arrive on its read loop).
    void reset() { mResetPending = true; }

    // Tests: the reassembly buffer of groups C and D.
    int bufferSize() const { return mBufferSize; }

signals:
    void signalAudioData(QByteArray data);
    void signalAudioActive();

private:
    // Decodes frame with the given length; returns the decoder's result.
    int decode(const unsigned char* frame, int length, bool emitSilence);
    void appendToBuffer(const unsigned char* bytes, int length);

    // Fragments that never complete a frame (a stream that keeps losing them) would grow it
    // without end: what does not fit is dropped, and such a stream is noise anyway.
    static constexpr int kBufferCapacity = 512;
    unsigned char mBuffer[kBufferCapacity];
    int mBufferSize = 0;
    std::atomic<bool> mResetPending{false};
};
