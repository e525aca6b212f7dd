// Replies of the translation service and of the synthesis token service.
#include "FuzzSupport.h"
#include "Http/JsonUtils.h"
#include "SpeechRec/SpeechSynthesisWorker.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    const QByteArray reply = fuzzBytes(data, size);
    BaiduTranslateMessage message;
    JsonUtils::getBaiduTranslateResult(reply, &message);
    JsonUtils::jsonParse(QString::fromLatin1(reply));
    SpeechSynthesisWorker::parseToken(reply);
    return 0;
}
