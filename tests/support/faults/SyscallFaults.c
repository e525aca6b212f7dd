// A full disk or a failing one, for the process it is loaded into (LD_PRELOAD, or linked into
// a suite): the write, sync and rename calls on files under a given path fail with a given
// error, as the kernel would fail them. The rules are read from the file ZORVANE_FAULTS names
// whenever it changes, so that a suite can fill the disk and free it again while the program
// runs. One rule a line:
//   <ENOSPC|EIO> <write|sync|rename|all> <path prefix>
// A file's path is what /proc/self/fd shows, so that unnamed temporary files count under their
// folder. A full disk takes what fits: half of each write, down to the last byte, which
// fails. No rule, or no ZORVANE_FAULTS: every call goes through untouched. Each call failed
// adds a line to ZORVANE_FAULTS with ".hits" added ("ENOSPC write <path>"), for the suite to
// wait on.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

enum { kWrite = 1, kSync = 2, kRename = 4 };

struct Rule {
    int error;
    int calls;
    char prefix[512];
};

static pthread_mutex_t gLock = PTHREAD_MUTEX_INITIALIZER;
static struct Rule gRules[8];
static int gRuleCount;
static struct stat gSeen;

static int errorOf(const char* name)
{
    return strcmp(name, "ENOSPC") == 0 ? ENOSPC : strcmp(name, "EIO") == 0 ? EIO : 0;
}

static int callsOf(const char* name)
{
    static const char* const kNames[] = {"write", "sync", "rename", "all"};
    for (int i = 0; i < 4; ++i) {
        if (strcmp(name, kNames[i]) == 0) {
            return i == 3 ? kWrite | kSync | kRename : 1 << i;
        }
    }
    return 0;
}

// Called with gLock held. Plain open and read: neither is one of the calls replaced here.
static void reloadRules(const char* control)
{
    struct stat now;
    if (stat(control, &now) != 0) {
        gRuleCount = 0;
        memset(&gSeen, 0, sizeof gSeen);
        return;
    }
    if (now.st_ino == gSeen.st_ino && now.st_size == gSeen.st_size &&
        now.st_mtim.tv_sec == gSeen.st_mtim.tv_sec && now.st_mtim.tv_nsec == gSeen.st_mtim.tv_nsec) {
        return;
    }
    gSeen = now;
    gRuleCount = 0;
    char text[4096];
    const int fd = open(control, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return;
    }
    const ssize_t size = read(fd, text, sizeof text - 1);
    close(fd);
    text[size > 0 ? size : 0] = '\0';
    char* save = NULL;
    for (char* line = strtok_r(text, "\n", &save); line != NULL && gRuleCount < 8;
         line = strtok_r(NULL, "\n", &save)) {
        char error[16];
        char calls[16];
        struct Rule* rule = &gRules[gRuleCount];
        if (sscanf(line, "%15s %15s %511s", error, calls, rule->prefix) == 3 &&
            (rule->error = errorOf(error)) != 0 && (rule->calls = callsOf(calls)) != 0) {
            ++gRuleCount;
        }
    }
}

// The error a call of this kind on this path fails with, or 0.
static int faultFor(int call, const char* path)
{
    const char* control = getenv("ZORVANE_FAULTS");
    if (control == NULL || path == NULL) {
        return 0;
    }
    int error = 0;
    pthread_mutex_lock(&gLock);
    reloadRules(control);
    for (int i = 0; i < gRuleCount && error == 0; ++i) {
        if ((gRules[i].calls & call) != 0 && strncmp(path, gRules[i].prefix, strlen(gRules[i].prefix)) == 0) {
            error = gRules[i].error;
        }
    }
    if (error != 0) {
        char hits[4096];
        char line[4200];
        snprintf(hits, sizeof hits, "%s.hits", control);
        const int length = snprintf(line, sizeof line, "%s %s %s\n", strerrorname_np(error),
                                    call == kWrite  ? "write"
                                    : call == kSync ? "sync"
                                                    : "rename",
                                    path);
        const int fd = open(hits, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
        if (fd >= 0) {
            ((ssize_t(*)(int, const void*, size_t))dlsym(RTLD_NEXT, "write"))(fd, line, (size_t)length);
            close(fd);
        }
    }
    pthread_mutex_unlock(&gLock);
    return error;
}

static int faultForFd(int call, int fd)
{
    if (getenv("ZORVANE_FAULTS") == NULL) {
        return 0;
    }
    char link[64];
    char path[4096];
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t size = readlink(link, path, sizeof path - 1);
    if (size <= 0) {
        return 0;
    }
    path[size] = '\0';
    // Sockets and pipes ("socket:[...]") are never a file under a rule.
    return path[0] == '/' ? faultFor(call, path) : 0;
}

// The path as the kernel would resolve it, for a relative name: enough for the rules' prefixes.
static int faultForPath(int call, int dirfd, const char* name)
{
    if (getenv("ZORVANE_FAULTS") == NULL || name == NULL) {
        return 0;
    }
    if (name[0] == '/' || dirfd != AT_FDCWD) {
        return name[0] == '/' ? faultFor(call, name) : faultForFd(call, dirfd);
    }
    char path[4096];
    if (getcwd(path, sizeof path) == NULL) {
        return 0;
    }
    strncat(path, "/", sizeof path - strlen(path) - 1);
    strncat(path, name, sizeof path - strlen(path) - 1);
    return faultFor(call, path);
}

#define NEXT(type, name) ((type)dlsym(RTLD_NEXT, name))
#define FAIL_IF(error)         \
    do {                       \
        const int e = (error); \
        if (e != 0) {          \
            errno = e;         \
            return -1;         \
        }                      \
    } while (0)

ssize_t write(int fd, const void* data, size_t size)
{
    const int error = faultForFd(kWrite, fd);
    FAIL_IF(error == ENOSPC && size > 1 ? 0 : error);
    return NEXT(ssize_t(*)(int, const void*, size_t), "write")(fd, data,
                                                               error == ENOSPC && size > 1 ? size / 2 : size);
}

ssize_t pwrite(int fd, const void* data, size_t size, off_t at)
{
    const int error = faultForFd(kWrite, fd);
    FAIL_IF(error == ENOSPC && size > 1 ? 0 : error);
    return NEXT(ssize_t(*)(int, const void*, size_t, off_t), "pwrite")(
        fd, data, error == ENOSPC && size > 1 ? size / 2 : size, at);
}

ssize_t pwrite64(int fd, const void* data, size_t size, off64_t at)
{
    const int error = faultForFd(kWrite, fd);
    FAIL_IF(error == ENOSPC && size > 1 ? 0 : error);
    return NEXT(ssize_t(*)(int, const void*, size_t, off64_t), "pwrite64")(
        fd, data, error == ENOSPC && size > 1 ? size / 2 : size, at);
}

int fsync(int fd)
{
    FAIL_IF(faultForFd(kSync, fd));
    return NEXT(int (*)(int), "fsync")(fd);
}

int fdatasync(int fd)
{
    FAIL_IF(faultForFd(kSync, fd));
    return NEXT(int (*)(int), "fdatasync")(fd);
}

int rename(const char* from, const char* to)
{
    FAIL_IF(faultForPath(kRename, AT_FDCWD, from));
    FAIL_IF(faultForPath(kRename, AT_FDCWD, to));
    return NEXT(int (*)(const char*, const char*), "rename")(from, to);
}

int renameat2(int fromDir, const char* from, int toDir, const char* to, unsigned int flags)
{
    FAIL_IF(faultForPath(kRename, fromDir, from));
    FAIL_IF(faultForPath(kRename, toDir, to));
    return NEXT(int (*)(int, const char*, int, const char*, unsigned int), "renameat2")(fromDir, from, toDir,
                                                                                        to, flags);
}

int linkat(int fromDir, const char* from, int toDir, const char* to, int flags)
{
    // How an unnamed temporary file takes its name.
    FAIL_IF(faultForPath(kRename, toDir, to));
    return NEXT(int (*)(int, const char*, int, const char*, int), "linkat")(fromDir, from, toDir, to, flags);
}
