#pragma once

#include <QByteArray>
#include <QList>

#include <sbc/sbc.h>

// Whole SBC frames in the mouse's configuration (16 kHz mono, 16 blocks, 8 subbands,
// loudness), straight from libsbc's encoder: one per 256 bytes of 16-bit PCM.
inline QList<QByteArray> encodeSbcFrames(const QByteArray& pcm, int bitpool)
{
    constexpr int kPcmBytes = 256;
    sbc_t sbc;
    sbc_init(&sbc, 0);
    sbc.frequency = SBC_FREQ_16000;
    sbc.blocks = SBC_BLK_16;
    sbc.subbands = SBC_SB_8;
    sbc.mode = SBC_MODE_MONO;
    sbc.allocation = SBC_AM_LOUDNESS;
    sbc.bitpool = static_cast<uint8_t>(bitpool);
    sbc.endian = SBC_LE;
    QList<QByteArray> frames;
    for (int at = 0; at + kPcmBytes <= pcm.size(); at += kPcmBytes) {
        QByteArray frame(kPcmBytes, '\0');
        ssize_t written = 0;
        sbc_encode(&sbc, pcm.constData() + at, kPcmBytes, frame.data(), frame.size(), &written);
        frames << frame.left(static_cast<int>(written));
    }
    sbc_finish(&sbc);
    return frames;
}
