// Replies of the dictation web socket, in any order and state: results that settle ("apd")
// or replace ("rpl") what stands, cut-off and malformed JSON, last-result flags mid-stream.
#include "FuzzSupport.h"
#include "IFlySpeech/IFlyMessage.h"
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
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    for (const QByteArray& reply : fuzzPieces(fuzzBytes(data, size))) {
        HttpEntry entry;
        IFlyMessage::parse(reply, &entry);
        QMetaObject::invokeMethod(&speech, "onReceiver", Q_ARG(QString, QString::fromUtf8(reply)));
    }
    speech.stop();
    return 0;
}
