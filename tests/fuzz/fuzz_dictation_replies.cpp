// Replies of the dictation web socket, of any size (NUL bytes separate them), in any order
// and state: results that settle ("apd") or replace ("rpl") what stands, cut-off and malformed
// JSON, last-result flags mid-stream. The session ends at its result, as the socket does.
#include "FuzzSupport.h"
#include "IFlySpeech/IFlyWebSpeech.h"

#include <QMetaObject>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    // A refused address: the connection attempt waits in the event loop, which never runs here.
    static IFlyWebSpeech speech(
        IFlyWebSpeech::Service{QUrl(QStringLiteral("ws://127.0.0.1:9/")), QStringLiteral("app"),
                               QStringLiteral("key"), QStringLiteral("secret")},
        [] { return 0; });
    int results = 0;
    const QMetaObject::Connection counting =
        QObject::connect(&speech, &SpeechRecognizer::signalResult, [&results] { ++results; });
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    for (const QByteArray& reply : fuzzSplit(fuzzBytes(data, size), '\0')) {
        if (reply.size() > IFlyWebSpeech::kMaxReplyBytes || results > 0) {
            break;
        }
        QMetaObject::invokeMethod(&speech, "onReceiver", Q_ARG(QString, QString::fromUtf8(reply)));
    }
    QObject::disconnect(counting);
    speech.stop();
    return 0;
}
