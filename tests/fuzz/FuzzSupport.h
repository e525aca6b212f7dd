#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QList>
#include <QLoggingCategory>

#include <cstddef>
#include <cstdint>

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

// The input cut into pieces, each led by its length byte: a sequence of packets or messages.
inline QList<QByteArray> fuzzPieces(const QByteArray& input)
{
    QList<QByteArray> pieces;
    int at = 0;
    while (at < input.size()) {
        const int length = static_cast<quint8>(input.at(at));
        pieces << input.mid(at + 1, length);
        at += 1 + length;
    }
    return pieces;
}
