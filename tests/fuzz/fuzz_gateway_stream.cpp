// The gateway client as it runs: the control port's server list, then an SDK server's lines,
// each stream cut into reads at points the first input byte picks. Oracle: a stream cut into
// reads is taken as the same stream in one read (the same server chosen, the same texts and
// events), wherever the cuts fall.
#include "BaiduSpeech/BaiduSpeech.h"
#include "BaiduSpeech/ElvUtil.h"
#include "FuzzSupport.h"

#include <QJsonDocument>
#include <QStringList>

namespace {

struct Outcome {
    int port = 0;
    QStringList events;
};

// A gateway sends nothing after a line that ends the connection (a refused parameter set or
// the end of a long speech): the stream stops there.
QByteArray upToConnectionEnd(const QByteArray& stream)
{
    int at = 0;
    while (at < stream.size()) {
        int end = stream.indexOf('\n', at);
        if (end < 0) {
            break;
        }
        for (const SocketMessage& message : ElvUtil::parseSocketMessages(stream.mid(at, end - at))) {
            if (message.type == ElvUtil::ON_LONG_SPEECH_END ||
                (message.type == ElvUtil::ON_PARAMS_ACK && message.code != 1)) {
                return stream.left(end + 1);
            }
        }
        at = end + 1;
    }
    return stream;
}

Outcome run(const QByteArray& control, const QByteArray& sdk, quint8 seed)
{
    Outcome outcome;
    {
        // No host: each connection fails at the event loop's next turn, nothing leaves the process.
        BaiduSpeech speech{QString(), 1};
        QObject::connect(&speech, &SpeechRecognizer::signalBegin,
                         [&] { outcome.events << QStringLiteral("begin"); });
        QObject::connect(&speech, &SpeechRecognizer::signalFlushResult,
                         [&](const QString& text) { outcome.events << QStringLiteral("flush ") + text; });
        QObject::connect(&speech, &SpeechRecognizer::signalResult,
                         [&](const QString& text) { outcome.events << QStringLiteral("result ") + text; });
        QObject::connect(&speech, &SpeechRecognizer::signalEnd,
                         [&] { outcome.events << QStringLiteral("end"); });
        QObject::connect(&speech, &SpeechRecognizer::signalError, [&](int code, const QString&) {
            outcome.events << QStringLiteral("error %1").arg(code);
        });
        speech.start(0);
        QByteArray received;
        bool taken = false;
        for (const QByteArray& read : fuzzReads(control, seed)) {
            received += read;
            speech.readControl(read, false);
            // The client closes the control socket once the list is whole: nothing more is read.
            if ((taken = ElvUtil::isWholeServerList(received))) {
                break;
            }
        }
        if (!taken) {
            speech.readControl(QByteArray(), true);
        }
        outcome.port = speech.currentServer().port;
        for (const QByteArray& read : fuzzReads(upToConnectionEnd(sdk), seed)) {
            speech.readSdk(read);
        }
        QCoreApplication::processEvents();
    }
    QCoreApplication::processEvents();
    return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    if (size < 1) {
        return 0;
    }
    // The first byte cuts the reads; the control reply runs to the first NUL, the SDK lines after.
    const QByteArray input = fuzzBytes(data + 1, size - 1);
    const int split = input.indexOf('\0');
    const QByteArray control = split < 0 ? input : input.left(split);
    const QByteArray sdk = split < 0 ? QByteArray() : input.mid(split + 1);
    const Outcome whole = run(control, sdk, 0);
    const Outcome cut = run(control, sdk, data[0]);
    if (QJsonDocument::fromJson(control).isArray()) {
        fuzzCheck(whole.port == cut.port, "a server list cut into reads leads to another server");
    }
    if (whole.port == cut.port) {
        fuzzCheck(whole.events == cut.events, "gateway lines cut into reads give other texts or events");
    }
    return 0;
}
