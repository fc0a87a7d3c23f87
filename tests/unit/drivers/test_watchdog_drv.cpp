// The watchdog on a stand-in device: dev/watchdog is a plain file in a temporary root,
// so its writes can be read back, and this binary's ioctl answers for it as the
// kernel's watchdog driver would, counting what it was asked.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <linux/watchdog.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <vector>

#include "test_root.h"
#include "watchdog_drv.h"

namespace {

struct FAKE_WATCHDOG_T {
    bool present = false;  // ioctls on the file below are the device's
    dev_t dev = 0;
    ino_t ino = 0;
    int bootStatus = 0;
    int timeout = 0;
    int keepAlives = 0;
    std::vector<int> options;  // each WDIOC_SETOPTIONS
};
FAKE_WATCHDOG_T g_wd;

}  // namespace

// Stands in for the C library's ioctl in this binary; every other file goes on to it.
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list args;
    va_start(args, request);
    void* arg = va_arg(args, void*);
    va_end(args);
    struct stat st;
    if (g_wd.present && fstat(fd, &st) == 0 && st.st_dev == g_wd.dev && st.st_ino == g_wd.ino) {
        int* value = static_cast<int*>(arg);
        switch (request) {
        case WDIOC_GETBOOTSTATUS: *value = g_wd.bootStatus; return 0;
        case WDIOC_SETTIMEOUT: g_wd.timeout = *value; return 0;
        case WDIOC_GETTIMEOUT: *value = g_wd.timeout; return 0;
        case WDIOC_SETOPTIONS: g_wd.options.push_back(*value); return 0;
        case WDIOC_KEEPALIVE: g_wd.keepAlives++; return 0;
        default: errno = ENOTTY; return -1;
        }
    }
    using IOCTL_T = int (*)(int, unsigned long, ...);
    static const IOCTL_T next = reinterpret_cast<IOCTL_T>(dlsym(RTLD_NEXT, "ioctl"));
    return next(fd, request, arg);
}

namespace {

class WatchdogTest : public ::testing::Test {
protected:
    void SetUp() override { unsetenv("WATCHDOG_OFF"); }
    void TearDown() override
    {
        watchdog_deinit();
        unsetenv("WATCHDOG_OFF");
        g_wd = {};
    }
    // Makes dev/watchdog: empty, and answering ioctls.
    void Device(int bootStatus = 0)
    {
        root.Write("dev/watchdog", "");
        struct stat st;
        ASSERT_EQ(stat(root.Abs("dev/watchdog").c_str(), &st), 0);
        g_wd = {};
        g_wd.present = true;
        g_wd.dev = st.st_dev;
        g_wd.ino = st.st_ino;
        g_wd.bootStatus = bootStatus;
    }
    std::string Written() const { return root.Read("dev/watchdog"); }
    TestRoot root;
};

TEST_F(WatchdogTest, ArmedAtInitRefreshedWhileEnabledAndStoppedByTheMagicClose)
{
    Device();
    watchdog_init();
    EXPECT_TRUE(watchdog_is_enabled());
    EXPECT_FALSE(watchdog_caused_last_reset());
    EXPECT_EQ(watchdog_get_timeout_seconds(), 3u);
    EXPECT_EQ(g_wd.options, std::vector<int>{WDIOS_ENABLECARD});
    EXPECT_EQ(g_wd.keepAlives, 1);

    watchdog_set_timeout_seconds(0);
    EXPECT_EQ(watchdog_get_timeout_seconds(), 1u) << "0 would never fire";
    watchdog_set_timeout_seconds(10);
    EXPECT_EQ(g_wd.timeout, 10);

    watchdog_refresh();
    EXPECT_EQ(g_wd.keepAlives, 2);
    watchdog_enable(0);
    EXPECT_FALSE(watchdog_is_enabled());
    watchdog_refresh();
    EXPECT_EQ(g_wd.keepAlives, 2) << "no refresh while disabled";
    watchdog_enable(1);
    watchdog_refresh();
    EXPECT_EQ(g_wd.keepAlives, 3);
    EXPECT_EQ(g_wd.options, (std::vector<int>{WDIOS_ENABLECARD, WDIOS_DISABLECARD, WDIOS_ENABLECARD}));

    EXPECT_EQ(Written(), "");
    watchdog_deinit();
    EXPECT_EQ(Written(), "V");
    EXPECT_FALSE(watchdog_is_enabled()) << "the close stopped it";
    watchdog_refresh();
    watchdog_enable(1);
    watchdog_deinit();
    EXPECT_EQ(g_wd.keepAlives, 3);
    EXPECT_EQ(g_wd.options.size(), 3u);
    EXPECT_EQ(watchdog_get_timeout_seconds(), 0u);
    EXPECT_EQ(Written(), "V");
}

TEST_F(WatchdogTest, BootStatusAndASecondInit)
{
    Device(WDIOF_CARDRESET);
    watchdog_init();
    EXPECT_TRUE(watchdog_caused_last_reset());
    // A second init closes the first handle properly before it opens the device again.
    watchdog_init();
    EXPECT_EQ(Written(), "V");
    EXPECT_EQ(g_wd.keepAlives, 2);
    EXPECT_TRUE(watchdog_is_enabled());

    // The device gone: the dash runs without one, and says so.
    remove(root.Abs("dev/watchdog").c_str());
    watchdog_init();
    EXPECT_FALSE(watchdog_is_enabled());
    EXPECT_EQ(watchdog_get_timeout_seconds(), 0u);
}

TEST_F(WatchdogTest, WatchdogOffInTheEnvironmentLeavesTheDeviceAlone)
{
    Device();
    setenv("WATCHDOG_OFF", "", 1);  // set at all is enough
    watchdog_init();
    EXPECT_FALSE(watchdog_is_enabled());
    watchdog_refresh();
    watchdog_set_timeout_seconds(5);
    watchdog_deinit();
    EXPECT_EQ(g_wd.keepAlives, 0);
    EXPECT_EQ(g_wd.timeout, 0);
    EXPECT_TRUE(g_wd.options.empty());
    EXPECT_EQ(Written(), "");
}

}  // namespace
