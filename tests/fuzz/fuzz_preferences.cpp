// The preference and habit files as a disk, another program or a crash may leave them: the
// input is split at its first NUL byte into the two files.
#include "FuzzSupport.h"
#include "Utils/AppPaths.h"
#include "Utils/PreferencesUtils.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(bytes);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir home;
    if (!qEnvironmentVariableIsSet("ZORVANE_FUZZ_HOME")) {
        qputenv("ZORVANE_FUZZ_HOME", "1");
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    }
    fuzzSetUp();
    QCoreApplication::setApplicationName(QString::fromLatin1(AppPaths::kApplicationName));
    const QByteArray input = fuzzBytes(data, size);
    const int split = input.indexOf('\0');
    QDir().mkpath(QFileInfo(PreferencesUtils::preferencesPath()).absolutePath());
    write(PreferencesUtils::preferencesPath(), input.left(split < 0 ? input.size() : split));
    write(PreferencesUtils::habitPath(), split < 0 ? QByteArray() : input.mid(split + 1));
    PreferencesUtils& preferences = *PreferencesUtils::getInstance();
    // What was read must also save back.
    preferences.setUserPreferences(preferences.getUserPreferences());
    preferences.getUserHabitList();
    return 0;
}
