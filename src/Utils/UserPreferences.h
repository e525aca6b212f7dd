#pragma once

#include <QMetaType>
#include <QString>

// All user settings and what is remembered of the last device. Passed by value; every holder
// keeps its own copy and replaces it on PreferencesUtils::signalPreferencesChange. Defaults
// are those of a record read from an empty file.
struct UserPreferences {
    int recognitionLanguage = 0;
    int voiceTranslateSourceLanguage = 0;
    int voiceTranslateTargetLanguage = 0;
    int lastVoiceTranslateSourceLanguage = 0;
    int lastVoiceTranslateTargetLanguage = 7;
    int textTranslateLanguage = 2;
    int voiceTranslateMode = 0;
    int textTranslateMode = 0;
    int checkUpdate = 1;
    int checkAppAutoRun = 0;
    int saveIpAddress = 0;
    int savePid = 0;
    int saveVid = 0;
    QString saveDeviceUuid;
    QString saveCustomerCode;
    QString saveCustomerName;
    QString saveHomeImage;
    QString saveExplainImage;
    QString saveNavImage;  // in memory only
    int isClickMode = 0;
    int isAutoSendMode = 1;
    int isEnterSend = 1;
    int isSpaceSend = 1;
    int isDelLastSign = 0;
    int isDelAllSign = 0;
    int calendarPhrases = 0;
    int dpiValue = 3;
    int restRemind = 0;
    int workTime = 7200000;
    int delayOpenDeviceTime = 0;
    int keyType = 0;
    int textReadingMode = 0;
    int pronPerson = 0;
    QString dataLog;
    // How battery and device notices reach the user: 0 the popup window, 1 a desktop
    // notification (the popup where the desktop shows none), 2 both.
    int noticeStyle = 1;
    // The windows' language: 0 follows the system, 1 Chinese, 2 English (Translations::Choice).
    int interfaceLanguage = 0;
    bool isIFlySpeech = false;  // in memory only
};
Q_DECLARE_METATYPE(UserPreferences)
