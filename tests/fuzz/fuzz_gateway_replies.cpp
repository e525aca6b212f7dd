// What the speech gateway sends back: the server list on the control port, and the lines of
// an SDK port with the result documents inside them.
#include "BaiduSpeech/BaiduSpeech.h"
#include "BaiduSpeech/ElvUtil.h"
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    const QByteArray input = fuzzBytes(data, size);
    QList<SDKServer> servers = ElvUtil::parseServerList(input);
    // The client tries servers in turn, dropping each that fails.
    for (int tries = servers.size(); tries > 0 && !servers.isEmpty(); --tries) {
        BaiduSpeech::removeOne(&servers, BaiduSpeech::getPort(servers));
    }
    for (const SocketMessage& message : ElvUtil::parseSocketMessages(input)) {
        ElvUtil::recognitionText(message.data);
    }
    return 0;
}
