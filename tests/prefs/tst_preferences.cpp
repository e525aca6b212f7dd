#include "Utils/AppPaths.h"
#include "Utils/FileAside.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/PictureFiles.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>
#include <unistd.h>
#include <csignal>

class TestPreferences : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void writesOnlyWhatDiffersFromTheFile();
    void memoryOnlyFieldsTravelInTheSignal();
    void badFilesGiveDefaults();
    void habits();
    void failedSavesLeaveTheOldFile();
    void corruptFilesAreKeptAside();
    void earlierFilesMoveOnceAndAreUsed();

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

void TestPreferences::writesOnlyWhatDiffersFromTheFile()
{
    // Reading writes nothing. No file: 0 equals an absent key, so checkUpdate 0 is not written
    // and reads back 1.
    UserPreferences p = prefs()->getUserPreferences();
    QVERIFY(!QFile::exists(PreferencesUtils::preferencesPath()));
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
        file.write("[config]\ndpiValue=high\nworkTime=3600000\n");
    }
    const UserPreferences p = prefs()->getUserPreferences();
    QCOMPARE(p.dpiValue, 0);  // a string in an integer key
    QCOMPARE(p.workTime, 3600000);
    QCOMPARE(p.checkUpdate, 1);

    // A settings folder that cannot exist: defaults, a log line, no crash.
    const QByteArray saved = qgetenv("XDG_CONFIG_HOME");
    const QString blocker =
        QDir::tempPath() + QStringLiteral("/zorvane-not-a-folder-%1").arg(QCoreApplication::applicationPid());
    {
        QFile file(blocker);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    qputenv("XDG_CONFIG_HOME", blocker.toLocal8Bit());
    QSignalSpy spy(prefs(), &PreferencesUtils::signalPreferencesChange);
    UserPreferences q = prefs()->getUserPreferences();
    QCOMPARE(q.dpiValue, 3);
    q.dpiValue = 1;
    prefs()->setUserPreferences(q);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(prefs()->getUserHabitList().size(), 1);
    qputenv("XDG_CONFIG_HOME", saved);
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

namespace {

// A file that this process may write, in a folder it may not: by the folder's mode for a
// user; for root, whom no mode stops, as another user, the file open to all.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(const QString& file)
        : mFile(file),
          mFolder(QFileInfo(file).path()),
          mFileMode(QFile::permissions(file)),
          mFolderMode(QFile::permissions(mFolder))
    {
        const QFile::Permissions all = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                       QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QFile::setPermissions(mFile, ::geteuid() == 0 ? all : mFileMode);
        QFile::setPermissions(mFolder,
                              QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
        if (::geteuid() == 0) {
            mWasRoot = ::seteuid(65534) == 0;
        }
    }
    ~ReadOnlyFolder()
    {
        if (mWasRoot && ::seteuid(0) != 0) {
            qFatal("cannot become root again");
        }
        QFile::setPermissions(mFolder, mFolderMode);
        QFile::setPermissions(mFile, mFileMode);
    }

private:
    QString mFile;
    QString mFolder;
    QFile::Permissions mFileMode;
    QFile::Permissions mFolderMode;
    bool mWasRoot = false;
};

QStringList filesBeside(const QString& path)
{
    return QFileInfo(path).dir().entryList(QDir::Files | QDir::Hidden);
}

}  // namespace

void TestPreferences::failedSavesLeaveTheOldFile()
{
    // A settings folder that another user could enter, for the read-only case as root.
    QTemporaryDir home;
    QVERIFY(QFile::setPermissions(home.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                   QFile::ReadOther | QFile::ExeOther));
    const QByteArray savedHome = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    const QString path = PreferencesUtils::preferencesPath();
    UserPreferences p = prefs()->getUserPreferences();
    p.dpiValue = 1;
    p.saveCustomerName = QStringLiteral("Zorvane");
    prefs()->setUserPreferences(p);
    const QByteArray before = fileText(path);
    const QStringList files = filesBeside(path);
    QVERIFY(before.contains("dpiValue=1"));
    QSignalSpy spy(prefs(), &PreferencesUtils::signalPreferencesChange);

    // A folder that cannot be written in.
    p.dpiValue = 2;
    {
        ReadOnlyFolder readOnly(path);
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("cannot write .* left as it was")));
        prefs()->setUserPreferences(p);
    }
    QCOMPARE(fileText(path), before);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).value<UserPreferences>().dpiValue, 2);  // the holders keep the choice

    // A disk that fills in the middle of the write: files may not grow past 64 bytes.
    p.dpiValue = 3;
    p.saveCustomerName = QString(200, QLatin1Char('z'));
    rlimit limit{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit saved = limit;
    limit.rlim_cur = 64;
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot write .* left as it was")));
    prefs()->setUserPreferences(p);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &saved), 0);
    std::signal(SIGXFSZ, previousHandler);
    QCOMPARE(fileText(path), before);
    QCOMPARE(filesBeside(path), files);  // no temporary file left behind

    // Room again: the next save writes the user's record whole.
    prefs()->setUserPreferences(p);
    QCOMPARE(prefs()->getUserPreferences().saveCustomerName, p.saveCustomerName);
    QCOMPARE(prefs()->getUserPreferences().dpiValue, 3);
    qputenv("XDG_CONFIG_HOME", savedHome);
}

void TestPreferences::corruptFilesAreKeptAside()
{
    const QString path = PreferencesUtils::preferencesPath();
    auto write = [](const QString& file, const QByteArray& bytes) {
        QFile f(file);
        return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
    };
    auto asideCopies = [&path] {
        return filesBeside(path).filter(QFileInfo(path).fileName() + QStringLiteral(".corrupt-"));
    };
    // Lines Qt cannot read as INI; then what a crash leaves: blocks of NUL bytes.
    const QByteArray garbage = "[config]\nworkTime=3600000\n\xff\xfe garbage [[[\n[config\nrestRemind";
    const QByteArray zeros(4096, '\0');
    for (const QByteArray& bytes : {garbage, zeros}) {
        QVERIFY(write(path, bytes));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("kept as .*corrupt-")));
        QCOMPARE(prefs()->getUserPreferences().workTime, 7200000);
        QVERIFY(!QFile::exists(path));
        QCOMPARE(fileText(QFileInfo(path).dir().filePath(asideCopies().last())), bytes);
    }
    // A save after that makes a fresh file; so does one that meets a corrupt file first.
    UserPreferences p = prefs()->getUserPreferences();
    p.dpiValue = 1;
    QVERIFY(write(path, garbage));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("kept as")));
    prefs()->setUserPreferences(p);
    QVERIFY(!fileText(path).contains("garbage"));
    QCOMPARE(prefs()->getUserPreferences().dpiValue, 1);

    // The habits likewise, and a file that keeps breaking keeps only the newest copies.
    QVERIFY(write(PreferencesUtils::habitPath(), garbage));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("user_habit_ini is no INI file")));
    QCOMPARE(prefs()->getUserHabitList().size(), 1);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(write(path, zeros));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("kept as")));
        prefs()->getUserPreferences();
    }
    QCOMPARE(asideCopies().size(), FileAside::kKeptCopies);
}

// The data folder of an earlier version, all in one place, with a move cut short before: the
// cache on another file system (tmpfs), so that the pictures are copied rather than renamed.
void TestPreferences::earlierFilesMoveOnceAndAreUsed()
{
    QTemporaryDir home;
    QTemporaryDir otherFileSystem(QStringLiteral("/dev/shm/zorvane-cache-XXXXXX"));
    QVERIFY(home.isValid());
    const QByteArray saved[] = {qgetenv("XDG_DATA_HOME"), qgetenv("XDG_CONFIG_HOME"),
                                qgetenv("XDG_STATE_HOME"), qgetenv("XDG_CACHE_HOME")};
    const char* variables[] = {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"};
    auto restore = qScopeGuard([&] {
        for (int i = 0; i < 4; ++i) {
            qputenv(variables[i], saved[i]);
        }
    });
    for (int i = 0; i < 3; ++i) {
        qputenv(variables[i], home.filePath(QString::fromLatin1(variables[i])).toLocal8Bit());
    }
    qputenv("XDG_CACHE_HOME",
            (otherFileSystem.isValid() ? otherFileSystem.path() : home.filePath(QStringLiteral("cache")))
                .toLocal8Bit());
    const QString earlier = home.filePath(QStringLiteral("XDG_DATA_HOME/ZorvaneV2/"));
    const auto write = [](const QString& path, const QByteArray& text) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    QVERIFY(write(earlier + QStringLiteral("preferences.ini"), "[config]\ndpiValue=1\n"));
    QVERIFY(write(earlier + QStringLiteral("user_habit_ini"), "[habit_website]\n3=http://old.example/\n"));
    QVERIFY(write(earlier + QStringLiteral("ZorvaneLog.txt"), "earlier\r\n"));
    QVERIFY(write(earlier + QStringLiteral("pictures/aG9tZS5wbmc"), "picture"));
    QVERIFY(write(earlier + QStringLiteral("em9ydmFuZV9kYg=="), "words"));
    // Cut short before: the habits already arrived whole (the old copy goes); an autostart
    // answer made since, under the new name, wins over the old one.
    const QString config = home.filePath(QStringLiteral("XDG_CONFIG_HOME/ZorvaneV2/"));
    QVERIFY(write(config + QStringLiteral("user_habit_ini"), "[habit_website]\n3=http://old.example/\n"));
    QVERIFY(write(earlier + QStringLiteral("autostart.ini"), "[question]\ndeclined=false\n"));
    QVERIFY(write(config + QStringLiteral("autostart.ini"), "[question]\ndeclined=true\n"));

    const QStringList report = AppPaths::moveEarlierFiles();
    QVERIFY2(report.size() == 5, qPrintable(report.join(QLatin1Char('\n'))));
    QCOMPARE(QDir(earlier).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList({QStringLiteral("autostart.ini"), QStringLiteral("em9ydmFuZV9kYg==")}));
    QCOMPARE(fileText(config + QStringLiteral("autostart.ini")), QByteArray("[question]\ndeclined=true\n"));
    QCOMPARE(fileText(AppPaths::stateFile(QStringLiteral("/ZorvaneLog.txt"))), QByteArray("earlier\r\n"));
    // Read where the program reads them now.
    QCOMPARE(prefs()->getUserPreferences().dpiValue, 1);
    QCOMPARE(prefs()->getUserHabitList().value(3).website, QStringLiteral("http://old.example/"));
    QCOMPARE(fileText(PictureFiles::localPath(QStringLiteral("img/home.png"))), QByteArray("picture"));
    // Once: a second start finds nothing more to move.
    QVERIFY(AppPaths::moveEarlierFiles().filter(QStringLiteral("moved")).isEmpty());
}

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
