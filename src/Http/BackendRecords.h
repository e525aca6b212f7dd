#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

// The records the vendor backend sends and receives. Plain values; a member missing from a
// reply leaves its field at the initial value.

struct HttpResult {
    int code = 0;
    QString msg;
};

struct VersionInfo {
    int id = 0;
    QString version;
    QString description;
    QString file;
    QString date;
    QString enable;  // one character whose code is the JSON integer
    QString user;
    QString sha256;  // hex digest of the download; empty when the backend gives none
};

struct DeviceInfo {
    int id = 0;
    QString vid;
    QString pid;
    QString customerName;
    QString customerCode;
    QString homeImage;
    QString explainImage;
    QString navImage;
    QString url;
    int enable = 0;
    int isIFlySpeech = 0;
};

struct DirectUI {
    int id = 0;
    QString softwareName;
    QString uiName;
    int edit = 0;
};

struct DeviceOpenTime {
    int id = 0;
    int time = 0;
};

struct Device {
    int id = 0;
    QString dongleFlashID;
    QString remoteFlashID;
    QString customerCode;
    QString createDate;
    int online = 0;
};

struct DeviceRecord {
    int id = 0;
    int device = 0;
    QString dongleFlashID;
    QString remoteFlashID;
    int ip = 0;
    QString appVersion;
    QString bootTime;
    QString shutdownTime;
    QString systemVersion;
};

struct IpInfo {
    int id = 0;
    QString ip;
    QString country;
    QString country_id;
    QString area;
    QString area_id;
    QString region;
    QString region_id;
    QString city;
    QString city_id;
    QString county;
    QString county_id;
    QString isp;
    QString isp_id;
};

struct TextRecord {
    int ip = 0;
    QString from;
    QString to;
    QString src;
    QString dst;
    int type = 0;
};

struct SemanticParsingResult {
    QString structure;
    int serviceCategory = 0;
    int serviceModel = 0;
    int saveService = 0;
    int isSearch = 0;
    int enableUrl = 0;
    QString website;
    QString searchUrl;
    QString searchWord;
    QString hintContent;
};

struct AnalyzeResult {
    int nounConcept = 0;
    int category = 0;
    QString applyDst;
    QString searchDst;
    QString keyword;
    int active = 0;
    int weight = 0;
    QString serviceName;
};

struct CalendarPhrases {
    int id = 0;
    QString title;
    QString content;
    QString link;
    int level = 0;
};

Q_DECLARE_METATYPE(VersionInfo)
Q_DECLARE_METATYPE(DeviceInfo)
Q_DECLARE_METATYPE(DirectUI)
Q_DECLARE_METATYPE(Device)
Q_DECLARE_METATYPE(DeviceRecord)
Q_DECLARE_METATYPE(IpInfo)
Q_DECLARE_METATYPE(TextRecord)
Q_DECLARE_METATYPE(SemanticParsingResult)
Q_DECLARE_METATYPE(CalendarPhrases)
