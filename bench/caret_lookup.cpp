// What the caret lookup costs the voice key's press: the search itself (on the calling thread,
// as the press paid it before the tracker) and the press through the tracker, N times each
// against whatever has the focus; prints p50/p95/max in milliseconds and the caret found.
// Run: bench/caret_lookup.sh BUILD_DIR [--stuck] (a private X server, accessibility bus and a
// GTK editor with 20 000 lines), or inside a desktop session: BUILD_DIR/bench/caret_lookup [N]
#include "Platform/AtspiCaret.h"
#include "Platform/CaretTracker.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

void measure(const char* what, int count, const std::function<QPoint()>& lookup)
{
    std::vector<double> ms;
    QPoint last;
    for (int i = 0; i < count; ++i) {
        QElapsedTimer clock;
        clock.start();
        last = lookup();
        ms.push_back(clock.nsecsElapsed() / 1e6);
    }
    const double first = ms.front();
    std::sort(ms.begin(), ms.end());
    const auto at = [&](double q) { return ms[std::min(ms.size() - 1, size_t(q * ms.size()))]; };
    std::printf("%-7s x%d: first %.2f ms, p50 %.2f ms, p95 %.2f ms, max %.2f ms; caret (%d, %d)\n", what,
                count, first, at(0.5), at(0.95), ms.back(), last.x(), last.y());
}

}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? std::max(1, atoi(argv[1])) : 200;
    // The press first: the search remembers an application that did not answer.
    CaretTracker tracker(&AtspiCaret::lookUp);
    measure("press", count, [&] { return tracker.caretPosition(); });
    measure("search", count, &AtspiCaret::lookUp);
    return 0;
}
