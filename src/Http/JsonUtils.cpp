#include "Http/JsonUtils.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// What each parser answers:
//
//                          invalid JSON  not an object     code missing or not 1  code 1
//  version, open time,     false         true, no fields   false                  true
//  direct UI list
//  device info list,       false         false             false                  true
//  device, record, analyze,
//  calendar, semantic
//  ip info                 false         true, no fields   (not looked at)        true
//
// With code 1 a missing data member still gives true and an untouched record.

namespace {

enum class NonObject { Accept, Reject };

// The reply's object when the envelope says success; *answer is the parser's result when
// the caller must stop here.
bool envelope(const QByteArray& reply, NonObject nonObject, bool checkCode, QJsonObject* object, bool* answer)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(reply, &error);
    if (error.error != QJsonParseError::NoError) {
        *answer = false;
        return false;
    }
    if (!doc.isObject()) {
        *answer = nonObject == NonObject::Accept;
        return false;
    }
    *object = doc.object();
    if (checkCode && object->value(QLatin1String("code")).toInt(0) != 1) {
        *answer = false;
        return false;
    }
    *answer = true;
    return true;
}

void read(const QJsonObject& o, const char* key, int* field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined()) {
        *field = v.toInt(0);
    }
}

void read(const QJsonObject& o, const char* key, QString* field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isUndefined()) {
        *field = v.toString();
    }
}

QJsonObject dataObject(const QJsonObject& o)
{
    return o.value(QLatin1String("data")).toObject();
}

bool hasData(const QJsonObject& o)
{
    return o.contains(QLatin1String("data"));
}

void fill(const QJsonObject& d, VersionInfo* v)
{
    read(d, "id", &v->id);
    read(d, "version", &v->version);
    read(d, "description", &v->description);
    read(d, "file", &v->file);
    read(d, "date", &v->date);
    if (d.contains(QLatin1String("enable"))) {
        // Text of one character whose code is the number, as the old client kept it.
        v->enable = QString(
            QChar(static_cast<ushort>(static_cast<quint8>(d.value(QLatin1String("enable")).toInt(0)))));
    }
    read(d, "user", &v->user);
    read(d, "sha256", &v->sha256);
}

void fill(const QJsonObject& d, DeviceInfo* i)
{
    read(d, "id", &i->id);
    read(d, "vid", &i->vid);
    read(d, "pid", &i->pid);
    read(d, "customerName", &i->customerName);
    read(d, "customerCode", &i->customerCode);
    read(d, "homeImage", &i->homeImage);
    read(d, "explainImage", &i->explainImage);
    read(d, "navImage", &i->navImage);
    read(d, "url", &i->url);
    read(d, "enable", &i->enable);
    read(d, "isIFlySpeech", &i->isIFlySpeech);
}

void fill(const QJsonObject& d, DirectUI* u)
{
    read(d, "id", &u->id);
    read(d, "softwareName", &u->softwareName);
    read(d, "uiName", &u->uiName);
    read(d, "edit", &u->edit);
}

template <typename Record>
void fillList(const QJsonObject& o, QList<Record>* list)
{
    const QJsonArray array = o.value(QLatin1String("data")).toArray();
    for (const QJsonValue& element : array) {
        Record record;
        if (element.isObject()) {
            fill(element.toObject(), &record);
        }
        list->append(record);
    }
}

}  // namespace

HttpResult JsonUtils::parseBaseMsg(const QByteArray& reply)
{
    HttpResult result;
    const QJsonObject o = QJsonDocument::fromJson(reply).object();
    read(o, "code", &result.code);
    read(o, "msg", &result.msg);
    return result;
}

bool JsonUtils::getVersionInfo(const QByteArray& reply, VersionInfo* info)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Accept, true, &o, &answer) && hasData(o)) {
        fill(dataObject(o), info);
    }
    return answer;
}

bool JsonUtils::getDeviceOpenTime(const QByteArray& reply, DeviceOpenTime* time)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Accept, true, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "id", &time->id);
        read(d, "time", &time->time);
    }
    return answer;
}

bool JsonUtils::getDirectUIList(const QByteArray& reply, QList<DirectUI>* list)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Accept, true, &o, &answer)) {
        fillList(o, list);
    }
    return answer;
}

bool JsonUtils::getDeviceInfoList(const QByteArray& reply, QList<DeviceInfo>* list)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Reject, true, &o, &answer)) {
        fillList(o, list);
    }
    return answer;
}

bool JsonUtils::getDevice(const QByteArray& reply, Device* device)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Reject, true, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "id", &device->id);
        read(d, "dongleFlashID", &device->dongleFlashID);
        read(d, "remoteFlashID", &device->remoteFlashID);
        read(d, "customerCode", &device->customerCode);
    }
    return answer;
}

bool JsonUtils::getDeviceRecord(const QByteArray& reply, DeviceRecord* record)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Reject, true, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "id", &record->id);
        read(d, "device", &record->device);
        read(d, "dongleFlashID", &record->dongleFlashID);
        read(d, "remoteFlashID", &record->remoteFlashID);
        read(d, "appVersion", &record->appVersion);
        read(d, "bootTime", &record->bootTime);
        read(d, "shutdownTime", &record->shutdownTime);
    }
    return answer;
}

bool JsonUtils::getAnalyzeResult(const QByteArray& reply, AnalyzeResult* result)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Reject, true, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "nounConcept", &result->nounConcept);
        read(d, "category", &result->category);
        read(d, "applyDst", &result->applyDst);
        read(d, "searchDst", &result->searchDst);
        read(d, "keyword", &result->keyword);
        read(d, "active", &result->active);
        read(d, "weight", &result->weight);
        read(d, "serviceName", &result->serviceName);
    }
    return answer;
}

bool JsonUtils::getCalendarPhrases(const QByteArray& reply, CalendarPhrases* phrases)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Reject, true, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "id", &phrases->id);
        read(d, "title", &phrases->title);
        read(d, "content", &phrases->content);
        read(d, "link", &phrases->link);
        read(d, "level", &phrases->level);
    }
    return answer;
}

bool JsonUtils::parseSemanticParsingResult(const QByteArray& reply, SemanticParsingResult* result)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Reject, true, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "structure", &result->structure);
        read(d, "serviceCategory", &result->serviceCategory);
        read(d, "serviceModel", &result->serviceModel);
        read(d, "saveService", &result->saveService);
        read(d, "isSearch", &result->isSearch);
        read(d, "enableUrl", &result->enableUrl);
        read(d, "website", &result->website);
        read(d, "searchUrl", &result->searchUrl);
        read(d, "searchWord", &result->searchWord);
        read(d, "hintContent", &result->hintContent);
    }
    return answer;
}

bool JsonUtils::getIpInfo(const QByteArray& reply, IpInfo* info)
{
    QJsonObject o;
    bool answer = false;
    if (envelope(reply, NonObject::Accept, false, &o, &answer) && hasData(o)) {
        const QJsonObject d = dataObject(o);
        read(d, "id", &info->id);
        const std::pair<const char*, QString*> strings[] = {{"ip", &info->ip},
                                                            {"country", &info->country},
                                                            {"country_id", &info->country_id},
                                                            {"area", &info->area},
                                                            {"area_id", &info->area_id},
                                                            {"region", &info->region},
                                                            {"region_id", &info->region_id},
                                                            {"city", &info->city},
                                                            {"city_id", &info->city_id},
                                                            {"county", &info->county},
                                                            {"county_id", &info->county_id},
                                                            {"isp", &info->isp},
                                                            {"isp_id", &info->isp_id}};
        for (const auto& s : strings) {
            read(d, s.first, s.second);
        }
    }
    return answer;
}

bool JsonUtils::getBaiduTranslateResult(const QByteArray& reply, BaiduTranslateMessage* message)
{
    const QJsonObject o = QJsonDocument::fromJson(reply).object();
    // Only members of the right kind count; an error code given as a number changes nothing.
    const QJsonValue code = o.value(QLatin1String("error_code"));
    if (code.isString()) {
        message->errorCode = code.toString();
        message->error = true;
    }
    const QJsonValue text = o.value(QLatin1String("error_msg"));
    if (text.isString()) {
        message->errorMsg = text.toString();
        message->error = true;
    }
    const QJsonValue from = o.value(QLatin1String("from"));
    if (from.isString()) {
        message->from = from.toString();
    }
    const QJsonValue to = o.value(QLatin1String("to"));
    if (to.isString()) {
        message->to = to.toString();
    }
    const QJsonValue results = o.value(QLatin1String("trans_result"));
    if (results.isArray()) {
        for (const QJsonValue& element : results.toArray()) {
            if (!element.isObject()) {
                continue;
            }
            const QJsonObject e = element.toObject();
            BaiduTranslateResult result;
            if (e.value(QLatin1String("src")).isString()) {
                result.src = e.value(QLatin1String("src")).toString();
            }
            if (e.value(QLatin1String("dst")).isString()) {
                result.dst = e.value(QLatin1String("dst")).toString();
            }
            message->result.append(result);
        }
    }
    return true;
}

QByteArray JsonUtils::textRecordBody(const TextRecord& record)
{
    const QJsonObject o{{QStringLiteral("ip"), record.ip},   {QStringLiteral("from"), record.from},
                        {QStringLiteral("to"), record.to},   {QStringLiteral("src"), record.src},
                        {QStringLiteral("dst"), record.dst}, {QStringLiteral("type"), record.type}};
    return QJsonDocument(o).toJson();
}

BaiduTranslateMessage JsonUtils::jsonParse(QString text)
{
    BaiduTranslateMessage message;
    getBaiduTranslateResult(text.toLatin1(), &message);
    return message;
}
