#include <gtest/gtest.h>

#include <csignal>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "stacktrace.h"

namespace {

// Runs `body` in a child whose standard error is captured; returns what it printed
// and its wait status.
template <typename F>
std::string RunChild(F body, int* status)
{
    int fds[2];
    EXPECT_EQ(pipe(fds), 0);
    pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDERR_FILENO);
        close(fds[0]);
        body();
        _exit(0);
    }
    close(fds[1]);
    std::string out;
    char buf[4096];
    ssize_t n;
    while ((n = read(fds[0], buf, sizeof(buf))) > 0) out.append(buf, (size_t)n);
    close(fds[0]);
    waitpid(pid, status, 0);
    return out;
}

size_t Count(const std::string& text, const std::string& what)
{
    size_t count = 0;
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += what.size()) count++;
    return count;
}

TEST(CrashReporter, ReportsOnceAndEndsByTheSignal)
{
    int status = 0;
    std::string err = RunChild(
        [] {
            StackTraceInstall();
            raise(SIGFPE);
        },
        &status);
    ASSERT_TRUE(WIFSIGNALED(status)) << err;
    EXPECT_EQ(WTERMSIG(status), SIGFPE);
    EXPECT_EQ(Count(err, "SIGNAL: "), 1u) << err;
    EXPECT_NE(err.find("SIGNAL: Floating point exception(8):\n"), std::string::npos) << err;
}

pthread_barrier_t g_barrier;

TEST(CrashReporter, CrashesOnSeveralThreadsPrintOneReport)
{
    int status = 0;
    std::string err = RunChild(
        [] {
            StackTraceInstall();
            pthread_barrier_init(&g_barrier, nullptr, 4);
            pthread_t t[3];
            auto crash = [](void*) -> void* {
                pthread_barrier_wait(&g_barrier);
                raise(SIGBUS);
                return nullptr;
            };
            for (pthread_t& th : t) pthread_create(&th, nullptr, crash, nullptr);
            crash(nullptr);
            for (pthread_t& th : t) pthread_join(th, nullptr);
        },
        &status);
    ASSERT_TRUE(WIFSIGNALED(status)) << err;
    EXPECT_EQ(WTERMSIG(status), SIGBUS);
    EXPECT_EQ(Count(err, "SIGNAL: "), 1u) << err;
}

}  // namespace
