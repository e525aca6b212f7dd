#include "Utils/Trace.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

int traceFile()
{
    // Opened once; lines go out with one write each, whole even from several threads.
    static const int fd = [] {
        const char* path = std::getenv("ZORVANE_TRACE");
        return path != nullptr && *path != '\0'
                   ? ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)
                   : -1;
    }();
    return fd;
}

}  // namespace

namespace Trace {

bool enabled()
{
    return traceFile() >= 0;
}

qint64 now()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

void mark(const char* name)
{
    if (enabled()) {
        markAt(name, now());
    }
}

void markAt(const char* name, qint64 nanoseconds)
{
    const int fd = traceFile();
    if (fd < 0) {
        return;
    }
    char line[96];
    const int length =
        std::snprintf(line, sizeof(line), "%s %lld\n", name, static_cast<long long>(nanoseconds));
    if (length > 0 && length < int(sizeof(line))) {
        const ssize_t written = ::write(fd, line, static_cast<size_t>(length));
        Q_UNUSED(written)
    }
}

}  // namespace Trace
