// How often the device layer wakes the process while nothing happens: builds the links and
// the device manager as the application does, waits, and counts the context switches of
// all its threads. Run: build/release/bench/idle_wakeups [seconds]
#include "BenchUtil.h"
#include "Hid/DeviceManager.h"
#include "Hid/HookManager.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int seconds = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10;
    DeviceManager::getInstance();
    HookManager::getInstance()->startHook();
    long long before = 0;
    // Let start-up settle first.
    QTimer::singleShot(1000, [&] { before = Bench::contextSwitches(QCoreApplication::applicationPid()); });
    QTimer::singleShot(1000 + seconds * 1000, [&] {
        const long long switches = Bench::contextSwitches(QCoreApplication::applicationPid()) - before;
        std::printf("%lld wake-ups in %d s: %.1f per second\n", switches, seconds,
                    double(switches) / seconds);
        QCoreApplication::quit();
    });
    return app.exec();
}
