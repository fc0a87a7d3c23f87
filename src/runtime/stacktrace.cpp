#include "stacktrace.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int m_fatalSignals[] = {SIGFPE, SIGILL, SIGSEGV, SIGBUS, SIGABRT, SIGSYS};
// Kernel thread id of the thread writing the report, 0 while there is none.
std::atomic<pid_t> m_fatalErrorInProgress{0};

}  // namespace

static void _fatalSignalHandler(int sig)
{
    const pid_t self = (pid_t)syscall(SYS_gettid);
    pid_t reporter = 0;
    if (!m_fatalErrorInProgress.compare_exchange_strong(reporter, self) && reporter != self) {
        // Another thread is writing the report and will end the process when it is
        // done; ending it now would cut the report short.
        for (;;) pause();
    }
    if (reporter == 0) {
        void* frames[100];
        const int count = backtrace(frames, 100);
        char line[128];
        const int n = snprintf(line, sizeof(line), "SIGNAL: %s(%d):\n", strsignal(sig), sig);
        if (n > 0) {
            ssize_t w = write(STDERR_FILENO, line, (size_t)n < sizeof(line) ? (size_t)n : sizeof(line) - 1);
            (void)w;
        }
        backtrace_symbols_fd(frames, count, STDERR_FILENO);
    }
    // Back to the default action, so that raising again really ends the process.
    signal(sig, SIG_DFL);
    raise(sig);
}

void StackTraceInstall(void)
{
    // The first backtrace loads the unwinder; do it now rather than inside a crash.
    void* frame[1];
    backtrace(frame, 1);
    for (int sig : m_fatalSignals) signal(sig, _fatalSignalHandler);
}
