// The link's thread against a fake board on a pseudo-terminal: probe, bring-up, stream,
// a board that falls silent, and the firmware update.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fake_board.h"
#include "ioboard_drv.h"
#include "ioboard_fw.h"
#include "iouser.h"
#include "mmi.h"
#include "platform_sysinfo.h"

// The driver's thread on a fake board: a test root of the small dash, quick bring-up
// waits, and the driver put back at its start values afterwards.
class IoboardLink : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("PRODUCT_ID", "0", 1);
        PlatformSysinfoTestReset();
        ioboard_test_reset();
        ioboard_test_set_settle_ms(5);
    }
    void TearDown() override
    {
        ioboard_test_reset();
        ioboard_test_set_settle_ms(250);
        unsetenv("PRODUCT_ID");
        PlatformSysinfoTestReset();
    }
    static bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
    // A firmware file of `version` with a few program bytes, checksummed over its first
    // 16 bytes; `checksum` other than -1 puts a wrong value in its field.
    static std::string Firmware(int version, int checksum = -1)
    {
        std::string image(IOBOARD_FIRMWARE_SIZE, '\xFF');
        image[0] = 0x12;
        image[1] = 0x00;
        image[5] = 0x34;
        image[IOBOARD_FIRMWARE_VERSION_OFFSET] = (char)version;
        image[IOBOARD_FIRMWARE_LENGTH_OFFSET] = 0x00;
        image[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1] = 0x10;
        const int sum = checksum >= 0 ? checksum : 0x12 + 0x34 + 13 * 0xFF;
        image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] = (char)(sum >> 8);
        image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1] = (char)sum;
        return image;
    }
    TestRoot root;
};


namespace {

const std::vector<std::string> MODE_ONE_SET = {
    "$L,00,00",
    "$I,0000,0000,0000,0000,0000,0000,0000,0000,0000",
    "$k,0000,1000,0000,0000,0AF0",
    "$e,00,00,00,00,FF",
    "$S,0000,0000,0000,0000,04B0,1000",  // 13.2 V at the supply
    "$G,0005,C,0000,O,0000,O",
    "$P,0064"};

}  // namespace

TEST_F(IoboardLink, WithoutABoardTheDashGoesOnAndNeverTriesAgain)
{
    testing::internal::CaptureStdout();
    EXPECT_FALSE(IOUserInit());
    EXPECT_FALSE(IOUserInit());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "I/O Board: Probe failed to open UART port! (No such file or directory)\n"
              "I/O Board hardware not found!\n"
              "I/O Board hardware not found!\n");
    EXPECT_EQ(fGetIOSupplyVoltage(), -1.0f);
}

TEST_F(IoboardLink, InputsReachTheImageAndASilentBoardIsBroughtUpAgain)
{
    FakeBoard board(root);
    MMIInit(10, 10, 10);
    testing::internal::CaptureStdout();
    ASSERT_TRUE(IOUserInit());
    ASSERT_TRUE(WaitFor([&] { return board.Got("$T,1"); }));
    EXPECT_FALSE(ioboard_is_running());
    ioboard_set_relay_out_config(1, 1);
    for (const std::string& body : MODE_ONE_SET) board.Send(body);
    ASSERT_TRUE(WaitFor([&] { return ioboard_is_running(); }));
    EXPECT_TRUE(WaitFor([&] { return board.Got("$E,FF,00,00,00,FF"); }));
    U32 bootloader = 0, application = 0;
    EXPECT_TRUE(ioboard_get_version_info(&bootloader, &application));
    EXPECT_EQ(bootloader * 100 + application, 105u);

    MMIProcess();
    IOUSER_IMAGE_T image;
    IOUserTestImage(&image);
    EXPECT_FLOAT_EQ(image.supplyVoltage, 14.05f);
    EXPECT_FLOAT_EQ(image.tachInputFrequency, 3125.0f);
    EXPECT_EQ(image.switchStates[0], 1);
    EXPECT_EQ(image.switchCounts[0], 5);

    // Pulled off: the data go invalid, the image keeps the last readings, and the
    // bring-up goes on until the board answers again.
    board.silent_ = true;
    ASSERT_TRUE(WaitFor([&] { return !ioboard_is_running(); }));
    MMIProcess();
    IOUserTestImage(&image);
    EXPECT_FLOAT_EQ(image.supplyVoltage, 14.05f);
    EXPECT_TRUE(WaitFor([&] { return board.Count("$Z,5a5a") >= 4; }));
    board.silent_ = false;
    ASSERT_TRUE(WaitFor([&] { return board.Count("$T,1") == 2; }));
    for (const std::string& body : MODE_ONE_SET) board.Send(body);
    EXPECT_TRUE(WaitFor([&] { return ioboard_is_running(); }));
    ioboard_close();
    MMIDeInit();

    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(Contains(out, "I/O Board: Update Check - Bootloader v1, Application v5\n"));
    EXPECT_TRUE(Contains(out, "I/O Board: Init - Bootloader v1, Application v5, Hardware 0x02\n"));
    EXPECT_TRUE(Contains(out, "I/O Board: Timeout receiving data!\n"));
    EXPECT_TRUE(Contains(out, "I/O Board: Failed to get version information!\n"));
}

TEST_F(IoboardLink, AnotherApplicationIsFlashedAndAFailedAttemptStartsOver)
{
    const std::string file = Firmware(7, 0x0BAD);
    root.Write("app/bin/ioboard0.bin", file);
    FakeBoard board(root, 9);  // newer than the file: the file wins
    board.failErases_ = 1;
    testing::internal::CaptureStdout();
    ASSERT_TRUE(ioboard_open());
    ASSERT_TRUE(WaitFor([&] { return board.Got("$T,1"); }, 20000));
    EXPECT_FALSE(ioboard_is_upgrading());
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(Contains(out,
                         "I/O Board: Checksums in firmware file /app/bin/ioboard0.bin corrected\n"
                         "I/O Board: Update Check - Bootloader v1, Application v9\n"
                         "I/O Board: Flashing new Application v7...\n"
                         "I/O Board: Failed to erase flash sector!\n"
                         "I/O Board: Failed to erase flash!\n"
                         "I/O Board: Failed flashing new Application v7\n"
                         "I/O Board: Update Check - Bootloader v1, Application v9\n"
                         "I/O Board: Flashing new Application v7...\n"
                         "I/O Board: Succeeded flashing new Application v7\n"
                         "I/O Board: Init - Bootloader v1, Application v7, Hardware 0x02\n"))
        << out;

    // All 42 sectors, top down, then only the bytes that aren't 0xFF; the checksum the
    // board computed matched the corrected one.
    std::vector<std::string> erases, programs;
    for (const std::string& s : board.Received()) {
        if (s.rfind("$e,", 0) == 0) erases.push_back(s);
        if (s.rfind("$p,", 0) == 0) programs.push_back(s);
    }
    ASSERT_EQ(erases.size(), 1u + 42u);
    EXPECT_EQ(erases[1], "$e,F700");
    EXPECT_EQ(erases[2], "$e,F400");
    EXPECT_EQ(erases.back(), "$e,7C00");
    const std::vector<std::string> expected = {"$p,7C00,12", "$p,7C01,00", "$p,7C05,34", "$p,F9FB,07",
                                               "$p,F9FC,0D", "$p,F9FD,39", "$p,F9FE,00", "$p,F9FF,10"};
    EXPECT_EQ(programs, expected);
    EXPECT_TRUE(board.Got("$c,0010"));
    EXPECT_EQ(board.Flash(0xF9FD), 0x39) << "the corrected checksum is what the board holds";

    // The same version on the board now: the next bring-up erases nothing.
    testing::internal::CaptureStdout();
    ioboard_close();
    ASSERT_TRUE(ioboard_open());
    ASSERT_TRUE(WaitFor([&] { return board.Count("$T,1") == 2; }));
    ioboard_close();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(board.Count("$e,F700"), 2);
}

TEST_F(IoboardLink, TheFirmwareFileMustBeWholeAndDecidesTheUpdate)
{
    testing::internal::CaptureStdout();
    EXPECT_FALSE(ioboard_read_firmware());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "I/O Board: Failed to open firmware file /app/bin/ioboard0.bin!\n");
    EXPECT_EQ(ioboard_firmware_action(IOBOARD_NO_APPLICATION), IOBOARD_FW_MISSING);
    EXPECT_EQ(ioboard_firmware_action(5), IOBOARD_FW_START);

    const std::string file = Firmware(7);
    for (const std::string& wrong : {file.substr(1), file + "x"}) {
        root.Write("app/bin/ioboard0.bin", wrong);
        testing::internal::CaptureStdout();
        EXPECT_FALSE(ioboard_read_firmware());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(ioboard_firmware_action(5), IOBOARD_FW_START) << "a board with an application runs on";
    }

    root.Write("app/bin/ioboard0.bin", file);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(ioboard_read_firmware());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "a right checksum is left alone";
    EXPECT_EQ(ioboard_firmware_action(7), IOBOARD_FW_START);
    EXPECT_EQ(ioboard_firmware_action(6), IOBOARD_FW_UPDATE);
    EXPECT_EQ(ioboard_firmware_action(8), IOBOARD_FW_UPDATE);
    EXPECT_EQ(ioboard_firmware_action(IOBOARD_NO_APPLICATION), IOBOARD_FW_UPDATE);

    // A length word beyond the image sums the image and no further.
    std::string image = file;
    image[IOBOARD_FIRMWARE_LENGTH_OFFSET] = (char)0xFF;
    image[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1] = (char)0xFF;
    unsigned sum = 0;
    for (unsigned char c : image) sum += c;
    EXPECT_EQ(ioboard_firmware_checksum(reinterpret_cast<const U8*>(image.data())), sum & 0xFFFF);
}
