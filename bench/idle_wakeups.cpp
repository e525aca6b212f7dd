// How often the device layer wakes the process while nothing happens: builds the links and
// the device manager as the application does, waits, and counts the context switches of
// all its threads. Run: build/release/bench/idle_wakeups [seconds]
#include "Hid/DeviceManager.h"
#include "Hid/HookManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTimer>

#include <cstdio>

namespace {

// Voluntary and involuntary context switches of every thread of this process.
long long contextSwitches()
{
    long long total = 0;
    const QStringList tasks =
        QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& task : tasks) {
        QFile status(QStringLiteral("/proc/self/task/%1/status").arg(task));
        if (!status.open(QIODevice::ReadOnly)) {
            continue;
        }
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("voluntary_ctxt_switches:") ||
                line.startsWith("nonvoluntary_ctxt_switches:")) {
                total += line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
            }
        }
    }
    return total;
}

}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int seconds = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10;
    DeviceManager::getInstance();
    HookManager::getInstance()->startHook();
    long long before = 0;
    // Let start-up settle first.
    QTimer::singleShot(1000, [&] { before = contextSwitches(); });
    QTimer::singleShot(1000 + seconds * 1000, [&] {
        const long long switches = contextSwitches() - before;
        std::printf("%lld wake-ups in %d s: %.1f per second\n", switches, seconds,
                    double(switches) / seconds);
        QCoreApplication::quit();
    });
    return app.exec();
}
