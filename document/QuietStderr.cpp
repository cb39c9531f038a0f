#include "QuietStderr.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>

namespace sonmetra {
namespace {

std::mutex g_mutex;
int g_users = 0;     // guarded by g_mutex
int g_savedFd = -1;  // guarded by g_mutex: the real standard error while redirected

}  // namespace

QuietStderr::QuietStderr() {
    std::lock_guard lock(g_mutex);
    if (g_users++ > 0) return;
    std::fflush(stderr);
    const int devNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (devNull < 0) return;
    g_savedFd = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (g_savedFd >= 0) dup2(devNull, STDERR_FILENO);
    close(devNull);
}

QuietStderr::~QuietStderr() {
    std::lock_guard lock(g_mutex);
    if (--g_users > 0) return;
    std::fflush(stderr);
    if (g_savedFd >= 0) {
        dup2(g_savedFd, STDERR_FILENO);
        close(g_savedFd);
        g_savedFd = -1;
    }
}

}  // namespace sonmetra
