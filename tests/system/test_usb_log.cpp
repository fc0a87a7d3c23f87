// Logging as a race engineer meets it: the real dash with a stick in, an engine
// controller on the bus that asks for a log, and the file read back as their tools read it.
#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>

#include "dash_ecu.h"
#include "test_root.h"

namespace {

const std::string LOG = "media/disk_sda1/Velnor_v650_CAN_00000001.csv";

// Known values of every width and sign, and a few that scale on the wire.
std::vector<std::string> Frames(bool logging)
{
    return {EcuFrame(0x108, {{"RPM", 6500}}),
            EcuFrame(0x125, {{"MAP_p", 96}, {"Final_AFR1", 14.5}}),
            EcuFrame(0x118, {{"BatteryVolts", 13.87}}),
            EcuFrame(0x107, {{"Knock_CYL1_RTD", -3}}),
            EcuFrame(0x140, {{"Knk_Win_Int1", 4000000000.0}}),
            EcuFrame(0x148, {{"EGT1", 850.3}}),
            EcuFrame(0x113, {{"InectorPW1", 12345}}),
            EcuFrame(0x101, {{"TPS_g", 22}}),
            EcuFrame(0x109, {{"Start_Log", logging ? 1 : 0}, {"OilTemp", -12}})};
}

size_t LineCount(const std::string& text)
{
    return (size_t)std::count(text.begin(), text.end(), '\n');
}

TEST(UsbLogging, TheFileOnTheStickIsWhatTheToolsRead)
{
    DeviceRoot root;
    EcuOnBus ecu(root);
    ASSERT_TRUE(ecu.Ok());
    mkdir(root.Abs("media/disk_sda1").c_str(), 0755);
    root.Write("media/usbinfo.txt", "disk_sda1");
    ecu.Send(Frames(false));
    Process dash(BinPath("motordash"), root.Path().c_str());
    // The stick taken: the foreground task runs and has seen no request yet.
    ASSERT_TRUE(WaitUntil([&] { return !root.Exists("media/usbinfo.txt"); }, 15000)) << dash.Stdout();

    ecu.Send(Frames(true));
    ASSERT_TRUE(WaitUntil([&] { return LineCount(root.Read(LOG)) >= 5 + 100; }, 10000)) << dash.Stdout();
    ecu.Send(Frames(false));
    ASSERT_TRUE(WaitUntil(
        [&] {
            const size_t rows = LineCount(root.Read(LOG));
            usleep(200000);
            return LineCount(root.Read(LOG)) == rows;
        },
        5000))
        << "rows stop with the request";
    Stop(dash);

    const std::string header = ReadWholeFile(std::string(MOTORDASH_TEST_DIR) + "/log_header.csv");
    ASSERT_EQ(header.size(), 7541u);
    const std::string log = root.Read(LOG);
    EXPECT_EQ(log.substr(0, header.size()), header);

    std::string out;
    const int status = RunProgram(
        "/usr/bin/env",
        {"python3", std::string(MOTORDASH_TEST_DIR) + "/check_log.py", root.Abs(LOG), "PCM1.P9.RPM=6500.00",
         "PCM1.P1.MAP=96.00", "PCM1.P1.Final_AFR1=14.50", "PCM1.P19.BatteryVolts=13.87",
         "PCM1.P8.Knock_CYL1_RTD=-3.00", "PCM1.P140.Knk_Win_Int1=4000000000.00", "PCM1.P148.EGT1_CAN=850.30",
         "PCM1.P14.InjectorPW1=12345.00", "PCM1.P2.TPS=22.00", "PCM1.P10.OilTemp=-12.00",
         "PCM1.P22.InletPressure=0.00"},
        &out);
    EXPECT_EQ(status, 0) << out;
    EXPECT_GE(LineCount(log), 5u + 100u);
}

}  // namespace
