#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QList>
#include <QLoggingCategory>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Each harness defines this; libFuzzer calls it, and so does the replay (FuzzReplay.cpp).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// What every harness needs before its first input: an application object (timers, sockets
// and signals need one) and quiet logs (a log line per input drowns the fuzzer's own output).
inline void fuzzSetUp()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = nullptr;
    if (app == nullptr) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = new QCoreApplication(argc, argv);
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false\n*.warning=false"));
    }
}

inline QByteArray fuzzBytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size));
}

// An oracle's verdict: a broken promise aborts, which both libFuzzer and the replay report.
inline void fuzzCheck(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "fuzz oracle failed: %s\n", what);
        std::abort();
    }
}

// A stream cut into reads as a socket may deliver it: the seed picks each read's length
// (1 to 64 bytes; seed 0 delivers the stream whole).
inline QList<QByteArray> fuzzReads(const QByteArray& stream, quint8 seed)
{
    if (seed == 0) {
        return {stream};
    }
    QList<QByteArray> reads;
    quint32 state = seed * 2654435761u;
    for (int at = 0; at < stream.size();) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const int length = 1 + static_cast<int>(state % 64);
        reads << stream.mid(at, length);
        at += length;
    }
    return reads;
}

// The input cut at each occurrence of the separator: messages of any size.
inline QList<QByteArray> fuzzSplit(const QByteArray& input, char separator)
{
    return input.split(separator);
}
