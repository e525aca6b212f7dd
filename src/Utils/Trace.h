#pragma once

#include <QtGlobal>

// Moments that the benchmarks time from outside: the start, the console shown, a result read
// from the gateway, the first key of a text posted. With ZORVANE_TRACE naming a file, each
// mark appends "NAME NANOSECONDS" (CLOCK_MONOTONIC, so another process can compare) to it;
// without, a mark is one test of a flag. Any thread.
namespace Trace {

bool enabled();
qint64 now();
void mark(const char* name);
void markAt(const char* name, qint64 nanoseconds);

}  // namespace Trace
