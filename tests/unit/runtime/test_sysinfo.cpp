#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>

#include "platform_sysinfo.h"
#include "test_root.h"

namespace {

TEST(VersionParsing, Bootloader)
{
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion("x_12_3\n", 1), 12u);
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion("bootloader_105_2", 1), 105u);
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion("2020.04\n", 1), 1u);  // no underscore
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion("a_b_3", 1), 1u);      // nothing numeric behind it
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion("", 1), 1u);
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion(nullptr, 1), 1u);
    EXPECT_EQ(PlatformSysinfoTestParseBootloaderVersion("v_99999999999999999999", 1), 0xFFFFFFFFu);
}

TEST(VersionParsing, KernelRelease)
{
    EXPECT_EQ(PlatformSysinfoTestParseOSRelease("4.14.98-rt-77"), 77);
    EXPECT_EQ(PlatformSysinfoTestParseOSRelease("5.15.71-dash-121"), 121);
    EXPECT_EQ(PlatformSysinfoTestParseOSRelease("5.15.71"), 0);
    EXPECT_EQ(PlatformSysinfoTestParseOSRelease("5.15.71-"), 0);
    EXPECT_EQ(PlatformSysinfoTestParseOSRelease("1-2-x"), 0);  // behind the last hyphen only
    EXPECT_EQ(PlatformSysinfoTestParseOSRelease("x-99999999999999"), 0x7FFFFFFF);
}

TEST(VersionParsing, RootFS)
{
    EXPECT_EQ(PlatformSysinfoTestParseRootFSVersion("101\n", 4), 101u);
    EXPECT_EQ(PlatformSysinfoTestParseRootFSVersion("  99", 4), 99u);
    EXPECT_EQ(PlatformSysinfoTestParseRootFSVersion("99999999999", 10), 0xFFFFFFFFu);
    EXPECT_EQ(PlatformSysinfoTestParseRootFSVersion("12345", 2), 12u);  // only the bytes read
    EXPECT_EQ(PlatformSysinfoTestParseRootFSVersion("v101", 4), 0u);
    EXPECT_EQ(PlatformSysinfoTestParseRootFSVersion("", 0), 0u);
}

class SysinfoTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("PRODUCT_ID");
        PlatformSysinfoTestReset();
    }
    void TearDown() override
    {
        unsetenv("PRODUCT_ID");
        PlatformSysinfoTestReset();
    }
    void WriteRecord(U32 serial, U32 product, size_t length = 16)
    {
        U8 rec[16] = {};
        for (int i = 0; i < 4; i++) {
            rec[i] = (U8)(serial >> (8 * i));
            rec[4 + i] = (U8)(product >> (8 * i));
        }
        root.Write("sys/uid/otp/id.bin", std::string((const char*)rec, length));
    }
    TestRoot root;
};

TEST_F(SysinfoTest, MissingSources)
{
    EXPECT_EQ(GetPlatformProductId(), 0u);
    EXPECT_EQ(GetPlatformProductSerial(), 0u);
    EXPECT_FALSE(PlatformHasTouch());
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    EXPECT_EQ(info.platform, (U32)PLATFORM_ZELVO310);
    EXPECT_EQ(info.width, 320u);
    EXPECT_EQ(info.height, 240u);
    EXPECT_EQ(info.touch, 0u);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 1u);
    EXPECT_EQ(GetPlatformOSVersion(), 0);
    EXPECT_EQ(GetPlatformRootFSVersion(), 0u);
    U8 mac[6];
    GetPlatformEthernetMACAddress(mac);
    EXPECT_EQ(0, memcmp(mac, FIXED_MAC_ADDR, 6));
}

TEST_F(SysinfoTest, FactoryRecordAndProducts)
{
    WriteRecord(0x00123456, 256);
    EXPECT_EQ(GetPlatformProductSerial(), 0x00123456u);
    EXPECT_TRUE(PlatformHasTouch());
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    EXPECT_EQ(info.platform, (U32)PLATFORM_ZELVO720);
    EXPECT_EQ(info.width, 800u);
    EXPECT_EQ(info.height, 480u);
    EXPECT_EQ(info.touch, 1u);
    U8 mac[6];
    GetPlatformEthernetMACAddress(mac);
    EXPECT_EQ(0, memcmp(mac, FIXED_MAC_ADDR, 3));
    EXPECT_EQ(mac[3], 0x12);
    EXPECT_EQ(mac[4], 0x34);
    EXPECT_EQ(mac[5], 0x56);

    // Read once and kept: a later change of the file is not seen.
    WriteRecord(1, 0x200);
    EXPECT_EQ(GetPlatformProductId(), 256u);
    PlatformSysinfoTestReset();
    GetPlatformInfo(&info);
    EXPECT_EQ(info.platform, (U32)PLATFORM_UNKNOWN);  // the 310L variant has no row of its own
    EXPECT_EQ(info.width, 0u);
}

TEST_F(SysinfoTest, ProductIdFromTheEnvironment)
{
    WriteRecord(7, 0);
    setenv("PRODUCT_ID", "256", 1);
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    EXPECT_EQ(info.width, 800u);
    EXPECT_EQ(info.height, 480u);
    EXPECT_TRUE(PlatformHasTouch());

    // A short record is not kept and is read again, the environment applying each time.
    PlatformSysinfoTestReset();
    WriteRecord(7, 256, 10);
    setenv("PRODUCT_ID", "0", 1);
    EXPECT_EQ(GetPlatformProductId(), 0u);
    EXPECT_EQ(GetPlatformProductSerial(), 0u);
    WriteRecord(9, 256);
    unsetenv("PRODUCT_ID");
    EXPECT_EQ(GetPlatformProductSerial(), 9u);
    EXPECT_EQ(GetPlatformProductId(), 256u);
}

TEST_F(SysinfoTest, VersionSources)
{
    root.Write("etc/VERSION", "101\n");
    root.Write("proc/sys/kernel/osrelease", "5.4.0-zz-77\n");
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\necho \"x_12_3\"\n", 0755);
    EXPECT_EQ(GetPlatformRootFSVersion(), 101u);
    EXPECT_EQ(GetPlatformOSVersion(), 77);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 12u);
    // Kept once read.
    root.Write("etc/VERSION", "50\n");
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\necho \"x_13\"\n", 0755);
    EXPECT_EQ(GetPlatformRootFSVersion(), 101u);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 12u);
}

TEST_F(SysinfoTest, FailedReadsAreRetriedButTheBootloaderIsNot)
{
    root.Write("etc/VERSION", "garbage");
    root.Write("proc/sys/kernel/osrelease", "5.4.0\n");
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\necho \"2020.04\"\n", 0755);
    EXPECT_EQ(GetPlatformRootFSVersion(), 0u);
    EXPECT_EQ(GetPlatformOSVersion(), 0);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 1u);
    root.Write("etc/VERSION", "100");
    root.Write("proc/sys/kernel/osrelease", "5.4.0-101\n");
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\necho \"x_12\"\n", 0755);
    EXPECT_EQ(GetPlatformRootFSVersion(), 100u);
    EXPECT_EQ(GetPlatformOSVersion(), 101);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 1u);
}

TEST_F(SysinfoTest, BinaryJunkInEverySource)
{
    // NUL, control and high bytes: no digit, '-', '_' or line end anywhere.
    std::string junk;
    for (int i = 0; i < 4096; i++) junk += i % 7 == 3 ? '\0' : (char)(0x80 | (i * 131 + 7));
    root.Write("etc/VERSION", junk);
    root.Write("proc/sys/kernel/osrelease", junk);
    root.Write("sys/uid/otp/id.bin", junk);
    root.Write("junk", junk);
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\nfor i in 1 2 3 4 5 6 7 8; do cat '" + root.Abs("junk") + "'; done\n", 0755);
    EXPECT_EQ(GetPlatformRootFSVersion(), 0u);
    EXPECT_EQ(GetPlatformOSVersion(), 0);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 1u);
    // The factory record is any 16 bytes: its serial is taken, its product is unknown.
    const auto u8 = [&](int i) { return (U32)(unsigned char)junk[i]; };
    EXPECT_EQ(GetPlatformProductSerial(), u8(0) | u8(1) << 8 | u8(2) << 16 | u8(3) << 24);
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    EXPECT_EQ(info.platform, (U32)PLATFORM_UNKNOWN);
    EXPECT_EQ(info.width, 0u);
    EXPECT_EQ(info.touch, 0u);
    EXPECT_FALSE(PlatformHasTouch());

    // A version behind the junk is out of reach: only the first line, and of the
    // root file system only its first bytes, are looked at.
    PlatformSysinfoTestReset();
    root.Write("etc/VERSION", junk.substr(0, 3) + "101\n");
    root.Write("proc/sys/kernel/osrelease", junk + "-77\n");
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\ncat '" + root.Abs("junk") + "'; echo; echo x_12\n", 0755);
    EXPECT_EQ(GetPlatformRootFSVersion(), 0u);
    EXPECT_EQ(GetPlatformOSVersion(), 0);
    EXPECT_EQ(GetPlatformBootloaderVersion(), 1u);
}

TEST(Memory, UsageFromSysinfo)
{
    U32 total = 0, free = 0;
    ASSERT_TRUE(GetPlatformMemoryUsage(&total, &free));
    EXPECT_GT(total, 0u);
    EXPECT_LE(free, total);
    EXPECT_GT(GetPlatformFreeMemory(), 0u);
    EXPECT_FALSE(GetPlatformMemoryUsage(nullptr, &free));
}

int g_shutdownOrder[PLATFORM_SHUTDOWN_FUNCS + 1];
int g_shutdownCount;
template <int N>
void ShutdownCb()
{
    g_shutdownOrder[g_shutdownCount++] = N;
}

TEST(ProcessRecord, ExitCodeAndShutdownTable)
{
    EXPECT_FALSE(IsPlatformExitSignaled());
    SetPlatformExitCode(3);
    EXPECT_TRUE(IsPlatformExitSignaled());
    EXPECT_EQ(GetPlatformExitCode(), 3);

    EXPECT_FALSE(PlatformShutdownRegisterCallback(nullptr));
    EXPECT_TRUE(PlatformShutdownRegisterCallback(ShutdownCb<1>));
    EXPECT_TRUE(PlatformShutdownRegisterCallback(ShutdownCb<0>));
    for (int i = 2; i < PLATFORM_SHUTDOWN_FUNCS; i++) EXPECT_TRUE(PlatformShutdownRegisterCallback(ShutdownCb<2>));
    EXPECT_FALSE(PlatformShutdownRegisterCallback(ShutdownCb<3>));
    DoPlatformShutdownCallbacks();
    ASSERT_EQ(g_shutdownCount, PLATFORM_SHUTDOWN_FUNCS);
    EXPECT_EQ(g_shutdownOrder[0], 1);
    EXPECT_EQ(g_shutdownOrder[1], 0);
    EXPECT_EQ(g_shutdownOrder[19], 2);
}

}  // namespace
