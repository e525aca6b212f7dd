#pragma once

// The SBC decoder of the Bluetooth audio: one state for the process, kept across frames and
// utterances, main thread only.
//
// SBC_Decode decodes the one frame at in; *outBytes holds the capacity on entry. Results:
//   > 0  bytes consumed; *outBytes = PCM bytes written (16-bit little-endian)
//   -1   length is below the frame's size (*outBytes unchanged)
//   -2   capacity below the frame's PCM size (*outBytes = samples needed)
//   -3   first byte is not the sync word 0x9C (*outBytes = 0)
//   -4   CRC mismatch (*outBytes = 0)

// Clears the state (the synthesis history).
void SBC_Init_Decoder();
int SBC_Decode(const unsigned char* in, int length, unsigned char* out, int* outBytes);

namespace SbcFrame {

// The size of the frame whose header starts at in (at least 3 bytes), or 0 for a header that
// is not one.
int frameLength(const unsigned char* in);
// The CRC the header and scale factors of a whole frame should carry.
unsigned char crc(const unsigned char* frame, int frameLength);

}  // namespace SbcFrame
