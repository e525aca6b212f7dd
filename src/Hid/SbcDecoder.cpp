#include "Hid/SbcDecoder.h"

#include <sbc/sbc.h>

#include <cstring>
#include <mutex>

namespace {

constexpr unsigned char kSyncWord = 0x9C;
// The longest frame a header can describe: 8 subbands, 16 blocks, two channels, bitpool 255.
constexpr int kMaxFrameLength = 4 + 8 + (16 * 2 * 255) / 8;
// libsbc may read a little past the frame it is given.
constexpr int kReadSlack = 16;

struct Decoder {
    std::mutex mutex;
    sbc_t sbc;
    bool initialised = false;
    bool decodedOne = false;
};

Decoder& decoder()
{
    static Decoder d;
    return d;
}

void resetLocked(Decoder& d)
{
    if (d.initialised) {
        sbc_finish(&d.sbc);
    }
    sbc_init(&d.sbc, 0);
    d.sbc.endian = SBC_LE;
    d.initialised = true;
    d.decodedOne = false;
}

struct Header {
    int blocks;
    int channels;
    int subbands;
    int bitpool;
    int mode;
};

Header header(const unsigned char* in)
{
    Header h;
    h.blocks = 4 * (((in[1] >> 4) & 0x03) + 1);
    h.mode = (in[1] >> 2) & 0x03;
    h.channels = h.mode == 0 ? 1 : 2;
    h.subbands = (in[1] & 0x01) != 0 ? 8 : 4;
    h.bitpool = in[2];
    return h;
}

}  // namespace

namespace SbcFrame {

int frameLength(const unsigned char* in)
{
    const Header h = header(in);
    int bits = 0;
    switch (h.mode) {
        case 0:  // mono
        case 1:  // dual channel
            bits = h.blocks * h.channels * h.bitpool;
            break;
        case 2:  // stereo
            bits = h.blocks * h.bitpool;
            break;
        default:  // joint stereo
            bits = h.subbands + h.blocks * h.bitpool;
            break;
    }
    return 4 + (4 * h.subbands * h.channels) / 8 + (bits + 7) / 8;
}

unsigned char crc(const unsigned char* frame, int frameLength)
{
    // CRC-8, polynomial 0x1D, start 0x0F, over header bytes 1-2, the join bits of joint
    // stereo and the scale factors, bit by bit from the most significant.
    const Header h = header(frame);
    // At most 16 + 8 + 64 bits: a few bytes, on the stack (this runs for every audio frame).
    const int bits = 16 + (h.mode == 3 ? h.subbands : 0) + 4 * h.subbands * h.channels;
    unsigned char data[12] = {};
    int size = 0;
    data[size++] = frame[1];
    data[size++] = frame[2];
    for (int i = 4; i < frameLength && size * 8 < bits; ++i) {
        data[size++] = frame[i];
    }
    unsigned char c = 0x0F;
    for (int bit = 0; bit < bits && bit < size * 8; ++bit) {
        const int value = (data[bit / 8] >> (7 - bit % 8)) & 1;
        const int top = (c >> 7) & 1;
        c = static_cast<unsigned char>(c << 1);
        if (top != value) {
            c ^= 0x1D;
        }
    }
    return c;
}

}  // namespace SbcFrame

void SBC_Init_Decoder()
{
    Decoder& d = decoder();
    const std::lock_guard<std::mutex> lock(d.mutex);
    resetLocked(d);
}

int SBC_Decode(const unsigned char* in, int length, unsigned char* out, int* outBytes)
{
    if (in == nullptr || length < 1) {
        return -1;
    }
    if (in[0] != kSyncWord) {
        *outBytes = 0;
        return -3;
    }
    if (length < 4) {
        return -1;
    }
    const int size = SbcFrame::frameLength(in);
    if (length < size) {
        return -1;
    }
    const Header h = header(in);
    const int samples = h.blocks * h.subbands * h.channels;
    if (*outBytes < samples * 2) {
        *outBytes = samples;
        return -2;
    }
    if (SbcFrame::crc(in, size) != in[3]) {
        *outBytes = 0;
        return -4;
    }

    Decoder& d = decoder();
    const std::lock_guard<std::mutex> lock(d.mutex);
    if (!d.initialised) {
        resetLocked(d);
    }
    // libsbc may read a little past the frame it is given: it gets a padded copy.
    unsigned char frame[kMaxFrameLength + kReadSlack];
    std::memcpy(frame, in, static_cast<size_t>(size));
    std::memset(frame + size, 0, kReadSlack);
    size_t written = 0;
    const ssize_t consumed =
        sbc_decode(&d.sbc, frame, static_cast<size_t>(size), out, static_cast<size_t>(*outBytes), &written);
    if (consumed <= 0) {
        // A failed first frame leaves libsbc's synthesis set up wrongly for the good ones after.
        if (!d.decodedOne) {
            resetLocked(d);
        }
        *outBytes = 0;
        return -4;
    }
    d.decodedOne = true;
    *outBytes = static_cast<int>(written);
    return static_cast<int>(consumed);
}
