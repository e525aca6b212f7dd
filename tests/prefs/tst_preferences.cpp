#include "Utils/AppPaths.h"
#include "Utils/PreferencesUtils.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

class TestPreferences : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void defaultsOfAnEmptyFile();
    void writesOnlyWhatDiffersFromTheFile();
    void memoryOnlyFieldsTravelInTheSignal();
    void badFilesGiveDefaults();
    void habits();

private:
    static QByteArray fileText(const QString& path);
    PreferencesUtils* prefs() { return PreferencesUtils::getInstance(); }
};

void TestPreferences::initTestCase()
{
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
    QVERIFY(AppPaths::dataDir().endsWith(QStringLiteral("/ZorvaneV2")));
}

void TestPreferences::init()
{
    QFile::remove(PreferencesUtils::preferencesPath());
    QFile::remove(PreferencesUtils::habitPath());
}

QByteArray TestPreferences::fileText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestPreferences::defaultsOfAnEmptyFile()
{
    const UserPreferences p = prefs()->getUserPreferences();
    QCOMPARE(p.checkUpdate, 1);
    QCOMPARE(p.isAutoSendMode, 1);
    QCOMPARE(p.isEnterSend, 1);
    QCOMPARE(p.isSpaceSend, 1);
    QCOMPARE(p.dpiValue, 3);
    QCOMPARE(p.workTime, 7200000);
    QCOMPARE(p.lastVoiceTranslateTargetLanguage, 7);
    QCOMPARE(p.textTranslateLanguage, 2);
    // Reading writes nothing.
    QVERIFY(!QFile::exists(PreferencesUtils::preferencesPath()));
}

void TestPreferences::writesOnlyWhatDiffersFromTheFile()
{
    // No file: 0 equals an absent key, so checkUpdate 0 is not written and reads back 1.
    UserPreferences p = prefs()->getUserPreferences();
    p.checkUpdate = 0;
    p.dpiValue = 2;
    p.saveCustomerCode = QStringLiteral("0A0B0C");
    prefs()->setUserPreferences(p);
    QSettings file(PreferencesUtils::preferencesPath(), QSettings::IniFormat);
    QVERIFY(!file.contains(QStringLiteral("config/checkUpdate")));
    QCOMPARE(file.value(QStringLiteral("config/dpiValue")).toInt(), 2);
    // Defaults that are not 0 differ from an absent key and are written out.
    QCOMPARE(file.value(QStringLiteral("config/isAutoSendMode")).toInt(), 1);
    QVERIFY(!file.contains(QStringLiteral("config/recognitionLanguage")));
    QCOMPARE(prefs()->getUserPreferences().checkUpdate, 1);
    QCOMPARE(prefs()->getUserPreferences().saveCustomerCode, QStringLiteral("0A0B0C"));

    // Once the key exists, 0 is stored like any other value.
    p.checkUpdate = 1;
    prefs()->setUserPreferences(p);
    p.checkUpdate = 0;
    prefs()->setUserPreferences(p);
    QCOMPARE(prefs()->getUserPreferences().checkUpdate, 0);

    // An equal record leaves the file as it is and still reaches the listeners, before the
    // call returns (the spy counts without an event loop).
    const QByteArray before = fileText(PreferencesUtils::preferencesPath());
    QSignalSpy spy(prefs(), &PreferencesUtils::signalPreferencesChange);
    prefs()->setUserPreferences(prefs()->getUserPreferences());
    QCOMPARE(spy.size(), 1);
    QCOMPARE(fileText(PreferencesUtils::preferencesPath()), before);
}

void TestPreferences::memoryOnlyFieldsTravelInTheSignal()
{
    UserPreferences p = prefs()->getUserPreferences();
    p.saveNavImage = QStringLiteral("nav.png");
    p.isIFlySpeech = true;
    QSignalSpy spy(prefs(), &PreferencesUtils::signalPreferencesChange);
    prefs()->setUserPreferences(p);
    QCOMPARE(spy.size(), 1);
    const UserPreferences sent = spy.at(0).at(0).value<UserPreferences>();
    QCOMPARE(sent.saveNavImage, QStringLiteral("nav.png"));
    QVERIFY(sent.isIFlySpeech);
    const UserPreferences reread = prefs()->getUserPreferences();
    QVERIFY(reread.saveNavImage.isEmpty());
    QVERIFY(!reread.isIFlySpeech);
    QVERIFY(!fileText(PreferencesUtils::preferencesPath()).contains("nav.png"));
}

void TestPreferences::badFilesGiveDefaults()
{
    {
        QFile file(PreferencesUtils::preferencesPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            "[config]\ndpiValue=high\nworkTime=3600000\n\xff\xfe\x00garbage=[[[\n=\n[config\nrestRemind");
    }
    const UserPreferences p = prefs()->getUserPreferences();
    QCOMPARE(p.dpiValue, 0);  // a string in an integer key
    QCOMPARE(p.workTime, 3600000);
    QCOMPARE(p.checkUpdate, 1);

    // A data folder that cannot exist: defaults, a log line, no crash.
    const QByteArray saved = qgetenv("XDG_DATA_HOME");
    const QString blocker =
        QDir::tempPath() + QStringLiteral("/zorvane-not-a-folder-%1").arg(QCoreApplication::applicationPid());
    {
        QFile file(blocker);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    qputenv("XDG_DATA_HOME", blocker.toLocal8Bit());
    QSignalSpy spy(prefs(), &PreferencesUtils::signalPreferencesChange);
    UserPreferences q = prefs()->getUserPreferences();
    QCOMPARE(q.dpiValue, 3);
    q.dpiValue = 1;
    prefs()->setUserPreferences(q);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(prefs()->getUserHabitList().size(), 1);
    qputenv("XDG_DATA_HOME", saved);
    QFile::remove(blocker);
}

void TestPreferences::habits()
{
    // Always the built-in search habit, on the configured search host.
    QMap<int, UserHabit> habits = prefs()->getUserHabitList();
    QCOMPARE(habits.size(), 1);
    QCOMPARE(habits.value(18).website, QStringLiteral("http://127.0.0.1:9728/"));
    QCOMPARE(habits.value(18).searchUrl, QStringLiteral("http://127.0.0.1:9728/s?ie=UTF-8&wd=*"));
    QVERIFY(!QFile::exists(PreferencesUtils::habitPath()));

    habits = prefs()->updateUserHabit(21, QStringLiteral("https://music.example"),
                                      QStringLiteral("https://music.example/?q=*"));
    QCOMPARE(habits.size(), 2);
    QCOMPARE(habits.value(21).searchUrl, QStringLiteral("https://music.example/?q=*"));

    // A stored 18 replaces the built-in one.
    habits = prefs()->updateUserHabit(18, QStringLiteral("https://search.example"),
                                      QStringLiteral("https://search.example/?s=*"));
    QCOMPARE(habits.value(18).website, QStringLiteral("https://search.example"));

    // A search address without its website twin.
    {
        QSettings file(PreferencesUtils::habitPath(), QSettings::IniFormat);
        file.setValue(QStringLiteral("habit_search_url/30"), QStringLiteral("https://x.example/*"));
    }
    habits = prefs()->getUserHabitList();
    QCOMPARE(habits.value(30).id, 30);
    QVERIFY(habits.value(30).website.isEmpty());
    QCOMPARE(habits.value(30).searchUrl, QStringLiteral("https://x.example/*"));
}

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
