// How often the process wakes while nothing happens: builds the links and the device manager
// as the application does, waits, and counts the context switches of all its threads.
// With --after-notices (on any Qt platform, offscreen will do) the battery panel and the caret
// panel are shown and hidden again between two counts: a hidden window must cost nothing.
// Run: build/release/bench/idle_wakeups [seconds] [--after-notices]
#include "App/Services.h"
#include "BenchUtil.h"
#include "Hid/HookManager.h"
#include "Utils/AppConfig.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Panels/FocusFollowDialog.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace {

// Counts for `seconds` after a settling second, then calls `done` with the rate.
void count(int seconds, const std::function<void(double)>& done)
{
    QTimer::singleShot(1000, [seconds, done] {
        const long long before = Bench::contextSwitches(QCoreApplication::applicationPid());
        QTimer::singleShot(seconds * 1000, [seconds, done, before] {
            done(double(Bench::contextSwitches(QCoreApplication::applicationPid()) - before) / seconds);
        });
    });
}

}  // namespace

int main(int argc, char* argv[])
{
    const bool notices = std::any_of(argv + 1, argv + argc,
                                     [](const char* arg) { return qstrcmp(arg, "--after-notices") == 0; });
    std::unique_ptr<QCoreApplication> app(notices ? new QApplication(argc, argv)
                                                  : new QCoreApplication(argc, argv));
    const int seconds = argc > 1 && argv[1][0] != '-' ? QString::fromLocal8Bit(argv[1]).toInt() : 10;
    Services services;
    services.build(*AppConfig::getInstance());
    HookManager::getInstance()->startHook();
    count(seconds, [seconds, notices](double idle) {
        std::printf("%.0f wake-ups in %d s: %.1f per second\n", idle * seconds, seconds, idle);
        if (!notices) {
            QCoreApplication::quit();
            return;
        }
        LowbatDialog::getInstance()->setLowbatAnimationView();
        FocusFollowDialog::getInstance()->setInitDictationView();
        QTimer::singleShot(1000, [seconds] {
            LowbatDialog::getInstance()->hide();
            FocusFollowDialog::getInstance()->hide();
            count(seconds, [seconds](double after) {
                std::printf("after a notice and a panel: %.1f per second\n", after);
                QCoreApplication::quit();
            });
        });
    });
    return app->exec();
}
