#pragma once

#include "Http/BackendRecords.h"
#include "Http/BaiduTranslateMessage.h"

#include <QByteArray>
#include <QList>

// One parser per kind of backend reply. Each returns whether the reply was usable; see the
// table in the .cpp for what "usable" means for each.
class JsonUtils {
public:
    static HttpResult parseBaseMsg(const QByteArray& reply);

    static bool getVersionInfo(const QByteArray& reply, VersionInfo* info);
    static bool getDeviceOpenTime(const QByteArray& reply, DeviceOpenTime* time);
    static bool getDirectUIList(const QByteArray& reply, QList<DirectUI>* list);
    static bool getDeviceInfoList(const QByteArray& reply, QList<DeviceInfo>* list);
    static bool getDevice(const QByteArray& reply, Device* device);
    static bool getDeviceRecord(const QByteArray& reply, DeviceRecord* record);
    static bool getAnalyzeResult(const QByteArray& reply, AnalyzeResult* result);
    static bool getCalendarPhrases(const QByteArray& reply, CalendarPhrases* phrases);
    static bool parseSemanticParsingResult(const QByteArray& reply, SemanticParsingResult* result);
    // Serves the lookup service and the backend alike: reads code but does not judge it.
    static bool getIpInfo(const QByteArray& reply, IpInfo* info);

    // Fills what the reply holds; true even for a reply that is not JSON.
    static bool getBaiduTranslateResult(const QByteArray& reply, BaiduTranslateMessage* message);
    // The body of a text record upload: ip, from, to, src, dst, type.
    static QByteArray textRecordBody(const TextRecord& record);

    // A fresh message from the text, read as Latin-1.
    static BaiduTranslateMessage jsonParse(QString text);
};
