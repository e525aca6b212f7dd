// A reply body of the backend, read by every endpoint's reader in turn: each must take any
// bytes, JSON or not, of any shape.
#include "FuzzSupport.h"
#include "Http/JsonUtils.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    const QByteArray reply = fuzzBytes(data, size);
    JsonUtils::parseBaseMsg(reply);
    VersionInfo version;
    JsonUtils::getVersionInfo(reply, &version);
    DeviceOpenTime openTime;
    JsonUtils::getDeviceOpenTime(reply, &openTime);
    QList<DirectUI> directUis;
    JsonUtils::getDirectUIList(reply, &directUis);
    QList<DeviceInfo> devices;
    JsonUtils::getDeviceInfoList(reply, &devices);
    Device device;
    JsonUtils::getDevice(reply, &device);
    DeviceRecord record;
    JsonUtils::getDeviceRecord(reply, &record);
    AnalyzeResult analyze;
    JsonUtils::getAnalyzeResult(reply, &analyze);
    CalendarPhrases phrases;
    JsonUtils::getCalendarPhrases(reply, &phrases);
    SemanticParsingResult semantic;
    JsonUtils::parseSemanticParsingResult(reply, &semantic);
    IpInfo ip;
    JsonUtils::getIpInfo(reply, &ip);
    return 0;
}
