#include "IFlySpeech/IFlyMessage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

void readInt(const QJsonObject& o, const char* key, int* field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isDouble()) {
        *field = v.toInt();
    }
}

void readText(const QJsonObject& o, const char* key, QString* field)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (v.isString()) {
        *field = v.toString();
    }
}

}  // namespace

namespace IFlyMessage {

bool parse(const QByteArray& text, HttpEntry* entry)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject()) {
        return false;
    }
    const QJsonObject o = doc.object();
    readInt(o, "code", &entry->code);
    readText(o, "message", &entry->message);
    readText(o, "sid", &entry->sid);
    const QJsonObject data = o.value(QLatin1String("data")).toObject();
    readInt(data, "status", &entry->status);
    const QJsonObject result = data.value(QLatin1String("result")).toObject();
    readInt(result, "bg", &entry->bg);
    readInt(result, "ed", &entry->ed);
    readText(result, "pgs", &entry->pgs);
    readInt(result, "sn", &entry->sn);
    if (result.value(QLatin1String("ls")).isBool()) {
        entry->ls = result.value(QLatin1String("ls")).toBool();
    }
    for (const QJsonValue& wsValue : result.value(QLatin1String("ws")).toArray()) {
        const QJsonObject wsObject = wsValue.toObject();
        Ws ws;
        readInt(wsObject, "bg", &ws.bg);
        readInt(wsObject, "ed", &ws.ed);
        for (const QJsonValue& cwValue : wsObject.value(QLatin1String("cw")).toArray()) {
            const QJsonObject cwObject = cwValue.toObject();
            Cw cw;
            readInt(cwObject, "sc", &cw.sc);
            readText(cwObject, "w", &cw.w);
            ws.cw.append(cw);
        }
        entry->ws.append(ws);
    }
    return true;
}

}  // namespace IFlyMessage
