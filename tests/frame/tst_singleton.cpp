#include "Utils/Singleton.h"

#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

namespace {

std::atomic<int> gConstructed{0};

class Service : public Singleton<Service> {
private:
    friend class Singleton<Service>;
    Service() { ++gConstructed; }
};

}  // namespace

class TestSingleton : public QObject {
    Q_OBJECT

private slots:
    void oneInstanceUnderContention();
};

void TestSingleton::oneInstanceUnderContention()
{
    Service::resetInstanceForTest();
    gConstructed = 0;
    constexpr int kThreads = 8;
    std::atomic<bool> go{false};
    std::vector<Service*> seen(kThreads, nullptr);
    // std::thread, not QThread: ThreadSanitizer sees its join, but not the one inside Qt.
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&go, &seen, i] {
            while (!go.load()) {
            }
            seen[i] = Service::getInstance();
        });
    }
    go = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(gConstructed.load(), 1);
    for (Service* s : seen) {
        QCOMPARE(s, Service::getInstance());
    }
}

QTEST_GUILESS_MAIN(TestSingleton)
#include "tst_singleton.moc"
