#include "Utils/PreferencesUtils.h"

#include "Utils/AppConfig.h"
#include "Utils/AppPaths.h"
#include "Utils/FileAside.h"
#include "Utils/Logging.h"

#include <QFile>
#include <QSettings>

namespace {

// Integers and strings interleave in the file; the order below is the file's order.
struct Field {
    const char* key;
    int UserPreferences::*intField;
    QString UserPreferences::*textField;
    int readDefault;
    // An absent key compares as what it reads, not as 0: a choice of 0 over a non-zero
    // default must reach the file. The older keys keep comparing as 0.
    bool absentReadsDefault = false;
};

const Field kFields[] = {
    {"recognitionLanguage", &UserPreferences::recognitionLanguage, nullptr, 0},
    {"voiceTranslateSourceLanguage", &UserPreferences::voiceTranslateSourceLanguage, nullptr, 0},
    {"voiceTranslateTargetLanguage", &UserPreferences::voiceTranslateTargetLanguage, nullptr, 0},
    {"lastVoiceTranslateSourceLanguage", &UserPreferences::lastVoiceTranslateSourceLanguage, nullptr, 0},
    {"lastVoiceTranslateTargetLanguage", &UserPreferences::lastVoiceTranslateTargetLanguage, nullptr, 7},
    {"textTranslateLanguage", &UserPreferences::textTranslateLanguage, nullptr, 2},
    {"voiceTranslateMode", &UserPreferences::voiceTranslateMode, nullptr, 0},
    {"textTranslateMode", &UserPreferences::textTranslateMode, nullptr, 0},
    {"checkUpdate", &UserPreferences::checkUpdate, nullptr, 1},
    {"checkAppAutoRun", &UserPreferences::checkAppAutoRun, nullptr, 0},
    {"saveIpAddress", &UserPreferences::saveIpAddress, nullptr, 0},
    {"savePid", &UserPreferences::savePid, nullptr, 0},
    {"saveVid", &UserPreferences::saveVid, nullptr, 0},
    {"saveDeviceUuid", nullptr, &UserPreferences::saveDeviceUuid, 0},
    {"saveCustomerCode", nullptr, &UserPreferences::saveCustomerCode, 0},
    {"saveCustomerName", nullptr, &UserPreferences::saveCustomerName, 0},
    {"saveHomeImage", nullptr, &UserPreferences::saveHomeImage, 0},
    {"saveExplainImage", nullptr, &UserPreferences::saveExplainImage, 0},
    {"isClickMode", &UserPreferences::isClickMode, nullptr, 0},
    {"isAutoSendMode", &UserPreferences::isAutoSendMode, nullptr, 1},
    {"isEnterSend", &UserPreferences::isEnterSend, nullptr, 1},
    {"isSpaceSend", &UserPreferences::isSpaceSend, nullptr, 1},
    {"isDelLastSign", &UserPreferences::isDelLastSign, nullptr, 0},
    {"isDelAllSign", &UserPreferences::isDelAllSign, nullptr, 0},
    {"calendarPhrases", &UserPreferences::calendarPhrases, nullptr, 0},
    {"dpiValue", &UserPreferences::dpiValue, nullptr, 3},
    {"restRemind", &UserPreferences::restRemind, nullptr, 0},
    {"workTime", &UserPreferences::workTime, nullptr, 7200000},
    {"delayOpenDeviceTime", &UserPreferences::delayOpenDeviceTime, nullptr, 0},
    {"keyType", &UserPreferences::keyType, nullptr, 0},
    {"textReadingMode", &UserPreferences::textReadingMode, nullptr, 0},
    {"pronPerson", &UserPreferences::pronPerson, nullptr, 0},
    {"dataLog", nullptr, &UserPreferences::dataLog, 0},
    // Later additions go last, so that files of earlier versions read as before.
    {"noticeStyle", &UserPreferences::noticeStyle, nullptr, 1, true},
    {"interfaceLanguage", &UserPreferences::interfaceLanguage, nullptr, 0},
};

// A file that Qt cannot read as INI, or one with NUL bytes (what a crash leaves of a file whose
// blocks never reached the disk), is moved aside and kept; the defaults stand in for it.
// Left in place, its values would be half read and its garbage written back with every save.
void setAsideIfCorrupt(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    const bool nul = file.readAll().contains('\0');
    file.close();
    const bool unreadable = !nul && QSettings(path, QSettings::IniFormat).status() == QSettings::FormatError;
    if (!nul && !unreadable) {
        return;
    }
    const QString aside = FileAside::moveAside(path, QStringLiteral("corrupt"));
    if (aside.isEmpty()) {
        qCWarning(lcPrefs) << path << "cannot be read and cannot be moved aside";
        return;
    }
    qCWarning(lcPrefs).noquote() << path << (nul ? "holds NUL bytes" : "is no INI file") << "- kept as"
                                 << aside << "and the defaults are used";
}

// Writes; a failure leaves the file as it was (see setUserPreferences) and is logged.
void saveOrLog(QSettings* settings)
{
    settings->sync();
    if (settings->status() != QSettings::NoError) {
        qCWarning(lcPrefs) << "cannot write" << settings->fileName() << "- the file is left as it was";
    }
}

const QString kConfigGroup = QStringLiteral("config");
const QString kSaidGroup = QStringLiteral("said");
const QString kWebsiteGroup = QStringLiteral("habit_website");
const QString kSearchUrlGroup = QStringLiteral("habit_search_url");

}  // namespace

PreferencesUtils::PreferencesUtils()
{
    qRegisterMetaType<UserPreferences>();
    qRegisterMetaType<UserHabit>();
}

QString PreferencesUtils::preferencesPath()
{
    return AppPaths::configFile(QStringLiteral("/preferences.ini"));
}

QString PreferencesUtils::habitPath()
{
    return AppPaths::configFile(QStringLiteral("/user_habit_ini"));
}

UserPreferences PreferencesUtils::getUserPreferences()
{
    UserPreferences preferences;
    setAsideIfCorrupt(preferencesPath());
    QSettings settings(preferencesPath(), QSettings::IniFormat);
    settings.beginGroup(kConfigGroup);
    for (const Field& f : kFields) {
        const QString key = QLatin1String(f.key);
        if (f.intField != nullptr) {
            // A string where a number belongs reads 0.
            preferences.*f.intField = settings.value(key, f.readDefault).toInt();
        } else {
            preferences.*f.textField = settings.value(key, QString()).toString();
        }
    }
    settings.endGroup();
    return preferences;
}

void PreferencesUtils::setUserPreferences(UserPreferences preferences)
{
    {
        setAsideIfCorrupt(preferencesPath());
        QSettings settings(preferencesPath(), QSettings::IniFormat);
        // Qt writes through a temporary file renamed over the old one once complete, so that a
        // kill or a full disk leaves the old file whole; but only while atomic saves are
        // required: without, a folder it cannot make the temporary file in is written in place.
        settings.setAtomicSyncRequired(true);
        settings.beginGroup(kConfigGroup);
        for (const Field& f : kFields) {
            const QString key = QLatin1String(f.key);
            // An absent key compares as 0 or as the empty text, unless the field says otherwise.
            const QVariant stored =
                f.absentReadsDefault ? settings.value(key, f.readDefault) : settings.value(key);
            if (f.intField != nullptr) {
                if (stored.toInt() != preferences.*f.intField) {
                    settings.setValue(key, preferences.*f.intField);
                }
            } else if (stored.toString() != preferences.*f.textField) {
                settings.setValue(key, preferences.*f.textField);
            }
        }
        settings.endGroup();
        saveOrLog(&settings);
    }
    // The holders keep the record as the user set it, also when the file could not take it.
    emit signalPreferencesChange(preferences);
}

QMap<int, UserHabit> PreferencesUtils::getUserHabitList()
{
    QMap<int, UserHabit> habits;
    setAsideIfCorrupt(habitPath());
    QSettings settings(habitPath(), QSettings::IniFormat);
    settings.beginGroup(kWebsiteGroup);
    for (const QString& key : settings.childKeys()) {
        UserHabit habit;
        habit.id = key.toInt();
        habit.website = settings.value(key).toString();
        habits.insert(habit.id, habit);
    }
    settings.endGroup();
    settings.beginGroup(kSearchUrlGroup);
    for (const QString& key : settings.childKeys()) {
        UserHabit& habit = habits[key.toInt()];
        habit.id = key.toInt();
        habit.searchUrl = settings.value(key).toString();
    }
    settings.endGroup();

    if (!habits.contains(kBuiltInSearchHabitId)) {
        // The search page of the configured search host; not written to the file.
        QString host = AppConfig::getInstance()->searchUrl().toString();
        while (host.endsWith(QLatin1Char('/'))) {
            host.chop(1);
        }
        UserHabit builtIn;
        builtIn.id = kBuiltInSearchHabitId;
        builtIn.website = host + QLatin1Char('/');
        builtIn.searchUrl = host + QStringLiteral("/s?ie=UTF-8&wd=*");
        habits.insert(builtIn.id, builtIn);
    }
    return habits;
}

bool PreferencesUtils::wasSaid(const QString& hint)
{
    setAsideIfCorrupt(preferencesPath());
    return QSettings(preferencesPath(), QSettings::IniFormat)
        .value(kSaidGroup + QLatin1Char('/') + hint)
        .toBool();
}

void PreferencesUtils::markSaid(const QString& hint)
{
    setAsideIfCorrupt(preferencesPath());
    QSettings settings(preferencesPath(), QSettings::IniFormat);
    settings.setAtomicSyncRequired(true);  // as in setUserPreferences
    settings.setValue(kSaidGroup + QLatin1Char('/') + hint, true);
    saveOrLog(&settings);
}

void PreferencesUtils::addUserHabit(UserHabit habit)
{
    setAsideIfCorrupt(habitPath());
    QSettings settings(habitPath(), QSettings::IniFormat);
    settings.setAtomicSyncRequired(true);  // as in setUserPreferences
    const QString key = QString::number(habit.id);
    settings.beginGroup(kWebsiteGroup);
    settings.setValue(key, habit.website);
    settings.endGroup();
    settings.beginGroup(kSearchUrlGroup);
    settings.setValue(key, habit.searchUrl);
    settings.endGroup();
    saveOrLog(&settings);
}

QMap<int, UserHabit> PreferencesUtils::updateUserHabit(int id, QString website, QString searchUrl)
{
    UserHabit habit;
    habit.id = id;
    habit.website = website;
    habit.searchUrl = searchUrl;
    addUserHabit(habit);
    return getUserHabitList();
}
